#include "hwu/HWU_Broker.h"

#include "cabinet/CabinetObserverIf.h"
#include "frame/EC_LinkedListIterator.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/SscHandleIf.h"
#include "frame/SscTrace.h"
#include "hwu/HdlcAddressBroker.h"

using namespace ssc_trace;
using namespace func_type;

namespace {
constexpr std::uint32_t kMaxCascadingOrder = 7;
constexpr std::uint32_t kConfigFaultDelayMs = 5000;
constexpr std::uint32_t kScuAddress = 32;
constexpr std::uint32_t kCascadeAddress = 96;
} // namespace

HWU_Broker::HWU_Broker(FaultsRegisterIf& faults, HwuFactoryIf& factory)
    : m_pBusMonitor(std::make_unique<BusMonitor>(faults)),
      m_pFaults(&faults),
      m_pFactory(&factory),
      m_bfuStatus([this] {
          std::vector<BfuIf*> bfus;
          for (HwuStatusIf* unit : getUnits(kBfu))
              if (auto* bfu = dynamic_cast<BfuIf*>(unit)) bfus.push_back(bfu);
          return bfus;
      })
{
}

std::vector<HwuStatusIf*> HWU_Broker::getUnits(std::uint32_t funcType)
{
    std::vector<HwuStatusIf*> units;
    const int index = listIndexOf(funcType);
    if (index < 0) return units;
    EC_LinkedListIterator<std::unique_ptr<HwuStatusIf>> it(m_units[static_cast<std::size_t>(index)]);
    while (std::unique_ptr<HwuStatusIf>* unit = it.next()) units.push_back(unit->get());
    return units;
}

ScuIf* HWU_Broker::getPrimaryScu(std::uint32_t cabinetFuncInst)
{
    ScuIf* last = nullptr;
    for (HwuStatusIf* unit : getUnits(kScu)) {
        auto* scu = dynamic_cast<ScuIf*>(unit);
        if (scu == nullptr) continue;
        last = scu;
        if (scu->isOnPort1() && (m_dualBoxSupported || scu->getCabinetFuncInst() == cabinetFuncInst)) return scu;
    }
    return last;
}

HWU_Broker::~HWU_Broker()
{
    if (m_pCabinetObserver != nullptr) m_pCabinetObserver->unsubscribe(CabinetObserverIf::kCabinetConfigured, this);
    // Units go before the monitor, which they may still reach through faults.
    for (UnitList& list : m_units) list.clear();
}

int HWU_Broker::listIndexOf(std::uint32_t funcType)
{
    switch (funcType) {
    case kBfu: return kBfuList;
    case kPdu: return kPduList;
    case kPsu: return kPsuList;
    case kSau: return kSauList;
    case kScu: return kScuList;
    case kClu: return kCluList;
    default: return -1;
    }
}

void HWU_Broker::start(SscHandleIf& ssc)
{
    m_pSsc = &ssc;
    m_pEquipmentManager = ssc.getEquipmentManager();
    m_pCabinetObserver = ssc.getCabinetObserver();
    if (m_pCabinetObserver != nullptr) m_pCabinetObserver->subscribe(CabinetObserverIf::kCabinetConfigured, this);
}

void HWU_Broker::detachCabinet()
{
    if (m_pCabinetObserver != nullptr) m_pCabinetObserver->unsubscribe(CabinetObserverIf::kCabinetConfigured, this);
    m_pCabinetObserver = nullptr;
}

// ---- configuration ----

bool HWU_Broker::configureHwu(const FuncId_t& funcId, std::string_view hubPosition, std::uint32_t cascadingOrder,
                              std::uint32_t cabinetFuncInst)
{
    SSC_TRACE(equipmentGroup(), kFlow, "HWU_Broker::configureHwu: CascadingOrder: %d, CabinetFuncInst: %d",
              cascadingOrder, cabinetFuncInst);
    // Checked first: a kind that cannot be made must leave no fault behind.
    const int index = listIndexOf(funcId.FuncType);
    if (index < 0) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "HWU_Broker::configureHwu: Trying to configure an unknown HWU-type: %d",
                  funcId.FuncType);
        return false;
    }
    // A second client's configuration of a unit that exists finds it there:
    // a second object would take the same address and never poll.
    if (getHwu(funcId) != nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "HWU_Broker::configureHwu: %s-%d is configured already; it stays as it is",
                  text(funcId.FuncType), funcId.FuncInst);
        return true;
    }
    HdlcAddress address;
    std::string position;
    if (resolve(funcId, hubPosition, cascadingOrder, address, position)) {
        SSC_TRACE(equipmentGroup(), kFlow,
                  "HWU_Broker::configureHwu: Found HDLC address for Type: %s, HubPosition: \"%s\", HDLC address: "
                  "0x%2X, Port: %d",
                  text(funcId.FuncType), position.c_str(), address.address, address.port);
        if (isAddressFree(address)) {
            m_usedAddresses.add(address);
            m_pBusMonitor->stopPollOf(address.address, funcId, address.port);
        } else {
            position = Hdlc::getAlreadyInUse();
            SSC_TRACE(equipmentGroup(), kUnexpected,
                      "HWU_Broker::configureHwu: HDLC address: 0x%2X, port %d is already in use", address.address,
                      address.port);
            raiseConfigFault(fault_id::kConflictingHubPosition, funcId);
        }
    } else {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "HWU_Broker::configureHwu: Could not find HDLC address for Type: %s, Hubposition \"%.*s\"",
                  text(funcId.FuncType), static_cast<int>(hubPosition.size()), hubPosition.data());
        raiseConfigFault(fault_id::kFaultyHubPosition, funcId);
        address = HdlcAddress();
    }
    const HwuUnitArgs args{funcId,           position, address, cabinetFuncInst, this, m_pEquipmentManager,
                           m_pFaults,        m_pSsc};
    std::unique_ptr<HwuStatusIf> unit = m_pFactory->createUnit(args);
    if (!unit) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "HWU_Broker::configureHwu: Trying to configure an unknown HWU-type: %d",
                  funcId.FuncType);
        return false;
    }
    m_units[static_cast<std::size_t>(index)].add(std::move(unit));
    return true;
}

