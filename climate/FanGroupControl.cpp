#include "climate/FanGroupControl.h"

#include "climate/ClimateConfigurationIf.h"
#include "climate/FanGroupBits.h"
#include "climate/FanGroupEventIf.h"
#include "frame/EC_LinkedListIterator.h"
#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "hwu/CluIf.h"
#include "hwu/HwuBrokerIf.h"
#include "hwu/ScuIf.h"

#include <bit>

using namespace ssc_trace;

namespace {
constexpr std::uint32_t kCabinetOfClu = 0;
} // namespace

FanGroupControl::FanGroupControl(HwuBrokerIf* broker, FaultsRegisterIf* faults, ClimateConfigurationIf* configuration,
                                 FanGroupEventIf* eventHandler)
    : m_pBroker(broker), m_pFaultsRegister(faults), m_pConfiguration(configuration), m_pEventHandler(eventHandler)
{
}

template <typename Visit>
void FanGroupControl::forEachScu(Visit&& visit)
{
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kScu))
        if (ScuIf* scu = m_pBroker->getScu(unit->getFuncId())) visit(*scu);
}

CabinetFanGroups* FanGroupControl::find(std::uint32_t cabinetId)
{
    auto* found = m_cabinets.find(
        [cabinetId](const std::unique_ptr<CabinetFanGroups>& row) { return row->cabinetId() == cabinetId; });
    return found != nullptr ? found->get() : nullptr;
}

CabinetFanGroups* FanGroupControl::findHolding(std::uint32_t funcInst)
{
    auto* found =
        m_cabinets.find([funcInst](const std::unique_ptr<CabinetFanGroups>& row) { return row->holds(funcInst); });
    return found != nullptr ? found->get() : nullptr;
}

CabinetFanGroups& FanGroupControl::findOrCreate(std::uint32_t cabinetId)
{
    if (CabinetFanGroups* cabinet = find(cabinetId)) return *cabinet;
    auto created = std::make_unique<CabinetFanGroups>(m_pFaultsRegister);
    created->setCabinetId(cabinetId);
    CabinetFanGroups& cabinet = *created;
    m_cabinets.add(std::move(created));
    return cabinet;
}

void FanGroupControl::checkConsistencyOfAll()
{
    EC_LinkedListIterator<std::unique_ptr<CabinetFanGroups>> walk(m_cabinets);
    while (auto* cabinet = walk.next()) (*cabinet)->checkConsistency();
}

// The configuration, not the group's own flag, decides which speed a group gets.
void FanGroupControl::setFanSpeedsOf(ScuIf& scu, std::int32_t internal, std::int32_t external)
{
    CabinetFanGroups* cabinet = find(scu.getCabinetFuncInst());
    if (cabinet == nullptr) return;
    const ClimateCfg& cfg = m_pConfiguration->getClimateCfg();
    std::uint8_t speeds[CabinetFanGroups::kGroups] = {};
    bool anySupported = false;
    for (std::uint32_t number = 1; number <= CabinetFanGroups::kGroups; ++number) {
        if (!cabinet->group(number).supported) continue;
        anySupported = true;
        const std::int32_t speed = cfg.fanGroupControl(number) == ClimateCfg::kExternalFanGroup ? external : internal;
        speeds[number - 1] = static_cast<std::uint8_t>(speed);
    }
    if (!anySupported) return;
    SSC_TRACE(climateGroup(), kFlow, "setFanSpeed 1=%d, 2=%d, 3=%d, 4=%d ", speeds[0], speeds[1], speeds[2], speeds[3]);
    scu.setFanSpeed(speeds[0], speeds[1], speeds[2], speeds[3]);
}

void FanGroupControl::setFanSpeeds(std::int32_t internal, std::int32_t external)
{
    forEachScu([&](ScuIf& scu) { setFanSpeedsOf(scu, internal, external); });
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kClu))
        if (CluIf* clu = m_pBroker->getClu(unit->getFuncId())) clu->setFanSpeed(static_cast<std::uint8_t>(internal));
}

