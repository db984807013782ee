#pragma once
// Holds the battery at the charging voltage, compensated for its temperature.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateFloat : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "FLOAT"; }
    void acMainsLost() override;
    void enterSlowCharging() override;
    bool startEqualize() override;
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;
    void batteryStayedCharged() override;
};
