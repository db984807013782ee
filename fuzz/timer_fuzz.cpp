// Timer expiries and test triggers that nobody asked for: a core process
// with running one-shot and cyclic timers is sent forged, stale and short
// signals of the timer numbers; its observer stops and restarts timers as the
// input says.

#include "fuzz/FuzzSignals.h"
#include "fuzz/FuzzTrace.h"
#include "frame/TimerService.h"
#include "frame/TimerSignals.h"
#include "platform/testSupport/CoreHarness.h"

#include "ose/Kernel.h"
#include "ose/World.h"


namespace {

constexpr ose::SIGSELECT kNumbers[] = {SSC_TIMER_EXPIRED, SSC_CYCLIC_TIMER_EXPIRED, SSC_TEST_TRIGGER_TIMER_REQ};

class Observer : public TimerObserverIf {
public:
    explicit Observer(std::uint8_t habits) : m_habits(habits) {}
    void timeout(TimerId id) override
    {
        if (m_habits & 1u) TimerService::stopTimer(id.timerType, this, id.argument);
        if (m_habits & 2u) TimerService::startTimer(50, id.timerType, this, id.argument + 1);
        if (m_habits & 4u) TimerService::startCyclicTimer(1000, id.timerType, this, id.argument);
        if (m_habits & 8u) (void)TimerService::isTimerRunning(id.timerType, this, id.argument);
    }

private:
    std::uint8_t m_habits;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    Observer observer(data[0]); // outlives the world and its core process
    ose::World world;
    ose::ProcessSpec core;
    core.name = "SSC_THREAD";
    core.entry = core_harness::coreBody([&observer](SignalDispatcher&) {
        for (std::uint32_t type = 1; type <= 3; ++type) {
            TimerService::startTimer(10 * type, type, &observer, 0);
            TimerService::startCyclicTimer(1000, type + 10, &observer, 0);
        }
    });
    const ose::PROCESS corePid = world.createProcess(world.defaultNode(), core);
    world.start(corePid);

    ose::ProcessSpec forger;
    forger.name = "forger";
    forger.entry = [data, size, corePid] {
        FuzzInput input(data + 1, size - 1);
        while (!input.empty()) {
            ose::Signal* signal = nextSignal(input, kNumbers);
            ose::send(&signal, corePid);
            ose::delay(input.byte());
        }
        dropAnswersForever();
    };
    world.start(world.createProcess(world.defaultNode(), forger));
    world.runFor(3'000);
    return 0;
}
