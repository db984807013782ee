#pragma once
// What the battery backup tells the interface adapters: its faults coming
// and going, a confirmed change of battery mode and a battery test that
// started. The fault operations stand in the order in which the adapters'
// fault tables number them, raises first, then the ceases in the same order.

#include <cstdint>

class BatteryBackupEventIf {
public:
    virtual ~BatteryBackupEventIf() = default;

    virtual void raiseNoBatteryPresent() = 0;              // 6003
    virtual void raiseIntermittentConnectedTooOften() = 0; // 6000
    virtual void raiseLowBatteryCapacity() = 0;            // 6001
    virtual void raiseConsumedCapacityNotCovered() = 0;    // 6002
    virtual void raiseRechargeTooLong() = 0;               // 20005
    virtual void raiseBatteryOverTemperature() = 0;        // 6005
    virtual void raiseRunningOnBatteries() = 0;            // 6004
    virtual void raiseBatteryTempSensorFaulty() = 0;       // 7000
    virtual void raiseBatteryBackupTimeTooShort() = 0;     // 6006
    virtual void raiseMultiplePowerSubracks() = 0;         // 6007

    virtual void ceaseNoBatteryPresent() = 0;
    virtual void ceaseIntermittentConnectedTooOften() = 0;
    virtual void ceaseLowBatteryCapacity() = 0;
    virtual void ceaseConsumedCapacityNotCovered() = 0;
    virtual void ceaseRechargeTooLong() = 0;
    virtual void ceaseBatteryOverTemperature() = 0;
    virtual void ceaseRunningOnBatteries() = 0;
    virtual void ceaseBatteryTempSensorFaulty() = 0;
    virtual void ceaseBatteryBackupTimeTooShort() = 0;
    virtual void ceaseMultiplePowerSubracks() = 0;

    // The site runs on batteries, or no longer does, once confirmed.
    virtual void batteryModeChanged(bool onBatteries) = 0;
    // A test began; `initiation` says who asked for it.
    virtual void batteryTestStarted(std::uint32_t initiation) = 0;
};
