#include "adapters/PmiConverter.h"

#include "frame/SscTrace.h"

#include <algorithm>
#include <cstring>
#include <limits>

using namespace ssc_trace;
using namespace pmi;

namespace {

constexpr float kNotMeasured = 999.0F;

// A number that does not fit its field in the core's record is held at the
// field's nearest end, with a trace, rather than wrapped into another value.
template <typename T>
T fitted(std::int64_t value, const char* name)
{
    const auto low = static_cast<std::int64_t>(std::numeric_limits<T>::min());
    const auto high = static_cast<std::int64_t>(std::numeric_limits<T>::max());
    if (value >= low && value <= high) return static_cast<T>(value);
    SSC_TRACE(swuGroup(), kUnexpected, "PMI_SET_CONFIG_REQ: %s = %lld out of range, held at %lld", name,
              static_cast<long long>(value), static_cast<long long>(value < low ? low : high));
    return static_cast<T>(value < low ? low : high);
}

float tenths(std::int32_t value) { return static_cast<float>(value) / 10.0F; }

// 0, 1, 2 on the wire are the core's 1, 2, 3; anything else is no mode.
std::uint32_t shiftedMode(std::int32_t value, std::int32_t last)
{
    return value >= 0 && value <= last ? static_cast<std::uint32_t>(value) + 1 : 0;
}

template <std::size_t N>
void copyText(char (&to)[N], const char (&from)[N])
{
    std::memcpy(to, from, N);
}

// The test record's numbers go as 0x80000000 where they say nothing.
std::uint32_t initiationOf(std::uint32_t initiation) { return initiation >= 1 && initiation <= 5 ? initiation : kNoValue; }
std::uint32_t outcomeOf(std::uint32_t outcome) { return outcome == 1 || outcome == 2 ? outcome : kNoValue; }
std::uint32_t measuredOf(std::int32_t value) { return value == 0 ? kNoValue : static_cast<std::uint32_t>(value); }

// A test that never started has no date or time of its start.
template <std::size_t D, std::size_t T>
void startOf(const BatteryTestRecord& record, char (&date)[D], char (&time)[T])
{
    static_assert(D == sizeof record.startDate && T == sizeof record.startTime);
    if (record.startDate[0] == '\0') {
        std::memset(date, 0, D);
        std::memset(time, 0, T);
        std::memcpy(date, "00000000", 8);
        std::memcpy(time, "--:--", 5);
        return;
    }
    std::memcpy(date, record.startDate, D);
    std::memcpy(time, record.startTime, T);
}

} // namespace

