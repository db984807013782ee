#include "ose/TimeoutQueue.h"

#include "ose/SignalPool.h"

namespace ose {

TimeoutQueue::~TimeoutQueue()
{
    for (auto& [key, entry] : m_entries)
        if (entry.signal != nullptr) SignalPool::release(entry.signal);
}

OSTMOREF TimeoutQueue::add(std::uint64_t when, TimeoutEntry entry)
{
    OSTMOREF ref{when, m_nextSeq++};
    m_entries.emplace(std::make_pair(ref.when, ref.seq), entry);
    return ref;
}

bool TimeoutQueue::cancel(const OSTMOREF& ref, TimeoutEntry* entry)
{
    if (ref.seq == 0) return false;
    auto it = m_entries.find({ref.when, ref.seq});
    if (it == m_entries.end()) return false;
    if (entry != nullptr) *entry = it->second;
    m_entries.erase(it);
    return true;
}

std::optional<std::uint64_t> TimeoutQueue::nextTime() const
{
    if (m_entries.empty()) return std::nullopt;
    return m_entries.begin()->first.first;
}

bool TimeoutQueue::popDue(std::uint64_t now, TimeoutEntry& entry)
{
    if (m_entries.empty() || m_entries.begin()->first.first > now) return false;
    entry = m_entries.begin()->second;
    m_entries.erase(m_entries.begin());
    return true;
}

void TimeoutQueue::dropEntriesOf(PROCESS pid)
{
    for (auto it = m_entries.begin(); it != m_entries.end();) {
        if (it->second.pid == pid) {
            if (it->second.signal != nullptr) SignalPool::release(it->second.signal);
            it = m_entries.erase(it);
        } else {
            ++it;
        }
    }
}

} // namespace ose
