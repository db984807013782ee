#pragma once
// The power interface's records as the core's and back: the configuration
// records into the battery backup and power distribution records and the
// power supply's array, the battery status, test and log records into the
// unions that go to the object layer, and the facade's answers into the
// interface's codes.

#include "adapters/PmiSignals.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryBackupEventIf.h"
#include "power/PowerCtrlManagerIf.h"
#include "power/PowerDistributionCfg.h"

#include <array>
#include <cstdint>

namespace pmi_converter {

BatteryBackupCfg batteryBackupCfgOf(const pmi::PMI_BATTERY_BACKUP_CONFIG_S& config);
PowerDistributionCfg powerDistributionCfgOf(const pmi::PMI_POWER_DISTRIBUTION_CONFIG_S& config);
std::array<std::int16_t, pmi::kPowerSupplyValues> powerSupplyValuesOf(const pmi::PMI_POWER_SUPPLY_CONFIG_S& config);

// The value times `scale`, rounded half away from zero in double precision
// and then truncated; a value of 999 (not measured) gives 0x80000000.
std::int32_t roundedMeasurement(float value, double scale = 1.0);
pmi::PMI_BATTERY_BACKUP_RESOURCE_S batteryBackupResourceOf(const BatteryBackupStatus& status);
pmi::PMI_POWER_SUPPLY_RESOURCE_S powerSupplyResourceOf(std::int32_t systemVoltage);

pmi::PMI_TEST_RESULT_S testResultOf(const BatteryTestRecord& record);
pmi::PMI_LOG_DATA_S logDataOf(const BatteryLogRecord& log, const BatteryLogExtra& extra);

// The errorCode of PMI_ACTION_REJ for the battery test's error of a start
// or stop.
std::uint16_t actionErrorOf(std::uint32_t facadeError);

} // namespace pmi_converter
