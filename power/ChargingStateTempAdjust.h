#pragma once
// Brings a warm battery down by lowering the voltage as long as it still
// takes current, and climbs back through SoftStart once it has cooled.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateTempAdjust : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "TEMP_ADJUST"; }
    void enter() override;
    void acMainsLost() override;
    void enterSlowCharging() override;
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;

private:
    bool m_firstPass = false;
};
