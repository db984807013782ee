#pragma once
// The core's receive loop and its sending side. Received signals belong to
// the dispatcher; sent signals pass to the receiver.

#include "ose/Signal.h"
#include "ose/Types.h"

#include <cstdint>

class SignalDispatcherClient;

class SignalDispatcherIf {
public:
    virtual ~SignalDispatcherIf() = default;

    virtual void sendSignal(ose::Signal* signal, ose::PROCESS pid) = 0;
    // Sends and waits for one reply; the reply (the caller frees it) or NIL.
    virtual ose::Signal* sendAndReceive(ose::Signal* signal, ose::PROCESS pid, ose::SIGSELECT replySigNo,
                                        std::uint32_t timeoutMs) = 0;
    virtual ose::Signal* sendAndReceive(ose::Signal* signal, ose::PROCESS pid, ose::SIGSELECT replySigNo1,
                                        ose::SIGSELECT replySigNo2, std::uint32_t timeoutMs) = 0;
    // The first queued signal of that number (the caller frees it), or NIL.
    virtual ose::Signal* receiveWithTimeout(ose::SIGSELECT sigNo, std::uint32_t timeoutMs) = 0;
    virtual ose::Signal* receiveWithTimeout(ose::SIGSELECT sigNo1, ose::SIGSELECT sigNo2,
                                            std::uint32_t timeoutMs) = 0;
    virtual void subscribeSignal(ose::SIGSELECT sigNo, SignalDispatcherClient* client,
                                 std::uint32_t clientRef) = 0;
    virtual void unsubscribeSignal(ose::SIGSELECT sigNo, SignalDispatcherClient* client) = 0;
    virtual ose::PROCESS getSender(ose::Signal* signal) = 0;
    virtual std::uint32_t newClientRef() = 0;
    // The receive loop; does not return.
    virtual void run() = 0;
};
