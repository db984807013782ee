#pragma once
// Pending time-outs of one world, ordered by their time and, at equal times,
// by the order in which they were requested (so runs repeat exactly).

#include "ose/Signal.h"
#include "ose/Types.h"

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

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
    std::size_t size() const { return m_entries.size(); }

private:
    std::map<std::pair<std::uint64_t, std::uint64_t>, TimeoutEntry> m_entries;
    std::uint64_t m_nextSeq = 1;
};

} // namespace ose
