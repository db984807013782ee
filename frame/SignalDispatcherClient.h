#pragma once
// A receiver of signals through the dispatcher: the signal servers and the
// timer handler.

#include "ose/Signal.h"

#include <cstdint>

class SignalDispatcherClient {
public:
    virtual ~SignalDispatcherClient() = default;
    // The signal stays the dispatcher's: no free, no pointer kept after return.
    virtual void receiveSignal(ose::Signal* signal) = 0;
    // The reference the client holds now; a subscription made under another
    // reference no longer reaches it.
    virtual std::uint32_t getClientRef() = 0;
    virtual void registerSignals() = 0;
};