// `supported` is never cleared here: only a cabinet that loses its last SCU
// loses its groups.
void FanGroupControl::checkFanGroupCapabilities()
{
    SSC_TRACE(climateGroup(), kFlow, "checkFanGroupCapabilities");
    forEachScu([&](ScuIf& scu) {
        CabinetFanGroups* cabinet = find(scu.getCabinetFuncInst());
        if (cabinet == nullptr) return;
        const std::uint8_t capabilities = fan_group::fromUnitFlags(scu.getCapabilities().availableFanGroups);
        for (std::uint32_t number = 1; number <= CabinetFanGroups::kGroups; ++number)
            if (fan_group::has(capabilities, number)) cabinet->group(number).supported = true;
        cabinet->checkConsistency();
    });
    if (m_pBroker->getCluCount() == 0) return;
    if (CabinetFanGroups* cabinet = find(kCabinetOfClu)) {
        cabinet->group(2).supported = true;
        cabinet->group(4).supported = true;
        cabinet->checkConsistency();
    }
}

void FanGroupControl::checkCapabilitiesAndBlowers()
{
    checkFanGroupCapabilities();
    checkConnectedFanGroups();
}

void FanGroupControl::checkConnectedFanGroups()
{
    const std::int32_t blowers = m_pConfiguration->getClimateCfg().numberOfBlowers;
    forEachScu([&](ScuIf& scu) {
        const std::uint8_t connected = fan_group::toClimateByte(scu.getStatus().connectedFans);
        const auto count = static_cast<std::int32_t>(std::popcount(static_cast<unsigned>(connected)));
        const FuncId_t subject{func_type::kFan, scu.getCabinetFuncInst()};
        if (count > blowers) {
            SSC_TRACE(climateGroup(), kInfo, "Connected but not configured fan groups on the SCU configured = %d and connected = %d",
                      blowers, count);
            m_pFaultsRegister->raiseFault(fault_id::kHwEntitiesMismatch, subject);
        } else {
            m_pFaultsRegister->ceaseFault(fault_id::kHwEntitiesMismatch, subject);
        }
    });
}

bool FanGroupControl::configureFanGroup(std::uint32_t funcInst, std::uint32_t number, std::uint32_t cabinetId,
                                        bool external)
{
    if (number < 1 || number > CabinetFanGroups::kGroups) {
        SSC_TRACE(climateGroup(), kUnexpected, "Fan group id, %d, is out of range [1..%d]", static_cast<int>(number),
                  static_cast<int>(CabinetFanGroups::kGroups));
        return false;
    }
    CabinetFanGroups& cabinet = findOrCreate(cabinetId);
    FanGroupRecord& record = cabinet.group(number);
    record.funcType = func_type::kFan;
    record.funcInst = funcInst;
    record.cabinet = cabinetId;
    record.external = external;
    record.configured = true;
    cabinet.setCabinetId(cabinetId);
    SSC_TRACE(climateGroup(), kInfo, "Fan Group %d configured, Nbr: %d, %s, cabinet: %d", static_cast<int>(funcInst),
              static_cast<int>(number), external ? "external" : "internal", static_cast<int>(cabinetId));
    checkFanGroupCapabilities();
    return true;
}

void FanGroupControl::deleteFanGroup(std::uint32_t funcInst)
{
    CabinetFanGroups* cabinet = findHolding(funcInst);
    if (cabinet == nullptr) return;
    for (std::uint32_t number = 1; number <= CabinetFanGroups::kGroups; ++number)
        if (cabinet->group(number).funcInst == funcInst) cabinet->group(number).configured = false;
    if (!cabinet->anyConfigured())
        m_cabinets.removeFirst([cabinet](const std::unique_ptr<CabinetFanGroups>& row) { return row.get() == cabinet; });
    SSC_TRACE(climateGroup(), kInfo, "Fan Group %d, configuration deleted.", static_cast<int>(funcInst));
}

void FanGroupControl::fanGroupsConnected(std::uint32_t cabinetId, std::uint8_t statusByte, bool secondScu,
                                         std::uint32_t /*funcType*/)
{
    CabinetFanGroups* cabinet = find(cabinetId);
    const auto bit = [statusByte](std::uint32_t group) { return fan_group::has(statusByte, group); };
    if (m_pConfiguration->getClimateCfg().concurrentFanControl == 1) {
        // Each of the two SCUs runs one group of the pair.
        if (cabinet != nullptr) {
            if (!secondScu) cabinet->group(1).connected = bit(1);
            else cabinet->group(2).connected = bit(2);
        }
    } else {
        for (std::uint32_t group = 1; group <= CabinetFanGroups::kGroups; ++group)
            SSC_TRACE(climateGroup(), kFlow, "FanGroup%d: connected: %d", static_cast<int>(group), bit(group) ? 1 : 0);
        if (cabinet != nullptr) {
            if (!m_cluPresent) {
                for (std::uint32_t group = 1; group <= CabinetFanGroups::kGroups; ++group)
                    cabinet->group(group).connected = bit(group);
                cabinet->setStatusReceived(true);
            } else {
                cabinet->group(1).connected = bit(1);
                cabinet->group(3).connected = bit(3);
            }
        }
    }
    if (cabinet != nullptr) {
        cabinet->checkConsistency();
        cabinet->checkDisconnected();
    }
    checkConnectedFanGroups();
}

