#pragma once
// Told by a commit of each new object just before the real object is made.

class fRO;

class TransMgrCallbackIf {
public:
    virtual void beforeCreate(const fRO& shadow) = 0;
    virtual ~TransMgrCallbackIf() = default;
};
