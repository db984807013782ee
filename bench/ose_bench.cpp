// Costs of the kernel layer: what every signal, hunt and time-out of the
// system pays.

#include "ose/Fiber.h"
#include "ose/Kernel.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace ose;

PROCESS startProcess(World& world, const std::string& name, std::function<void()> body, OSPRIORITY priority = 16)
{
    ProcessSpec definition;
    definition.name = name;
    definition.priority = priority;
    definition.entry = std::move(body);
    PROCESS pid = world.createProcess(world.defaultNode(), definition);
    world.start(pid);
    return pid;
}

// Floor of a process switch: one fiber entered and left again, with no
// scheduler between (two stack switches an iteration).
void BM_BareFiberSwitch(benchmark::State& state)
{
    struct Loop {
        Fiber* pFiber = nullptr;
        static void body(void* argument)
        {
            auto* loop = static_cast<Loop*>(argument);
            for (;;) loop->pFiber->suspend();
        }
    } loop;
    Fiber fiber(Fiber::kMinStackSize, &Loop::body, &loop);
    loop.pFiber = &fiber;
    for (auto _ : state) fiber.resume();
}
BENCHMARK(BM_BareFiberSwitch)->Repetitions(5)->ReportAggregatesOnly(true);

// Floor of a round trip: two processes of equal priority giving way to each
// other (delay 0), so that each iteration is two switches between processes
// through the scheduler, as a signal round trip is, without the signals.
void BM_SchedulerPingPong(benchmark::State& state)
{
    World world;
    bool done = false;
    startProcess(world, "pong", [&done] {
        while (!done) delay(0);
    });
    startProcess(world, "ping", [&] {
        for (auto _ : state) delay(0);
        done = true;
    });
    world.runUntilIdle();
}
BENCHMARK(BM_SchedulerPingPong)->Repetitions(5)->ReportAggregatesOnly(true);

// send, receive, reply, receive: two processes of equal priority.
void BM_SignalRoundTrip(benchmark::State& state)
{
    World world;
    PROCESS pong = startProcess(world, "pong", [] {
        for (;;) {
            Signal* s = receive(kAnySignal);
            PROCESS back = sender(&s);
            send(&s, back);
        }
    });
    startProcess(world, "ping", [&] {
        Signal* s = alloc(8, 1);
        for (auto _ : state) {
            send(&s, pong);
            s = receive(kAnySignal);
        }
        free_buf(&s);
        kill_proc(pong);
    });
    world.runUntilIdle();
}
BENCHMARK(BM_SignalRoundTrip)->Repetitions(5)->ReportAggregatesOnly(true);

// The same with a fresh buffer each way, as most of the system does.
void BM_SignalRoundTripAllocating(benchmark::State& state)
{
    World world;
    PROCESS pong = startProcess(world, "pong", [] {
        for (;;) {
            Signal* s = receive(kAnySignal);
            PROCESS back = sender(&s);
            free_buf(&s);
            Signal* reply = alloc(8, 2);
            send(&reply, back);
        }
    });
    startProcess(world, "ping", [&] {
        for (auto _ : state) {
            Signal* s = alloc(8, 1);
            send(&s, pong);
            s = receive(kAnySignal);
            free_buf(&s);
        }
        kill_proc(pong);
    });
    world.runUntilIdle();
}
BENCHMARK(BM_SignalRoundTripAllocating)->Repetitions(5)->ReportAggregatesOnly(true);

void BM_HuntExistingName(benchmark::State& state)
{
    World world;
    for (int i = 0; i < 50; ++i) startProcess(world, "filler_" + std::to_string(i), [] { delay(1); });
    PROCESS server = startProcess(world, "ssc_equipment_management_server", [] { delay(1); });
    startProcess(world, "hunter", [&] {
        for (auto _ : state) {
            PROCESS pid = 0;
            hunt("ssc_equipment_management_server", 0, &pid, nullptr);
            if (pid != server) state.SkipWithError("hunt found the wrong process");
        }
    }, 0);
    world.runUntilIdle();
}
BENCHMARK(BM_HuntExistingName)->Repetitions(5)->ReportAggregatesOnly(true);

// A time-out requested and received, with virtual time jumping to it.
void BM_TimeoutRequestAndExpiry(benchmark::State& state)
{
    World world;
    startProcess(world, "timer", [&] {
        for (auto _ : state) {
            Signal* s = alloc(8, 0x1705000);
            request_tmo(1000, &s);
            s = receive(kAnySignal);
            free_buf(&s);
        }
    });
    world.runUntilIdle();
}
BENCHMARK(BM_TimeoutRequestAndExpiry)->Repetitions(5)->ReportAggregatesOnly(true);

// 60 processes, each woken every simulated second, for one simulated day.
void BM_SixtyProcessesForASimulatedDay(benchmark::State& state)
{
    constexpr int kProcesses = 60;
    constexpr int kSecondsPerDay = 86400;
    for (auto _ : state) {
        World world;
        long wakeups = 0;
        for (int i = 0; i < kProcesses; ++i)
            startProcess(world, "unit_" + std::to_string(i), [&wakeups, i] {
                delay(static_cast<OSTIME>(i)); // spread over the first 60 ms, as pollers are
                for (int second = 0; second < kSecondsPerDay; ++second) {
                    delay(1000);
                    ++wakeups;
                }
            });
        world.runUntilIdle();
        if (wakeups != static_cast<long>(kProcesses) * kSecondsPerDay) state.SkipWithError("wake-ups were lost");
        state.counters["simulated_days"] = 1;
        state.counters["wakeups"] = static_cast<double>(wakeups);
    }
}
BENCHMARK(BM_SixtyProcessesForASimulatedDay)->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3)
    ->ReportAggregatesOnly(true);

} // namespace


