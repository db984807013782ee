#include "ose/Kernel.h"

#include "ose/SignalPool.h"
#include "ose/Trace.h"
#include "ose/World.h"

namespace ose {
namespace {

World* worldFor(const char* operation)
{
    World* world = World::current();
    if (world == nullptr) SSC_TRACE(oseTraceGroup(), 1, "%s called outside a running world: ignored", operation);
    return world;
}

PROCESS callerPid(World& world)
{
    Process* process = world.currentProcess();
    return process != nullptr ? process->pid() : 0;
}

const SignalHeader* liveHeader(Signal* const* signal, const char* operation)
{
    if (signal == nullptr || !SignalPool::isLive(*signal)) {
        SSC_TRACE(oseTraceGroup(), 1, "%s of a NIL or freed signal", operation);
        return nullptr;
    }
    return SignalHeader::of(*signal);
}

} // namespace

Signal* alloc(OSBUFSIZE size, SIGSELECT sigNo)
{
    if (size < SignalPool::kMinSize)
        SSC_TRACE(oseTraceGroup(), 1, "alloc of %u bytes for signal %u: a signal holds at least its number, 4 bytes given",
                  size, sigNo);
    Signal* signal = SignalPool::allocate(size, sigNo);
    if (signal == nullptr)
        SSC_TRACE(oseTraceGroup(), 1, "alloc of %u bytes for signal %u: larger than the largest buffer (%u)", size, sigNo,
                  SignalPool::kMaxSize);
    return signal;
}

void free_buf(Signal** signal)
{
    if (signal == nullptr || *signal == nullptr) {
        SSC_TRACE(oseTraceGroup(), 1, "free_buf of a NIL signal ignored");
        return;
    }
    if (!SignalPool::release(*signal))
        SSC_TRACE(oseTraceGroup(), 1, "free_buf of a signal freed already ignored");
    *signal = nullptr;
}

void send(Signal** signal, PROCESS to)
{
    World* world = worldFor("send");
    if (world == nullptr) {
        if (signal != nullptr && *signal != nullptr) SignalPool::release(*signal), *signal = nullptr;
        return;
    }
    world->send(signal, callerPid(*world), to);
}

void send_w_s(Signal** signal, PROCESS from, PROCESS to)
{
    World* world = worldFor("send_w_s");
    if (world == nullptr) {
        if (signal != nullptr && *signal != nullptr) SignalPool::release(*signal), *signal = nullptr;
        return;
    }
    world->send(signal, from, to);
}

Signal* receive(Selector selector)
{
    World* world = worldFor("receive");
    return world != nullptr ? world->receive(selector, kWaitForever, 0) : nullptr;
}

Signal* receive_w_tmo(OSTIME timeoutMs, Selector selector)
{
    World* world = worldFor("receive_w_tmo");
    return world != nullptr ? world->receive(selector, timeoutMs, 0) : nullptr;
}

Signal* receive_from(OSTIME timeoutMs, Selector selector, PROCESS from)
{
    World* world = worldFor("receive_from");
    return world != nullptr ? world->receive(selector, timeoutMs, from) : nullptr;
}

PROCESS sender(Signal* const* signal)
{
    const SignalHeader* header = liveHeader(signal, "sender");
    return header != nullptr ? header->sender : 0;
}

PROCESS addressee(Signal* const* signal)
{
    const SignalHeader* header = liveHeader(signal, "addressee");
    return header != nullptr ? header->addressee : 0;
}

OSBUFSIZE sigsize(Signal* const* signal)
{
    const SignalHeader* header = liveHeader(signal, "sigsize");
    return header != nullptr ? header->size : 0;
}

PROCESS create_process(ProcessType type, const char* name, std::function<void()> entry, OSBUFSIZE stackSize,
                       OSPRIORITY priority, std::span<const RedirEntry> redirection)
{
    World* world = worldFor("create_process");
    if (world == nullptr) return 0;
    ProcessSpec definition;
    definition.type = type;
    definition.name = name != nullptr ? name : "";
    definition.entry = std::move(entry);
    definition.stackSize = stackSize;
    definition.priority = priority;
    if (!redirection.empty()) {
        std::size_t count = redirection[0].sig;
        if (count > redirection.size() || count == 0) {
            SSC_TRACE(oseTraceGroup(), 1, "create_process %s: redirection table says %zu entries, %zu given",
                      definition.name.c_str(), count, redirection.size());
            count = redirection.size();
        }
        definition.redirection.assign(redirection.begin(), redirection.begin() + static_cast<std::ptrdiff_t>(count));
        definition.redirection[0].sig = static_cast<SIGSELECT>(count);
    }
    Process* caller = world->currentProcess();
    return world->createProcess(caller != nullptr ? caller->node() : world->defaultNode(), definition);
}

void start(PROCESS pid)
{
    if (World* world = worldFor("start")) world->start(pid);
}

void kill_proc(PROCESS pid)
{
    if (World* world = worldFor("kill_proc")) world->kill(pid);
}

PROCESS current_process()
{
    World* world = World::current();
    return world != nullptr ? callerPid(*world) : 0;
}

bool get_pid_name(PROCESS pid, std::string& name)
{
    World* world = World::current();
    Process* process = world != nullptr ? world->findProcess(pid) : nullptr;
    if (process == nullptr) return false;
    name = process->name();
    return true;
}

PROCESS receiver_of(PROCESS pid, SIGSELECT sigNo)
{
    World* world = World::current();
    return world != nullptr ? world->receiverOf(pid, sigNo) : 0;
}

void delay(OSTIME ms)
{
    if (World* world = worldFor("delay")) world->delay(ms);
}

OSBOOLEAN hunt(const char* name, OSUSER /*user*/, PROCESS* pid, Signal** huntSignal)
{
    World* world = worldFor("hunt");
    if (world == nullptr || name == nullptr) {
        if (pid != nullptr) *pid = 0;
        if (huntSignal != nullptr && *huntSignal != nullptr) SignalPool::release(*huntSignal), *huntSignal = nullptr;
        return false;
    }
    return world->hunt(callerPid(*world), name, pid, huntSignal);
}

OSATTREF attach(Signal** signal, PROCESS pid)
{
    World* world = worldFor("attach");
    if (world == nullptr) {
        if (signal != nullptr && *signal != nullptr) SignalPool::release(*signal), *signal = nullptr;
        return 0;
    }
    return world->attach(callerPid(*world), signal, pid);
}

void detach(OSATTREF* ref)
{
    if (World* world = worldFor("detach")) world->detach(ref);
}

OSTICK get_ticks()
{
    return static_cast<OSTICK>(get_time_ms());
}

std::uint64_t get_time_ms()
{
    World* world = World::current();
    return world != nullptr ? world->now() : 0;
}

OSTMOREF request_tmo(OSTIME ms, Signal** signal)
{
    World* world = worldFor("request_tmo");
    if (world == nullptr) {
        if (signal != nullptr && *signal != nullptr) SignalPool::release(*signal), *signal = nullptr;
        return {};
    }
    return world->requestTimeout(callerPid(*world), ms, signal);
}

Signal* cancel_tmo(OSTMOREF* ref)
{
    World* world = worldFor("cancel_tmo");
    return world != nullptr ? world->cancelTimeout(ref) : nullptr;
}

bool restart_tmo(OSTMOREF* ref, OSTIME ms)
{
    World* world = worldFor("restart_tmo");
    return world != nullptr && world->restartTimeout(ref, ms);
}

DateTime rtc_get_date_time()
{
    World* world = World::current();
    CalendarTime time = world != nullptr ? world->clock().calendar() : Clock::toCalendar(0);
    return {static_cast<std::uint16_t>(time.year), static_cast<std::uint16_t>(time.month),
            static_cast<std::uint16_t>(time.day), static_cast<std::uint16_t>(time.hour),
            static_cast<std::uint16_t>(time.minute)};
}

std::uint32_t rtc_get_minutes()
{
    World* world = World::current();
    return world != nullptr ? world->clock().minutesSince1970() : 0;
}

} // namespace ose
