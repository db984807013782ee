#include "power/PowerDistributionFacade.h"

#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "power/FaultRoute.h"
#include "power/PowerCtrlManagerIf.h"
#include "power/PowerDistributionEventIf.h"

using namespace ssc_trace;

namespace {

constexpr FuncId_t kSubject{func_type::kPowerDistribution, 0};

using Route = FaultRoute<PowerDistributionEventIf>;
using Event = PowerDistributionEventIf;

constexpr std::array<Route, 3> kRoutes{{
    {fault_id::kMainLoadDisconnected, &Event::raiseMainLoadDisconnected, &Event::ceaseMainLoadDisconnected},
    {fault_id::kPriorityLoadDisconnected, &Event::raisePriorityLoadDisconnected,
     &Event::ceasePriorityLoadDisconnected},
    {fault_id::kPduMainTemperatureHigh, &Event::raisePduMainTemperatureHigh, &Event::ceasePduMainTemperatureHigh},
}};

} // namespace

PowerDistributionFacade::PowerDistributionFacade(FaultsRegisterIf& faults, PowerCtrlManagerIf* manager)
    : m_pFaults(&faults), m_pManager(manager)
{
    m_pFaults->addReporter(this);
}

PowerDistributionFacade::~PowerDistributionFacade() { m_pFaults->removeReporter(this); }

void PowerDistributionFacade::updatePowerDistribution(const PowerDistributionCfg& cfg)
{
    if (m_pManager == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, "updatePowerDistribution: PowerCtrlManager is not created");
        return;
    }
    m_pManager->updatePowerDistribution(cfg);
}

// The limits stay with the power control; only the alarms go.
void PowerDistributionFacade::deletePowerDistribution() { m_pFaults->ceaseFaults(kSubject); }

void PowerDistributionFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    report(faultId, funcId, true);
}

void PowerDistributionFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    report(faultId, funcId, false);
}

// Only the power distribution's own faults go out from here; a fault of ours
// without a handler is lost, the register keeps it.
void PowerDistributionFacade::report(const FaultId_t& faultId, const FuncId_t& funcId, bool raise)
{
    if (funcId.FuncType != kSubject.FuncType) return;
    const Route* route = findFaultRoute(kRoutes, faultId.id);
    if (route == nullptr) return;
    if (m_pPowerDistributionAdapter == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, raise ? "raiseFault: m_pPowerDistributionAdapter is not set"
                                                   : "ceaseFault: m_pPowerDistributionAdapter is not set");
        return;
    }
    (m_pPowerDistributionAdapter->*(raise ? route->raise : route->cease))();
}
