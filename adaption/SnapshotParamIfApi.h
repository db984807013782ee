#pragma once
// Fresh live values of a managed object: the core is asked and the callback
// is told when they have been stored in the object.

class fRO;

class SnapshotParamCallbackIf {
public:
    virtual void snapshotDone() = 0;
    virtual ~SnapshotParamCallbackIf() = default;
};

class SnapshotParamIfApi {
public:
    virtual ~SnapshotParamIfApi() = default;
    // True when the values are being read and `callback` will be told.
    virtual bool update(fRO* fro, SnapshotParamCallbackIf* callback) = 0;
};
