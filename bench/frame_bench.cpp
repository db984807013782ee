// Cost of the core's signal dispatch: from a buffer in hand to the handler
// of a server's table, and through the whole receive loop of a core process
// reached through a server's phantom, beside the kernel's own floor.

#include "frame/OsService.h"
#include "frame/SSC_Server.h"
#include "frame/SignalDispatcher.h"
#include "frame/SignalDispatcherClient.h"
#include "frame/TimerService.h"
#include "platform/WLOsHandler.h"
#include "platform/WLTimerHandler.h"

#include "ose/Kernel.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace {

constexpr ose::SIGSELECT kFirstSig = 0x1704501;
constexpr ose::SIGSELECT kFillerBase = 0x1800000;

// A server of eight signals; the benchmark sends the last of its table.
class BenchServer : public SSC_Server {
public:
    explicit BenchServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}
    ~BenchServer() override { deregisterSignals(); }
    const char* getProcessName() const override { return "bench_server"; }
    const char* getServerName() const override { return "BenchServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override { return makeSignalIterator(*this, kTable); }

    std::uint64_t m_handled = 0;

private:
    void handle(ose::Signal*) { ++m_handled; }
    void reply(ose::Signal* signal)
    {
        ++m_handled;
        m_pDispatcher->sendSignal(OsService::alloc(8, kFirstSig + 8), m_pDispatcher->getSender(signal));
    }

    static constexpr SignalTableRow<BenchServer> kTable[] = {
        {kFirstSig + 0, "S0", &BenchServer::handle}, {kFirstSig + 1, "S1", &BenchServer::handle},
        {kFirstSig + 2, "S2", &BenchServer::handle}, {kFirstSig + 3, "S3", &BenchServer::handle},
        {kFirstSig + 4, "S4", &BenchServer::handle}, {kFirstSig + 5, "S5", &BenchServer::handle},
        {kFirstSig + 6, "S6", &BenchServer::reply},  {kFirstSig + 7, "S7", &BenchServer::handle},
    };
};

// Other subscriptions in the dispatcher's list, as the other servers make them.
class FillerClient : public SignalDispatcherClient {
public:
    void receiveSignal(ose::Signal*) override {}
    std::uint32_t getClientRef() override { return 1; }
    void registerSignals() override {}
};

// The dispatcher with `rows` subscriptions in all: the server's 8 and fillers.
struct Core {
    explicit Core(std::uint32_t rows)
    {
        OsService::setHandler(&os);
        dispatcher = std::make_unique<SignalDispatcher>();
        for (std::uint32_t i = 8; i < rows; ++i) dispatcher->subscribeSignal(kFillerBase + i, &filler, 1);
        server = std::make_unique<BenchServer>(dispatcher.get());
        server->registerSignals();
    }
    ~Core()
    {
        server.reset();
        dispatcher.reset();
        OsService::setHandler(nullptr);
    }
    WLOsHandler os;
    FillerClient filler;
    std::unique_ptr<SignalDispatcher> dispatcher;
    std::unique_ptr<BenchServer> server;
};

// Floor: a buffer allocated and freed, as each dispatched signal is.
void BM_AllocFree(benchmark::State& state)
{
    for (auto _ : state) {
        ose::Signal* signal = ose::alloc(8, kFirstSig);
        benchmark::DoNotOptimize(signal);
        ose::free_buf(&signal);
    }
}
BENCHMARK(BM_AllocFree);

// dispatch(): the list walk, the server's table walk, the handler, the free.
void BM_Dispatch(benchmark::State& state)
{
    Core core(static_cast<std::uint32_t>(state.range(0)));
    for (auto _ : state) core.dispatcher->dispatch(ose::alloc(8, kFirstSig + 7));
    state.counters["rows"] = static_cast<double>(core.dispatcher->subscriptionCount());
    if (core.server->m_handled != static_cast<std::uint64_t>(state.iterations())) state.SkipWithError("lost signals");
}
BENCHMARK(BM_Dispatch)->Arg(8)->Arg(64)->Arg(200)->Arg(512);

ose::PROCESS startProcess(ose::World& world, const std::string& name, std::function<void()> body,
                          ose::OSPRIORITY priority)
{
    ose::ProcessSpec definition;
    definition.name = name;
    definition.priority = priority;
    definition.entry = std::move(body);
    ose::PROCESS pid = world.createProcess(world.defaultNode(), definition);
    world.start(pid);
    return pid;
}

