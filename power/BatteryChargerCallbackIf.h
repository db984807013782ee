#pragma once
// What the charging states may read and set in their charger. The charger's
// timers run with the charger as observer, so a state starts and stops them
// through this interface's TimerObserverIf.

#include "frame/TimerId.h"
#include "frame/TimerObserverIf.h"

#include <cstdint>

class PowerDistributionCfg;

class BatteryChargerCallbackIf : public virtual TimerObserverIf {
public:
    static constexpr TimerType kBoostTimer = 39;
    static constexpr TimerType kEqualizeTimer = 40;
    static constexpr TimerType kEqualizeCycleTimer = 41;
    static constexpr TimerType kIntermittentConnectTimer = 42;
    static constexpr TimerType kDisconnectTimer = 43;
    static constexpr TimerType kStayedChargedTimer = 44;
    static constexpr TimerType kPowerDisturbanceTimer = 45;
    static constexpr TimerType kSlowTimer = 47;

    static constexpr std::uint32_t kHourMs = 3'600'000;
    static constexpr std::uint32_t kDayMs = 86'400'000;
    // The longest run of one timer: hours beyond it are run in several.
    static constexpr std::uint32_t kMaxRunHours = 596;
    static constexpr std::uint32_t kMaxRunMs = kMaxRunHours * kHourMs;

    // The first wanted voltage of a climb from below.
    static constexpr float kFirstRegulationVoltage = -50.5F;

    virtual void setChargingTypeToCurrent() = 0;
    virtual void setChargingType(std::uint32_t stateId) = 0;
    virtual std::uint32_t getChargingType() const = 0;
    virtual std::uint32_t getPreviousStateId() const = 0;
    virtual void setChargeTargetVoltage(float volts) = 0;
    virtual float getSoftStartTarget() const = 0;
    virtual void setSoftStartTarget(float volts) = 0;
    virtual void setIntermittentPending() = 0;
    virtual void clearIntermittentPending() = 0;
    virtual bool isIntermittentPending() const = 0;
    virtual void setBoostPending() = 0;
    virtual void clearBoostPending() = 0;
    virtual bool isBoostPending() const = 0;
    virtual void setWantedVoltage(float volts) = 0;
    virtual float getWantedVoltage() const = 0;
    virtual float getFirstRegulationVoltage() const = 0;
    virtual void setFirstRegulationVoltage(float volts) = 0;
    virtual void setRemainingDisconnectHours(std::uint16_t hours) = 0;
    virtual std::uint16_t getRemainingDisconnectHours() const = 0;
    virtual bool isBatteryConnected() const = 0;
    virtual bool isSlowCharging() const = 0;
    virtual bool isFullyCharged() const = 0;
    virtual bool anyBfuOperational() = 0;
    virtual bool isPsuOk() const = 0;
    virtual bool allTempSensorsOk() = 0;
    virtual bool anyBfuConnected() = 0;
    virtual bool isAcOk() const = 0;
    virtual bool anyBfuSlowCharging() = 0;
    virtual float getHighestTemperature() = 0;
    virtual float getLowestTemperature() = 0;
    virtual float getLowestBatteryVoltage() = 0;
    // True when some operational BFU charges above `limit` or near its own
    // capability; `result` then takes the limit to hold.
    virtual bool chargeCurrentAboveLimit(float limit, float& result) = 0;
    virtual float getNominalVoltage() const = 0;
    virtual void setDischargedCapacity(float ampereHours) = 0;
    virtual float getHighestCurrent() = 0;
    virtual std::uint16_t getCurrentLimit() const = 0;
    virtual void setCurrentLimit(std::uint16_t amperes) = 0;
    virtual bool anyBatteryOverTemperature() = 0;
    virtual bool batteryVoltageBelowConnectLimit() = 0;
    virtual bool allBfusHaveVoltageConnect() = 0;
    virtual const PowerDistributionCfg& getPowerDistributionCfg() const = 0;
    virtual void setCapacityCounting(bool on) = 0;
    // A state moves the machine on by number; false when refused.
    virtual bool changeState(std::uint32_t stateId) = 0;
};
