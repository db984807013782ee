#pragma once
// Time-outs of the object process. They come back as signals through the
// process's receive loop, so a time-out never interrupts other work.

#include "froBl/froMgmtSwU/export/SignalSubscriber.h"
#include "froBl/froMgmtSwU/export/TimerObserver.h"

#include <cstddef>
#include <cstdint>

class TimerApi {
public:
    enum Kind : std::uint32_t {
        OneShot = 0,
        Repeating = 1,
    };

    virtual ~TimerApi() = default;
    // Subscribes to the timer signal.
    virtual void init() = 0;
    virtual void handleSignal(ose::Signal* signal) = 0;
    // The observer is not owned and must cancel its timers before it goes.
    virtual std::uint32_t start(TimerObserver* observer, std::uint32_t kind, std::int32_t milliseconds) = 0;
    // An unknown id does nothing.
    virtual void cancel(std::uint32_t timerId) = 0;
    // The number of running timers.
    virtual std::size_t size() const = 0;
};
