#include "hwu/EquipmentCtrlManager.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/SscTrace.h"
#include "hwu/HWU_Broker.h"
#include "hwu/HwuEventIf.h"

using namespace ssc_trace;

EquipmentCtrlManager::EquipmentCtrlManager(SscHandleIf& ssc, FaultsRegisterIf& faults)
    : m_pSsc(&ssc), m_pFaults(&faults)
{
}

void EquipmentCtrlManager::statusChanged(const FuncId_t& funcId, const HwuStatusRecord& record)
{
    if (m_pHwuEventHandler != nullptr) m_pHwuEventHandler->statusChanged(funcId, record);
}

void EquipmentCtrlManager::requestRestart(const FuncId_t& funcId)
{
    m_requestedRestarts.add(funcId);
    HWU_Broker* broker = m_pSsc->getHwuBroker();
    if (HwuStatusIf* unit = broker != nullptr ? broker->getHwu(funcId) : nullptr) unit->reset();
}

void EquipmentCtrlManager::restartDone(const FuncId_t& funcId)
{
    bool requested = false;
    EC_LinkedListIterator<FuncId_t> it(m_requestedRestarts);
    while (FuncId_t* row = it.next()) {
        if (!(*row == funcId)) continue;
        requested = true;
        // What is still wrong comes back with the next status, which counts
        // as a first one.
        m_pFaults->ceaseFaults(funcId);
        it.removeCurrent();
        if (m_pHwuEventHandler != nullptr) m_pHwuEventHandler->restartFinished(funcId);
    }
    if (!requested) SSC_TRACE(equipmentGroup(), kFlow, "Restart action was not requested.");
}
