#pragma once
// The OsHandler of the target: each operation is the kernel call of the
// same meaning, acting for the calling process.

#include "frame/OsHandler.h"

class WLOsHandler : public OsHandler {
public:
    ose::PROCESS createPhantom(const char* name) override;
    void killProcess(ose::PROCESS pid) override;
    ose::Signal* alloc(ose::OSBUFSIZE size, ose::SIGSELECT sigNo) override;
    void free(ose::Signal** signal) override;
    void send(ose::Signal** signal, ose::PROCESS pid) override;
    ose::Signal* receive(ose::Selector selector) override;
    ose::Signal* receiveWithTimeout(ose::Selector selector, std::uint32_t timeoutMs) override;
    ose::PROCESS sender(ose::Signal* signal) override;
    ose::PROCESS receiverOf(ose::PROCESS pid, ose::SIGSELECT sigNo) override;
    void attach(ose::Signal** signal, ose::PROCESS pid) override;
    OsDateTime getDateTime() override;
    std::uint32_t getSystemTicks() override;
    std::uint32_t getMinutes() override;
    ose::OSBUFSIZE sigsize(ose::Signal* signal) override;
    void delay(std::uint32_t ms) override;
    ose::PROCESS currentProcess() override;
};
