#include "ose/ReadyQueue.h"

#include "ose/Process.h"

#include <algorithm>
#include <bit>

namespace ose {

void ReadyQueue::pushBack(Process* process)
{
    unsigned level = process->priority();
    m_levels[level].push_back(process);
    m_occupied |= 1u << level;
}

void ReadyQueue::pushFront(Process* process)
{
    unsigned level = process->priority();
    m_levels[level].push_front(process);
    m_occupied |= 1u << level;
}

Process* ReadyQueue::popHighest()
{
    if (m_occupied == 0) return nullptr;
    unsigned level = static_cast<unsigned>(std::countr_zero(m_occupied));
    Process* process = m_levels[level].front();
    m_levels[level].pop_front();
    if (m_levels[level].empty()) m_occupied &= ~(1u << level);
    return process;
}

void ReadyQueue::remove(Process* process)
{
    unsigned level = process->priority();
    auto& queue = m_levels[level];
    queue.erase(std::remove(queue.begin(), queue.end(), process), queue.end());
    if (queue.empty()) m_occupied &= ~(1u << level);
}

unsigned ReadyQueue::highestPriority() const
{
    return m_occupied == 0 ? kLevels : static_cast<unsigned>(std::countr_zero(m_occupied));
}

} // namespace ose
