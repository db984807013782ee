#include "power/BatteryBackupFacade.h"

#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "power/BatteryBackupEventIf.h"
#include "power/FaultRoute.h"
#include "power/PowerCtrlManagerIf.h"

using namespace ssc_trace;

namespace {

constexpr FuncId_t kSubject{func_type::kBatteryBackup, 0};

using Route = FaultRoute<BatteryBackupEventIf>;
using Event = BatteryBackupEventIf;

constexpr std::array<Route, 10> kRoutes{{
    {fault_id::kNoBatteryPresent, &Event::raiseNoBatteryPresent, &Event::ceaseNoBatteryPresent},
    {fault_id::kIntermittentConnectedTooOften, &Event::raiseIntermittentConnectedTooOften,
     &Event::ceaseIntermittentConnectedTooOften},
    {fault_id::kLowBatteryCapacityBatteryTest, &Event::raiseLowBatteryCapacity, &Event::ceaseLowBatteryCapacity},
    {fault_id::kConsumedCapacityNotCovered, &Event::raiseConsumedCapacityNotCovered,
     &Event::ceaseConsumedCapacityNotCovered},
    {fault_id::kRechargeTooLong, &Event::raiseRechargeTooLong, &Event::ceaseRechargeTooLong},
    {fault_id::kBatteryOverTemperature, &Event::raiseBatteryOverTemperature, &Event::ceaseBatteryOverTemperature},
    {fault_id::kRunningOnBatteries, &Event::raiseRunningOnBatteries, &Event::ceaseRunningOnBatteries},
    {fault_id::kBatteryTempSensorFaulty, &Event::raiseBatteryTempSensorFaulty, &Event::ceaseBatteryTempSensorFaulty},
    {fault_id::kBatteryBackupTimeTooShort, &Event::raiseBatteryBackupTimeTooShort,
     &Event::ceaseBatteryBackupTimeTooShort},
    {fault_id::kMultiplePowerSubracks, &Event::raiseMultiplePowerSubracks, &Event::ceaseMultiplePowerSubracks},
}};

} // namespace

BatteryBackupFacade::BatteryBackupFacade(FaultsRegisterIf& faults, PowerCtrlManagerIf* manager)
    : m_pFaults(&faults), m_pManager(manager)
{
    m_pFaults->addReporter(this);
}

BatteryBackupFacade::~BatteryBackupFacade() { m_pFaults->removeReporter(this); }

PowerCtrlManagerIf* BatteryBackupFacade::manager(const char* operation) const
{
    if (m_pManager == nullptr)
        SSC_TRACE(powerGroup(), kUnexpected, "%s: PowerCtrlManager is not created", operation);
    return m_pManager;
}

void BatteryBackupFacade::updateBatteryParameters(const BatteryBackupCfg& cfg)
{
    if (PowerCtrlManagerIf* power = manager("updateBatteryParameters")) power->updateBatteryParameters(cfg);
}

// The faults go whether or not the power control is there: the register is
// what the alarms are made from.
void BatteryBackupFacade::deleteBatteryBackup()
{
    m_pFaults->ceaseFaults(kSubject);
    if (PowerCtrlManagerIf* power = manager("deleteBatteryBackup")) power->clearBatteryBackupConfigured();
}

void BatteryBackupFacade::getBatteryBackupStatus(BatteryBackupStatus* status)
{
    if (status == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, "getBatteryBackupStatus: no status record");
        return;
    }
    if (PowerCtrlManagerIf* power = manager("getBatteryBackupStatus")) power->getBatteryBackupStatus(status);
    else *status = BatteryBackupStatus{};
}

std::uint32_t BatteryBackupFacade::startEqualizeCharging()
{
    PowerCtrlManagerIf* power = manager("startEqualizeCharging");
    if (power == nullptr) return kEqualizeRefused;
    power->startEqualizeCharging();
    return 0;
}

void BatteryBackupFacade::stopEqualizeCharging()
{
    if (PowerCtrlManagerIf* power = manager("stopEqualizeCharging")) power->stopEqualizeCharging();
}

bool BatteryBackupFacade::startBatteryTest(bool forced, std::uint32_t* error)
{
    std::uint32_t reason = kErrorPowerSystemUnreachable;
    PowerCtrlManagerIf* power = manager("startBatteryTest");
    const std::uint32_t initiation = forced ? kInitiationOnDemandForced : kInitiationOnDemand;
    const bool started = power != nullptr && power->startBatteryTest(initiation, &reason);
    if (!started && error != nullptr) *error = reason;
    return started;
}

bool BatteryBackupFacade::stopBatteryTest(std::uint32_t* error)
{
    std::uint32_t reason = kErrorTestNotRunning;
    PowerCtrlManagerIf* power = manager("stopBatteryTest");
    const bool stopped = power != nullptr && power->stopBatteryTest(kStopByOperator, &reason);
    if (!stopped && error != nullptr) *error = reason;
    return stopped;
}

bool BatteryBackupFacade::getBatteryTestProgress(std::int32_t words[4])
{
    if (words == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, "getBatteryTestProgress: no progress record");
        return false;
    }
    PowerCtrlManagerIf* power = manager("getBatteryTestProgress");
    return power != nullptr && power->getBatteryTestProgress(words);
}

std::uint32_t BatteryBackupFacade::getBatteryTestResults()
{
    PowerCtrlManagerIf* power = manager("getBatteryTestResults");
    return power != nullptr ? power->getBatteryTestInitiation() : 0;
}

bool BatteryBackupFacade::isRunningOnBatteries() const
{
    PowerCtrlManagerIf* power = manager("isRunningOnBatteries");
    return power != nullptr && power->isRunningOnBatteries();
}

void BatteryBackupFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) { report(faultId, funcId, true); }

void BatteryBackupFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    report(faultId, funcId, false);
}

// Only the battery backup's own faults go out from here; a fault of ours
// without a handler is lost, the register keeps it.
void BatteryBackupFacade::report(const FaultId_t& faultId, const FuncId_t& funcId, bool raise)
{
    if (funcId.FuncType != kSubject.FuncType) return;
    const Route* route = findFaultRoute(kRoutes, faultId.id);
    if (route == nullptr) return;
    if (m_pBatteryBackupAdapter == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, raise ? "raiseFault: m_pBatteryBackupAdapter is not set"
                                                   : "ceaseFault: m_pBatteryBackupAdapter is not set");
        return;
    }
    (m_pBatteryBackupAdapter->*(raise ? route->raise : route->cease))();
}
