#pragma once
// Told that the set of active faults changed; the observer asks the register
// what it wants to know.

class AlarmObserverIf {
public:
    virtual ~AlarmObserverIf() = default;
    virtual void faultsChanged() = 0;
};
