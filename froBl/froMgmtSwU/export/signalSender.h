#pragma once
// The one place where the object process sends to the core: every signal is
// traced with its number and size on its way out.

#include "ose/Signal.h"

class signalSender {
public:
    // The signal passes to the receiver.
    void send(ose::Signal** signal, ose::PROCESS pid) const;
};
