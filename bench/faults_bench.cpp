// Cost of raising and ceasing a fault in a register that already holds a
// thousand active faults and a thousand delayed actions, beside the floor of
// one walk over a thousand rows. Runs inside a core process of the virtual
// world, so that delayed actions start and stop real kernel time-outs.

#include "frame/ActiveFaultsRegister.h"
#include "frame/EC_LinkedList.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "frame/TimerService.h"
#include "platform/WLOsHandler.h"
#include "platform/WLTimerHandler.h"

#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>

namespace {

using namespace fault_id;
using namespace func_type;

constexpr std::uint32_t kBacklog = 1000;
constexpr std::uint32_t kLongDelayMs = 3600 * 1000;

// A reporter as the facades are: it looks at the id and keeps a count.
class CountingReporter : public FaultsRegisterReportIf {
public:
    void raiseFault(const FaultId_t& faultId, const FuncId_t&) override { m_count += faultId.id == kHwuMissing; }
    void ceaseFault(const FaultId_t& faultId, const FuncId_t&) override { m_count += faultId.id == kHwuMissing; }
    std::uint64_t m_count = 0;
};

// The backlog: PSU symptoms on a thousand instances and a thousand delayed
// raises on BFUs, none of them on the functions the benchmarks use.
void fill(ActiveFaultsRegister& faults, std::uint32_t backlog)
{
    for (std::uint32_t index = 0; index < backlog; ++index) {
        faults.raiseFault(kPsuInputVoltageHigh, FuncId_t{kPsu, 100 + index});
        faults.raiseFault(kBfuTemperature, FuncId_t{kBfu, 100 + index}, kLongDelayMs);
    }
}

// Runs `body` inside a core process with the real OS and timer handlers.
void inCore(const std::function<void()>& body)
{
    ose::World world;
    ose::ProcessSpec definition;
    definition.name = "SSC_THREAD";
    definition.entry = [&body] {
        WLOsHandler os;
        OsService::setHandler(&os);
        SignalDispatcher dispatcher;
        WLTimerHandler timers(&dispatcher);
        TimerService::setHandler(&timers);
        body();
        TimerService::setHandler(nullptr);
        OsService::setHandler(nullptr);
    };
    world.start(world.createProcess(world.defaultNode(), definition));
    world.runUntilIdle();
}

void report(benchmark::State& state, const ActiveFaultsRegister& faults)
{
    state.counters["active"] = faults.activeCount();
    state.counters["delayed"] = faults.delayedCount();
}

// A fault that hides nothing and is hidden by nothing, raised and ceased.
void BM_RaiseAndCease(benchmark::State& state)
{
    inCore([&state] {
        ActiveFaultsRegister faults;
        CountingReporter reporter;
        faults.addReporter(&reporter);
        fill(faults, static_cast<std::uint32_t>(state.range(0)));
        const FuncId_t pdu{kPdu, 1};
        for (auto _ : state) {
            faults.raiseFault(kPduMainTemperatureHigh, pdu);
            faults.ceaseFault(kPduMainTemperatureHigh, pdu);
        }
        report(state, faults);
    });
}
BENCHMARK(BM_RaiseAndCease)->Arg(0)->Arg(kBacklog);

// A missing PSU over its reported symptom: the raise hides it, the cease
// uncovers it, with two reports each way.
void BM_MissingUnitHidesAndUncovers(benchmark::State& state)
{
    inCore([&state] {
        ActiveFaultsRegister faults;
        CountingReporter reporter;
        faults.addReporter(&reporter);
        fill(faults, static_cast<std::uint32_t>(state.range(0)));
        const FuncId_t psu{kPsu, 1};
        faults.raiseFault(kPsuInputVoltageLow, psu);
        for (auto _ : state) {
            faults.raiseFault(kHwuMissing, psu);
            faults.ceaseFault(kHwuMissing, psu);
        }
        report(state, faults);
        if (reporter.m_count != 2 * static_cast<std::uint64_t>(state.iterations())) state.SkipWithError("lost reports");
    });
}
BENCHMARK(BM_MissingUnitHidesAndUncovers)->Arg(0)->Arg(kBacklog);

// A delayed raise ceased before it counts: a timer started and stopped.
void BM_DelayedRaiseCeasedInTime(benchmark::State& state)
{
    inCore([&state] {
        ActiveFaultsRegister faults;
        fill(faults, static_cast<std::uint32_t>(state.range(0)));
        const FuncId_t psu{kPsu, 1};
        for (auto _ : state) {
            faults.raiseFault(kFaultyHubPosition, psu, 5000);
            faults.ceaseFault(kFaultyHubPosition, psu);
        }
        report(state, faults);
    });
}
BENCHMARK(BM_DelayedRaiseCeasedInTime)->Arg(0)->Arg(kBacklog);

// The oldest active fault ceased and raised again, round the backlog: each
// cease takes a row from the far end of the list, the worst place.
void BM_OldestCeasedAndRaisedAgain(benchmark::State& state)
{
    inCore([&state] {
        ActiveFaultsRegister faults;
        fill(faults, kBacklog);
        std::uint32_t next = 0;
        for (auto _ : state) {
            const FuncId_t oldest{kPsu, 100 + next};
            faults.ceaseFault(kPsuInputVoltageHigh, oldest);
            faults.raiseFault(kPsuInputVoltageHigh, oldest);
            next = (next + 1) % kBacklog;
        }
        report(state, faults);
    });
}
BENCHMARK(BM_OldestCeasedAndRaisedAgain);

// Floor: one walk over the backlog's rows to the last, as a lookup of a
// fault that is not there costs.
void BM_WalkOfTheBacklogFloor(benchmark::State& state)
{
    EC_LinkedList<ActiveFault> rows;
    for (std::uint32_t index = 0; index < 2 * kBacklog; ++index)
        rows.add(ActiveFault{FaultId_t(kPsuInputVoltageHigh), FuncId_t{kPsu, index}, false, false, false, {}});
    const FuncId_t absent{kPdu, 1};
    for (auto _ : state) {
        benchmark::DoNotOptimize(rows.find([&absent](const ActiveFault& row) {
            return row.faultId.id == kPduMainTemperatureHigh && row.funcId == absent;
        }));
    }
}
BENCHMARK(BM_WalkOfTheBacklogFloor);

} // namespace
BENCHMARK_MAIN();
