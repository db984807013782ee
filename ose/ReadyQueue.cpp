#include "ose/ReadyQueue.h"

#include "ose/Process.h"

#include <bit>

namespace ose {

void ReadyQueue::pushBack(Process* process)
{
    if (process->m_inReadyQueue) remove(process);
    const unsigned level = process->priority();
    Level& queue = m_levels[level];
    process->m_pReadyPrev = queue.pLast;
    process->m_pReadyNext = nullptr;
    if (queue.pLast != nullptr) queue.pLast->m_pReadyNext = process;
    else queue.pFirst = process;
    queue.pLast = process;
    process->m_inReadyQueue = true;
    m_occupied |= 1u << level;
}

void ReadyQueue::pushFront(Process* process)
{
    if (process->m_inReadyQueue) remove(process);
    const unsigned level = process->priority();
    Level& queue = m_levels[level];
    process->m_pReadyPrev = nullptr;
    process->m_pReadyNext = queue.pFirst;
    if (queue.pFirst != nullptr) queue.pFirst->m_pReadyPrev = process;
    else queue.pLast = process;
    queue.pFirst = process;
    process->m_inReadyQueue = true;
    m_occupied |= 1u << level;
}

Process* ReadyQueue::popHighest()
{
    if (m_occupied == 0) return nullptr;
    Process* process = m_levels[static_cast<unsigned>(std::countr_zero(m_occupied))].pFirst;
    remove(process);
    return process;
}

void ReadyQueue::remove(Process* process)
{
    if (!process->m_inReadyQueue) return;
    const unsigned level = process->priority();
    Level& queue = m_levels[level];
    if (process->m_pReadyPrev != nullptr) process->m_pReadyPrev->m_pReadyNext = process->m_pReadyNext;
    else queue.pFirst = process->m_pReadyNext;
    if (process->m_pReadyNext != nullptr) process->m_pReadyNext->m_pReadyPrev = process->m_pReadyPrev;
    else queue.pLast = process->m_pReadyPrev;
    process->m_pReadyPrev = nullptr;
    process->m_pReadyNext = nullptr;
    process->m_inReadyQueue = false;
    if (queue.pFirst == nullptr) m_occupied &= ~(1u << level);
}

unsigned ReadyQueue::highestPriority() const
{
    return m_occupied == 0 ? kLevels : static_cast<unsigned>(std::countr_zero(m_occupied));
}

} // namespace ose
