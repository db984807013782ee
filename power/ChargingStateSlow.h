#pragma once
// A BFU asks for slow charging: the voltage starts low and climbs one volt a
// minute until the BFU lets go.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateSlow : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "SLOW"; }
    void enter() override;
    bool exit() override;
    void acMainsLost() override;
    void enterSlowCharging() override;
    void exitSlowCharging() override;
    void slowTimerExpired() override;
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;

private:
    bool m_tooWarm = false;
};
