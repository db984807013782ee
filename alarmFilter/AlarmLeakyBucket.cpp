#include "alarmFilter/AlarmLeakyBucket.h"

#include "alarmFilter/alarmFilterTrace.h"

#include "froBl/froMgmtSwU/export/fRO.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include <algorithm>
#include <iterator>

using alarm_filter_trace::alarmFilterGroup;
using sup_sys_trace::kError;
using sup_sys_trace::kFlow;
using sup_sys_trace::kInfo;

namespace {

// Entries are keyed by the external id alone, so that objects of different
// classes with the same id and fault share one entry.
std::uint32_t froIdOf(const fRO& fro)
{
    return static_cast<std::uint32_t>(fro.getExternalId());
}

unsigned hex(const std::int32_t faultId)
{
    return static_cast<unsigned>(faultId);
}

} // namespace

AlarmLeakyBucket::AlarmLeakyBucket(AlarmIndicationIf& indications, TimerApi& timer, froMgr& froTable)
    : m_indications(indications), m_timer(timer), m_froTable(froTable)
{
}

AlarmLeakyBucket::~AlarmLeakyBucket()
{
    for (const Entry& entry : m_entries) m_timer.cancel(entry.timerId);
}

AlarmLeakyBucket::Entry* AlarmLeakyBucket::find(const std::uint32_t froId, const std::int32_t faultId)
{
    auto it = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
        return entry.froId == froId && entry.faultId == faultId;
    });
    return it == m_entries.end() ? nullptr : &*it;
}

AlarmLeakyBucket::Entries::iterator AlarmLeakyBucket::findByTimer(const std::uint32_t timerId)
{
    return std::find_if(m_entries.begin(), m_entries.end(),
                        [&](const Entry& entry) { return entry.timerId == timerId; });
}

void AlarmLeakyBucket::add(const fRO& fro, const std::int32_t faultId, const std::string& ldn,
                           const bool alarmActive)
{
    Entry entry;
    entry.timerId = m_timer.start(this, TimerApi::Repeating, kDropTimeMs);
    entry.alarmLevel = 1;
    entry.alarmReported = true;
    entry.alarmActive = alarmActive;
    entry.froId = froIdOf(fro);
    entry.froType = fro.getFroType();
    entry.ldn = ldn;
    entry.faultId = faultId;
    m_entries.push_back(entry);
    SSC_TRACE(alarmFilterGroup(), kInfo,
              "LeakyBucket: Alarm with faultId (0x%x) for ldn (%s) has been added to the leaky bucket.",
              hex(faultId), ldn.c_str());
}

void AlarmLeakyBucket::raiseLevel(Entry& entry)
{
    if (entry.alarmLevel >= kHighestLevel) return;
    ++entry.alarmLevel;
    SSC_TRACE(alarmFilterGroup(), kFlow, "LeakyBucket: alarmLevel for ldn (%s) has been increased to (%d).",
              entry.ldn.c_str(), static_cast<int>(entry.alarmLevel));
}

AlarmLeakyBucket::Entries::iterator AlarmLeakyBucket::erase(const Entries::iterator position)
{
    m_timer.cancel(position->timerId);
    SSC_TRACE(alarmFilterGroup(), kInfo,
              "LeakyBucket: Removing faultId (0x%x) for ldn (%s) from the leaky bucket and stopping the drop timer.",
              hex(position->faultId), position->ldn.c_str());
    return m_entries.erase(position);
}

template <typename Match>
void AlarmLeakyBucket::eraseIf(Match match)
{
    for (auto it = m_entries.begin(); it != m_entries.end();) it = match(*it) ? erase(it) : std::next(it);
}

void AlarmLeakyBucket::sendFault(const fRO& fro, const std::int32_t faultId, const std::string& faultDescription,
                                 const std::string& ldn)
{
    m_indications.sendFaultInd(froIdOf(fro), fro.getFroType(), ldn, faultId, faultDescription, {}, 0);
}

void AlarmLeakyBucket::sendCease(const fRO& fro, const std::int32_t faultId, const std::string& ldn)
{
    m_indications.sendFaultCeaseInd(froIdOf(fro), fro.getFroType(), ldn, faultId);
}

// The entry is looked up again after each indication: the receiver of an
// indication may come back into the bucket and change the vector.

void AlarmLeakyBucket::raise(const fRO& fro, const std::int32_t faultId, const std::string& faultDescription,
                             const std::string& ldn)
{
    const Entry* before = find(froIdOf(fro), faultId);
    if (before == nullptr || !before->alarmReported) {
        sendFault(fro, faultId, faultDescription, ldn);
        SSC_TRACE(alarmFilterGroup(), kInfo, "LeakyBucket: FaultInd is sent with faultId (0x%x) for ldn (%s).",
                  hex(faultId), ldn.c_str());
    }
    Entry* entry = find(froIdOf(fro), faultId);
    if (entry == nullptr) {
        add(fro, faultId, ldn, true);
        return;
    }
    entry->alarmReported = true;
    entry->alarmActive = true;
    raiseLevel(*entry);
}

