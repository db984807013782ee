#pragma once
// Brings the system up to the target voltage in small steps, so that the
// battery current stays under the configured maximum. The battery may be
// off the system at first; the state is not left until it is back on.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateSoftStart : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "SOFT_START"; }
    void enter() override;
    bool exit() override { return m_batteryConnected; }
    void acMainsLost() override;
    void enterSlowCharging() override;
    void bfuRestarted() override {}
    bool startEqualize() override;
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;

private:
    // Whether the battery may be put back on the system now.
    bool mayConnect(float systemVoltage);

    bool m_batteryConnected = false;
};
