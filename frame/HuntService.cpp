#include "frame/HuntService.h"

#include <cstdio>
#include <cstdlib>

namespace {
HuntHandler* g_pHuntHandler = nullptr;

HuntHandler& handler()
{
    if (g_pHuntHandler == nullptr) {
        std::fputs("HuntService used without a HuntHandler\n", stderr);
        std::abort();
    }
    return *g_pHuntHandler;
}
} // namespace

void HuntService::setHandler(HuntHandler* handler) { g_pHuntHandler = handler; }
HuntHandler* HuntService::getHandler() { return g_pHuntHandler; }

void HuntService::hunt(const char* name, ose::Signal* signal) { handler().hunt(name, signal); }

ose::PROCESS HuntService::huntAndWait(const char* name, ose::Signal* signal, std::uint32_t timeoutMs)
{
    return handler().huntAndWait(name, signal, timeoutMs);
}