bool HWU_Broker::resolve(const FuncId_t& funcId, std::string_view hubPosition, std::uint32_t cascadingOrder,
                         HdlcAddress& address, std::string& position)
{
    if (cascadingOrder < 1 || cascadingOrder > kMaxCascadingOrder) {
        const HubPositionText parts = Hdlc::splitHubPosition(hubPosition);
        address.port = parts.port;
        position = parts.position;
        if (Hdlc::getHdlcAddress(parts.position, funcId.FuncType, &address)) return true;
        // The unit keeps the text as it came, so that the operator sees it.
        position = hubPosition;
        return false;
    }
    if (funcId.FuncType != kScu) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "HWU_Broker::configureHwu: Invalid funcType \"%d\" supplied when cascading order is set to \"%d\" .",
                  funcId.FuncType, cascadingOrder);
        position = hubPosition;
        return false;
    }
    Hdlc::getCascadingAddress(cascadingOrder, &address);
    address.port = Hdlc::kMainPort;
    position.clear();
    return true;
}

void HWU_Broker::raiseConfigFault(std::int32_t faultId, const FuncId_t& funcId)
{
    SSC_TRACE(equipmentGroup(), kUnexpected, "Raises fault, faultId: %d, funcType: %s, funcInst: %d", faultId,
              text(funcId.FuncType), funcId.FuncInst);
    m_pFaults->raiseFault(faultId, funcId, kConfigFaultDelayMs);
}

bool HWU_Broker::isAddressFree(const HdlcAddress& address)
{
    // 32 and 96 are one SCU: the first and the cascaded address.
    return m_usedAddresses.find([&address](const HdlcAddress& used) {
        return used == address || (address.address == kScuAddress && used.address == kCascadeAddress) ||
               (address.address == kCascadeAddress && used.address == kScuAddress);
    }) == nullptr;
}

bool HWU_Broker::deleteHwu(const FuncId_t& funcId)
{
    SSC_TRACE(equipmentGroup(), kFlow, "deleteHwu: %s-%d", text(funcId.FuncType), funcId.FuncInst);
    HwuStatusIf* unit = getHwu(funcId);
    if (unit == nullptr)
        SSC_TRACE(equipmentGroup(), kUnexpected, "deleteHwu: Could not find Hwu object for FuncType: %s, FuncInst %d",
                  text(funcId.FuncType), funcId.FuncInst);
    else
        releaseAddress(*unit);
    tellSubscribers([&funcId](BrokerObserverIf& observer) { observer.unitRemoved(funcId); });
    if (m_pFaults->isFaultActive(fault_id::kHwuMissing, funcId)) m_pFaults->ceaseFault(fault_id::kHwuMissing, funcId);
    const int index = listIndexOf(funcId.FuncType);
    if (index < 0) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "HWU_Broker::deleteHwu: Trying to delete an unknown HWU-type: %d",
                  funcId.FuncType);
        return false;
    }
    m_units[static_cast<std::size_t>(index)].removeFirst(
        [&funcId](const std::unique_ptr<HwuStatusIf>& row) { return row->isSameFuncId(funcId); });
    return true;
}

void HWU_Broker::releaseAddress(const HwuStatusIf& unit)
{
    const HdlcAddress address(unit.getHdlcAddress(), unit.getPort());
    if (!address.isValid() || unit.getHubPosition() == Hdlc::getAlreadyInUse()) {
        // Its address belongs to the unit that had it first.
        SSC_TRACE(equipmentGroup(), kUnexpected, "deleteHwu: invalid HDLC-address for Type: %s",
                  text(unit.getFuncId().FuncType));
        return;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "deleteHwu: Release of configured HWU, giving back control to BusMonitor");
    m_usedAddresses.remove(address);
    m_pBusMonitor->startPollOf(address.address, address.port);
}

