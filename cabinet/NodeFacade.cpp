#include "cabinet/NodeFacade.h"

#include "climate/ClimateCtrlManager.h"
#include "power/PowerCtrlManager.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "hwu/HWU_Broker.h"

using namespace ssc_trace;

namespace {
constexpr FuncId_t kEquipSupFunc{func_type::kEquipSupFunc, 0};
} // namespace

NodeFacade::NodeFacade(SscHandleIf& ssc, FaultsRegisterIf& faults) : m_pSsc(&ssc), m_pFaults(&faults)
{
    m_pFaults->addReporter(this);
}

NodeFacade::~NodeFacade() { m_pFaults->removeReporter(this); }

void NodeFacade::setNodeRecord(const NodeRecord& record)
{
    if (record.supportSystemControl != m_record.supportSystemControl) {
        m_pFaults->ceaseFault(fault_id::kEquipSupFuncFault, kEquipSupFunc);
        // Losing the role ends every unit and the bus monitor; taking it
        // lets the next cabinet event start them.
        if (HWU_Broker* broker = m_pSsc->getHwuBroker()) broker->setConfigured(record.supportSystemControl != 0);
        if (PowerCtrlManager* power = m_pSsc->getPowerCtrlManager()) power->setEnabled(record.supportSystemControl != 0);
        if (ClimateCtrlManager* climate = ClimateCtrlManager::getInstance())
            climate->setSupportSystemControl(record.supportSystemControl != 0);
    }
    m_record = record;
}

void NodeFacade::ceaseCommunicationFault() { m_pFaults->ceaseFault(fault_id::kEquipSupFuncFault, kEquipSupFunc); }

void NodeFacade::raiseCommunicationFault() { m_pFaults->raiseFault(fault_id::kEquipSupFuncFault, kEquipSupFunc); }

void NodeFacade::setDualBoxSupported(bool supported)
{
    if (HWU_Broker* broker = m_pSsc->getHwuBroker()) broker->setDualBoxSupported(supported);
}

void NodeFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (funcId.FuncType != func_type::kEquipSupFunc || faultId.id != fault_id::kEquipSupFuncFault) return;
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(priSecGroup(), kError, "raiseFault: m_pEventHandler is not set");
        return;
    }
    m_pEventHandler->raiseEquipSupFuncFault();
}

void NodeFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (funcId.FuncType != func_type::kEquipSupFunc || faultId.id != fault_id::kEquipSupFuncFault) return;
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(priSecGroup(), kError, "ceaseFault: m_pEventHandler is not set");
        return;
    }
    m_pEventHandler->ceaseEquipSupFuncFault();
}
