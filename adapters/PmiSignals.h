#pragma once
// Signals of the power management interface (PMI), as they stand on the
// wire: big-endian fields at fixed offsets behind a common header. The server
// is "ssc_power_management_server"; the object layer configures the battery
// backup, the power distribution and the power supply through it, and
// receives their state, faults, battery test events and battery log data.

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <cstddef>
#include <cstdint>

namespace pmi {

inline constexpr const char* kServerName = "ssc_power_management_server";

inline constexpr ose::SIGSELECT PMI_SET_CONFIG_REQ = 0x1704401;
inline constexpr ose::SIGSELECT PMI_SET_CONFIG_CFM = 0x1704402;
inline constexpr ose::SIGSELECT PMI_SET_CONFIG_REJ = 0x1704403;
inline constexpr ose::SIGSELECT PMI_DELETE_CONFIG_REQ = 0x1704404;
inline constexpr ose::SIGSELECT PMI_DELETE_CONFIG_CFM = 0x1704405;
inline constexpr ose::SIGSELECT PMI_SUBSCRIBE_RESOURCE_DATA_REQ = 0x1704406;
inline constexpr ose::SIGSELECT PMI_SUBSCRIBE_RESOURCE_DATA_CFM = 0x1704407;
inline constexpr ose::SIGSELECT PMI_RESOURCE_DATA_UPDATE_IND = 0x1704408;
inline constexpr ose::SIGSELECT PMI_SUBSCRIBE_RESOURCE_DATA_REJ = 0x1704409;
inline constexpr ose::SIGSELECT PMI_UNSUBSCRIBE_RESOURCE_DATA_REQ = 0x170440A;
inline constexpr ose::SIGSELECT PMI_UNSUBSCRIBE_RESOURCE_DATA_CFM = 0x170440B;
inline constexpr ose::SIGSELECT PMI_GET_RESOURCE_DATA_REQ = 0x170440C;
inline constexpr ose::SIGSELECT PMI_GET_RESOURCE_DATA_CFM = 0x170440D;
inline constexpr ose::SIGSELECT PMI_GET_RESOURCE_DATA_REJ = 0x170440E;
inline constexpr ose::SIGSELECT PMI_FAULT_IND = 0x170440F;
inline constexpr ose::SIGSELECT PMI_FAULT_CEASE_IND = 0x1704410;
inline constexpr ose::SIGSELECT PMI_ACTION_REQ = 0x1704411;
inline constexpr ose::SIGSELECT PMI_ACTION_CFM = 0x1704412;
inline constexpr ose::SIGSELECT PMI_ACTION_IND = 0x1704413;
inline constexpr ose::SIGSELECT PMI_ACTION_REJ = 0x1704414;
inline constexpr ose::SIGSELECT PMI_BATTERY_EVENT_IND = 0x1704415;

// objectType.
enum ObjectType : std::uint16_t { kBatteryBackup = 0, kPowerDistribution = 1, kPowerSupply = 2 };

// errorCode of the subscription and read rejections.
inline constexpr std::uint16_t kNotConfigured = 1;

// actionType.
enum ActionType : std::uint16_t {
    kStartEqualizeCharging = 0,
    kStopEqualizeCharging = 1,
    kStartBatteryTest = 2,
    kStopBatteryTest = 3,
    kReadBatteryTestStatus = 4,
};

// errorCode of PMI_ACTION_REJ.
inline constexpr std::uint16_t kActionErrorOther = 0; // also an unknown actionType
inline constexpr std::uint16_t kActionErrorEqualizeRefused = 1;
inline constexpr std::uint16_t kActionErrorNoBattery = 4;
inline constexpr std::uint16_t kActionErrorNoPsuUsable = 5;
inline constexpr std::uint16_t kActionErrorPowerSystemUnreachable = 6;
inline constexpr std::uint16_t kActionErrorFault = 7;
inline constexpr std::uint16_t kActionErrorAlreadyRequested = 8;
inline constexpr std::uint16_t kActionErrorTestNotRunning = 10; // also readBatteryTestStatus while idle

// eventType of PMI_BATTERY_EVENT_IND.
enum EventType : std::uint16_t { kTestFinished = 0, kTestStarted = 1, kLogData = 2 };

// The value of a number that has none.
inline constexpr std::uint32_t kNoValue = 0x80000000u;

inline constexpr std::size_t kDateSize = 12;
inline constexpr std::size_t kTimeSize = 8;

// Offset 14: 0 in a CFM, the errorCode in a REJ, the faultType of a fault,
// the actionType of an action, the eventType of a battery event.
struct PMI_HEADER_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 objectId;
    ose::be_u16 objectType;
    ose::be_u16 word14;
};
OSE_SIGNAL_LAYOUT(PMI_HEADER_S, 16);

