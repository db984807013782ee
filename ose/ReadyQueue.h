#pragma once
// Ready processes by priority: the highest priority (0) first, first come
// first served within a priority. Each level is a list through the processes
// themselves, so that making a process ready allocates nothing.

#include "ose/Types.h"

#include <array>
#include <cstdint>

namespace ose {

class Process;

class ReadyQueue {
public:
    static constexpr unsigned kLevels = kLowestPriority + 1;

    // A process already waiting is moved, not queued twice.
    void pushBack(Process* process);
    // A process that was preempted goes back in front of its equals.
    void pushFront(Process* process);
    Process* popHighest();
    void remove(Process* process);
    // The best priority waiting, or kLevels when none is.
    unsigned highestPriority() const;
    bool empty() const { return m_occupied == 0; }

private:
    struct Level {
        Process* pFirst = nullptr;
        Process* pLast = nullptr;
    };

    std::array<Level, kLevels> m_levels;
    std::uint32_t m_occupied = 0; // bit n set: level n is not empty
};

} // namespace ose
