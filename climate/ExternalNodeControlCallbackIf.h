#pragma once
// What the secondary nodes' air flow needs of the climate manager.

class ExternalNodeControlCallbackIf {
public:
    virtual ~ExternalNodeControlCallbackIf() = default;
    virtual float getFlowFactor() const = 0;
    virtual void updateBasicFanSpeed() = 0;
};