// The battery backup's configuration at offset 16. Voltages and the nominal
// temperature are tenths, the slope thousandths; the fields from offset 164
// are what the object layer read back from the battery log file.
struct PMI_BATTERY_BACKUP_CONFIG_S {
    ose::be_i32 batteryDisconnectTemp;
    ose::be_i32 batteryDisconnectTempCeaseOffset;
    ose::be_i32 boostChargeTime;
    ose::be_i32 boostChargeTriggerVoltage;
    ose::be_i32 chargeMaxCurrent;
    ose::be_i32 chargingVoltage;
    ose::be_i32 equalizeChargeCyclicInterval;
    ose::be_i32 equalizeChargeTime;
    ose::be_i32 increasedChargeVoltage;
    ose::be_i32 intermittentChargeConnectTime;
    ose::be_i32 intermittentChargeConnectVoltage;
    ose::be_i32 intermittentChargeDisconnectTime;
    ose::be_i32 nominalTemp;
    ose::be_i32 tempCompMaxVoltage;
    ose::be_i32 tempCompMinVoltage;
    ose::be_i32 tempCompVoltageSlope;
    ose::be_i32 testMode; // 0, 1, 2
    ose::be_i32 testStartDay;
    ose::be_i32 numberOfTestMonths;
    ose::be_i32 testStartMonths[12];
    ose::be_i32 minimumStateOfHealth;
    ose::be_i32 minimumBackupTime;
    ose::be_u8 unused132[8];
    ose::be_u16 sharedBattery;
    char batteryInstallationDate[kDateSize];
    char testStartTime[kTimeSize];
    ose::be_u8 unused162[2];
    ose::be_i32 timeOfMainLoadDisconnect; // seconds since 1970
    ose::be_i32 referenceBatteryCapacity;
    char nextScheduledBatteryTestDate[kDateSize];
    char lastBatteryTestDate[kDateSize];
    ose::be_i32 lastNominalBatteryCapacity;
    ose::be_i32 totalDischargeCapacity;
    ose::be_i32 estimatedRemainingBatteryBackup;
    ose::be_i32 rechargeTime;
    ose::be_i32 chargingMode; // 0, 1
};
OSE_SIGNAL_LAYOUT(PMI_BATTERY_BACKUP_CONFIG_S, 216);

// The power distribution's load disconnect limits, tenths of a volt, the
// first two negative as two's complement.
struct PMI_POWER_DISTRIBUTION_CONFIG_S {
    ose::be_u16 mainLoadUndervoltageDisconnect;
    ose::be_u16 priorityLoadUndervoltageDisconnect;
    ose::be_u16 undervoltageDisconnectCeaseOffset;
};
OSE_SIGNAL_LAYOUT(PMI_POWER_DISTRIBUTION_CONFIG_S, 6);

// The power supply's limits, tenths of a volt, as ten 16-bit values of
// which 4 to 8 are used.
inline constexpr std::size_t kPowerSupplyValues = 10;
struct PMI_POWER_SUPPLY_CONFIG_S {
    ose::be_u16 unused[4];
    ose::be_i16 nominalVoltage;
    ose::be_i16 systemOvervoltageAlarmCeaseOffset;
    ose::be_i16 systemOvervoltageAlarmLevel;
    ose::be_i16 systemUndervoltageAlarmCeaseOffset;
    ose::be_i16 systemUndervoltageAlarmLevel;
    ose::be_u16 unused18;
};
OSE_SIGNAL_LAYOUT(PMI_POWER_SUPPLY_CONFIG_S, 20);

inline constexpr std::size_t kConfigSize = 216;
struct PMI_SET_CONFIG_REQ_S {
    PMI_HEADER_S header;
    ose::be_u8 config[kConfigSize]; // by objectType, one of the three above
};
OSE_SIGNAL_LAYOUT(PMI_SET_CONFIG_REQ_S, 232);

// Resource data at offset 16; a power distribution's is all zero.
struct PMI_BATTERY_BACKUP_RESOURCE_S {
    ose::be_i32 batteryCurrent;     // amperes, rounded
    ose::be_i32 batteryTemperature; // degrees, rounded
    ose::be_i32 batteryVoltage;     // tenths of a volt, rounded
    ose::be_i32 referenceBatteryCapacity;
    char nextScheduledBatteryTestDate[kDateSize]; // NUL-terminated
    ose::be_u32 batteryTestIsRunning;
};
OSE_SIGNAL_LAYOUT(PMI_BATTERY_BACKUP_RESOURCE_S, 32);

