#pragma once
// Charges at the increased voltage for the equalize time, counted from when
// the battery reaches it, to even the cells out.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateEqualize : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "EQUALIZE"; }
    void acMainsLost() override;
    void enterSlowCharging() override;
    bool exit() override;
    bool startEqualize() override { return true; }
    bool stopEqualize() override;
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;
    void equalizeTimerExpired() override;
};
