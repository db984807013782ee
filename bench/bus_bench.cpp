// The EC bus as the core will use it: one poll of a unit through the real
// PP handler and the simulated bus server, and a simulated day of a large
// cabinet polled once a second. Each beside the bare signal round trip
// between two processes that it stands on.

#include "frame/HuntService.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "hwu/WLPpCommunicationHandler.h"
#include "platform/WLHuntHandler.h"
#include "platform/WLOsHandler.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"

#include "ose/Kernel.h"
#include "ose/Trace.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <functional>

namespace {

using namespace ose;

constexpr std::uint64_t kDayMs = 24ull * 3600 * 1000;
constexpr SIGSELECT kPing = 0x4701;

PROCESS startProcess(World& world, const std::string& name, std::function<void()> body)
{
    ProcessSpec definition;
    definition.name = name;
    definition.entry = std::move(body);
    const PROCESS pid = world.createProcess(world.defaultNode(), definition);
    world.start(pid);
    return pid;
}

// A process that sends every signal back to its sender.
PROCESS startEcho(World& world)
{
    return startProcess(world, "echo", [] {
        for (;;) {
            Signal* signal = receive(kAnySignal);
            send(&signal, sender(&signal));
        }
    });
}

// A core process with the target's handlers and the PP handler; `body`
// runs inside it.
void runCore(World& world, std::function<void(WLPpCommunicationHandler&)> body)
{
    startProcess(world, "SSC_THREAD", [body = std::move(body)] {
        WLOsHandler os;
        OsService::setHandler(&os);
        WLHuntHandler hunt;
        HuntService::setHandler(&hunt);
        {
            SignalDispatcher dispatcher;
            WLPpCommunicationHandler pp(&dispatcher);
            body(pp);
        }
        HuntService::setHandler(nullptr);
        OsService::setHandler(nullptr);
    });
    world.runUntilIdle();
}

// A cabinet of `count` units: PSUs, BFUs and PDUs on both ports.
void fillCabinet(sim::SimCabinet& cabinet, unsigned count, std::vector<std::pair<std::uint16_t, std::uint8_t>>& places)
{
    const sim::UnitType types[] = {sim::UnitType::PSU, sim::UnitType::BFU, sim::UnitType::PDU};
    for (unsigned i = 0; i < count; ++i) {
        const std::uint16_t port = static_cast<std::uint16_t>(1 + i % 2);
        const auto address = static_cast<std::uint8_t>(48 + (i / 2) % 48);
        cabinet.addUnit(types[(i / 2) / 16], port, address);
        places.emplace_back(port, address);
    }
    cabinet.logCapacity = 0;
}

pp::MessageNo statusOf(sim::UnitType type)
{
    return type == sim::UnitType::PSU ? pp::PSU_GET_STATUS_REQ
         : type == sim::UnitType::BFU ? pp::BFU_GET_STATUS_REQ : pp::PDU_GET_STATUS_REQ;
}

// Floor: a request and its answer between two processes, the signals
// allocated and freed, with nothing decoded.
void BM_SignalRoundTripFloor(benchmark::State& state)
{
    World world;
    const PROCESS echo = startEcho(world);
    startProcess(world, "client", [&] {
        const SIGSELECT selector[] = {1, kPing};
        for (auto _ : state) {
            Signal* ping = alloc(88, kPing);
            send(&ping, echo);
            Signal* pong = receive_w_tmo(1000, selector);
            free_buf(&pong);
        }
        kill_proc(echo);
    });
    world.runUntilIdle();
}
BENCHMARK(BM_SignalRoundTripFloor)->Repetitions(5)->ReportAggregatesOnly(true);

// One poll: status request out, confirm in, decoded; with the purge of the
// inbox before it (a 1 ms wait on the virtual clock).
void BM_PollRoundTrip(benchmark::State& state)
{
    World world;
    sim::SimCabinet cabinet;
    cabinet.addUnit(sim::UnitType::PSU, 1, 48);
    cabinet.logCapacity = 0;
    const PROCESS server = sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
    runCore(world, [&](WLPpCommunicationHandler& pp) {
        PpDeviceData out;
        for (auto _ : state) {
            if (!pp.getDeviceData(pp::PSU_GET_STATUS_REQ, pp.nextSequenceNumber(), 48, out, 1, true))
                state.SkipWithError("poll failed");
        }
        kill_proc(server);
    });
}
BENCHMARK(BM_PollRoundTrip)->Repetitions(5)->ReportAggregatesOnly(true);

// 60 units polled once a second for a simulated day: 5,184,000 polls.
void BM_SixtyUnitsForADay(benchmark::State& state)
{
    for (auto _ : state) {
        World world(ClockConfig{});
        sim::SimCabinet cabinet;
        std::vector<std::pair<std::uint16_t, std::uint8_t>> places;
        fillCabinet(cabinet, 60, places);
        const PROCESS server = sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
        std::uint64_t failed = 0;
        runCore(world, [&](WLPpCommunicationHandler& pp) {
            PpDeviceData out;
            for (std::uint64_t second = 0; second < kDayMs / 1000; ++second) {
                for (const auto& [port, address] : places) {
                    const auto type = cabinet.unit(port, address)->type();
                    if (!pp.getDeviceData(statusOf(type), pp.nextSequenceNumber(), address, out, port, true)) ++failed;
                }
                const std::uint64_t next = (second + 1) * 1000;
                if (get_time_ms() < next) delay(static_cast<OSTIME>(next - get_time_ms()));
            }
            kill_proc(server);
        });
        if (failed != 0) state.SkipWithError("polls failed");
    }
    state.counters["polls"] = 60.0 * (kDayMs / 1000);
}
BENCHMARK(BM_SixtyUnitsForADay)->Iterations(1)->Unit(benchmark::kSecond);

// Floor of the day: the same number of round trips of bare signals, each
// second's 60 in a row, with the same waits on the virtual clock.
void BM_SixtyUnitsForADayFloor(benchmark::State& state)
{
    for (auto _ : state) {
        World world(ClockConfig{});
        const PROCESS echo = startEcho(world);
        startProcess(world, "client", [&] {
            const SIGSELECT selector[] = {1, kPing};
            for (std::uint64_t second = 0; second < kDayMs / 1000; ++second) {
                for (int unit = 0; unit < 60; ++unit) {
                    Signal* ping = alloc(88, kPing);
                    send(&ping, echo);
                    Signal* pong = receive_w_tmo(1000, selector);
                    free_buf(&pong);
                }
                delay(1000);
            }
            kill_proc(echo);
        });
        world.runUntilIdle();
    }
}
BENCHMARK(BM_SixtyUnitsForADayFloor)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char** argv)
{
    // The traces of the handler are switched off, as on a site.
    ose::Trace::setSink([](const ose::TraceRecord&) {});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