struct PMI_POWER_SUPPLY_RESOURCE_S {
    ose::be_i32 systemVoltage; // tenths of a volt
    ose::be_u8 unused[28];
};
OSE_SIGNAL_LAYOUT(PMI_POWER_SUPPLY_RESOURCE_S, 32);

inline constexpr std::size_t kResourceSize = 32;
struct PMI_RESOURCE_DATA_S {
    PMI_HEADER_S header;
    ose::be_u8 data[kResourceSize];
};
OSE_SIGNAL_LAYOUT(PMI_RESOURCE_DATA_S, 48);

// actionType at 14; the parameter is `forced` of startBatteryTest.
struct PMI_ACTION_REQ_S {
    PMI_HEADER_S header;
    ose::be_u16 parameter;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(PMI_ACTION_REQ_S, 20);

struct PMI_ACTION_REJ_S {
    PMI_HEADER_S header; // actionType at 14
    ose::be_u16 errorCode;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(PMI_ACTION_REJ_S, 20);

// The running test's progress: state, elapsed minutes, consumed ampere
// hours, estimated remaining minutes.
struct PMI_ACTION_IND_S {
    PMI_HEADER_S header; // actionType 4
    ose::be_i32 words[4];
};
OSE_SIGNAL_LAYOUT(PMI_ACTION_IND_S, 32);

// A finished test, eventType 0, at offset 16.
struct PMI_TEST_RESULT_S {
    ose::be_u32 initiation;
    ose::be_u32 measuredTestConsumedCapacity;
    ose::be_u32 measuredBackupTime;
    ose::be_u32 estimatedNominalBatteryCapacity;
    ose::be_u32 estimatedBatteryStateOfHealth;
    ose::be_u32 outcome;
    char startDate[kDateSize];
    char startTime[kTimeSize];
};
OSE_SIGNAL_LAYOUT(PMI_TEST_RESULT_S, 44);

// The test record as the log data carries it: the texts after initiation.
struct PMI_LOG_TEST_RECORD_S {
    ose::be_u32 initiation;
    char startDate[kDateSize];
    char startTime[kTimeSize];
    ose::be_u32 measuredTestConsumedCapacity;
    ose::be_u32 measuredBackupTime;
    ose::be_u32 estimatedNominalBatteryCapacity;
    ose::be_u32 estimatedBatteryStateOfHealth;
    ose::be_u32 outcome;
};
OSE_SIGNAL_LAYOUT(PMI_LOG_TEST_RECORD_S, 44);

// The battery log data, eventType 2, at offset 16: every count a u32.
struct PMI_LOG_DATA_S {
    ose::be_u32 operatingTemperature[18];
    ose::be_u32 dischargeOccurrences[8];
    ose::be_u32 dischargeUnderVoltageDisconnects[8];
    ose::be_u32 depthOfDischarge[7];
    ose::be_u32 insufficientRecharge[6];
    ose::be_u32 numOfMinutes;
    ose::be_u32 numOfUnderVoltDisc;
    ose::be_u32 numOfIntermittentReconnVoltage;
    ose::be_u32 numOfDisconnects;
    ose::be_u32 numOfAlarms;
    ose::be_u32 timeOfDisconnect; // seconds since 1970
    ose::be_u32 passed;
    ose::be_u32 failed;
    ose::be_u32 undefined;
    ose::be_u32 configuredPeriodic;
    ose::be_u32 automaticPeriodic;
    ose::be_u32 mainsFailure;
    ose::be_u32 onDemand;
    ose::be_u32 onDemandWithForced;
    PMI_LOG_TEST_RECORD_S lastTest;
    ose::be_u32 lastNominalBatteryCapacity;
    ose::be_u32 totalDischargeCapacity;
    ose::be_u32 rechargeTime;
    ose::be_u32 estimatedRemainingBatteryBackup;
    ose::be_u32 referenceBatteryCapacity;
    char nextScheduledBatteryTestDate[kDateSize];
};
OSE_SIGNAL_LAYOUT(PMI_LOG_DATA_S, 320);

inline constexpr std::size_t kEventSize = 320;
struct PMI_BATTERY_EVENT_IND_S {
    PMI_HEADER_S header; // eventType at 14
    ose::be_u8 data[kEventSize];
};
OSE_SIGNAL_LAYOUT(PMI_BATTERY_EVENT_IND_S, 336);

} // namespace pmi
