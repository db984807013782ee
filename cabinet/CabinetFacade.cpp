#include "cabinet/CabinetFacade.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "hwu/HWU_Broker.h"

#include <algorithm>
#include <array>

using namespace ssc_trace;

namespace {

// The cabinet's faults that travel without a text, in the interface's order.
struct FaultRoute {
    std::int32_t faultId;
    void (CabinetEventIf::*raise)(const FuncId_t&);
    void (CabinetEventIf::*cease)(const FuncId_t&);
};

constexpr std::array<FaultRoute, 5> kFaultRoutes{{
    {fault_id::kSmokeDetectorDisconnected, &CabinetEventIf::raiseSmokeDetectorDisconnected,
     &CabinetEventIf::ceaseSmokeDetectorDisconnected},
    {fault_id::kDoorAlarm, &CabinetEventIf::raiseDoorAlarm, &CabinetEventIf::ceaseDoorAlarm},
    {fault_id::kCabinetPidMismatch, &CabinetEventIf::raiseCabinetPidMismatch,
     &CabinetEventIf::ceaseCabinetPidMismatch},
    {fault_id::kSmokeDetectorAlarm, &CabinetEventIf::raiseSmokeDetectorAlarm,
     &CabinetEventIf::ceaseSmokeDetectorAlarm},
    {fault_id::kSmokeDetectorHwFailure, &CabinetEventIf::raiseSmokeDetectorHwFailure,
     &CabinetEventIf::ceaseSmokeDetectorHwFailure},
}};

const FaultRoute* routeOf(std::int32_t faultId)
{
    const auto* route = std::find_if(kFaultRoutes.begin(), kFaultRoutes.end(),
                                     [faultId](const FaultRoute& row) { return row.faultId == faultId; });
    return route != kFaultRoutes.end() ? route : nullptr;
}

} // namespace

CabinetFacade::CabinetFacade(SscHandleIf& ssc, FaultsRegisterIf& faults)
    : m_pFaults(&faults), m_pCabinetController(std::make_unique<CabinetController>(faults, ssc.getHwuBroker()))
{
    m_pFaults->addReporter(this);
}

CabinetFacade::~CabinetFacade() { m_pFaults->removeReporter(this); }

// ---- configuration ----

void CabinetFacade::addCabinet(std::uint32_t funcInst)
{
    if (findConfig(funcInst) != nullptr) {
        SSC_TRACE(equipmentGroup(), kFlow, "Cabinet configuration already added, a_CabinetFuncInst: %d", funcInst);
        return;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "Adding cabinet configuration, a_CabinetFuncInst: %d", funcInst);
    m_configs.add(CabinetConfig{0, funcInst});
}

void CabinetFacade::deleteCabinet(std::uint32_t funcInst)
{
    // A cabinet that is gone has no identity to disagree about.
    m_pFaults->removeFault(FaultId_t(fault_id::kCabinetPidMismatch), FuncId_t{0, funcInst});
    if (m_pCabinetController->deleteCabinet(funcInst))
        SSC_TRACE(equipmentGroup(), kFlow, "Cabinet instance deleted for FuncInst %d", funcInst);
    m_configs.removeFirst([funcInst](const CabinetConfig& row) { return row.funcInst == funcInst; });
    SSC_TRACE(equipmentGroup(), kFlow, "Deleting cabinet configuration, a_CabinetFuncInst: %d", funcInst);
}

void CabinetFacade::setProductData(const ProductData& pid, std::uint32_t funcInst)
{
    SSC_TRACE(equipmentGroup(), kFlow, "Set cabinet Pid from SET_CONFIG_REQ");
    m_pCabinetController->findOrAddCabinet(funcInst).setPid(pid);
    m_productDataSet = true;
    if (m_nodeConfigured) fireConfigured();
}

void CabinetFacade::updateProductData(const ProductData& pid, std::uint32_t funcInst)
{
    SSC_TRACE(equipmentGroup(), kFlow, "Set cabinet Pid from UPDATE_PRODUCT_DATA_REQ");
    Cabinet* cabinet = m_pCabinetController->findCabinet(funcInst);
    if (cabinet == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "No such cabinet Pid in UPDATE_PRODUCT_DATA_REQ. CabinetId %d",
                  funcInst);
        return;
    }
    cabinet->updatePid(pid);
}

void CabinetFacade::setProductNameME(const std::string& name) { m_pCabinetController->setProductNameME(name); }

void CabinetFacade::setNodeConfigured()
{
    m_nodeConfigured = true;
    if (m_productDataSet) fireConfigured();
}

void CabinetFacade::fireConfigured()
{
    m_cabinetConfigured = true;
    EC_LinkedListIterator<Subscription> it(m_subscriptions);
    while (Subscription* subscription = it.next()) subscription->pObserver->update(subscription->id);
}

void CabinetFacade::setEventHandler(CabinetEventIf* handler)
{
    m_pEventHandler = handler;
    m_pCabinetController->setEventHandler(handler);
}

// ---- what the cabinet holds ----

std::uint8_t CabinetFacade::getDoorSwitch(std::uint32_t funcInst)
{
    const CabinetConfig* config = findConfig(funcInst);
    if (config == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "getDoorSwitch, no status available, cabinetInst: %d", funcInst);
        return 0;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "getDoorSwitch, cabinetInst: %d, doorSwitch: %d", funcInst,
              config->doorSwitch);
    return config->doorSwitch;
}

