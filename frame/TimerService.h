#pragma once
// All time in the core: static calls forwarded to the one TimerHandler (not
// owned; whoever sets it clears it before it goes away).

#include "frame/TimerHandler.h"

class TimerService {
public:
    // Subscribes the handler's signals at once.
    static void setHandler(TimerHandler* handler);
    static TimerHandler* getHandler();

    static int startTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                          std::uint32_t argument);
    static int startCyclicTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                                std::uint32_t argument);
    static int stopTimer(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument);
    static int stopAllTimers(TimerObserverIf* observer);
    static int isTimerRunning(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument);
};
