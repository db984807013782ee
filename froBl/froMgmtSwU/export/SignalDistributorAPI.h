#pragma once
// Subscription of signal numbers in the object process: the receive loop
// hands each signal to the distributor, which gives it to every subscriber
// whose filters it passes.

#include "froBl/froMgmtSwU/export/SignalSubscriber.h"

#include "ose/Types.h"

#include <cstdint>

class SignalDistributorAPI {
public:
    virtual ~SignalDistributorAPI() = default;

    // 1, or 0 if the subscriber has a subscription for sigNo already (whatever
    // its filters) or the content filter's offset is not a multiple of 4.
    virtual int subscribe(ose::SIGSELECT sigNo, SignalSubscriber* subscriber) = 0;
    virtual int subscribe(ose::SIGSELECT sigNo, ose::PROCESS senderPid, SignalSubscriber* subscriber) = 0;
    virtual int subscribe(ose::SIGSELECT sigNo, ose::PROCESS senderPid, std::uint32_t fieldOffset,
                          std::uint32_t fieldValue, SignalSubscriber* subscriber) = 0;
    virtual int subscribe(ose::SIGSELECT sigNo, std::uint32_t fieldOffset, std::uint32_t fieldValue,
                          SignalSubscriber* subscriber) = 0;
    // Removes the first subscription of subscriber for sigNo: 1, or 0 if none.
    virtual int unsubscribe(ose::SIGSELECT sigNo, SignalSubscriber* subscriber) = 0;
    // The byte distance from the start of a signal to one of its fields.
    virtual std::uint32_t offsetOf(const void* signalStart, const void* field) const = 0;
    // True if at least one subscriber's handleSignal ran.
    virtual bool distribute(ose::Signal* signal) = 0;
};
