#include "adapters/BatteryBackupEventHandler.h"

#include "adapters/PmiAdapter.h"
#include "frame/SscTrace.h"

using namespace ssc_trace;

BatteryBackupEventHandler::BatteryBackupEventHandler(PmiAdapter* pmiAdapter) : m_pPmiAdapter(pmiAdapter) {}

void BatteryBackupEventHandler::fault(std::uint16_t faultType, bool raised)
{
    if (m_pPmiAdapter != nullptr)
        m_pPmiAdapter->batteryBackupFault(static_cast<PmiAdapter::BatteryFault>(faultType), raised);
}

void BatteryBackupEventHandler::raiseNoBatteryPresent() { fault(PmiAdapter::kNoBatteryPresent, true); }
void BatteryBackupEventHandler::raiseIntermittentConnectedTooOften() { fault(PmiAdapter::kIntermittentConnectedTooOften, true); }
void BatteryBackupEventHandler::raiseLowBatteryCapacity() { fault(PmiAdapter::kLowBatteryCapacity, true); }
void BatteryBackupEventHandler::raiseConsumedCapacityNotCovered() { fault(PmiAdapter::kConsumedCapacityNotCovered, true); }
void BatteryBackupEventHandler::raiseRechargeTooLong() { fault(PmiAdapter::kRechargeTooLong, true); }
void BatteryBackupEventHandler::raiseBatteryOverTemperature() { fault(PmiAdapter::kBatteryOverTemperature, true); }
void BatteryBackupEventHandler::raiseRunningOnBatteries() { fault(PmiAdapter::kRunningOnBatteries, true); }
void BatteryBackupEventHandler::raiseBatteryTempSensorFaulty() { fault(PmiAdapter::kBatteryTempSensorFaulty, true); }
void BatteryBackupEventHandler::raiseBatteryBackupTimeTooShort() { fault(PmiAdapter::kBatteryBackupTimeTooShort, true); }
void BatteryBackupEventHandler::raiseMultiplePowerSubracks() { fault(PmiAdapter::kMultiplePowerSubracks, true); }

void BatteryBackupEventHandler::ceaseNoBatteryPresent() { fault(PmiAdapter::kNoBatteryPresent, false); }
void BatteryBackupEventHandler::ceaseIntermittentConnectedTooOften() { fault(PmiAdapter::kIntermittentConnectedTooOften, false); }
void BatteryBackupEventHandler::ceaseLowBatteryCapacity() { fault(PmiAdapter::kLowBatteryCapacity, false); }
void BatteryBackupEventHandler::ceaseConsumedCapacityNotCovered() { fault(PmiAdapter::kConsumedCapacityNotCovered, false); }
void BatteryBackupEventHandler::ceaseRechargeTooLong() { fault(PmiAdapter::kRechargeTooLong, false); }
void BatteryBackupEventHandler::ceaseBatteryOverTemperature() { fault(PmiAdapter::kBatteryOverTemperature, false); }
void BatteryBackupEventHandler::ceaseRunningOnBatteries() { fault(PmiAdapter::kRunningOnBatteries, false); }
void BatteryBackupEventHandler::ceaseBatteryTempSensorFaulty() { fault(PmiAdapter::kBatteryTempSensorFaulty, false); }
void BatteryBackupEventHandler::ceaseBatteryBackupTimeTooShort() { fault(PmiAdapter::kBatteryBackupTimeTooShort, false); }
void BatteryBackupEventHandler::ceaseMultiplePowerSubracks() { fault(PmiAdapter::kMultiplePowerSubracks, false); }

void BatteryBackupEventHandler::batteryModeChanged(bool onBatteries)
{
    SSC_TRACE(swuGroup(), kFlow, "runningOnBatteriesChanged: %d, no power control interface to tell",
              static_cast<int>(onBatteries));
}

void BatteryBackupEventHandler::batteryTestStarted(std::uint32_t initiation)
{
    if (m_pPmiAdapter != nullptr) m_pPmiAdapter->batteryTestStarted(initiation);
}

void BatteryBackupEventHandler::statusChanged()
{
    if (m_pPmiAdapter != nullptr) m_pPmiAdapter->batteryBackupStatusChanged();
}

void BatteryBackupEventHandler::batteryTestFinished(const BatteryTestRecord& record)
{
    if (m_pPmiAdapter != nullptr) m_pPmiAdapter->batteryTestFinished(record);
}

void BatteryBackupEventHandler::batteryLogData(const BatteryLogRecord& log, const BatteryLogExtra& extra)
{
    if (m_pPmiAdapter != nullptr) m_pPmiAdapter->batteryLogData(log, extra);
}
