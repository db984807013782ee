#include "power/PowerSupplyFacade.h"

#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "power/FaultRoute.h"
#include "power/PowerCtrlManagerIf.h"
#include "power/PowerSupplyEventIf.h"

#include <cmath>

using namespace ssc_trace;

namespace {

constexpr FuncId_t kSubject{func_type::kPowerSupply, 0};

using Route = FaultRoute<PowerSupplyEventIf>;
using Event = PowerSupplyEventIf;

constexpr std::array<Route, 3> kRoutes{{
    {fault_id::kNoPsuUsable, &Event::raiseNoPsuUsable, &Event::ceaseNoPsuUsable},
    {fault_id::kSystemOvervoltage, &Event::raiseSystemOvervoltage, &Event::ceaseSystemOvervoltage},
    {fault_id::kSystemUndervoltage, &Event::raiseSystemUndervoltage, &Event::ceaseSystemUndervoltage},
}};

} // namespace

PowerSupplyFacade::PowerSupplyFacade(FaultsRegisterIf& faults, PowerCtrlManagerIf* manager)
    : m_pFaults(&faults), m_pManager(manager)
{
    m_pFaults->addReporter(this);
}

PowerSupplyFacade::~PowerSupplyFacade() { m_pFaults->removeReporter(this); }

void PowerSupplyFacade::updatePowerSupply(const std::int16_t values[])
{
    if (values == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, "updatePowerSupply: no values");
        return;
    }
    if (m_pManager == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, "updatePowerSupply: PowerCtrlManager is not created");
        return;
    }
    m_pManager->updatePowerSupply(values);
}

// The limits stay with the power control; only the alarms go.
void PowerSupplyFacade::deletePowerSupply() { m_pFaults->ceaseFaults(kSubject); }

// Subtracting half a tenth before truncating towards zero brings the
// negative voltage to its nearest tenth: -54.54 V is -545, -54.56 V -546.
std::int32_t PowerSupplyFacade::getSystemVoltage() const
{
    if (m_pManager == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, "getSystemVoltage: PowerCtrlManager is not created");
        return kNoSystemVoltage;
    }
    if (!m_pManager->isSystemVoltageValid()) return kNoSystemVoltage;
    const double tenths = (static_cast<double>(m_pManager->getSystemVoltage()) - 0.05) * 10.0;
    // Beyond the range of the answer the reading can't be a voltage.
    if (!std::isfinite(tenths) || tenths <= static_cast<double>(INT32_MIN) || tenths > static_cast<double>(INT32_MAX)) {
        SSC_TRACE(powerGroup(), kUnexpected, "getSystemVoltage: reading out of range");
        return kNoSystemVoltage;
    }
    return static_cast<std::int32_t>(tenths);
}

void PowerSupplyFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) { report(faultId, funcId, true); }

void PowerSupplyFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) { report(faultId, funcId, false); }

// Only the power supply's own faults go out from here; a fault of ours
// without a handler is lost, the register keeps it.
void PowerSupplyFacade::report(const FaultId_t& faultId, const FuncId_t& funcId, bool raise)
{
    if (funcId.FuncType != kSubject.FuncType) return;
    const Route* route = findFaultRoute(kRoutes, faultId.id);
    if (route == nullptr) return;
    if (m_pPowerSupplyAdapter == nullptr) {
        SSC_TRACE(powerGroup(), kUnexpected, raise ? "raiseFault: m_pPowerSupplyAdapter is not set"
                                                   : "ceaseFault: m_pPowerSupplyAdapter is not set");
        return;
    }
    (m_pPowerSupplyAdapter->*(raise ? route->raise : route->cease))();
}
