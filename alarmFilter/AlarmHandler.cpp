#include "alarmFilter/AlarmHandler.h"

#include "alarmFilter/alarmFilterTrace.h"

#include "froBl/froMgmtSwU/export/IndHandler.h"
#include "froBl/froMgmtSwU/export/Timer.h"
#include "froBl/froMgmtSwU/export/fRO.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/ldn.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include <algorithm>

using alarm_filter_trace::alarmFilterGroup;
using sup_sys_trace::kError;
using sup_sys_trace::kFlow;
using sup_sys_trace::kInfo;

namespace {

constexpr std::int32_t kExternalAlarm = 4097;
constexpr std::int32_t kEcPortFault = 4126;
constexpr const char* kLocked = "0";
constexpr const char* kUnlocked = "1";

// Written by character: GCC 12 at -O3 warns of an overlapping copy, which
// cannot happen, when a one-character literal is assigned to a string.
void storeState(std::string& stored, bool locked)
{
    stored.assign(1, locked ? '0' : '1');
}

std::uint32_t froIdOf(const fRO& fro)
{
    return static_cast<std::uint32_t>(fro.getExternalId());
}

unsigned hex(const std::int32_t faultId)
{
    return static_cast<unsigned>(faultId);
}

// An alarm that the client sees: the input is active and the port unlocked.
bool reportsAlarm(const fRO& port)
{
    return port.getAttribute("activeExternalAlarm") == "1" && port.getAttribute("administrativeState") == kUnlocked;
}

// The hardware calls the system control unit "SUP" as well as "SCU"; ports
// are matched by the one name.
std::string hwTypeOfPortsOn(const fRO& parent)
{
    if (parent.getFroType() == fro_types::kDeviceGroup) return "RRU";
    const std::string unitType = parent.getAttribute("unitType");
    return unitType == "SUP" ? "SCU" : unitType;
}

template <typename Data>
typename std::vector<Data>::iterator findByLdn(std::vector<Data>& entries, const std::string& ldn)
{
    return std::find_if(entries.begin(), entries.end(), [&](const Data& entry) { return entry.ldn == ldn; });
}

} // namespace

AlarmHandler::AlarmHandler(IndHandlerApi& indications, TimerApi& timer, froMgr& froTable)
    : m_indications(indications), m_froTable(froTable), m_leakyBucket(*this, timer, froTable)
{
}

AlarmHandler& AlarmHandler::instance()
{
    return SupSysSingletons::get<AlarmHandler>([] {
        return std::make_unique<AlarmHandler>(IndHandler::instance(), Timer::instance(), froMgr::instance());
    });
}

void AlarmHandler::init() {}

// ---- indications ---------------------------------------------------------------

void AlarmHandler::sendFaultInd(const std::uint32_t froId, const std::uint32_t froType, const std::string& ldn,
                                const std::int32_t faultId, const std::string& faultDescription,
                                const std::vector<std::string>& additionalData, const std::int32_t eventId)
{
    sendFaultInd(froId, froType, ldn, faultId, faultDescription, additionalData, eventId, true);
}

void AlarmHandler::sendFaultInd(const std::uint32_t froId, const std::uint32_t froType, const std::string& ldn,
                                const std::int32_t faultId, const std::string& faultDescription,
                                const std::vector<std::string>& additionalData, const std::int32_t eventId,
                                const bool store)
{
    m_indications.sendFault(froId, froType, ldn, faultId, faultDescription, additionalData, eventId, store);
    SSC_TRACE(alarmFilterGroup(), kInfo, "FaultInd is sent with faultId (0x%x) for ldn (%s).", hex(faultId),
              ldn.c_str());
}

void AlarmHandler::sendFaultCeaseInd(const std::uint32_t froId, const std::uint32_t froType, const std::string& ldn,
                                     const std::int32_t faultId)
{
    m_indications.sendFaultCeased(froId, froType, ldn, faultId);
    SSC_TRACE(alarmFilterGroup(), kInfo, "FaultCeaseInd is sent with faultId (0x%x) for ldn (%s).", hex(faultId),
              ldn.c_str());
}

void AlarmHandler::sendPortCease(const fRO& port, const std::string& ldn)
{
    sendFaultCeaseInd(froIdOf(port), fro_types::kAlarmPort, ldn, kExternalAlarm);
}

// ---- leaky bucket --------------------------------------------------------------

