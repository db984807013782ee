#pragma once
// Timers that never run out: for tests that only ask how many are running,
// such as how many faults the leaky bucket holds.

#include "froBl/froMgmtSwU/export/TimerApi.h"

#include <cstddef>
#include <cstdint>
#include <set>

class CountingTimer : public TimerApi {
public:
    void init() override {}
    void handleSignal(ose::Signal*) override {}
    std::uint32_t start(TimerObserver*, std::uint32_t, std::int32_t) override
    {
        m_running.insert(m_nextId);
        return m_nextId++;
    }
    void cancel(std::uint32_t timerId) override { m_running.erase(timerId); }
    std::size_t size() const override { return m_running.size(); }

private:
    std::set<std::uint32_t> m_running;
    std::uint32_t m_nextId = 0;
};