void CabinetFacade::setDoorSwitch(std::uint32_t funcInst, std::uint8_t value)
{
    CabinetConfig* config = findConfig(funcInst);
    if (config == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "setDoorSwitch, unable to update status, cabinetInst: %d", funcInst);
        return;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "setDoorSwitch, cabinetInst: %d, doorSwitch: %d", funcInst, value);
    config->doorSwitch = value;
}

void CabinetFacade::setSmokeDetectorConfigured(std::uint32_t funcInst, bool configured)
{
    if (Cabinet* cabinet = findCabinet(funcInst)) cabinet->setSmokeDetectorConfigured(configured);
}

bool CabinetFacade::getSmokeDetectorConfigured(std::uint32_t funcInst)
{
    const Cabinet* cabinet = findCabinet(funcInst);
    return cabinet != nullptr && cabinet->getSmokeDetectorConfigured();
}

bool CabinetFacade::getSmokeDetectorStatus(std::uint32_t funcInst)
{
    const Cabinet* cabinet = findCabinet(funcInst);
    if (cabinet == nullptr) return false;
    const ScuIf* scu = cabinet->getPrimaryScu();
    if (scu == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "No primary Scu found, unable to get smokeDetector status from SCU.");
        return false;
    }
    return scu->getStatus().flag(ScuStatus::kSmokeDetectorConnected);
}

ProductData CabinetFacade::getProductData(std::uint32_t funcInst)
{
    const Cabinet* cabinet = findCabinet(funcInst);
    return cabinet != nullptr ? cabinet->getPid() : ProductData();
}

std::string CabinetFacade::getCabinetIdentifier(std::uint32_t funcInst)
{
    const Cabinet* cabinet = findCabinet(funcInst);
    return cabinet != nullptr ? cabinet->getCabinetIdentifier() : std::string();
}

void CabinetFacade::setCabinetIdentifier(std::uint32_t funcInst, const std::string& identifier)
{
    if (Cabinet* cabinet = findCabinet(funcInst)) cabinet->setCabinetIdentifier(identifier);
}

// ---- what the SCU tells ----

void CabinetFacade::notifySmokeDetectorStatusUpdated(std::uint32_t cabinetFuncInst)
{
    SSC_TRACE(equipmentGroup(), kFlow, "notifySmokeDetectorStatusUpdated, a_CabinetFuncInst: %d", cabinetFuncInst);
    if (CabinetEventIf* handler = eventHandler()) handler->smokeDetectorStatusUpdated(cabinetFuncInst);
}

void CabinetFacade::notifyCabinetIdentifierUpdated(std::uint32_t cabinetFuncInst, const std::string& identifier)
{
    SSC_TRACE(equipmentGroup(), kFlow, "notifyCabinetIdentifierUpdated, a_CabinetFuncInst: %d", cabinetFuncInst);
    Cabinet* cabinet = findCabinet(cabinetFuncInst);
    if (cabinet == nullptr) return;
    cabinet->setCabinetIdentifier(identifier);
    if (CabinetEventIf* handler = eventHandler()) handler->cabinetIdentifierUpdated(cabinetFuncInst);
}

// ---- subscriptions ----

void CabinetFacade::subscribe(std::uint32_t id, Observer* observer)
{
    if (observer == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "CabinetFacade::subscribe: no observer, id %d", id);
        return;
    }
    const Subscription subscription{id, observer};
    if (m_subscriptions.contains(subscription)) return;
    // At the head: a walk that is telling the others does not reach it, so
    // that it is told once, here.
    m_subscriptions.add(subscription);
    if (m_cabinetConfigured) observer->update(id);
}

void CabinetFacade::unsubscribe(std::uint32_t id, Observer* observer)
{
    if (!m_subscriptions.remove(Subscription{id, observer}))
        SSC_TRACE(equipmentGroup(), kUnexpected, "CabinetFacade::unsubscribe: no such subscription, id %d", id);
}

// ---- faults ----

void CabinetFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    forwardFault(faultId, funcId, true);
}

void CabinetFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    forwardFault(faultId, funcId, false);
}

void CabinetFacade::forwardFault(const FaultId_t& faultId, const FuncId_t& funcId, bool raise)
{
    const FaultRoute* route = routeOf(faultId.id);
    const bool mismatch = faultId.id == fault_id::kHwEntitiesMismatch;
    if (route == nullptr && !mismatch) return;
    CabinetEventIf* handler = eventHandler();
    if (handler == nullptr) return;
    if (route != nullptr)
        (handler->*(raise ? route->raise : route->cease))(funcId);
    else if (raise)
        handler->raiseNumberOfHwEntitiesMismatch(funcId, faultId.text);
    else
        handler->ceaseNumberOfHwEntitiesMismatch(funcId, faultId.text);
}

// ---- helpers ----

CabinetFacade::CabinetConfig* CabinetFacade::findConfig(std::uint32_t funcInst)
{
    return m_configs.find([funcInst](const CabinetConfig& row) { return row.funcInst == funcInst; });
}

Cabinet* CabinetFacade::findCabinet(std::uint32_t funcInst)
{
    Cabinet* cabinet = m_pCabinetController->findCabinet(funcInst);
    if (cabinet == nullptr) SSC_TRACE(equipmentGroup(), kUnexpected, "pCabinet is not set");
    return cabinet;
}

CabinetEventIf* CabinetFacade::eventHandler()
{
    if (m_pEventHandler == nullptr) SSC_TRACE(equipmentGroup(), kError, "m_pEventHandler is not set");
    return m_pEventHandler;
}
