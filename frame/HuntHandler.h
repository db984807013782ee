#pragma once
// Finding processes by name. The target's implementation is WLHuntHandler.

#include "ose/Signal.h"
#include "ose/Types.h"

#include <cstdint>

class HuntHandler {
public:
    virtual ~HuntHandler() = default;
    // Issues the hunt and returns; `signal` comes back later from the process
    // found, as an ordinary signal whose sender is that process.
    virtual void hunt(const char* name, ose::Signal* signal) = 0;
    // Issues the hunt and waits up to `timeoutMs` for its signal: the pid of
    // the process found, or 0 (at once for a time-out of 0).
    virtual ose::PROCESS huntAndWait(const char* name, ose::Signal* signal, std::uint32_t timeoutMs) = 0;
};
