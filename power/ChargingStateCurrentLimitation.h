#pragma once
// Lowers the voltage while a BFU charges near its limit, and hands back
// once the voltage is up to nominal with the current well under the limit.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateCurrentLimitation : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "CURRENT_LIMITATION"; }
    void acMainsLost() override;
    void enterSlowCharging() override;
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;
};
