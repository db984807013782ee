#include "climate/CabinetFanGroups.h"

#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"

using namespace ssc_trace;

bool CabinetFanGroups::holds(std::uint32_t funcInst) const
{
    for (const FanGroupRecord& record : m_fanGroup)
        if (record.configured && record.funcInst == funcInst) return true;
    return false;
}

bool CabinetFanGroups::anyConfigured() const
{
    for (const FanGroupRecord& record : m_fanGroup)
        if (record.configured) return true;
    return false;
}

// Until the hardware has told its status there is nothing to compare.
void CabinetFanGroups::checkConsistency()
{
    SSC_TRACE(climateGroup(), kFlow, "checkConsistency: %d", m_statusReceived ? 1 : 0);
    if (!m_statusReceived) return;
    bool inconsistent = false;
    for (std::uint32_t number = 1; number <= kGroups; ++number) {
        const FanGroupRecord& record = group(number);
        if (!record.configured || record.supported) continue;
        SSC_TRACE(climateGroup(), kFlow, "Fan Group %d configured but not supported", static_cast<int>(number));
        SSC_TRACE(climateGroup(), kFlow, "checkConsistency: fangroup %d not consistent", static_cast<int>(number));
        inconsistent = true;
    }
    const FuncId_t cabinet{func_type::kCabinet, m_cabinetId};
    if (inconsistent) {
        SSC_TRACE(climateGroup(), kInfo, "Mismatch alarm raised: FuncType: %d, FuncInst: %d",
                  static_cast<int>(cabinet.FuncType), static_cast<int>(cabinet.FuncInst));
        m_pFaultsRegister->raiseFault(fault_id::kHwEntitiesMismatch, cabinet);
    } else {
        SSC_TRACE(climateGroup(), kFlow, "Mismatch alarm ceased: FuncType: %d, FuncInst: %d",
                  static_cast<int>(cabinet.FuncType), static_cast<int>(cabinet.FuncInst));
        m_pFaultsRegister->ceaseFault(fault_id::kHwEntitiesMismatch, cabinet);
    }
}

// An external group's failure waits five seconds before it is raised.
void CabinetFanGroups::checkHwError()
{
    for (const FanGroupRecord& record : m_fanGroup) {
        if (!record.supported || !record.configured) continue;
        const FuncId_t fanGroup{record.funcType, record.funcInst};
        if (record.failure) {
            SSC_TRACE(climateGroup(), kInfo, "General hw error alarm raised: FuncType: %d, FuncInst: %d",
                      static_cast<int>(fanGroup.FuncType), static_cast<int>(fanGroup.FuncInst));
            if (record.external)
                m_pFaultsRegister->raiseFault(fault_id::kHwuFaulty, fanGroup, kExternalFailureDelayMs);
            else
                m_pFaultsRegister->raiseFault(fault_id::kHwuFaulty, fanGroup);
        } else {
            SSC_TRACE(climateGroup(), kFlow, "General hw error alarm ceased: FuncType: %d, FuncInst: %d",
                      static_cast<int>(fanGroup.FuncType), static_cast<int>(fanGroup.FuncInst));
            m_pFaultsRegister->ceaseFault(fault_id::kHwuFaulty, fanGroup);
        }
    }
}

void CabinetFanGroups::checkDisconnected()
{
    for (const FanGroupRecord& record : m_fanGroup) {
        if (!record.supported || !record.configured) continue;
        const FuncId_t fanGroup{record.funcType, record.funcInst};
        if (record.connected) {
            m_pFaultsRegister->ceaseFault(fault_id::kHwuMissing, fanGroup);
        } else {
            SSC_TRACE(climateGroup(), kInfo, "Disconnect alarm raised: FuncType: %d, FuncInst: %d",
                      static_cast<int>(fanGroup.FuncType), static_cast<int>(fanGroup.FuncInst));
            m_pFaultsRegister->raiseFault(fault_id::kHwuMissing, fanGroup);
        }
    }
}
