#pragma once
// Everything in the object process that takes signals from the distributor.
// It is given the received signal for the time of the call only: it never
// frees or keeps it.

#include "ose/Signal.h"

class SignalSubscriber {
public:
    virtual void handleSignal(ose::Signal* signal) = 0;
    virtual ~SignalSubscriber() = default;
};
