#pragma once
// The fall-back while the BFUs can't be trusted: the plain charging voltage,
// and a watch on the battery voltage that decides where charging resumes.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateFixed : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "FIXED"; }
    void enter() override;
    void acMainsLost() override;
    void batteryDisconnected() override {}
    void lostContactWithBfus() override {}
    void bfuFault() override {}
    void allPsusFailed() override {}
    void batteryConnected() override { resume(); }
    void contactRestored() override { resume(); }
    void psuRestored() override { resume(); }
    void decideNextChargingType() override { resume(); }
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;

private:
    // To Boost after a deep dip, else to Float.
    void resume();

    static constexpr float kStartVoltage = -54.5F;

    float m_lowestBatteryVoltage = kStartVoltage;
};
