#include "ose/TimeoutQueue.h"

#include "ose/SignalPool.h"

namespace ose {

TimeoutQueue::~TimeoutQueue()
{
    for (std::uint32_t row : m_heap)
        if (m_rows[row].entry.signal != nullptr) SignalPool::release(m_rows[row].entry.signal);
}

OSTMOREF TimeoutQueue::add(std::uint64_t when, TimeoutEntry entry)
{
    std::uint32_t row = 0;
    if (m_freeRows.empty()) {
        row = static_cast<std::uint32_t>(m_rows.size());
        m_rows.emplace_back();
    } else {
        row = m_freeRows.back();
        m_freeRows.pop_back();
    }
    m_rows[row] = {when, m_nextSeq++, 0, entry};
    m_heap.push_back(row);
    m_rows[row].heapIndex = static_cast<std::uint32_t>(m_heap.size() - 1);
    siftUp(m_rows[row].heapIndex);
    return {when, m_rows[row].seq, row};
}

bool TimeoutQueue::cancel(const OSTMOREF& ref, TimeoutEntry* entry)
{
    if (ref.seq == 0 || ref.slot >= m_rows.size() || m_rows[ref.slot].seq != ref.seq) return false;
    TimeoutEntry removed = remove(ref.slot);
    if (entry != nullptr) *entry = removed;
    return true;
}

std::optional<std::uint64_t> TimeoutQueue::nextTime() const
{
    if (m_heap.empty()) return std::nullopt;
    return m_rows[m_heap.front()].when;
}

bool TimeoutQueue::popDue(std::uint64_t now, TimeoutEntry& entry)
{
    if (m_heap.empty() || m_rows[m_heap.front()].when > now) return false;
    entry = remove(m_heap.front());
    return true;
}

void TimeoutQueue::dropEntriesOf(PROCESS pid)
{
    for (std::uint32_t row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row].seq == 0 || m_rows[row].entry.pid != pid) continue;
        TimeoutEntry entry = remove(row);
        if (entry.signal != nullptr) SignalPool::release(entry.signal);
    }
}

bool TimeoutQueue::earlier(std::uint32_t a, std::uint32_t b) const
{
    const Row& left = m_rows[a];
    const Row& right = m_rows[b];
    return left.when != right.when ? left.when < right.when : left.seq < right.seq;
}

void TimeoutQueue::place(std::uint32_t heapIndex, std::uint32_t row)
{
    m_heap[heapIndex] = row;
    m_rows[row].heapIndex = heapIndex;
}

void TimeoutQueue::siftUp(std::uint32_t heapIndex)
{
    const std::uint32_t row = m_heap[heapIndex];
    while (heapIndex > 0) {
        const std::uint32_t parent = (heapIndex - 1) / 2;
        if (!earlier(row, m_heap[parent])) break;
        place(heapIndex, m_heap[parent]);
        heapIndex = parent;
    }
    place(heapIndex, row);
}

void TimeoutQueue::siftDown(std::uint32_t heapIndex)
{
    const std::uint32_t row = m_heap[heapIndex];
    const auto count = static_cast<std::uint32_t>(m_heap.size());
    for (;;) {
        std::uint32_t child = 2 * heapIndex + 1;
        if (child >= count) break;
        if (child + 1 < count && earlier(m_heap[child + 1], m_heap[child])) ++child;
        if (!earlier(m_heap[child], row)) break;
        place(heapIndex, m_heap[child]);
        heapIndex = child;
    }
    place(heapIndex, row);
}

TimeoutEntry TimeoutQueue::remove(std::uint32_t row)
{
    const std::uint32_t heapIndex = m_rows[row].heapIndex;
    const std::uint32_t last = m_heap.back();
    m_heap.pop_back();
    if (last != row) {
        place(heapIndex, last);
        // The moved row may belong above or below the hole.
        siftUp(heapIndex);
        siftDown(m_rows[last].heapIndex);
    }
    TimeoutEntry entry = m_rows[row].entry;
    m_rows[row].seq = 0;
    m_rows[row].entry = {};
    m_freeRows.push_back(row);
    return entry;
}

} // namespace ose