HwuStatusIf* HWU_Broker::getHwu(const FuncId_t& funcId)
{
    const int index = listIndexOf(funcId.FuncType);
    if (index < 0) return nullptr;
    std::unique_ptr<HwuStatusIf>* row = m_units[static_cast<std::size_t>(index)].find(
        [&funcId](const std::unique_ptr<HwuStatusIf>& unit) { return unit->isSameFuncId(funcId); });
    return row != nullptr ? row->get() : nullptr;
}

void HWU_Broker::setConfigured(bool configured)
{
    m_cabinetConfigured = configured;
    if (configured) return;
    for (UnitList& list : m_units) {
        EC_LinkedListIterator<std::unique_ptr<HwuStatusIf>> it(list);
        while (std::unique_ptr<HwuStatusIf>* unit = it.next()) {
            const FuncId_t funcId = (*unit)->getFuncId();
            tellSubscribers([&funcId](BrokerObserverIf& observer) { observer.unitRemoved(funcId); });
        }
        list.clear();
    }
    m_pBusMonitor->stopMonitoring();
    m_monitoringStarted = false;
}

void HWU_Broker::update(std::uint32_t id)
{
    if (id != CabinetObserverIf::kCabinetConfigured) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Illegal SubscriptionID received: %d", id);
        return;
    }
    if (m_cabinetConfigured) cabinetConfigured();
}

void HWU_Broker::cabinetConfigured()
{
    SSC_TRACE(equipmentGroup(), kFlow, "cabinetConfigured dualBoxSupported: %d", m_dualBoxSupported);
    // The second box's SCU answers on the auxiliary port; without a second
    // box nothing there is scanned.
    if (m_dualBoxSupported && isAddressFree(HdlcAddress(kScuAddress, Hdlc::kAuxPort))) {
        SSC_TRACE(equipmentGroup(), kFlow, "Start poll of secondary SCU");
        m_pBusMonitor->startPollOf(kScuAddress, Hdlc::kAuxPort);
    } else {
        SSC_TRACE(equipmentGroup(), kFlow, "Stop poll of secondary SCU");
        m_pBusMonitor->stopPollOf(kScuAddress, FuncId_t{kScu, 0}, Hdlc::kAuxPort);
    }
    if (!m_monitoringStarted) {
        m_monitoringStarted = true;
        SSC_TRACE(equipmentGroup(), kFlow, "Start monitoring");
        m_pBusMonitor->startMonitoring();
    }
}

// ---- what units tell ----

void HWU_Broker::hwuFound(const FuncId_t& funcId)
{
    if (m_pFaults->isFaultActive(fault_id::kHwuMissing, funcId)) {
        SSC_TRACE(equipmentGroup(), kFlow, "%s-%d Missing ceased", text(funcId.FuncType), funcId.FuncInst);
        m_pFaults->ceaseFault(fault_id::kHwuMissing, funcId);
    }
    tellSubscribers([&funcId](BrokerObserverIf& observer) { observer.unitOperational(funcId); });
}

void HWU_Broker::hwuMissing(const FuncId_t& funcId)
{
    SSC_TRACE(equipmentGroup(), kFlow, "%s-%d Missing raised", text(funcId.FuncType), funcId.FuncInst);
    m_pFaults->raiseFault(fault_id::kHwuMissing, funcId);
    tellSubscribers([&funcId](BrokerObserverIf& observer) { observer.unitRemoved(funcId); });
}

void HWU_Broker::hwuRestarted(const FuncId_t& funcId)
{
    if (m_pEquipmentManager != nullptr) m_pEquipmentManager->restartDone(funcId);
    tellSubscribers([&funcId](BrokerObserverIf& observer) { observer.unitRemoved(funcId); });
    tellSubscribers([&funcId](BrokerObserverIf& observer) { observer.unitOperational(funcId); });
    tellSubscribers([&funcId](BrokerObserverIf& observer) { observer.unitRestarted(funcId); });
}

// ---- subscribers ----

bool HWU_Broker::subscribeHWU(BrokerObserverIf* observer)
{
    if (observer == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Inparameter to subscribeHWU = NULL");
        return false;
    }
    if (m_subscribers.contains(observer)) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to subscribe for HWU:s, subscription already made");
        return false;
    }
    m_subscribers.add(observer);
    // A late subscriber learns of every unit there is, found or not.
    for (UnitList& list : m_units) {
        EC_LinkedListIterator<std::unique_ptr<HwuStatusIf>> it(list);
        while (std::unique_ptr<HwuStatusIf>* unit = it.next()) observer->unitOperational((*unit)->getFuncId());
    }
    return true;
}

bool HWU_Broker::unSubscribeHWU(BrokerObserverIf* observer)
{
    if (observer == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Inparameter to unSubscribeHWU = NULL");
        return false;
    }
    if (!m_subscribers.remove(observer)) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to unSubscribeHWU, subscription not in list");
        return false;
    }
    return true;
}

void HWU_Broker::tellSubscribers(const std::function<void(BrokerObserverIf&)>& tell)
{
    EC_LinkedListIterator<BrokerObserverIf*> it(m_subscribers);
    while (BrokerObserverIf** observer = it.next()) tell(**observer);
}