void AlarmHandler::leakyBucketRaise(const fRO& fro, const std::int32_t faultId, const std::string& faultDescription,
                                    const std::string& ldn)
{
    m_leakyBucket.raise(fro, faultId, faultDescription, ldn);
}

void AlarmHandler::leakyBucketRemove(const fRO& fro, const std::int32_t faultId)
{
    m_leakyBucket.remove(fro, faultId);
}

void AlarmHandler::leakyBucketCease(const fRO& fro, const std::int32_t faultId, const std::string& ldn)
{
    m_leakyBucket.cease(fro, faultId, ldn);
}

void AlarmHandler::leakyBucketCeaseAndRemove(const fRO& fro, const std::int32_t faultId, const std::string& ldn)
{
    m_leakyBucket.ceaseAndRemove(fro, faultId, ldn);
}

// ---- lookups -------------------------------------------------------------------

HwUnitData* AlarmHandler::findHwUnitData(const std::string& ldn)
{
    const auto it = findByLdn(m_hwUnitData, ldn);
    return it == m_hwUnitData.end() ? nullptr : &*it;
}

AlarmPortData* AlarmHandler::findAlarmPortData(const std::string& ldn)
{
    const auto it = findByLdn(m_alarmPortData, ldn);
    return it == m_alarmPortData.end() ? nullptr : &*it;
}

std::string AlarmHandler::ldnOf(const fRO& fro) const
{
    return m_froTable.getLdn(fro.getInternalId());
}

// The objects one level below ldn, without the object itself.
std::vector<std::string> AlarmHandler::childrenOf(const std::string& ldn) const
{
    std::vector<std::string> children;
    m_froTable.getChildren(ldn, children, 1, "");
    children.erase(std::remove(children.begin(), children.end(), ldn), children.end());
    return children;
}

// ---- created -------------------------------------------------------------------

void AlarmHandler::handleFroCreated(fRO& fro)
{
    SSC_TRACE(alarmFilterGroup(), kFlow, "handleFroCreated called");
    const std::string ldn = ldnOf(fro);
    switch (fro.getFroType()) {
    case fro_types::kHwUnit:
        hwUnitCreated(fro, ldn);
        break;
    case fro_types::kBatteryBackup:
        SSC_TRACE(alarmFilterGroup(), kInfo, "Adding battery backup (%s) to AlarmHandler", ldn.c_str());
        m_batteryBackupData.ldn = ldn;
        break;
    case fro_types::kControlPort:
        // Nothing reports a control port's hardware.
        fro.setAttribute("operationalState", "0");
        fro.setAttribute("availabilityStatus", AlarmPortData::kNotInstalled);
        break;
    case fro_types::kAlarmPort:
        alarmPortCreated(fro, ldn);
        break;
    default:
        break;
    }
}

void AlarmHandler::hwUnitCreated(const fRO& fro, const std::string& ldn)
{
    SSC_TRACE(alarmFilterGroup(), kInfo, "Adding hwUnit (%s) to AlarmHandler", ldn.c_str());
    HwUnitData entry;
    entry.ldn = ldn;
    entry.administrativeState = fro.getAttribute("administrativeState");
    m_hwUnitData.push_back(entry);
}

void AlarmHandler::alarmPortCreated(fRO& fro, const std::string& ldn)
{
    SSC_TRACE(alarmFilterGroup(), kInfo, "Adding alarmPort (%s) to AlarmHandler", ldn.c_str());
    const fRO* parent = m_froTable.getFro(Ldn::parent(ldn));
    if (parent == nullptr) {
        SSC_TRACE(alarmFilterGroup(), kError, "No parent HwUnit found for AlarmPort with ldn (%s).", ldn.c_str());
        return;
    }
    const bool parentLocked = parent->getAttribute("administrativeState") == kLocked;
    if (AlarmPortData* entry = findAlarmPortData(ldn)) {
        SSC_TRACE(alarmFilterGroup(), kInfo, "Found stored alarmPort (%s) to AlarmHandler", ldn.c_str());
        adoptAlarmPortData(*entry, fro, ldn, parentLocked);
        return;
    }
    SSC_TRACE(alarmFilterGroup(), kInfo, "Did not found stored alarmPort (%s) to AlarmHandler", ldn.c_str());
    const AlarmPortData entry = newAlarmPortData(fro, ldn, *parent);
    fro.setAttribute("operationalState", entry.operationalState);
    fro.setAttribute("availabilityStatus", entry.availabilityStatus());
    SSC_TRACE(alarmFilterGroup(), kInfo, "Store alarmPort (%s) to AlarmHandler", ldn.c_str());
    m_alarmPortData.push_back(entry);
}

