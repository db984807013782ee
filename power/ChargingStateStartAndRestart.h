#pragma once
// Where the charger waits until charging is begun, and what it goes back to
// when contact with the BFUs comes back after a restart.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateStartAndRestart : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "CHARGING_UNDEFINED"; }
    void batteryDisconnected() override {}
    void lostContactWithBfus() override {}
    void bfuFault() override {}
    void bfuRestarted() override {}
    void allPsusFailed() override {}
    void initCharging() override;
    void contactRestored() override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;
};
