#include "frame/OsService.h"

#include <cstdio>
#include <cstdlib>

namespace {
OsHandler* g_pOsHandler = nullptr;
}

void OsService::setHandler(OsHandler* handler) { g_pOsHandler = handler; }
OsHandler* OsService::getHandler() { return g_pOsHandler; }

OsHandler& OsService::handler()
{
    if (g_pOsHandler == nullptr) {
        // A call before start or after the handler went away is a fault of
        // the program, not of its input: stop at once and say where.
        std::fputs("OsService used without an OsHandler\n", stderr);
        std::abort();
    }
    return *g_pOsHandler;
}

ose::PROCESS OsService::createPhantom(const char* name) { return handler().createPhantom(name); }
void OsService::killProcess(ose::PROCESS pid) { handler().killProcess(pid); }
ose::Signal* OsService::alloc(ose::OSBUFSIZE size, ose::SIGSELECT sigNo) { return handler().alloc(size, sigNo); }
void OsService::free(ose::Signal** signal) { handler().free(signal); }
void OsService::send(ose::Signal** signal, ose::PROCESS pid) { handler().send(signal, pid); }
ose::Signal* OsService::receive(ose::Selector selector) { return handler().receive(selector); }
ose::Signal* OsService::receiveWithTimeout(ose::Selector selector, std::uint32_t timeoutMs)
{
    return handler().receiveWithTimeout(selector, timeoutMs);
}
ose::PROCESS OsService::sender(ose::Signal* signal) { return handler().sender(signal); }

ose::PROCESS OsService::receiverOf(ose::PROCESS pid, ose::SIGSELECT sigNo) { return handler().receiverOf(pid, sigNo); }
void OsService::attach(ose::Signal** signal, ose::PROCESS pid) { handler().attach(signal, pid); }
OsDateTime OsService::getDateTime() { return handler().getDateTime(); }
std::uint32_t OsService::getSystemTicks() { return handler().getSystemTicks(); }
std::uint32_t OsService::getMinutes() { return handler().getMinutes(); }
ose::OSBUFSIZE OsService::sigsize(ose::Signal* signal) { return handler().sigsize(signal); }
void OsService::delay(std::uint32_t ms) { handler().delay(ms); }
ose::PROCESS OsService::currentProcess() { return handler().currentProcess(); }
