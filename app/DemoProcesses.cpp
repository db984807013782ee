#include "app/DemoProcesses.h"

#include "app/DemoSignals.h"
#include "ose/Kernel.h"
#include "ose/Trace.h"

#include <cstring>
#include <string>

namespace demo {
namespace {

using namespace ose;

TraceGroupId group()
{
    static const TraceGroupId id = Trace::registerGroup("demo");
    return id;
}

// Answers that echo owes, carried through the kernel and back.
constexpr SIGSELECT DEMO_DELAY_DUE = 0x00DE0101;
constexpr SIGSELECT DEMO_NAME_FOUND = 0x00DE0102;

struct Owed {
    be_u32 sigNo;
    be_u32 requester;
    be_u32 ms;
};
OSE_SIGNAL_LAYOUT(Owed, 12);

Signal* owed(SIGSELECT sigNo, PROCESS requester, std::uint32_t ms)
{
    auto* signal = alloc_as<Owed>(sigNo);
    signal->requester = requester;
    signal->ms = ms;
    return reinterpret_cast<Signal*>(signal);
}

void startDelay(Signal* request)
{
    const auto* delayReq = signal_cast<DEMO_DELAY_REQ_S>(request);
    if (delayReq == nullptr) {
        SSC_TRACE(group(), 5, "DEMO_DELAY_REQ too short (%u bytes): ignored", sigsize(&request));
        return;
    }
    Signal* due = owed(DEMO_DELAY_DUE, sender(&request), delayReq->ms);
    request_tmo(delayReq->ms, &due);
}

void answerDelay(Signal* due)
{
    const auto* o = signal_cast<Owed>(due);
    auto* cfm = alloc_as<DEMO_DELAY_CFM_S>(DEMO_DELAY_CFM);
    cfm->ms = o->ms;
    cfm->worldTimeMs = get_time_ms();
    Signal* out = reinterpret_cast<Signal*>(cfm);
    SSC_TRACE(group(), 7, "DEMO_DELAY_CFM after %u ms to %u", static_cast<unsigned>(o->ms),
              static_cast<unsigned>(o->requester));
    send(&out, o->requester);
}

void startHunt(Signal* request)
{
    const auto* huntReq = signal_cast<DEMO_HUNT_REQ_S>(request);
    if (huntReq == nullptr || std::memchr(huntReq->name, '\0', sizeof huntReq->name) == nullptr) {
        SSC_TRACE(group(), 5, "DEMO_HUNT_REQ without a NUL-terminated name: ignored");
        return;
    }
    SSC_TRACE(group(), 7, "hunting %s for %u", huntReq->name, sender(&request));
    Signal* found = owed(DEMO_NAME_FOUND, sender(&request), 0);
    hunt(huntReq->name, 0, nullptr, &found);
}

void answerHunt(Signal* found)
{
    const auto* o = signal_cast<Owed>(found);
    auto* cfm = alloc_as<DEMO_HUNT_CFM_S>(DEMO_HUNT_CFM);
    cfm->pid = sender(&found);
    Signal* out = reinterpret_cast<Signal*>(cfm);
    send(&out, o->requester);
}

void echo()
{
    for (;;) {
        Signal* signal = receive(kAnySignal);
        switch (signalNumber(signal)) {
        case DEMO_DELAY_REQ: startDelay(signal); break;
        case DEMO_DELAY_DUE: answerDelay(signal); break;
        case DEMO_HUNT_REQ: startHunt(signal); break;
        case DEMO_NAME_FOUND: answerHunt(signal); break;
        case DEMO_DIE_REQ:
            SSC_TRACE(group(), 4, "echo ends on request");
            free_buf(&signal);
            kill_proc(current_process());
            break;
        default: {
            PROCESS back = sender(&signal);
            send(&signal, back);
            continue;
        }
        }
        free_buf(&signal);
    }
}

void pinger()
{
    PROCESS echoPid = 0;
    Signal* found = alloc(4, DEMO_NAME_FOUND);
    hunt("echo", 0, nullptr, &found);
    static const SIGSELECT onlyFound[] = {1, DEMO_NAME_FOUND};
    found = receive(onlyFound);
    echoPid = sender(&found);
    free_buf(&found);
    for (std::uint32_t n = 1;; ++n) {
        delay(1000);
        Signal* ping = alloc(8, 0x00DE0200);
        storeBe32(reinterpret_cast<char*>(ping) + 4, n);
        send(&ping, echoPid);
        Signal* pong = receive_w_tmo(1000, kAnySignal);
        if (pong == nullptr) {
            SSC_TRACE(group(), 1, "ping %u: no answer from echo", n);
            continue;
        }
        SSC_TRACE(group(), 7, "ping %u answered", n);
        free_buf(&pong);
    }
}

void ticker()
{
    for (;;) {
        delay(10000);
        DateTime now = rtc_get_date_time();
        SSC_TRACE(group(), 6, "tick %04u-%02u-%02u %02u:%02u, ticks %u", now.year, now.month, now.day, now.hour,
                  now.minute, get_ticks());
    }
}

PROCESS startOne(World& world, Node& node, const char* name, void (*body)(), OSPRIORITY priority)
{
    ProcessSpec definition;
    definition.name = name;
    definition.priority = priority;
    definition.entry = body;
    PROCESS pid = world.createProcess(node, definition);
    world.start(pid);
    return pid;
}

} // namespace

void startDemoProcesses(World& world, Node& node)
{
    startOne(world, node, "echo", &echo, 16);
    startOne(world, node, "pinger", &pinger, 20);
    startOne(world, node, "ticker", &ticker, 24);
}

} // namespace demo
