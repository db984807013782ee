#pragma once
// The one way from the core to the kernel: static calls forwarded to the
// OsHandler set at start. The handler is not owned; whoever sets it clears it
// (setHandler(nullptr)) before it goes away.

#include "frame/OsHandler.h"

class OsService {
public:
    static void setHandler(OsHandler* handler);
    static OsHandler* getHandler();

    static ose::PROCESS createPhantom(const char* name);
    static void killProcess(ose::PROCESS pid);
    static ose::Signal* alloc(ose::OSBUFSIZE size, ose::SIGSELECT sigNo);
    static void free(ose::Signal** signal);
    static void send(ose::Signal** signal, ose::PROCESS pid);
    static ose::Signal* receive(ose::Selector selector);
    static ose::Signal* receiveWithTimeout(ose::Selector selector, std::uint32_t timeoutMs);
    static ose::PROCESS sender(ose::Signal* signal);
    static ose::PROCESS receiverOf(ose::PROCESS pid, ose::SIGSELECT sigNo);
    static void attach(ose::Signal** signal, ose::PROCESS pid);
    static OsDateTime getDateTime();
    static std::uint32_t getSystemTicks();
    static std::uint32_t getMinutes();
    static ose::OSBUFSIZE sigsize(ose::Signal* signal);
    static void delay(std::uint32_t ms);
    static ose::PROCESS currentProcess();

    // A typed view of a received signal, or NIL when it is shorter than T:
    // no length that arrives from outside is trusted.
    template <typename T>
    static const T* view(ose::Signal* signal)
    {
        return signal != nullptr && sigsize(signal) >= sizeof(T) ? reinterpret_cast<const T*>(signal) : nullptr;
    }

    // A typed buffer of T's size with the number set.
    template <typename T>
    static T* allocAs(ose::SIGSELECT sigNo)
    {
        return reinterpret_cast<T*>(alloc(sizeof(T), sigNo));
    }

private:
    static OsHandler& handler();
};
