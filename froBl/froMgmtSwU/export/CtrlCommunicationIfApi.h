#pragma once
// The object process's way to the four servers of the core process.

#include "ose/Signal.h"

#include <cstdint>

enum class CtrlService : std::uint32_t {
    Equipment = 0,
    Cabinet = 1,
    Alarm = 2,
    Power = 3,
};

class CtrlCommunicationIfApi {
public:
    virtual ~CtrlCommunicationIfApi() = default;
    // Finds the core's servers; waits until each is there.
    virtual void init() = 0;
    // Both sends take the signal: it passes to the server, or is freed when
    // it cannot be sent. 1 when sent, 0 when not.
    virtual int sendSignal(ose::Signal** signal, ose::PROCESS pid) = 0;
    virtual int sendSignal(ose::Signal** signal, CtrlService destination) = 0;
    virtual void registerService(CtrlService service, ose::PROCESS pid) = 0;
};