// The core process with its receive loop and a phantom for its server; the
// benchmark's client runs at a lower priority, so each signal is taken and
// dispatched as soon as it is sent.
void runThroughCore(benchmark::State& state, bool withReply)
{
    ose::World world;
    std::uint32_t rows = static_cast<std::uint32_t>(state.range(0));
    startProcess(world, "SSC_THREAD", [rows] {
        Core core(rows);
        core.server->startProcess();
        core.dispatcher->run();
    }, 16);
    startProcess(world, "client", [&] {
        ose::PROCESS phantom = 0;
        if (!ose::hunt("bench_server", 0, &phantom, nullptr)) {
            state.SkipWithError("no phantom");
            return;
        }
        const ose::SIGSELECT replySelector[] = {1, kFirstSig + 8};
        for (auto _ : state) {
            ose::Signal* signal = ose::alloc(8, withReply ? kFirstSig + 6 : kFirstSig + 7);
            ose::send(&signal, phantom);
            if (withReply) {
                ose::Signal* reply = ose::receive(replySelector);
                ose::free_buf(&reply);
            }
        }
    }, 20);
    world.runUntilIdle();
}

void BM_CoreLoopThroughPhantom(benchmark::State& state) { runThroughCore(state, false); }
BENCHMARK(BM_CoreLoopThroughPhantom)->Arg(8)->Arg(200);

void BM_CoreRequestReply(benchmark::State& state) { runThroughCore(state, true); }
BENCHMARK(BM_CoreRequestReply)->Arg(200);

// Floor of the loop: the same signal through the same phantom to a process
// that only receives and frees it.
void BM_KernelLoopThroughPhantom(benchmark::State& state)
{
    ose::World world;
    ose::PROCESS receiver = startProcess(world, "receiver", [] {
        for (;;) {
            ose::Signal* signal = ose::receive(ose::kAnySignal);
            ose::free_buf(&signal);
        }
    }, 16);
    startProcess(world, "client", [&] {
        const ose::RedirEntry redirection[] = {{1, receiver}};
        ose::PROCESS phantom = ose::create_process(ose::ProcessType::Phantom, "plain", {}, 0, 0, redirection);
        for (auto _ : state) {
            ose::Signal* signal = ose::alloc(8, kFirstSig + 7);
            ose::send(&signal, phantom);
        }
    }, 20);
    world.runUntilIdle();
}
BENCHMARK(BM_KernelLoopThroughPhantom);

// A unit stand-in: a cyclic 1 s timer whose handler does a unit's smallest
// piece of work (it counts and looks at its own timer).
class CyclicUnit : public TimerObserverIf {
public:
    explicit CyclicUnit(std::uint32_t index) : m_index(index) {}
    void timeout(TimerId timerId) override
    {
        if (timerId.argument == m_index) ++m_expiries;
    }
    std::uint64_t m_expiries = 0;

private:
    std::uint32_t m_index;
};

// The core with 60 units, each with a cyclic 1 s timer, among some 200
// subscriptions; on the way out (the world unwinds it) it adds up the expiries.
void runCoreWithUnits(std::uint32_t unitCount, std::uint64_t& expiries)
{
    Core core(200);
    WLTimerHandler timers(core.dispatcher.get());
    TimerService::setHandler(&timers);
    std::vector<std::unique_ptr<CyclicUnit>> units;
    struct Count {
        std::uint64_t& total;
        std::vector<std::unique_ptr<CyclicUnit>>& units;
        ~Count()
        {
            for (auto& unit : units) total += unit->m_expiries;
            TimerService::setHandler(nullptr);
        }
    } count{expiries, units};
    for (std::uint32_t i = 0; i < unitCount; ++i) {
        units.push_back(std::make_unique<CyclicUnit>(i));
        TimerService::startCyclicTimer(1000, 7, units.back().get(), i);
        ose::delay(1); // units are found one by one, so their pollers start spread out
    }
    core.dispatcher->run();
}

// One simulated day on the virtual clock: a site's month is thirty of these.
void BM_SixtyCyclicTimersForASimulatedDay(benchmark::State& state)
{
    constexpr std::uint32_t kUnits = 60;
    constexpr std::uint64_t kDayMs = 86'400'000;
    for (auto _ : state) {
        std::uint64_t expiries = 0;
        {
            ose::World world;
            startProcess(world, "SSC_THREAD", [&expiries] { runCoreWithUnits(kUnits, expiries); }, 16);
            world.runFor(kDayMs);
        }
        // Each timer started within the first 60 ms: a day holds 86,399 or
        // 86,400 of its expiries.
        if (expiries < kUnits * 86'399ull) state.SkipWithError("expiries were lost");
        state.counters["expiries"] = static_cast<double>(expiries);
    }
}
BENCHMARK(BM_SixtyCyclicTimersForASimulatedDay)->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3);

} // namespace

BENCHMARK_MAIN();
