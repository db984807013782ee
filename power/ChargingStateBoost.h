#pragma once
// Charges at the increased voltage for the boost time, which starts when the
// battery has reached that voltage and is longer the more recent the last boost.

#include "power/ChargingState.h"

#include <cstdint>

class ChargingStateBoost : public ChargingState {
public:
    using ChargingState::ChargingState;

    const char* getName() const override { return "BOOST"; }
    void acMainsLost() override;
    void enterSlowCharging() override;
    bool exit() override;
    void checkConditions(float systemVoltage, float batteryVoltage, float current) override;
    void regulate(float systemVoltage, float batteryVoltage, float current) override;
    void boostTimerExpired() override;
    void batteryStayedCharged() override;

    // The boost time in ms at `nowMinutes`, with the automatic increase.
    std::uint32_t boostTimeMs(std::uint32_t nowMinutes) const;

private:
    std::uint32_t m_lastBoostTime = 0; // minutes since 1970; 0 for never
};
