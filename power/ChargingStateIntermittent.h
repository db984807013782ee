#pragma once
// The fully charged battery is taken off the system and stands idle for the
// connect time; a BFU that puts it back more than twice, or a battery that
// runs down, ends the rest early.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateIntermittent : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "INTERMITTENT"; }
    void enter() override;
    bool exit() override;
    void acMainsLost() override;
    void connectBattery(bool connect, bool extended) override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;
    void batteryConnected() override;
    void batteryDisconnected() override;
    void lostContactWithBfus() override;
    void bfuFault() override;
    void allPsusFailed() override;
    void contactRestored() override;
    bool startEqualize() override;
    void powerDisturbanceTimerExpired() override;
    void intermittentConnectTimerExpired() override;

private:
    void stopPowerDisturbanceTimer();

    std::uint8_t m_connectCount = 0;
};
