#include "frame/TimerService.h"

#include <cstdio>
#include <cstdlib>

namespace {
TimerHandler* g_pTimerHandler = nullptr;

TimerHandler& handler()
{
    if (g_pTimerHandler == nullptr) {
        std::fputs("TimerService used without a TimerHandler\n", stderr);
        std::abort();
    }
    return *g_pTimerHandler;
}
} // namespace

void TimerService::setHandler(TimerHandler* handler)
{
    g_pTimerHandler = handler;
    if (handler != nullptr) handler->init();
}

TimerHandler* TimerService::getHandler() { return g_pTimerHandler; }

int TimerService::startTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                             std::uint32_t argument)
{
    return handler().startTimer(timeMs, timerType, observer, argument);
}

int TimerService::startCyclicTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                                   std::uint32_t argument)
{
    return handler().startCyclicTimer(timeMs, timerType, observer, argument);
}

int TimerService::stopTimer(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument)
{
    return handler().stopTimer(timerType, observer, argument);
}

int TimerService::stopAllTimers(TimerObserverIf* observer)
{
    // Observers call this from their destructors, also after the core's
    // handlers are gone (at the end of a test); nothing is left to stop then.
    return g_pTimerHandler != nullptr ? g_pTimerHandler->stopAllTimers(observer) : 1;
}

int TimerService::isTimerRunning(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument)
{
    return handler().isTimerRunning(timerType, observer, argument);
}