// A port that no hardware has reported counts as not installed.
AlarmPortData AlarmHandler::newAlarmPortData(const fRO& fro, const std::string& ldn, const fRO& parent) const
{
    AlarmPortData entry;
    entry.ldn = ldn;
    entry.administrativeState = fro.getAttribute("administrativeState");
    entry.normallyOpen = fro.getAttribute("normallyOpen");
    entry.hwType = hwTypeOfPortsOn(parent);
    entry.portId = Ldn::instance(ldn);
    entry.lastInputValue = -1;
    entry.setStatus(AlarmPortData::kNotInstalled);
    if (parent.getAttribute("administrativeState") == kLocked) entry.setStatus(AlarmPortData::kDependencyLocked);
    return entry;
}

// The entry knows the port's hardware already: the object takes its state.
void AlarmHandler::adoptAlarmPortData(AlarmPortData& entry, fRO& fro, const std::string& ldn, const bool parentLocked)
{
    entry.ldn = ldn;
    entry.administrativeState = fro.getAttribute("administrativeState");
    entry.normallyOpen = fro.getAttribute("normallyOpen");
    fro.setAttribute("operationalState", entry.operationalState);
    if (parentLocked) {
        entry.setStatus(AlarmPortData::kDependencyLocked);
        fro.setAttribute("operationalState", "0");
    }
    fro.setAttribute("availabilityStatus", entry.availabilityStatus());
}

// ---- changed -------------------------------------------------------------------

void AlarmHandler::handleFroChanged(fRO& fro)
{
    SSC_TRACE(alarmFilterGroup(), kFlow, "handleFroChanged called");
    const std::string ldn = ldnOf(fro);
    if (fro.getFroType() == fro_types::kHwUnit) hwUnitChanged(fro, ldn);
    else if (fro.getFroType() == fro_types::kAlarmPort) alarmPortChanged(fro, ldn);
}

void AlarmHandler::hwUnitChanged(const fRO& fro, const std::string& ldn)
{
    const HwUnitData* entry = findHwUnitData(ldn);
    if (entry == nullptr) {
        SSC_TRACE(alarmFilterGroup(), kError, "Could not get stored data for HwUnit (%s)", ldn.c_str());
        return;
    }
    const std::string now = fro.getAttribute("administrativeState");
    if (entry->administrativeState == kUnlocked && now == kLocked) {
        SSC_TRACE(alarmFilterGroup(), kInfo, "HwUnit (%s) was LOCKED", ldn.c_str());
        hwUnitStateChanged(fro, ldn, true);
    } else if (entry->administrativeState == kLocked && now == kUnlocked) {
        SSC_TRACE(alarmFilterGroup(), kInfo, "HwUnit (%s) was UNLOCKED", ldn.c_str());
        hwUnitStateChanged(fro, ldn, false);
    }
}

void AlarmHandler::alarmPortChanged(fRO& fro, const std::string& ldn)
{
    AlarmPortData* entry = findAlarmPortData(ldn);
    if (entry == nullptr) {
        SSC_TRACE(alarmFilterGroup(), kError, "Could not get stored data for AlarmPort (%s).", ldn.c_str());
        return;
    }
    normallyOpenChanged(fro, ldn, *entry);
    entry->normallyOpen = fro.getAttribute("normallyOpen");
    alarmPortLockChanged(fro, ldn, *entry);
}

// The same input means the opposite now. Nothing is reported for the flip:
// the next change of the input is.
void AlarmHandler::normallyOpenChanged(fRO& fro, const std::string& ldn, AlarmPortData& entry)
{
    const std::string now = fro.getAttribute("normallyOpen");
    if (entry.normallyOpen == now || entry.lastInputValue == -1) return;
    const char* active = fro.getAttribute("activeExternalAlarm") == "0" ? "1" : "0";
    fro.setAttribute("activeExternalAlarm", active);
    SSC_TRACE(alarmFilterGroup(), kInfo,
              "normallyOpen was changed from (%s) to (%s) which results in activeExternalAlarm (%s) for (%s).",
              entry.normallyOpen.c_str(), now.c_str(), active, ldn.c_str());
}

