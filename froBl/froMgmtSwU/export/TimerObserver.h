#pragma once
// Everything in the object process that wants a time-out derives from this
// and is told the id of the timer that ran out.

#include <cstdint>

class TimerObserver {
public:
    virtual ~TimerObserver() = default;
    virtual void timeout(std::uint32_t timerId) = 0;
};