void AlarmLeakyBucket::cease(const fRO& fro, const std::int32_t faultId, const std::string& ldn)
{
    if (Entry* entry = find(froIdOf(fro), faultId)) {
        entry->alarmActive = false;
        // A reported fault above level 1 waits for the drop timer.
        if (!entry->alarmReported || entry->alarmLevel != 1) return;
        entry->alarmReported = false;
    }
    sendCease(fro, faultId, ldn);
    SSC_TRACE(alarmFilterGroup(), kInfo, "LeakyBucket: FaultCeaseInd is sent with faultId (0x%x) for ldn (%s).",
              hex(faultId), ldn.c_str());
}

void AlarmLeakyBucket::remove(const fRO& fro, const std::int32_t faultId)
{
    const std::uint32_t froId = froIdOf(fro);
    eraseIf([&](const Entry& entry) { return entry.froId == froId && entry.faultId == faultId; });
}

void AlarmLeakyBucket::removeAll(const fRO& fro)
{
    const std::uint32_t froId = froIdOf(fro);
    eraseIf([&](const Entry& entry) { return entry.froId == froId; });
}

void AlarmLeakyBucket::removeByLdn(const std::string& ldn)
{
    eraseIf([&](const Entry& entry) { return entry.ldn == ldn; });
}

void AlarmLeakyBucket::ceaseAndRemove(const fRO& fro, const std::int32_t faultId, const std::string& ldn)
{
    sendCease(fro, faultId, ldn);
    remove(fro, faultId);
}

void AlarmLeakyBucket::ceaseAndRemoveAll(const fRO& fro, const std::int32_t faultId, const std::string& ldn)
{
    sendCease(fro, faultId, ldn);
    removeAll(fro);
}

void AlarmLeakyBucket::pulse(const fRO& fro, const std::int32_t faultId, const std::string& ldn)
{
    if (Entry* entry = find(froIdOf(fro), faultId)) {
        raiseLevel(*entry);
        if (entry->alarmReported) return;
    }
    sendFault(fro, faultId, "", ldn);
    // The input's state is not known here, so an existing entry keeps it.
    if (Entry* entry = find(froIdOf(fro), faultId)) entry->alarmReported = true;
    else add(fro, faultId, ldn, false);
}

void AlarmLeakyBucket::timeout(const std::uint32_t timerId)
{
    SSC_TRACE(alarmFilterGroup(), kFlow, "LeakyBucket: Active drop time interval with Id (%d) has ended.",
              static_cast<int>(timerId));
    const auto entry = findByTimer(timerId);
    if (entry == m_entries.end()) {
        SSC_TRACE(alarmFilterGroup(), kError, "LeakyBucket: Drop timer Id (%d) does not exist in the leakyBucket.",
                  static_cast<int>(timerId));
        return;
    }
    if (entry->alarmLevel > 0) --entry->alarmLevel;
    SSC_TRACE(alarmFilterGroup(), kFlow, "LeakyBucket: Decreased alarmLevel to (%d) for ldn (%s).",
              static_cast<int>(entry->alarmLevel), entry->ldn.c_str());
    if (entry->alarmLevel == 1) drained(*entry);
    else if (entry->alarmLevel == 0) erase(entry);
}

// Level 1 reached: a cease that was held back goes out now.
void AlarmLeakyBucket::drained(Entry& entry)
{
    SSC_TRACE(alarmFilterGroup(), kFlow, "LeakyBucket: alarmLevel (%d). alarmReported (%d), alarmActive (%d).",
              static_cast<int>(entry.alarmLevel), entry.alarmReported ? 1 : 0, entry.alarmActive ? 1 : 0);
    if (!entry.alarmReported || entry.alarmActive) return;
    entry.alarmReported = false;
    const Entry held = entry;
    m_indications.sendFaultCeaseInd(held.froId, held.froType, held.ldn, held.faultId);
    if (held.froType == fro_types::kAlarmPort) writeBackInactive(held.ldn);
}

// The caller of a cease at once sets the port's attribute itself; a held
// cease has no caller left to do so.
void AlarmLeakyBucket::writeBackInactive(const std::string& ldn)
{
    // The port may have been deleted while its cease was held.
    if (fRO* port = m_froTable.getFro(ldn)) port->setAttribute("activeExternalAlarm", "0");
}
