#pragma once
// What a committed change of a managed object means for the core: the
// configuration flow turns it into a configuration signal of the object's
// interface. The object controllers call it at every commit and restore.

class fRO;

class ConfigIfApi {
public:
    virtual ~ConfigIfApi() = default;
    // The object was created or changed in a commit.
    virtual void handleSetConfig(fRO* fro) = 0;
    // The object was made again from the database at start.
    virtual void handleRestoreConfig(fRO* fro) = 0;
    // The object goes; releaseId also frees its interface identity.
    virtual void handleDeleteConfig(fRO* fro, bool releaseId) = 0;
};
