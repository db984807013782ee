#pragma once
// Implemented by whoever wants to be called later. An expiry is called from
// the core's receive loop, never beside a signal handler.

#include "frame/TimerId.h"

class TimerObserverIf {
public:
    virtual ~TimerObserverIf() = default;
    virtual void timeout(TimerId timerId) = 0;
};
