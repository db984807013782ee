#include "platform/WLOsHandler.h"

#include "ose/Kernel.h"

#include <new>

ose::PROCESS WLOsHandler::createPhantom(const char* name)
{
    // One entry: the entry count and the default target, the caller.
    const ose::RedirEntry redirection[] = {{1, ose::current_process()}};
    return ose::create_process(ose::ProcessType::Phantom, name, {}, 0, 0, redirection);
}

void WLOsHandler::killProcess(ose::PROCESS pid)
{
    if (pid != 0) ose::kill_proc(pid);
}

ose::Signal* WLOsHandler::alloc(ose::OSBUFSIZE size, ose::SIGSELECT sigNo)
{
    ose::Signal* signal = ose::alloc(size, sigNo);
    if (signal == nullptr) throw std::bad_alloc(); // the one failure that may cross an interface
    return signal;
}

void WLOsHandler::free(ose::Signal** signal) { ose::free_buf(signal); }

void WLOsHandler::send(ose::Signal** signal, ose::PROCESS pid) { ose::send(signal, pid); }

ose::Signal* WLOsHandler::receive(ose::Selector selector) { return ose::receive(selector); }

ose::Signal* WLOsHandler::receiveWithTimeout(ose::Selector selector, std::uint32_t timeoutMs)
{
    return ose::receive_w_tmo(timeoutMs, selector);
}

ose::PROCESS WLOsHandler::sender(ose::Signal* signal) { return ose::sender(&signal); }

ose::PROCESS WLOsHandler::receiverOf(ose::PROCESS pid, ose::SIGSELECT sigNo) { return ose::receiver_of(pid, sigNo); }

void WLOsHandler::attach(ose::Signal** signal, ose::PROCESS pid) { ose::attach(signal, pid); }

OsDateTime WLOsHandler::getDateTime()
{
    const ose::DateTime now = ose::rtc_get_date_time();
    return {now.year, now.month, now.day, now.hour, now.minute};
}

std::uint32_t WLOsHandler::getSystemTicks() { return ose::get_ticks(); }

std::uint32_t WLOsHandler::getMinutes() { return ose::rtc_get_minutes(); }

ose::OSBUFSIZE WLOsHandler::sigsize(ose::Signal* signal) { return ose::sigsize(&signal); }

void WLOsHandler::delay(std::uint32_t ms) { ose::delay(ms); }

ose::PROCESS WLOsHandler::currentProcess() { return ose::current_process(); }
