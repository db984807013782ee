#pragma once

class stateUserData;

// Told of a state event that comes down from the parent.
class PropagateCallback {
public:
    virtual ~PropagateCallback() = default;
    virtual void propagate(const stateUserData& data) = 0;
};
