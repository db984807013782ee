#pragma once
// The battery charger as the power control drives it: events from the
// power system, the measured values on each voltage control pass, the
// voltage it wants the system to hold, and the BFU summary it reads.

#include "frame/TimerObserverIf.h"

#include <cstdint>

// The numbers of the charging states; the log, load sharing and the
// management interface know a state by its number.
namespace charging_state {
inline constexpr std::uint32_t kStartAndRestart = 0;
inline constexpr std::uint32_t kSoftStart = 1;
inline constexpr std::uint32_t kBoost = 2;
inline constexpr std::uint32_t kFloat = 3;
inline constexpr std::uint32_t kEqualize = 4;
inline constexpr std::uint32_t kIntermittent = 5;
inline constexpr std::uint32_t kTempAdjust = 6;
inline constexpr std::uint32_t kSlow = 7;
inline constexpr std::uint32_t kCurrentLimitation = 8;
inline constexpr std::uint32_t kFixed = 9;
inline constexpr std::uint32_t kDischarge = 10;
inline constexpr std::uint32_t kCount = 11;
} // namespace charging_state

class BatteryChargerIf : public virtual TimerObserverIf {
public:
    // Events of the power system, by number; 5 has no meaning.
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
        kStartBatteryTest = 11,
        kStopBatteryTest = 12,
        kMultipleSubracks = 13,
    };
    // The charging type that stops active load sharing.
    static constexpr std::uint32_t kIntermittent = charging_state::kIntermittent;

    // False for an unknown event, and for an equalize start or stop that
    // the present state refuses.
    virtual bool handleEvent(std::uint32_t event) = 0;
    virtual std::uint32_t getChargingStateId() const = 0;
    virtual void updateCharging(float systemVoltage, float batteryVoltage, float batteryCurrent) = 0;
    virtual float getWantedVoltage() const = 0;
    // The charging voltage, or after a discharge its lowest battery voltage.
    virtual float getChargeTargetVoltage() const = 0;
    virtual void handleBfuStatus() = 0;
    virtual const char* getChargingStateName() const = 0;
    virtual bool isIntermittent() const = 0;
    virtual void setNominalVoltage(float volts) = 0;
    virtual bool isFullyCharged() const = 0;
    // False when a value is not available (999.0): the machine skips the pass.
    virtual bool checkBatteryStatus(float batteryVoltage, float batteryCurrent) = 0;
    virtual bool isFixed() const = 0;
    // False when the present state may not be left or the number is unknown.
    virtual bool changeState(std::uint32_t stateId) = 0;

    // The BFU summary over the operational BFUs; 999.0 where none counts.
    virtual float getAverageTemperature() = 0;
    virtual float getHighestTemperature() = 0;
    virtual float getLowestTemperature() = 0;
    virtual bool anyBatteryPresent() = 0;
    virtual float getBatteryVoltage() = 0;
    virtual float getLowestBatteryVoltage() = 0;
    virtual bool anyBfuOperational() = 0;
    virtual bool anyBfuSlowCharging() = 0;
    virtual bool anyHwFault() = 0;
    virtual bool anyMainLoadDisconnected() = 0;
    virtual bool anyBatteryOverTemperature() = 0;
    virtual bool allTempSensorsOk() = 0;
    virtual bool anyBfuConnected() = 0;
    virtual bool allBfusConnected() = 0;
    virtual bool allBfusOperational() = 0;
    virtual float getBatteryCurrent() = 0;
    virtual float getLowestCurrent() = 0;
    virtual float getHighestCurrent() = 0;
};
