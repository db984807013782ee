#pragma once
// The battery charger as the power control drives it: events from the
// power system, the measured values on each voltage control pass, and the
// voltage it wants the system to hold.

#include "frame/TimerObserverIf.h"

#include <cstdint>

class BatteryChargerIf : public virtual TimerObserverIf {
public:
    // Events of the power system, by number.
    enum Event : std::uint32_t {
        kBeginCharging = 0,
        kAcMainsLost = 1,
        kAcMainsBack = 2,
        kNoBfuOperational = 3,
        kBfuOperational = 4,
        kBfuRestarted = 6,
        kStartEqualize = 7,
        kStopEqualize = 8,
        kPsuAccessible = 9,
        kNoPsuAccessible = 10,
    };
    // The charging type that stops active load sharing.
    static constexpr std::uint32_t kIntermittent = 5;

    virtual void handleEvent(std::uint32_t event) = 0;
    virtual std::uint32_t getChargingStateId() const = 0;
    virtual void updateCharging(float systemVoltage, float batteryVoltage, float batteryCurrent) = 0;
    virtual float getWantedVoltage() const = 0;
    virtual void handleBfuStatus() = 0;
    virtual void setNominalVoltage(float volts) = 0;
    virtual void checkBatteryStatus(float batteryVoltage, float batteryCurrent) = 0;
};
