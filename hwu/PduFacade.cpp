#include "hwu/PduFacade.h"

#include "frame/SscTrace.h"
#include "hwu/HWU_Broker.h"
#include "hwu/PduIf.h"

using namespace ssc_trace;

bool PduFacade::getStatusData(std::uint32_t funcInst, HwuStatusRecord* status)
{
    if (!HwuFacade::getStatusData(funcInst, status)) return false;
    if (auto* pdu = dynamic_cast<PduIf*>(unitOf(funcInst)))
        status->powerDistrFaultIndicator = pdu->getPowerDistrFaultIndicator();
    return true;
}

bool PduFacade::getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record)
{
    const auto* pdu = dynamic_cast<PduIf*>(measurableUnit(funcInst, "PduFacade", "PDU", "Pdu"));
    if (pdu == nullptr) return false;
    if (record != nullptr) *record = {1, {pdu->getSystemVoltage() * 100.0F, 0, 0, 0}};
    return true;
}

bool PduFacade::configureEfuse(std::uint32_t parentFuncInst, std::uint32_t efuseFuncInst)
{
    if (!m_efuses.addEfuse(FuncId_t{kEfuseFuncType, efuseFuncInst}, funcIdOf(parentFuncInst))) return false;
    SSC_TRACE(equipmentGroup(), kFlow, "Configure Efuse with FuncInst: %d, Parent FuncInst: %d", efuseFuncInst,
              parentFuncInst);
    return true;
}

bool PduFacade::deleteEfuse(std::uint32_t efuseFuncInst)
{
    return m_efuses.removeEfuse(FuncId_t{kEfuseFuncType, efuseFuncInst});
}

bool PduFacade::getEfuseStatus(std::uint32_t efuseFuncInst, std::uint32_t* state)
{
    if (state != nullptr) *state = 1;
    FuncId_t parent;
    std::uint32_t number = 0;
    PduIf* pdu = nullptr;
    if (m_efuses.findEfuse(FuncId_t{kEfuseFuncType, efuseFuncInst}, &parent, &number))
        pdu = dynamic_cast<PduIf*>(unitOf(parent.FuncInst));
    if (pdu == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Could not fetch data for Efuse, FuncInst=%d ", efuseFuncInst);
        return false;
    }
    if (state != nullptr) *state = pdu->getEfuseIndicator(number);
    return true;
}

void PduFacade::efuseStatusChanged(const FuncId_t& pduId, std::uint32_t number, std::uint32_t state)
{
    FuncId_t efuseId;
    if (!m_efuses.findEfuseId(pduId, number, &efuseId) || m_pHwuEventHandler == nullptr) return;
    m_pHwuEventHandler->efuseStatusChanged(pduId.FuncInst, efuseId.FuncInst, state);
}