namespace pmi_converter {

BatteryBackupCfg batteryBackupCfgOf(const PMI_BATTERY_BACKUP_CONFIG_S& config)
{
    BatteryBackupCfg cfg;
    cfg.batteryDisconnectTemp = fitted<std::int8_t>(config.batteryDisconnectTemp, "batteryDisconnectTemp");
    cfg.batteryDisconnectTempCeaseOffset =
        fitted<std::uint8_t>(config.batteryDisconnectTempCeaseOffset, "batteryDisconnectTempCeaseOffset");
    cfg.boostChargeTime = fitted<std::uint32_t>(config.boostChargeTime, "boostChargeTime");
    cfg.boostChargeTriggerVoltage = tenths(config.boostChargeTriggerVoltage);
    cfg.chargeMaxCurrent = fitted<std::uint16_t>(config.chargeMaxCurrent, "chargeMaxCurrent");
    cfg.chargingVoltage = tenths(config.chargingVoltage);
    cfg.equalizeChargeCyclicInterval =
        fitted<std::uint16_t>(config.equalizeChargeCyclicInterval, "equalizeChargeCyclicInterval");
    cfg.equalizeChargeTime = fitted<std::uint32_t>(config.equalizeChargeTime, "equalizeChargeTime");
    cfg.increasedChargeVoltage = tenths(config.increasedChargeVoltage);
    cfg.intermittentChargeConnectTime =
        fitted<std::uint32_t>(config.intermittentChargeConnectTime, "intermittentChargeConnectTime");
    cfg.intermittentChargeConnectVoltage = tenths(config.intermittentChargeConnectVoltage);
    cfg.intermittentChargeDisconnectTime =
        fitted<std::uint16_t>(config.intermittentChargeDisconnectTime, "intermittentChargeDisconnectTime");
    cfg.nominalTemp = tenths(config.nominalTemp);
    cfg.tempCompMaxVoltage = tenths(config.tempCompMaxVoltage);
    cfg.tempCompMinVoltage = tenths(config.tempCompMinVoltage);
    cfg.tempCompVoltageSlope = static_cast<float>(config.tempCompVoltageSlope) / 1000.0F;
    cfg.testMode = shiftedMode(config.testMode, 2);
    cfg.testStartDay = fitted<std::uint32_t>(config.testStartDay, "testStartDay");
    // The months stand in an array of twelve: a larger count would read past it.
    cfg.numberOfTestMonths = std::min<std::uint32_t>(fitted<std::uint32_t>(config.numberOfTestMonths, "numberOfTestMonths"),
                                                     BatteryBackupCfg::kMonths);
    for (std::size_t month = 0; month < BatteryBackupCfg::kMonths; ++month)
        cfg.testStartMonths[month] = fitted<std::uint32_t>(config.testStartMonths[month], "testStartMonths");
    cfg.minimumStateOfHealth = fitted<std::uint32_t>(config.minimumStateOfHealth, "minimumStateOfHealth");
    cfg.minimumBackupTime = fitted<std::uint32_t>(config.minimumBackupTime, "minimumBackupTime");
    cfg.sharedBattery = config.sharedBattery != 0 ? 1 : 0;
    copyText(cfg.batteryInstallationDate, config.batteryInstallationDate);
    copyText(cfg.testStartTime, config.testStartTime);
    cfg.timeOfMainLoadDisconnect = fitted<std::uint32_t>(config.timeOfMainLoadDisconnect, "timeOfMainLoadDisconnect") / 60;
    cfg.referenceBatteryCapacity = config.referenceBatteryCapacity;
    copyText(cfg.nextScheduledBatteryTestDate, config.nextScheduledBatteryTestDate);
    copyText(cfg.lastBatteryTestDate, config.lastBatteryTestDate);
    cfg.lastNominalBatteryCapacity = config.lastNominalBatteryCapacity;
    cfg.totalDischargeCapacity = static_cast<float>(static_cast<std::int32_t>(config.totalDischargeCapacity));
    cfg.estimatedRemainingBatteryBackup =
        fitted<std::uint32_t>(config.estimatedRemainingBatteryBackup, "estimatedRemainingBatteryBackup");
    cfg.rechargeTime = fitted<std::uint32_t>(config.rechargeTime, "rechargeTime");
    cfg.chargingMode = shiftedMode(config.chargingMode, 1);
    return cfg;
}

PowerDistributionCfg powerDistributionCfgOf(const PMI_POWER_DISTRIBUTION_CONFIG_S& config)
{
    PowerDistributionCfg cfg;
    // The two limits are negative, sent as 16-bit two's complement.
    cfg.mainLoadUndervoltageDisconnect = static_cast<std::int16_t>(static_cast<std::uint16_t>(config.mainLoadUndervoltageDisconnect));
    cfg.priorityLoadUndervoltageDisconnect =
        static_cast<std::int16_t>(static_cast<std::uint16_t>(config.priorityLoadUndervoltageDisconnect));
    cfg.undervoltageDisconnectCeaseOffset =
        fitted<std::uint8_t>(config.undervoltageDisconnectCeaseOffset, "undervoltageDisconnectCeaseOffset");
    return cfg;
}

std::array<std::int16_t, kPowerSupplyValues> powerSupplyValuesOf(const PMI_POWER_SUPPLY_CONFIG_S& config)
{
    std::array<std::int16_t, kPowerSupplyValues> values{};
    values[4] = config.nominalVoltage;
    values[5] = config.systemOvervoltageAlarmCeaseOffset;
    values[6] = config.systemOvervoltageAlarmLevel;
    values[7] = config.systemUndervoltageAlarmCeaseOffset;
    values[8] = config.systemUndervoltageAlarmLevel;
    return values;
}

std::int32_t roundedMeasurement(float value, double scale)
{
    if (value == kNotMeasured) return static_cast<std::int32_t>(kNoValue);
    const double scaled = static_cast<double>(value) * scale;
    const double shifted = scaled > 0.0 ? scaled + 0.5 : scaled - 0.5;
    // A reading beyond 32 bits is no reading.
    if (!(shifted > -2147483648.0 && shifted < 2147483648.0)) return static_cast<std::int32_t>(kNoValue);
    return static_cast<std::int32_t>(shifted);
}

PMI_BATTERY_BACKUP_RESOURCE_S batteryBackupResourceOf(const BatteryBackupStatus& status)
{
    PMI_BATTERY_BACKUP_RESOURCE_S resource{};
    resource.batteryCurrent = roundedMeasurement(status.batteryCurrent);
    resource.batteryTemperature = roundedMeasurement(status.batteryTemperature);
    resource.batteryVoltage = roundedMeasurement(status.batteryVoltage, 10.0);
    resource.referenceBatteryCapacity = status.referenceBatteryCapacity;
    // Eleven characters and the terminator, from a field that need not hold one.
    const std::size_t length = strnlen(status.nextScheduledBatteryTestDate, kDateSize - 1);
    std::memcpy(resource.nextScheduledBatteryTestDate, status.nextScheduledBatteryTestDate, length);
    resource.batteryTestIsRunning = status.batteryTestRunning ? 1 : 0;
    return resource;
}

PMI_POWER_SUPPLY_RESOURCE_S powerSupplyResourceOf(std::int32_t systemVoltage)
{
    PMI_POWER_SUPPLY_RESOURCE_S resource{};
    resource.systemVoltage = systemVoltage;
    return resource;
}

PMI_TEST_RESULT_S testResultOf(const BatteryTestRecord& record)
{
    PMI_TEST_RESULT_S result{};
    result.initiation = initiationOf(record.initiation);
    result.measuredTestConsumedCapacity = measuredOf(record.measuredTestConsumedCapacity);
    result.measuredBackupTime = measuredOf(record.measuredBackupTime);
    result.estimatedNominalBatteryCapacity = measuredOf(record.estimatedNominalBatteryCapacity);
    result.estimatedBatteryStateOfHealth = measuredOf(record.estimatedBatteryStateOfHealth);
    result.outcome = outcomeOf(record.outcome);
    startOf(record, result.startDate, result.startTime);
    return result;
}

PMI_LOG_DATA_S logDataOf(const BatteryLogRecord& log, const BatteryLogExtra& extra)
{
    PMI_LOG_DATA_S data{};
    for (std::size_t i = 0; i < std::size(log.operatingTemperature); ++i)
        data.operatingTemperature[i] = log.operatingTemperature[i];
    for (std::size_t i = 0; i < std::size(log.dischargeDuration); ++i) {
        data.dischargeOccurrences[i] = log.dischargeDuration[i].occurrences;
        data.dischargeUnderVoltageDisconnects[i] = log.dischargeDuration[i].underVoltageDisconnects;
    }
    for (std::size_t i = 0; i < std::size(log.depthOfDischarge); ++i) data.depthOfDischarge[i] = log.depthOfDischarge[i];
    for (std::size_t i = 0; i < std::size(log.insufficientRecharge); ++i)
        data.insufficientRecharge[i] = log.insufficientRecharge[i];
    data.numOfMinutes = log.disconnectedMinutes;
    data.numOfUnderVoltDisc = log.underVoltDisconnects;
    data.numOfIntermittentReconnVoltage = log.intermittentReconnects;
    data.numOfDisconnects = log.highTempDisconnects;
    data.numOfAlarms = log.highTempAlarms;
    data.timeOfDisconnect = log.timeOfDisconnect * 60U;
    data.passed = log.passed;
    data.failed = log.failed;
    data.undefined = log.undefined;
    data.configuredPeriodic = log.configuredPeriodic;
    data.automaticPeriodic = log.automaticPeriodic;
    data.mainsFailure = log.mainsFailure;
    data.onDemand = log.onDemand;
    data.onDemandWithForced = log.onDemandWithForced;
    const PMI_TEST_RESULT_S test = testResultOf(log.lastTest);
    data.lastTest.initiation = test.initiation;
    std::memcpy(data.lastTest.startDate, test.startDate, kDateSize);
    std::memcpy(data.lastTest.startTime, test.startTime, kTimeSize);
    data.lastTest.measuredTestConsumedCapacity = test.measuredTestConsumedCapacity;
    data.lastTest.measuredBackupTime = test.measuredBackupTime;
    data.lastTest.estimatedNominalBatteryCapacity = test.estimatedNominalBatteryCapacity;
    data.lastTest.estimatedBatteryStateOfHealth = test.estimatedBatteryStateOfHealth;
    data.lastTest.outcome = test.outcome;
    data.lastNominalBatteryCapacity = static_cast<std::uint32_t>(extra.lastNominalBatteryCapacity);
    data.totalDischargeCapacity = static_cast<std::uint32_t>(extra.totalDischargeCapacity);
    data.rechargeTime = extra.rechargeTime;
    data.estimatedRemainingBatteryBackup = extra.estimatedRemainingBatteryBackup;
    data.referenceBatteryCapacity = static_cast<std::uint32_t>(extra.referenceBatteryCapacity);
    std::memcpy(data.nextScheduledBatteryTestDate, extra.nextScheduledBatteryTestDate, kDateSize);
    return data;
}

std::uint16_t actionErrorOf(std::uint32_t facadeError)
{
    static constexpr std::array<std::uint16_t, 7> kCodes{kActionErrorNoBattery,
                                                         kActionErrorFault,
                                                         kActionErrorNoPsuUsable,
                                                         kActionErrorTestNotRunning,
                                                         kActionErrorAlreadyRequested,
                                                         kActionErrorOther,
                                                         kActionErrorPowerSystemUnreachable};
    return facadeError < kCodes.size() ? kCodes[facadeError] : kActionErrorOther;
}

} // namespace pmi_converter
