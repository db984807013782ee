#include "platform/WLTimerHandler.h"

#include "frame/OsService.h"
#include "frame/TimerService.h"
#include "frame/TimerSignals.h"
#include "platform/testSupport/CoreHarness.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <functional>
#include <vector>

namespace {

using ose::testing::TestWorld;

class TimeRecorder : public TimerObserverIf {
public:
    void timeout(TimerId id) override
    {
        m_times.push_back(ose::get_time_ms());
        m_ids.push_back(id);
        if (m_onTimeout) m_onTimeout(id);
    }
    std::vector<std::uint64_t> m_times;
    std::vector<TimerId> m_ids;
    std::function<void(TimerId)> m_onTimeout;
};

using WLTimerHandlerTest = TestWorld;

TEST_F(WLTimerHandlerTest, OneShotTimersExpireOnTheVirtualClockAndZeroMeansOneMs)
{
    TimeRecorder zero;
    TimeRecorder later;
    spawn("SSC_THREAD", core_harness::coreBody([&](SignalDispatcher&) {
        TimerService::startTimer(0, 5, &zero, 0);
        TimerService::startTimer(250, 6, &later, 9);
    }));
    world().runFor(1000);
    EXPECT_EQ(zero.m_times, (std::vector<std::uint64_t>{1}));
    EXPECT_EQ(later.m_times, (std::vector<std::uint64_t>{250}));
    EXPECT_EQ(later.m_ids[0], (TimerId{6, 9}));
}

TEST_F(WLTimerHandlerTest, ACyclicPeriodCountsFromTheEndOfTheObserversWork)
{
    TimeRecorder cyclic;
    cyclic.m_onTimeout = [](TimerId) { OsService::delay(300); };
    spawn("SSC_THREAD", core_harness::coreBody([&](SignalDispatcher&) {
        TimerService::startCyclicTimer(1000, 21, &cyclic, 0);
    }));
    world().runFor(4000);
    EXPECT_EQ(cyclic.m_times, (std::vector<std::uint64_t>{1000, 2300, 3600}));
}

TEST_F(WLTimerHandlerTest, ATimerStoppedOrRestartedWhileItsExpiryIsQueuedDoesNotFireFromThatExpiry)
{
    TimeRecorder first;
    TimeRecorder stopped;
    TimeRecorder restarted;
    first.m_onTimeout = [&](TimerId) {
        // All three kernel time-outs expired at 10 ms; their signals wait behind this one.
        TimerService::stopTimer(2, &stopped, 0);
        TimerService::startTimer(50, 3, &restarted, 0);
    };
    spawn("SSC_THREAD", core_harness::coreBody([&](SignalDispatcher&) {
        TimerService::startTimer(10, 1, &first, 0);
        TimerService::startTimer(10, 2, &stopped, 0);
        TimerService::startTimer(10, 3, &restarted, 0);
    }));
    world().runFor(1000);
    EXPECT_EQ(first.m_times, (std::vector<std::uint64_t>{10}));
    EXPECT_TRUE(stopped.m_times.empty());
    EXPECT_EQ(restarted.m_times, (std::vector<std::uint64_t>{60}));
}

TEST_F(WLTimerHandlerTest, TheTestTriggerIsConfirmedAndFiresARunningTimerAndIsRejectedForATypeWithoutTimer)
{
    TimeRecorder cyclic;
    spawn("SSC_THREAD", core_harness::coreBody([&](SignalDispatcher&) {
        TimerService::startCyclicTimer(5000, 21, &cyclic, 4);
    }));
    std::vector<ose::SIGSELECT> answers;
    std::vector<std::uint32_t> found;
    spawn("tester", [&] {
        ose::delay(100);
        ose::PROCESS core = 0;
        ASSERT_TRUE(ose::hunt("SSC_THREAD", 0, &core, nullptr));
        for (std::uint32_t type : {21u, 21u, 99u}) {
            auto* request = ose::alloc_as<SSC_TEST_TRIGGER_TIMER_REQ_S>(SSC_TEST_TRIGGER_TIMER_REQ);
            request->timerType = type;
            ose::Signal* signal = reinterpret_cast<ose::Signal*>(request);
            ose::send(&signal, core);
            const ose::SIGSELECT replies[] = {2, SSC_TEST_TRIGGER_TIMER_CFM, SSC_TEST_TRIGGER_TIMER_REJ};
            ose::Signal* reply = ose::receive_w_tmo(1000, replies);
            ASSERT_NE(reply, nullptr);
            answers.push_back(ose::signalNumber(reply));
            if (const auto* confirm = ose::signal_cast<SSC_TEST_TRIGGER_TIMER_CFM_S>(reply))
                found.push_back(confirm->timersFound);
            ose::free_buf(&reply);
        }
    });
    world().runFor(12000);
    EXPECT_EQ(answers, (std::vector<ose::SIGSELECT>{SSC_TEST_TRIGGER_TIMER_CFM, SSC_TEST_TRIGGER_TIMER_REJ,
                                                    SSC_TEST_TRIGGER_TIMER_REJ}));
    EXPECT_EQ(found, (std::vector<std::uint32_t>{1}));
    // Fired at once by the trigger; not made again, and its kernel time-out
    // at 5000 ms finds no timer.
    EXPECT_EQ(cyclic.m_times, (std::vector<std::uint64_t>{100}));
}

} // namespace
