#pragma once
// The fault numbers of the core, grouped by the part of the cabinet they
// concern. Delays, where a fault has one, are chosen by whoever raises it.

#include <cstdint>

namespace fault_id {

// Battery backup.
inline constexpr std::int32_t kIntermittentConnectedTooOften = 6000;
inline constexpr std::int32_t kLowBatteryCapacityBatteryTest = 6001;
inline constexpr std::int32_t kConsumedCapacityNotCovered = 6002;
inline constexpr std::int32_t kNoBatteryPresent = 6003;        // raised and ceased after 3000 ms
inline constexpr std::int32_t kRunningOnBatteries = 6004;      // raised and ceased after 3000 ms
inline constexpr std::int32_t kBatteryOverTemperature = 6005;
inline constexpr std::int32_t kBatteryBackupTimeTooShort = 6006;
inline constexpr std::int32_t kMultiplePowerSubracks = 6007;
inline constexpr std::int32_t kBatteryTempSensorFaulty = 7000;
inline constexpr std::int32_t kRechargeTooLong = 20005;

// Power distribution.
inline constexpr std::int32_t kMainLoadDisconnected = 7003;
inline constexpr std::int32_t kPriorityLoadDisconnected = 7004;

// Power supply.
inline constexpr std::int32_t kSystemOvervoltage = 14007;
inline constexpr std::int32_t kSystemUndervoltage = 14008;
inline constexpr std::int32_t kNoPsuUsable = 20004;

// BFU.
inline constexpr std::int32_t kBfuCircuitBreaker = 7001;
inline constexpr std::int32_t kBfuTemperature = 7002;

// Cabinet.
inline constexpr std::int32_t kDoorAlarm = 14002;
inline constexpr std::int32_t kSmokeDetectorDisconnected = 14003;
inline constexpr std::int32_t kSmokeDetectorAlarm = 14004;
inline constexpr std::int32_t kSmokeDetectorHwFailure = 14005;
// A configured limit the PDU or BFU cannot take, or an unusable nominal
// voltage.
inline constexpr std::int32_t kPowerLimitsOutsideCapabilities = 14009;
// Hardware answers on the bus that nothing configured (raised after 2000 ms);
// it belongs to the bus scan, not to the unit on that function.
inline constexpr std::int32_t kHwEntitiesMismatch = 14006;
// The cabinet's identity in the configuration and the one in its SCU's
// memory disagree in a way only a person can resolve (raised after 2000 ms).
inline constexpr std::int32_t kCabinetPidMismatch = 21500;

inline constexpr std::int32_t kPduMainTemperatureHigh = 18700;

// PSU.
inline constexpr std::int32_t kPsuHighTemperatureClass2 = 20000;
inline constexpr std::int32_t kPsuInputVoltageHigh = 20001;
inline constexpr std::int32_t kPsuInputVoltageLow = 20002;
inline constexpr std::int32_t kPsuLowTemperatureClass2 = 20003;
inline constexpr std::int32_t kPsuHighTemperatureClass1 = 20006;
inline constexpr std::int32_t kPsuLowTemperatureClass1 = 20007;

// Any unit (the hub position faults after 5000 ms).
inline constexpr std::int32_t kHwuFaulty = 21501;
inline constexpr std::int32_t kHwuMissing = 21502;
inline constexpr std::int32_t kFaultyHubPosition = 21503;
inline constexpr std::int32_t kConflictingHubPosition = 21504;
inline constexpr std::int32_t kHubPositionConflict = 21505;

inline constexpr std::int32_t kEquipSupFuncFault = 22500;

} // namespace fault_id
