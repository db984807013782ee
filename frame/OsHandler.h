#pragma once
// The kernel as the core sees it. The target's implementation is
// WLOsHandler; unit tests put a fake in its place through OsService.

#include "ose/Signal.h"
#include "ose/Types.h"

#include <cstdint>

struct OsDateTime {
    std::uint16_t year;   // full year
    std::uint16_t month;  // 1..12
    std::uint16_t day;
    std::uint16_t hour;
    std::uint16_t minute;
};

class OsHandler {
public:
    virtual ~OsHandler() = default;

    // A phantom process of that name whose every signal goes to the caller.
    virtual ose::PROCESS createPhantom(const char* name) = 0;
    // Nothing for pid 0.
    virtual void killProcess(ose::PROCESS pid) = 0;
    // A buffer with the number set; never NIL (allocation failure throws).
    virtual ose::Signal* alloc(ose::OSBUFSIZE size, ose::SIGSELECT sigNo) = 0;
    // Sets the caller's pointer to NIL.
    virtual void free(ose::Signal** signal) = 0;
    // Takes the buffer over; sets the caller's pointer to NIL.
    virtual void send(ose::Signal** signal, ose::PROCESS pid) = 0;
    // Blocks; the selector {0} takes any signal.
    virtual ose::Signal* receive(ose::Selector selector) = 0;
    // NIL when the time is up.
    virtual ose::Signal* receiveWithTimeout(ose::Selector selector, std::uint32_t timeoutMs) = 0;
    virtual ose::PROCESS sender(ose::Signal* signal) = 0;
    // The process a signal of that number sent to `pid` reaches (through
    // phantoms); 0 when it would reach none.
    virtual ose::PROCESS receiverOf(ose::PROCESS pid, ose::SIGSELECT sigNo) = 0;
    // The signal comes back to the caller when `pid` dies.
    virtual void attach(ose::Signal** signal, ose::PROCESS pid) = 0;
    virtual OsDateTime getDateTime() = 0;
    virtual std::uint32_t getSystemTicks() = 0;
    // Calendar time in minutes since 1970.
    virtual std::uint32_t getMinutes() = 0;

    virtual ose::OSBUFSIZE sigsize(ose::Signal* signal) = 0;
    virtual void delay(std::uint32_t ms) = 0;
    virtual ose::PROCESS currentProcess() = 0;
};
