#pragma once

class stateUserData;

// Told of a state event that comes up from a child.
class AggregateCallback {
public:
    virtual ~AggregateCallback() = default;
    virtual void aggregate(const stateUserData& data) = 0;
};