void FanGroupControl::fanGroupsFailure(std::uint32_t cabinetId, std::uint8_t statusByte, bool secondScu,
                                       std::uint32_t funcType)
{
    const auto bit = [statusByte](std::uint32_t group) { return fan_group::has(statusByte, group); };
    CabinetFanGroups* cabinet = nullptr;
    if (m_pConfiguration->getClimateCfg().concurrentFanControl == 1) {
        cabinet = find(cabinetId);
        if (cabinet != nullptr) {
            if (!secondScu) cabinet->group(1).failure = bit(1);
            else cabinet->group(2).failure = bit(2);
        }
    } else if (funcType == func_type::kClu) {
        cabinet = find(kCabinetOfClu);
        if (cabinet != nullptr) {
            cabinet->group(4).failure = bit(4);
            cabinet->group(2).failure = bit(2);
        }
    } else {
        for (std::uint32_t group = 1; group <= CabinetFanGroups::kGroups; ++group)
            SSC_TRACE(climateGroup(), kFlow, "FanGroup%d: failure: %d", static_cast<int>(group), bit(group) ? 1 : 0);
        cabinet = find(cabinetId);
        if (cabinet != nullptr) {
            for (std::uint32_t group = 1; group <= CabinetFanGroups::kGroups; ++group)
                cabinet->group(group).failure = bit(group);
            cabinet->setStatusReceived(true);
        }
    }
    if (cabinet != nullptr) cabinet->checkHwError();
}

void FanGroupControl::cluPresent(bool present)
{
    SSC_TRACE(climateGroup(), kFlow, "notifyFanGroupsCluPresent");
    m_cluPresent = present;
    if (!present) return;
    CabinetFanGroups* cabinet = find(kCabinetOfClu);
    if (cabinet == nullptr) return;
    for (const std::uint32_t group : {2U, 4U}) {
        cabinet->group(group).connected = true;
        cabinet->group(group).supported = true;
    }
    cabinet->checkConsistency();
    cabinet->checkDisconnected();
    checkConnectedFanGroups();
}

// With a climate unit present, groups 2 and 4 are its own: what the SCU
// says of them is not passed on.
void FanGroupControl::fanGroupState(std::uint32_t cabinetId, std::uint32_t number, std::uint32_t state,
                                    std::uint32_t funcType)
{
    if (m_cluPresent && funcType == func_type::kScu && (number == 2 || number == 4)) return;
    CabinetFanGroups* cabinet = find(cabinetId);
    if (cabinet == nullptr || number < 1 || number > CabinetFanGroups::kGroups) return;
    if (m_pEventHandler == nullptr) return;
    m_pEventHandler->fanGroupState(cabinet->group(number).funcInst, state, funcType);
}

bool FanGroupControl::isFanGroupConfigured(std::uint32_t cabinetId, std::uint32_t number)
{
    if (m_cluPresent && (number == 2 || number == 4)) return false;
    CabinetFanGroups* cabinet = find(cabinetId);
    if (cabinet == nullptr || number < 1 || number > CabinetFanGroups::kGroups) return false;
    return cabinet->group(number).configured;
}

void FanGroupControl::unitGone(const FuncId_t& unit)
{
    ScuIf* scu = m_pBroker->getScu(unit);
    if (scu == nullptr) return;
    const std::uint32_t cabinetId = scu->getCabinetFuncInst();
    CabinetFanGroups* cabinet = find(cabinetId);
    if (cabinet == nullptr) return;
    std::uint32_t scusOfCabinet = 0;
    forEachScu([&](ScuIf& other) { scusOfCabinet += other.getCabinetFuncInst() == cabinetId ? 1 : 0; });
    if (scusOfCabinet != 1) return;
    for (std::uint32_t group = 1; group <= CabinetFanGroups::kGroups; ++group) cabinet->group(group).supported = false;
    cabinet->setStatusReceived(false);
}
