#pragma once
// What the battery backup tells the interface adapters: its faults coming
// and going, a confirmed change of battery mode, new battery figures, a
// battery test that started or finished and the battery log's statistics.
// The fault operations stand in the order in which the adapters' fault
// tables number them, raises first, then the ceases in the same order.

#include <cstdint>

// One battery test as it ended: what the log keeps and the adapters send.
struct BatteryTestRecord {
    std::uint32_t initiation = 0;                           // 1 to 5
    std::int32_t measuredTestConsumedCapacity = 0;          // ampere hours
    std::int32_t measuredBackupTime = 0;                    // minutes
    std::int32_t estimatedNominalBatteryCapacity = INT32_MIN; // ampere hours; INT32_MIN when none
    std::int32_t estimatedBatteryStateOfHealth = INT32_MIN;   // percent; INT32_MIN when none
    std::uint32_t outcome = 0;                              // 0 undefined, 1 passed, 2 failed
    char startDate[12] = {};                                // "yyyymmdd"; empty: the test never started
    char startTime[8] = {};                                 // "hh:mm"
};

// The battery log's statistics of one sending period.
struct BatteryLogRecord {
    struct Discharges {
        std::uint16_t occurrences = 0;
        std::uint16_t underVoltageDisconnects = 0; // ended with the main load disconnected
    };
    std::uint32_t operatingTemperature[18] = {}; // minutes per temperature interval
    Discharges dischargeDuration[8] = {};        // per duration interval
    std::uint16_t depthOfDischarge[7] = {};
    std::uint16_t insufficientRecharge[6] = {};
    std::uint32_t disconnectedMinutes = 0;
    std::uint16_t underVoltDisconnects = 0;
    std::uint16_t intermittentReconnects = 0;
    std::uint16_t highTempAlarms = 0;
    std::uint16_t highTempDisconnects = 0;
    std::uint32_t timeOfDisconnect = 0; // minutes since 1970
    std::uint16_t storedRechargeCount = 0;
    BatteryTestRecord lastTest;
    std::uint32_t passed = 0;
    std::uint32_t failed = 0;
    std::uint32_t undefined = 0;
    std::uint32_t configuredPeriodic = 0;
    std::uint32_t automaticPeriodic = 0;
    std::uint32_t mainsFailure = 0;
    std::uint32_t onDemand = 0;
    std::uint32_t onDemandWithForced = 0;
};

// The figures of the battery backup's configuration that go with the log.
struct BatteryLogExtra {
    std::int32_t lastNominalBatteryCapacity = INT32_MIN;
    std::int32_t totalDischargeCapacity = 0; // ampere hours, truncated
    std::uint32_t rechargeTime = 0;          // minutes
    std::uint32_t estimatedRemainingBatteryBackup = 0; // minutes
    std::int32_t referenceBatteryCapacity = INT32_MIN;
    char nextScheduledBatteryTestDate[12] = {};
};

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

    // The three below do nothing unless a handler wants them, so that a
    // handler that follows faults and battery mode alone needn't list them.
    // New battery figures: current, temperature, voltage or test state.
    virtual void statusChanged() {}
    virtual void batteryTestFinished(const BatteryTestRecord& /*record*/) {}
    virtual void batteryLogData(const BatteryLogRecord& /*log*/, const BatteryLogExtra& /*extra*/) {}
};
