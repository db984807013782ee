#include "hwu/HwuFacade.h"

#include "frame/SscTrace.h"
#include "hwu/EquipmentManagerIf.h"
#include "hwu/HWU_Broker.h"

#include <algorithm>

using namespace ssc_trace;

HwuFacade::HwuFacade(SscHandleIf& ssc, FaultsRegisterIf& faults, std::uint32_t funcType)
    : m_pSsc(&ssc), m_pFaults(&faults), m_funcType(funcType)
{
    m_pFaults->addReporter(this);
}

HwuFacade::~HwuFacade() { m_pFaults->removeReporter(this); }

HWU_Broker* HwuFacade::broker() const { return m_pSsc->getHwuBroker(); }

HwuStatusIf* HwuFacade::unitOf(std::uint32_t funcInst) const
{
    HWU_Broker* hwuBroker = broker();
    return hwuBroker != nullptr ? hwuBroker->getHwu(funcIdOf(funcInst)) : nullptr;
}

bool HwuFacade::setConfiguration(std::uint32_t funcInst, std::string_view hubPosition, std::uint32_t cascadingOrder,
                                 std::uint32_t cabinetFuncInst)
{
    HWU_Broker* hwuBroker = broker();
    if (hwuBroker == nullptr || !hwuBroker->configureHwu(funcIdOf(funcInst), hubPosition, cascadingOrder, cabinetFuncInst)) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "setConfiguration: Failed to configure HWU with FuncType: %d, FuncInst: %d", m_funcType, funcInst);
        return false;
    }
    return true;
}

bool HwuFacade::deleteConfiguration(std::uint32_t funcInst)
{
    HWU_Broker* hwuBroker = broker();
    if (hwuBroker == nullptr || !hwuBroker->deleteHwu(funcIdOf(funcInst))) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "deleteConfiguration: Failed to delete HWU with FuncType: %d, FuncInst: %d", m_funcType, funcInst);
        return false;
    }
    return true;
}

bool HwuFacade::getStatusData(std::uint32_t funcInst, HwuStatusRecord* status)
{
    HwuStatusIf* unit = unitOf(funcInst);
    if (unit == nullptr || status == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "getStatusData: Failed to get status data for FuncType: %d, FuncInst: %d%s",
                  m_funcType, funcInst, statusTraceEnd());
        return false;
    }
    status->commOk = unit->isCommunicating();
    status->available = unit->isAvailable();
    status->operationalLed = unit->getOperationalLedState();
    status->faultLed = unit->getFaultLedState();
    return true;
}

bool HwuFacade::getUnitProductData(std::uint32_t funcInst, HwuProductRecord* record)
{
    HwuStatusIf* unit = unitOf(funcInst);
    if (unit == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "getUnitProductData: Failed to get hwu info for FuncType: %d, FuncInst: %d",
                  m_funcType, funcInst);
        return false;
    }
    // A live read from the bus.
    HwuProductRecord read{};
    if (!unit->getProductData(&read)) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "getUnitProductData: Failed to get product data for FuncType: %d, FuncInst: %d", m_funcType, funcInst);
        return false;
    }
    if (record != nullptr) *record = read;
    return true;
}

HwuStatusIf* HwuFacade::measurableUnit(std::uint32_t funcInst, const char* facade, const char* kind,
                                       const char* kindName) const
{
    HwuStatusIf* unit = unitOf(funcInst);
    if (unit == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "%s::getUnitMeasurementData: Unable to get unit measurement data since no %s was found, FuncType: "
                  "%d, funcInst: %d",
                  facade, kind, m_funcType, funcInst);
        return nullptr;
    }
    if (!unit->isAvailable()) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "%s::getUnitMeasurementData: %s with FuncType: %d, FuncInst: %d is not operational.", facade,
                  kindName, m_funcType, funcInst);
        return nullptr;
    }
    return unit;
}

bool HwuFacade::restartUnit(std::uint32_t funcInst)
{
    HwuStatusIf* unit = unitOf(funcInst);
    if (unit == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "Action RESET rejected. No configured HwU found with FuncType: %d, FuncInst: %d", m_funcType, funcInst);
        return false;
    }
    if (!unit->isCommunicating()) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Action RESET rejected for FuncType: %d, FuncInst: %d. It is not connected.",
                  m_funcType, funcInst);
        return false;
    }
    EquipmentManagerIf* manager = m_pSsc->getEquipmentManager();
    if (manager != nullptr) manager->requestRestart(funcIdOf(funcInst));
    return true;
}

void HwuFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) { forward(faultId, funcId, true); }

void HwuFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) { forward(faultId, funcId, false); }

bool HwuFacade::forward(const FaultId_t& faultId, const FuncId_t& funcId, bool raise)
{
    if (m_pHwuEventHandler == nullptr) {
        SSC_TRACE(equipmentGroup(), kError,
                  raise ? "raiseFault: m_pHwuEventHandler is not set" : "ceaseFault: m_pHwuEventHandler is not set");
        return false;
    }
    if (funcId.FuncType != m_funcType) return false;
    const auto* found = std::find(kHwuFaultIds.begin(), kHwuFaultIds.end(), faultId.id);
    if (found == kHwuFaultIds.end()) return false;
    const auto fault = static_cast<HwuFault>(found - kHwuFaultIds.begin());
    if (raise)
        m_pHwuEventHandler->raiseFault(fault, funcId);
    else
        m_pHwuEventHandler->ceaseFault(fault, funcId);
    return true;
}
