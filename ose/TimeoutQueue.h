#pragma once
// Pending time-outs of one world, ordered by their time and, at equal times,
// by the order in which they were requested (so runs repeat exactly).
//
// A binary heap over a table of rows that are reused: a time-out requested,
// cancelled or expired allocates nothing once the table has grown to the
// world's number of pending time-outs, and a reference finds its row at once.

#include "ose/Signal.h"
#include "ose/Types.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace ose {

struct TimeoutEntry {
    enum class Kind { WakeProcess, DeliverSignal };
    Kind kind = Kind::WakeProcess;
    PROCESS pid = 0;            // the process to wake, or that asked for the signal
    std::uint64_t token = 0;    // which wait of that process a wake belongs to
    Signal* signal = nullptr;   // owned while the entry waits
};

class TimeoutQueue {
public:
    TimeoutQueue() = default;
    TimeoutQueue(const TimeoutQueue&) = delete;
    TimeoutQueue& operator=(const TimeoutQueue&) = delete;
    ~TimeoutQueue();

    OSTMOREF add(std::uint64_t when, TimeoutEntry entry);
    // Takes the entry out; false when it has expired or never was.
    bool cancel(const OSTMOREF& ref, TimeoutEntry* entry = nullptr);
    std::optional<std::uint64_t> nextTime() const;
    // The first entry due at `now`, taken out.
    bool popDue(std::uint64_t now, TimeoutEntry& entry);
    // Drops every entry of a process that died, freeing their signals.
    void dropEntriesOf(PROCESS pid);
    std::size_t size() const { return m_heap.size(); }

private:
    struct Row {
        std::uint64_t when = 0;
        std::uint64_t seq = 0;      // 0 while the row is free
        std::uint32_t heapIndex = 0;
        TimeoutEntry entry;
    };

    bool earlier(std::uint32_t a, std::uint32_t b) const;
    void place(std::uint32_t heapIndex, std::uint32_t row);
    void siftUp(std::uint32_t heapIndex);
    void siftDown(std::uint32_t heapIndex);
    // Takes a row out of the heap and frees it; gives its entry.
    TimeoutEntry remove(std::uint32_t row);

    std::vector<Row> m_rows;
    std::vector<std::uint32_t> m_freeRows;
    std::vector<std::uint32_t> m_heap; // rows, earliest first
    std::uint64_t m_nextSeq = 1;
};

} // namespace ose
