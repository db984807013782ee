#pragma once
// The site runs on the battery, or a battery test draws from it: the
// discharge is counted and its deepest battery voltage kept, which decides
// how charging resumes when AC mains are back.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateDischarge : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "DISCHARGE"; }
    void enter() override;
    bool exit() override;
    void batteryDisconnected() override {}
    void lostContactWithBfus() override {}
    void bfuFault() override {}
    void bfuRestarted() override {}
    void allPsusFailed() override {}
    void acMainsLost() override {}
    void acMainsReturned() override { resume(); }
    void stopBatteryTest() override { resume(); }
    void enterSlowCharging() override { m_slowRequested = true; }
    void exitSlowCharging() override { m_slowRequested = false; }
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;
    void countCapacity(float current, float& recharged, float& discharged) override;

private:
    void resume();

    float m_lowestBatteryVoltage = -54.5F;
    bool m_slowRequested = false;
};
