#include "climate/FanGroupFacade.h"

#include "climate/ClimateCtrlManager.h"
#include "climate/FanGroupEventIf.h"
#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"

using namespace ssc_trace;

FanGroupFacade::FanGroupFacade(FaultsRegisterIf& faults) : m_pFaults(&faults) { m_pFaults->addReporter(this); }

FanGroupFacade::~FanGroupFacade() { m_pFaults->removeReporter(this); }

void FanGroupFacade::configureFanGroup(std::uint32_t funcInst, std::uint32_t fanGroupNumber, std::uint32_t cabinetId)
{
    ClimateCtrlManager* manager = ClimateCtrlManager::getInstance();
    if (manager == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "configureFanGroup: ClimateCtrlManager is not created");
        return;
    }
    manager->configureFanGroup(funcInst, fanGroupNumber, cabinetId);
}

void FanGroupFacade::deleteFanGroup(std::uint32_t funcInst)
{
    ClimateCtrlManager* manager = ClimateCtrlManager::getInstance();
    if (manager == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "deleteFanGroup: ClimateCtrlManager is not created");
        return;
    }
    manager->deleteFanGroup(funcInst);
}

// Only the fan group objects' own two faults go out from here.
void FanGroupFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (funcId.FuncType != func_type::kFan) return;
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "raiseFault: m_pEventHandler is not set");
        return;
    }
    if (faultId.id == fault_id::kHwuFaulty) m_pEventHandler->hwFaultRaised(funcId.FuncInst);
    else if (faultId.id == fault_id::kHwuMissing) m_pEventHandler->disconnectFaultRaised(funcId.FuncInst);
}

void FanGroupFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (funcId.FuncType != func_type::kFan) return;
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "ceaseFault: m_pEventHandler is not set");
        return;
    }
    if (faultId.id == fault_id::kHwuFaulty) m_pEventHandler->hwFaultCeased(funcId.FuncInst);
    else if (faultId.id == fault_id::kHwuMissing) m_pEventHandler->disconnectFaultCeased(funcId.FuncInst);
}