void AlarmHandler::alarmPortLockChanged(const fRO& fro, const std::string& ldn, AlarmPortData& entry)
{
    const std::string now = fro.getAttribute("administrativeState");
    const bool active = fro.getAttribute("activeExternalAlarm") == "1";
    if (entry.administrativeState == kUnlocked && now == kLocked) {
        SSC_TRACE(alarmFilterGroup(), kInfo, "AlarmPort (%s) was LOCKED", ldn.c_str());
        storeState(entry.administrativeState, true);
        if (active) m_leakyBucket.ceaseAndRemoveAll(fro, kExternalAlarm, ldn);
    } else if (entry.administrativeState == kLocked && now == kUnlocked) {
        SSC_TRACE(alarmFilterGroup(), kInfo, "AlarmPort (%s) was UNLOCKED", ldn.c_str());
        storeState(entry.administrativeState, false);
        if (active) m_leakyBucket.pulse(fro, kExternalAlarm, ldn);
    }
}

// ---- deleted -------------------------------------------------------------------

void AlarmHandler::handleFroDeleted(const fRO& fro)
{
    SSC_TRACE(alarmFilterGroup(), kFlow, "handleFroDeleted called");
    const std::string ldn = ldnOf(fro);
    switch (fro.getFroType()) {
    case fro_types::kHwUnit:
        eraseHwUnitData(ldn);
        break;
    case fro_types::kBatteryBackup:
        if (!m_batteryBackupData.ldn.empty()) {
            SSC_TRACE(alarmFilterGroup(), kInfo, "Removing stored battery backup ldn (%s).",
                      m_batteryBackupData.ldn.c_str());
            m_batteryBackupData.ldn.clear();
        }
        break;
    case fro_types::kAlarmPort:
        eraseAlarmPortData(ldn);
        break;
    default:
        break;
    }
    // Also for objects not stored here: the bucket keys by external id.
    m_leakyBucket.removeAll(fro);
}

void AlarmHandler::eraseHwUnitData(const std::string& ldn)
{
    const auto it = findByLdn(m_hwUnitData, ldn);
    if (it == m_hwUnitData.end()) {
        SSC_TRACE(alarmFilterGroup(), kError, "ldn (%s) not found in hwUnitDataList.", ldn.c_str());
        return;
    }
    m_hwUnitData.erase(it);
    SSC_TRACE(alarmFilterGroup(), kInfo, "Removing stored HwUnit data for ldn (%s).", ldn.c_str());
}

void AlarmHandler::eraseAlarmPortData(const std::string& ldn)
{
    const auto it = findByLdn(m_alarmPortData, ldn);
    if (it == m_alarmPortData.end()) {
        SSC_TRACE(alarmFilterGroup(), kError, "Could not find stored AlarmPortData for ldn (%s).", ldn.c_str());
        return;
    }
    m_alarmPortData.erase(it);
    SSC_TRACE(alarmFilterGroup(), kInfo, "Erasing stored AlarmPort data for (%s).", ldn.c_str());
}

// ---- a unit locked or unlocked -------------------------------------------------

// The faults of a locked unit and of the ports it carries are ceased at the
// client but kept here, so that an unlock reports them again.
void AlarmHandler::hwUnitStateChanged(const fRO& fro, const std::string& ldn, const bool locking)
{
    HwUnitData* entry = findHwUnitData(ldn);
    if (entry == nullptr) {
        SSC_TRACE(alarmFilterGroup(), kError, "Could not get stored HwUnit data for (%s).", ldn.c_str());
        return;
    }
    sendHwUnitFaults(fro, ldn, *entry, locking);
    for (const std::string& child : childrenOf(ldn)) unitStateChangedForPort(child, locking);
    storeState(entry->administrativeState, locking);
}

void AlarmHandler::sendHwUnitFaults(const fRO& fro, const std::string& ldn, const HwUnitData& entry,
                                    const bool locking)
{
    const HwUnitData standing = entry;
    for (const std::int32_t faultId : standing.faultIds) {
        if (locking) sendFaultCeaseInd(froIdOf(fro), fro_types::kHwUnit, ldn, faultId);
        else sendFaultInd(froIdOf(fro), fro_types::kHwUnit, ldn, faultId, standing.faultDescription, {}, 0);
    }
}

