// The equipment management interface end to end: the virtual time from a
// unit's configuration to its first operational status, and the wall time of
// a node that supervises the static simulated cabinet for a simulated day,
// beside the floor of the same cabinet's bare status polls.

#include "adapters/EmiSignals.h"
#include "frame/HuntService.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "hwu/PpCommunicationService.h"
#include "hwu/WLPpCommunicationHandler.h"
#include "platform/LoadModule.h"
#include "platform/WLHuntHandler.h"
#include "platform/WLOsHandler.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"
#include "sim/SiteFile.h"

#include "ose/Kernel.h"
#include "ose/Trace.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <functional>
#include <span>
#include <string>

namespace {

using namespace emi;

constexpr std::uint64_t kDayMs = 24ull * 3600 * 1000;

ose::PROCESS startProcess(ose::World& world, const std::string& name, std::function<void()> body)
{
    ose::ProcessSpec spec;
    spec.name = name;
    spec.entry = std::move(body);
    const ose::PROCESS pid = world.createProcess(world.defaultNode(), spec);
    world.start(pid);
    return pid;
}

bool loadSite(sim::SimCabinet& cabinet, const char* site = SSC_SOURCE_DIR "/sim/sites/static.xml")
{
    std::string error;
    cabinet.logCapacity = 0;
    return sim::SiteFile::load(site, cabinet, error);
}

bool loadStaticSite(sim::SimCabinet& cabinet) { return loadSite(cabinet); }

template <typename T>
void sendEmi(ose::PROCESS server, T body, ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t objectId)
{
    auto& header = reinterpret_cast<EMI_HEADER_S&>(body);
    header.sigNo = sigNo;
    header.objectType = objectType;
    header.objectId = objectId;
    ose::Signal* signal = ose::alloc(sizeof(T), sigNo);
    std::memcpy(static_cast<void*>(signal), &body, sizeof(T));
    ose::send(&signal, server);
}

struct Unit {
    std::uint16_t objectType;
    std::uint32_t objectId;
    const char* hubPosition;
};
constexpr Unit kStaticCabinet[] = {{kScu, 1, ""},   {kSau, 1, ""},   {kClu, 1, ""},
                                    {kPsu, 1, "A1"}, {kBfu, 1, "A1"}, {kPdu, 1, "A1"}};
constexpr Unit kDefaultSite[] = {{kScu, 1, ""},   {kSau, 1, ""},   {kClu, 1, ""},   {kPsu, 1, "A1"},
                                  {kPsu, 2, "B1"}, {kPsu, 3, "A2"}, {kBfu, 1, "A1"}, {kPdu, 1, "A1"}};

// A client that configures and subscribes a cabinet's units and notes when
// the last of them is operational.
void configureAll(std::uint64_t& allOperationalAtMs, std::uint32_t& updates,
                  std::span<const Unit> units = kStaticCabinet)
{
    ose::PROCESS server = 0;
    while (!ose::hunt(kServerName, 0, &server, nullptr)) ose::delay(1);
    const std::uint64_t start = ose::get_time_ms();
    for (const Unit& unit : units) {
        EMI_SET_CONFIG_HWU_REQ_S config{};
        std::strncpy(config.hubPosition, unit.hubPosition, sizeof config.hubPosition - 1);
        sendEmi(server, config, EMI_SET_CONFIG_REQ, unit.objectType, unit.objectId);
        sendEmi(server, EMI_REQ_S{}, EMI_SUBSCRIBE_RESOURCE_DATA_REQ, unit.objectType, unit.objectId);
    }
    std::uint32_t operational = 0;
    for (;;) {
        ose::Signal* signal = ose::receive(ose::kAnySignal);
        if (ose::signalNumber(signal) == EMI_RESOURCE_DATA_UPDATE_IND) {
            ++updates;
            EMI_RESOURCE_DATA_S data{};
            std::memcpy(&data, signal, sizeof data);
            if (data.words[0] == 1 && ++operational == units.size())
                allOperationalAtMs = ose::get_time_ms() - start;
        }
        ose::free_buf(&signal);
    }
}

// Virtual time from configuration to the last unit's first operational
// status (counters), and the wall time that took.
void BM_StaticCabinetConfiguredUntilOperational(benchmark::State& state)
{
    std::uint64_t virtualMs = 0;
    for (auto _ : state) {
        ose::World world(ose::ClockConfig{});
        sim::SimCabinet cabinet;
        if (!loadStaticSite(cabinet)) state.SkipWithError("no site");
        sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
        createCoreProcess(world, world.defaultNode());
        std::uint32_t updates = 0;
        startProcess(world, "emi_client", [&] { configureAll(virtualMs, updates); });
        world.runFor(10'000);
    }
    state.counters["virtual ms to all operational"] = static_cast<double>(virtualMs);
}
BENCHMARK(BM_StaticCabinetConfiguredUntilOperational)->Unit(benchmark::kMillisecond);

// A node supervising the static cabinet for a simulated day.
void BM_StaticCabinetSupervisedForADay(benchmark::State& state)
{
    for (auto _ : state) {
        ose::World world(ose::ClockConfig{});
        sim::SimCabinet cabinet;
        if (!loadStaticSite(cabinet)) state.SkipWithError("no site");
        sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
        createCoreProcess(world, world.defaultNode());
        std::uint64_t operationalAt = 0;
        std::uint32_t updates = 0;
        startProcess(world, "emi_client", [&] { configureAll(operationalAt, updates); });
        const auto start = std::chrono::steady_clock::now();
        world.runFor(kDayMs);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(wall.count());
        if (operationalAt == 0) state.SkipWithError("the cabinet never came up");
    }
}
BENCHMARK(BM_StaticCabinetSupervisedForADay)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

// The default site, whose measurements come from the plant, supervised for
// a simulated month (30 days); its floor is the same month with the plant
// taken out, the units answering fixed values.
void superviseDefaultSiteForAMonth(benchmark::State& state, bool withPlant)
{
    constexpr std::uint64_t kMonthMs = 30 * kDayMs;
    for (auto _ : state) {
        ose::World world(ose::ClockConfig{});
        sim::SimCabinet cabinet;
        if (!loadSite(cabinet, SSC_SOURCE_DIR "/sim/sites/default.xml")) state.SkipWithError("no site");
        if (!withPlant) cabinet.plant.reset();
        sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
        createCoreProcess(world, world.defaultNode());
        std::uint64_t operationalAt = 0;
        std::uint32_t updates = 0;
        startProcess(world, "emi_client", [&] { configureAll(operationalAt, updates, kDefaultSite); });
        const auto start = std::chrono::steady_clock::now();
        world.runFor(kMonthMs);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(wall.count());
        if (operationalAt == 0) state.SkipWithError("the cabinet never came up");
    }
}

void BM_DefaultSiteWithItsPlantSupervisedForAMonth(benchmark::State& state) { superviseDefaultSiteForAMonth(state, true); }
BENCHMARK(BM_DefaultSiteWithItsPlantSupervisedForAMonth)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

void BM_DefaultSiteWithoutItsPlantForAMonthFloor(benchmark::State& state) { superviseDefaultSiteForAMonth(state, false); }
BENCHMARK(BM_DefaultSiteWithoutItsPlantForAMonthFloor)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

// The plant alone: one simulated second of the default site, and of a
// cabinet of 60 units.
void BM_PlantSecondDefaultSite(benchmark::State& state)
{
    sim::SimCabinet cabinet;
    if (!loadSite(cabinet, SSC_SOURCE_DIR "/sim/sites/default.xml")) state.SkipWithError("no site");
    std::uint64_t nowMs = 0;
    for (auto _ : state) cabinet.advancePlant(nowMs += 1000);
}
BENCHMARK(BM_PlantSecondDefaultSite);

void BM_PlantSecondSixtyUnits(benchmark::State& state)
{
    sim::SimCabinet cabinet;
    cabinet.plant = std::make_unique<sim::Plant>(sim::PlantParameters{});
    for (unsigned i = 0; i < 60; ++i) {
        const sim::UnitType types[] = {sim::UnitType::PSU, sim::UnitType::BFU, sim::UnitType::PDU};
        cabinet.addUnit(types[(i / 2) / 16 % 3], static_cast<std::uint16_t>(1 + i % 2),
                        static_cast<std::uint8_t>(48 + (i / 2) % 48));
    }
    std::uint64_t nowMs = 0;
    for (auto _ : state) cabinet.advancePlant(nowMs += 1000);
}
BENCHMARK(BM_PlantSecondSixtyUnits);

// Floor of the day: one bare status poll of each of the six units each
// second through the PP handler.
void BM_StaticCabinetBarePollsForADayFloor(benchmark::State& state)
{
    static constexpr struct {
        std::uint8_t address;
        pp::MessageNo message;
    } kPolls[] = {{32, pp::SCU_GET_STATUS_REQ}, {33, pp::SAU_GET_STATUS_REQ}, {44, pp::CLU_GET_STATUS_REQ},
                  {48, pp::PSU_GET_STATUS_REQ}, {64, pp::BFU_GET_STATUS_REQ}, {80, pp::PDU_GET_STATUS_REQ}};
    for (auto _ : state) {
        ose::World world(ose::ClockConfig{});
        sim::SimCabinet cabinet;
        if (!loadStaticSite(cabinet)) state.SkipWithError("no site");
        sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
        startProcess(world, "SSC_THREAD", [] {
            WLOsHandler os;
            OsService::setHandler(&os);
            WLHuntHandler hunt;
            HuntService::setHandler(&hunt);
            SignalDispatcher dispatcher;
            WLPpCommunicationHandler pp(&dispatcher);
            PpDeviceData out;
            for (std::uint64_t second = 0; second < kDayMs / 1000; ++second) {
                for (const auto& poll : kPolls) pp.getDeviceData(poll.message, pp.nextSequenceNumber(), poll.address, out, 1, true);
                const std::uint64_t next = (second + 1) * 1000;
                if (ose::get_time_ms() < next) ose::delay(static_cast<ose::OSTIME>(next - ose::get_time_ms()));
            }
            HuntService::setHandler(nullptr);
            OsService::setHandler(nullptr);
        });
        const auto start = std::chrono::steady_clock::now();
        world.runFor(kDayMs + 1000);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(wall.count());
    }
}
BENCHMARK(BM_StaticCabinetBarePollsForADayFloor)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

} // namespace

BENCHMARK_MAIN();
