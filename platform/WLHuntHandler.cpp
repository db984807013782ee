#include "platform/WLHuntHandler.h"

#include "frame/SscTrace.h"

#include "ose/Kernel.h"

using namespace ssc_trace;

void WLHuntHandler::hunt(const char* name, ose::Signal* signal)
{
    ose::PROCESS found = 0;
    ose::hunt(name, 0, &found, &signal);
}

ose::PROCESS WLHuntHandler::huntAndWait(const char* name, ose::Signal* signal, std::uint32_t timeoutMs)
{
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    hunt(name, signal);
    if (timeoutMs == 0) return 0;
    SSC_TRACE(swuGroup(), kFlow, "Wait for signal: %d", static_cast<int>(sigNo));
    const ose::SIGSELECT selector[] = {1, sigNo};
    ose::Signal* answer = ose::receive_w_tmo(timeoutMs, selector);
    if (answer == nullptr) return 0;
    SSC_TRACE(swuGroup(), kFlow, "Succeeded with hunt");
    const ose::PROCESS pid = ose::sender(&answer);
    ose::free_buf(&answer);
    return pid;
}