void AlarmHandler::unitStateChangedForPort(const std::string& ldn, const bool locking)
{
    AlarmPortData* entry = findAlarmPortData(ldn);
    fRO* port = m_froTable.getFro(ldn);
    if (entry == nullptr || port == nullptr) return;
    if (reportsAlarm(*port)) {
        if (locking) {
            sendPortCease(*port, ldn);
        } else {
            SSC_TRACE(alarmFilterGroup(), kInfo, "Sending faultInd for childLdn (%s).", ldn.c_str());
            sendFaultInd(froIdOf(*port), fro_types::kAlarmPort, ldn, kExternalAlarm, "", {}, 0);
        }
    }
    if (locking) {
        entry->setStatus(AlarmPortData::kDependencyLocked);
        port->setAttribute("operationalState", "0");
    } else {
        entry->clearStatus(AlarmPortData::kDependencyLocked);
        port->setAttribute("operationalState", entry->operationalState);
    }
    port->setAttribute("availabilityStatus", entry->availabilityStatus());
}

// ---- a unit missing ------------------------------------------------------------

void AlarmHandler::clearAlarmPorts(const std::string& ldn)
{
    for (const std::string& child : childrenOf(ldn)) {
        AlarmPortData* entry = findAlarmPortData(child);
        fRO* port = m_froTable.getFro(child);
        if (entry == nullptr || port == nullptr) continue;
        if (reportsAlarm(*port)) {
            sendPortCease(*port, child);
            leakyBucketRemove(*port, kExternalAlarm);
        }
        entry->availabilityBits = 0;
        entry->operationalState = 0;
        port->setAttribute("availabilityStatus", entry->availabilityStatus());
        port->setAttribute("operationalState", entry->operationalState);
        port->setAttribute("activeExternalAlarm", "0");
    }
}

// ---- a unit starts over --------------------------------------------------------

void AlarmHandler::ceaseFault(fRO& fro)
{
    const std::string ldn = ldnOf(fro);
    SSC_TRACE(alarmFilterGroup(), kFlow, "ceaseFault: ldn %s", ldn.c_str());
    ceaseHwUnitFaults(fro, ldn);
    m_leakyBucket.removeByLdn(ldn);
    for (const std::string& child : childrenOf(ldn)) {
        SSC_TRACE(alarmFilterGroup(), kFlow, "ceaseFault: 4 %s", child.c_str());
        if (fRO* childFro = m_froTable.getFro(child)) {
            ceaseEcPortFault(*childFro, child);
            if (AlarmPortData* entry = findAlarmPortData(child)) startPortOver(*childFro, child, *entry);
        }
        m_leakyBucket.removeByLdn(child);
    }
}

// A locked unit's faults were ceased at the client when it was locked.
void AlarmHandler::ceaseHwUnitFaults(const fRO& fro, const std::string& ldn)
{
    HwUnitData* entry = findHwUnitData(ldn);
    if (entry == nullptr) return;
    const std::vector<std::int32_t> standing = entry->faultIds;
    entry->faultIds.clear();
    if (fro.getAttribute("administrativeState") != kUnlocked) return;
    for (const std::int32_t faultId : standing) sendFaultCeaseInd(froIdOf(fro), fro.getFroType(), ldn, faultId);
}

void AlarmHandler::ceaseEcPortFault(const fRO& child, const std::string& ldn)
{
    const auto it = std::find_if(m_ecPortFaults.begin(), m_ecPortFaults.end(), [&](const EcPortFault& fault) {
        return fault.ldn == ldn && fault.faultId == kEcPortFault;
    });
    if (it == m_ecPortFaults.end()) return;
    m_ecPortFaults.erase(it);
    SSC_TRACE(alarmFilterGroup(), kInfo, "Sending cease ind for EcPort: %s", ldn.c_str());
    sendFaultCeaseInd(froIdOf(child), child.getFroType(), ldn, kEcPortFault);
}

// The port's hardware is unknown again and the port is locked, so that the
// operator decides when it reports again. Whether it was installed is kept.
void AlarmHandler::startPortOver(fRO& port, const std::string& ldn, AlarmPortData& entry)
{
    if (reportsAlarm(port)) sendPortCease(port, ldn);
    entry.operationalState = 0;
    entry.availabilityBits &= AlarmPortData::kNotInstalled;
    storeState(entry.administrativeState, true);
    port.setAttribute("operationalState", entry.operationalState);
    port.setAttribute("availabilityStatus", entry.availabilityStatus());
    port.setAttribute("administrativeState", kLocked);
    port.setAttribute("activeExternalAlarm", "0");
}
