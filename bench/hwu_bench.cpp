// Supervision of a large cabinet: 60 configured units, each polled once a
// second by its unit object (PSU, BFU or PDU) under the broker, with the bus
// monitor's scans,
// for a simulated hour; beside the floor of the same number of bare status
// polls through the PP handler. The wall time of the hour, divided by the
// hour, is the share of one core that supervision takes at real speed.

#include "frame/ActiveFaultsRegister.h"
#include "frame/FuncType.h"
#include "frame/HuntService.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "frame/TimerService.h"
#include "hwu/HWU_Broker.h"
#include "hwu/HdlcAddressBroker.h"
#include "hwu/PpCommunicationService.h"
#include "hwu/WLPpCommunicationHandler.h"
#include "hwu/HwuUnitFactory.h"
#include "platform/WLHuntHandler.h"
#include "platform/WLOsHandler.h"
#include "platform/WLTimerHandler.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"

#include "ose/Kernel.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr std::uint64_t kHourMs = 3600ull * 1000;

struct Place {
    sim::UnitType type;
    std::uint32_t funcType;
    std::uint16_t port;
    std::uint8_t address;
    std::string hubPosition;
};

// 16 PSUs, 16 BFUs and 16 PDUs on the main port, 12 PSUs on the auxiliary.
std::vector<Place> sixtyUnits()
{
    std::vector<Place> places;
    const auto add = [&](sim::UnitType type, std::uint32_t funcType, std::uint16_t port, std::uint8_t base,
                         unsigned count) {
        for (unsigned offset = 0; offset < count; ++offset) {
            std::string position(Hdlc::getHubPosition(offset));
            if (port == 2) position = "AUX " + position;
            places.push_back({type, funcType, port, static_cast<std::uint8_t>(base + offset), position});
        }
    };
    add(sim::UnitType::PSU, func_type::kPsu, 1, 48, 16);
    add(sim::UnitType::BFU, func_type::kBfu, 1, 64, 16);
    add(sim::UnitType::PDU, func_type::kPdu, 1, 80, 16);
    add(sim::UnitType::PSU, func_type::kPsu, 2, 48, 12);
    return places;
}

ose::PROCESS startProcess(ose::World& world, const std::string& name, std::function<void()> body)
{
    ose::ProcessSpec definition;
    definition.name = name;
    definition.entry = std::move(body);
    const ose::PROCESS pid = world.createProcess(world.defaultNode(), definition);
    world.start(pid);
    return pid;
}

// A core process with the target's handlers; `body` runs inside it before
// its receive loop.
void startCore(ose::World& world, std::function<void(SignalDispatcher&)> body)
{
    startProcess(world, "SSC_THREAD", [body = std::move(body)] {
        struct ServicesReset {
            ~ServicesReset()
            {
                PpCommunicationService::setHandler(nullptr);
                TimerService::setHandler(nullptr);
                HuntService::setHandler(nullptr);
                OsService::setHandler(nullptr);
            }
        } reset;
        WLOsHandler os;
        OsService::setHandler(&os);
        WLHuntHandler hunt;
        HuntService::setHandler(&hunt);
        SignalDispatcher dispatcher;
        WLTimerHandler timers(&dispatcher);
        TimerService::setHandler(&timers);
        WLPpCommunicationHandler pp(&dispatcher);
        PpCommunicationService::setHandler(&pp);
        body(dispatcher);
    });
}

double hourShare(benchmark::State& state, double seconds)
{
    state.counters["core share %"] = 100.0 * seconds / (kHourMs / 1000.0);
    return seconds;
}

void BM_SixtyUnitsSupervisedForAnHour(benchmark::State& state)
{
    for (auto _ : state) {
        ose::World world(ose::ClockConfig{});
        sim::SimCabinet cabinet;
        const std::vector<Place> places = sixtyUnits();
        for (const Place& place : places) cabinet.addUnit(place.type, place.port, place.address);
        cabinet.logCapacity = 0;
        sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
        ActiveFaultsRegister faults;
        HwuUnitFactory factory;
        std::uint32_t available = 0;
        startCore(world, [&](SignalDispatcher& dispatcher) {
            HWU_Broker broker(faults, factory);
            broker.setConfigured(true);
            std::uint32_t inst = 0;
            for (const Place& place : places) broker.configureHwu(FuncId_t{place.funcType, ++inst}, place.hubPosition, 0, 0);
            broker.update(0);
            struct Count : TimerObserverIf {
                void timeout(TimerId) override
                {
                    for (std::uint32_t funcType : {func_type::kPsu, func_type::kBfu, func_type::kPdu})
                        for (HwuStatusIf* unit : broker->getUnits(funcType)) *count += unit->isAvailable();
                }
                HWU_Broker* broker = nullptr;
                std::uint32_t* count = nullptr;
            } count;
            count.broker = &broker;
            count.count = &available;
            TimerService::startTimer(static_cast<std::uint32_t>(kHourMs - 500), 1, &count, 0);
            dispatcher.run();
        });
        const auto start = std::chrono::steady_clock::now();
        world.runFor(kHourMs);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(hourShare(state, wall.count()));
        if (available != places.size()) state.SkipWithError("not every unit was available");
    }
    state.counters["polls"] = 60.0 * (kHourMs / 1000);
}
BENCHMARK(BM_SixtyUnitsSupervisedForAnHour)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

// Floor: one status poll of each unit each second through the PP handler,
// with nothing else.
void BM_SixtyBarePollsPerSecondForAnHourFloor(benchmark::State& state)
{
    for (auto _ : state) {
        ose::World world(ose::ClockConfig{});
        sim::SimCabinet cabinet;
        const std::vector<Place> places = sixtyUnits();
        for (const Place& place : places) cabinet.addUnit(place.type, place.port, place.address);
        cabinet.logCapacity = 0;
        sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
        std::uint64_t failed = 0;
        startCore(world, [&](SignalDispatcher&) {
            PpDeviceData out;
            for (std::uint64_t second = 0; second < kHourMs / 1000; ++second) {
                for (const Place& place : places) {
                    const pp::MessageNo message = place.type == sim::UnitType::PSU   ? pp::PSU_GET_STATUS_REQ
                                                  : place.type == sim::UnitType::BFU ? pp::BFU_GET_STATUS_REQ
                                                                                     : pp::PDU_GET_STATUS_REQ;
                    if (!PpCommunicationService::getDeviceData(message, PpCommunicationService::nextSequenceNumber(),
                                                               place.address, out, place.port, true))
                        ++failed;
                }
                const std::uint64_t next = (second + 1) * 1000;
                if (ose::get_time_ms() < next) ose::delay(static_cast<ose::OSTIME>(next - ose::get_time_ms()));
            }
        });
        const auto start = std::chrono::steady_clock::now();
        world.runFor(kHourMs);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(hourShare(state, wall.count()));
        if (failed != 0) state.SkipWithError("polls failed");
    }
}
BENCHMARK(BM_SixtyBarePollsPerSecondForAnHourFloor)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

} // namespace

BENCHMARK_MAIN();
