#include "frame/TimerHandler.h"

#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "frame/TimerService.h"
#include "frame/TimerSignals.h"
#include "frame/testSupport/FakeOsHandler.h"
#include "frame/testSupport/TraceCapture.h"

#include "ose/SignalPool.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <vector>

namespace {

using ::testing::NiceMock;

// Kernel time-outs kept in a table; a test fires them by hand, which queues
// their expiry signal as the kernel would.
class FakeTimerHandler : public TimerHandler {
public:
    struct OsTimer {
        std::uint32_t timeMs;
        std::uint32_t timerRef;
        ose::SIGSELECT sigNo;
    };

    FakeTimerHandler(SignalDispatcherIf* dispatcher, FakeOsHandler& os) : TimerHandler(dispatcher), m_os(os) {}

    ose::OSTMOREF createOsTimer(std::uint32_t timeMs, std::uint32_t timerRef, ose::SIGSELECT sigNo) override
    {
        ose::OSTMOREF handle{0, ++m_lastSeq};
        m_pending[handle.seq] = {timeMs, timerRef, sigNo};
        m_created.push_back({timeMs, timerRef, sigNo});
        return handle;
    }
    bool restartOsTimer(TimerData& timer, std::uint32_t timeMs) override
    {
        auto found = m_pending.find(timer.handle.seq);
        if (found == m_pending.end()) return false;
        found->second.timeMs = timeMs;
        ++m_restarts;
        return true;
    }
    void cancelOsTimer(ose::OSTMOREF& handle) override
    {
        m_pending.erase(handle.seq);
        ++m_cancels;
    }
    void deleteOsTimer(ose::OSTMOREF&) override {}
    bool getTimerRef(ose::Signal* signal, std::uint32_t& timerRef) override
    {
        const auto* expiry = ose::signal_cast<SSC_TIMER_EXPIRED_S>(signal);
        if (expiry == nullptr) return false;
        timerRef = expiry->timerRef;
        return true;
    }

    // The kernel time-out of the newest timer expires: its signal is queued.
    void expireNewest() { expire(m_lastSeq); }
    void expire(std::uint64_t seq)
    {
        auto found = m_pending.find(seq);
        ASSERT_NE(found, m_pending.end());
        auto* signal = ose::alloc_as<SSC_TIMER_EXPIRED_S>(found->second.sigNo);
        signal->timerRef = found->second.timerRef;
        m_pending.erase(found);
        m_os.deliver(reinterpret_cast<ose::Signal*>(signal), FakeOsHandler::kOwnPid);
    }
    std::uint64_t newestSeq() const { return m_lastSeq; }
    const OsTimer& pending(std::uint64_t seq) { return m_pending.at(seq); }

    FakeOsHandler& m_os;
    std::map<std::uint64_t, OsTimer> m_pending;
    std::vector<OsTimer> m_created;
    std::uint64_t m_lastSeq = 0;
    int m_restarts = 0;
    int m_cancels = 0;
};

class Observer : public TimerObserverIf {
public:
    void timeout(TimerId id) override
    {
        m_calls.push_back(id);
        if (m_onTimeout) m_onTimeout(id);
    }
    std::vector<TimerId> m_calls;
    std::function<void(TimerId)> m_onTimeout;
};

class TimerHandlerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_liveBefore = ose::SignalPool::liveCount();
        OsService::setHandler(&m_os);
        m_dispatcher = std::make_unique<SignalDispatcher>();
        m_timers = std::make_unique<FakeTimerHandler>(m_dispatcher.get(), m_os);
        TimerService::setHandler(m_timers.get());
    }
    void TearDown() override
    {
        TimerService::setHandler(nullptr);
        m_timers.reset();
        m_dispatcher.reset();
        OsService::setHandler(nullptr);
        m_os.drain();
        EXPECT_EQ(ose::SignalPool::liveCount(), m_liveBefore) << "signal buffers leaked";
    }

    // Runs the loop over everything queued.
    void runQueued()
    {
        while (m_os.queued() > 0) m_dispatcher->receiveAndDispatch();
    }

    std::size_t m_liveBefore = 0;
    NiceMock<FakeOsHandler> m_os;
    std::unique_ptr<SignalDispatcher> m_dispatcher;
    std::unique_ptr<FakeTimerHandler> m_timers;
    Observer m_observer;
};

TEST_F(TimerHandlerTest, AZeroTimeBecomesOneMsAndTheObserverGetsTypeAndArgument)
{
    EXPECT_EQ(TimerService::startTimer(0, 7, &m_observer, 42), 1);
    ASSERT_EQ(m_timers->m_created.size(), 1u);
    EXPECT_EQ(m_timers->m_created[0].timeMs, 1u);
    EXPECT_EQ(m_timers->m_created[0].sigNo, SSC_TIMER_EXPIRED);
    m_timers->expireNewest();
    runQueued();
    ASSERT_EQ(m_observer.m_calls.size(), 1u);
    EXPECT_EQ(m_observer.m_calls[0], (TimerId{7, 42}));
    EXPECT_EQ(TimerService::isTimerRunning(7, &m_observer, 42), 0);
}

TEST_F(TimerHandlerTest, StartingARunningTripleRestartsItOnceAndAnotherArgumentIsAnotherTimer)
{
    TimerService::startTimer(500, 7, &m_observer, 1);
    TimerService::startTimer(800, 7, &m_observer, 1);
    TimerService::startTimer(500, 7, &m_observer, 2);
    EXPECT_EQ(m_timers->timerCount(), 2u);
    EXPECT_EQ(m_timers->m_restarts, 1);
    EXPECT_EQ(m_timers->pending(1).timeMs, 800u);
    m_timers->expire(1);
    m_timers->expire(2);
    runQueued();
    EXPECT_EQ(m_observer.m_calls, (std::vector<TimerId>{{7, 1}, {7, 2}}));
}

TEST_F(TimerHandlerTest, ARestartAfterTheKernelTimeOutExpiredReplacesTheTimerAndTheQueuedExpiryIsDropped)
{
    TimerService::startTimer(500, 7, &m_observer, 1);
    m_timers->expire(1); // queued, not yet taken by the loop
    TimerService::startTimer(800, 7, &m_observer, 1);
    EXPECT_EQ(m_timers->timerCount(), 1u);
    runQueued();
    EXPECT_TRUE(m_observer.m_calls.empty()) << "the old expiry must not fire the restarted timer";
    m_timers->expireNewest();
    runQueued();
    EXPECT_EQ(m_observer.m_calls.size(), 1u);
}

TEST_F(TimerHandlerTest, AStoppedTimerWhoseExpiryIsQueuedDoesNotCallItsObserver)
{
    TimerService::startTimer(100, 7, &m_observer, 1);
    m_timers->expireNewest();
    EXPECT_EQ(TimerService::stopTimer(7, &m_observer, 1), 1);
    EXPECT_EQ(TimerService::stopTimer(7, &m_observer, 1), 1) << "a stopped triple is no error";
    runQueued();
    EXPECT_TRUE(m_observer.m_calls.empty());
}

TEST_F(TimerHandlerTest, CyclicTimersNeedAtLeastOneSecond)
{
    TraceCapture trace("supSysCtrlSWU:7");
    EXPECT_EQ(TimerService::startCyclicTimer(999, 21, &m_observer, 0), 0);
    EXPECT_EQ(m_timers->timerCount(), 0u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "999ms cyclic timer requested, too short time!"), 1u);
    EXPECT_EQ(TimerService::startCyclicTimer(1000, 21, &m_observer, 0), 1);
    EXPECT_EQ(m_timers->m_created.back().sigNo, SSC_CYCLIC_TIMER_EXPIRED);
}

TEST_F(TimerHandlerTest, ACyclicTimerIsOutOfTheListWhileItsObserverRunsAndComesBackAfterwards)
{
    TimerService::startCyclicTimer(5000, 21, &m_observer, 3);
    std::size_t createdDuringTimeout = 0;
    int runningDuringTimeout = -1;
    m_observer.m_onTimeout = [&](TimerId) {
        createdDuringTimeout = m_timers->m_created.size();
        runningDuringTimeout = TimerService::isTimerRunning(21, &m_observer, 3);
    };
    for (int round = 0; round < 3; ++round) {
        m_timers->expireNewest();
        runQueued();
    }
    EXPECT_EQ(m_observer.m_calls.size(), 3u);
    EXPECT_EQ(runningDuringTimeout, 0);
    EXPECT_EQ(createdDuringTimeout, 3u) << "the next period starts after the observer returned";
    ASSERT_EQ(m_timers->m_created.size(), 4u);
    EXPECT_EQ(m_timers->m_created[3].timeMs, 5000u);
    EXPECT_NE(m_timers->m_created[3].timerRef, m_timers->m_created[2].timerRef);
    EXPECT_EQ(TimerService::isTimerRunning(21, &m_observer, 3), 1);
}

TEST_F(TimerHandlerTest, StopTimerInsideItsOwnCyclicTimeoutFindsNoRowAndTheTimerGoesOn)
{
    TimerService::startCyclicTimer(1000, 21, &m_observer, 0);
    int stopped = -1;
    int runningAfterStop = -1;
    m_observer.m_onTimeout = [&](TimerId id) {
        stopped = TimerService::stopTimer(id.timerType, &m_observer, id.argument);
        runningAfterStop = TimerService::isTimerRunning(id.timerType, &m_observer, id.argument);
    };
    m_timers->expireNewest();
    runQueued();
    EXPECT_EQ(stopped, 1);
    EXPECT_EQ(runningAfterStop, 0);
    EXPECT_EQ(m_timers->m_cancels, 0) << "there was no row to stop";
    EXPECT_EQ(m_timers->timerCount(), 1u) << "the next period starts after the observer returned";
    ASSERT_EQ(m_timers->m_created.size(), 2u);
    EXPECT_EQ(m_timers->m_created[1].sigNo, SSC_CYCLIC_TIMER_EXPIRED);
    EXPECT_EQ(TimerService::isTimerRunning(21, &m_observer, 0), 1);
}

TEST_F(TimerHandlerTest, AnObserverThatDeletesItselfInItsCyclicTimeoutIsNotCalledAgain)
{
    struct SelfDeleting : TimerObserverIf {
        explicit SelfDeleting(std::unique_ptr<SelfDeleting>& owner) : m_owner(owner) {}
        ~SelfDeleting() override { TimerService::stopAllTimers(this); }
        void timeout(TimerId) override { m_owner.reset(); }
        std::unique_ptr<SelfDeleting>& m_owner;
    };
    std::unique_ptr<SelfDeleting> unit;
    unit = std::make_unique<SelfDeleting>(unit);
    TimerService::startCyclicTimer(1000, 2, unit.get(), 0);
    TimerService::startTimer(300, 3, unit.get(), 0);
    TimerService::startTimer(300, 3, &m_observer, 0);
    m_timers->expire(1);
    runQueued();
    EXPECT_EQ(unit, nullptr);
    EXPECT_EQ(m_timers->timerCount(), 1u) << "only the other observer's timer is left";
    EXPECT_EQ(TimerService::isTimerRunning(3, &m_observer, 0), 1);
}

TEST_F(TimerHandlerTest, ACyclicTimerStartedAnewInsideItsTimeoutKeepsTheNewPeriodOnly)
{
    TimerService::startCyclicTimer(1000, 21, &m_observer, 0);
    m_observer.m_onTimeout = [&](TimerId) { TimerService::startCyclicTimer(3000, 21, &m_observer, 0); };
    m_timers->expireNewest();
    runQueued();
    EXPECT_EQ(m_timers->timerCount(), 1u);
    EXPECT_EQ(m_timers->pending(m_timers->newestSeq()).timeMs, 3000u);
}

TEST_F(TimerHandlerTest, SwitchingATripleBetweenOneShotAndCyclicMakesANewTimerOfTheAskedKind)
{
    TimerService::startTimer(2000, 9, &m_observer, 0);
    TimerService::startCyclicTimer(2000, 9, &m_observer, 0);
    EXPECT_EQ(m_timers->timerCount(), 1u);
    EXPECT_EQ(m_timers->m_cancels, 1);
    EXPECT_EQ(m_timers->m_created.back().sigNo, SSC_CYCLIC_TIMER_EXPIRED);
}

TEST_F(TimerHandlerTest, StopAllTimersTakesOnlyThatObserversTimers)
{
    TraceCapture trace("supSysCtrlSWU:7");
    Observer other;
    TimerService::startTimer(100, 1, &m_observer, 0);
    TimerService::startCyclicTimer(1000, 2, &m_observer, 0);
    TimerService::startTimer(100, 1, &other, 0);
    TimerService::stopAllTimers(&m_observer);
    EXPECT_EQ(m_timers->timerCount(), 1u);
    EXPECT_EQ(TimerService::isTimerRunning(1, &other, 0), 1);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "Timer cancelled from users list"), 2u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "No Timer left in users list"), 1u);
}

TEST_F(TimerHandlerTest, TheTestTriggerFiresTheFirstTimerOfItsTypeAfterConfirmingAndRejectsOtherwise)
{
    TraceCapture trace("supSysCtrlSWU:7");
    constexpr ose::PROCESS kTester = 0x30000;
    TimerService::startCyclicTimer(5000, 21, &m_observer, 8);
    bool confirmedBeforeTimeout = false;
    m_observer.m_onTimeout = [&](TimerId) { confirmedBeforeTimeout = m_os.sent().size() == 1; };

    auto* request = ose::alloc_as<SSC_TEST_TRIGGER_TIMER_REQ_S>(SSC_TEST_TRIGGER_TIMER_REQ);
    request->timerType = 21;
    m_os.deliver(reinterpret_cast<ose::Signal*>(request), kTester);
    runQueued();
    ASSERT_EQ(m_os.sent().size(), 1u);
    EXPECT_EQ(m_os.sent()[0].to, kTester);
    const auto* confirm = ose::signal_cast<SSC_TEST_TRIGGER_TIMER_CFM_S>(m_os.sent()[0].signal);
    ASSERT_NE(confirm, nullptr);
    EXPECT_EQ(confirm->sigNo, SSC_TEST_TRIGGER_TIMER_CFM);
    EXPECT_EQ(confirm->timersFound, 1u);
    EXPECT_EQ(m_observer.m_calls, (std::vector<TimerId>{{21, 8}}));
    EXPECT_TRUE(confirmedBeforeTimeout);
    EXPECT_EQ(m_timers->timerCount(), 0u) << "a triggered cyclic timer is not made again";
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "Handling SSC_TEST_TRIGGER_TIMER_REQ"), 1u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "Triggered Timer 1 if type 21."), 1u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "Sending SSC_TEST_TRIGGER_TIMER_CFM. timersFound: 1"), 1u);

    // Its kernel time-out still runs; when it expires it finds no row.
    m_timers->expire(1);
    runQueued();
    EXPECT_EQ(m_observer.m_calls.size(), 1u);

    request = ose::alloc_as<SSC_TEST_TRIGGER_TIMER_REQ_S>(SSC_TEST_TRIGGER_TIMER_REQ);
    request->timerType = 21;
    m_os.deliver(reinterpret_cast<ose::Signal*>(request), kTester);
    m_os.deliver(ose::alloc(4, SSC_TEST_TRIGGER_TIMER_REQ), kTester); // too short
    runQueued();
    ASSERT_EQ(m_os.sent().size(), 3u);
    EXPECT_EQ(ose::signalNumber(m_os.sent()[1].signal), SSC_TEST_TRIGGER_TIMER_REJ);
    EXPECT_EQ(ose::signalNumber(m_os.sent()[2].signal), SSC_TEST_TRIGGER_TIMER_REJ);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "Sending SSC_TEST_TRIGGER_TIMER_REJ"), 2u);
}

TEST_F(TimerHandlerTest, AShortExpiryAndAForeignSignalNumberAreTracedAndDropped)
{
    TraceCapture trace("supSysCtrlSWU:5");
    TimerService::startTimer(100, 1, &m_observer, 0);
    m_os.deliver(ose::alloc(4, SSC_TIMER_EXPIRED), FakeOsHandler::kOwnPid);
    runQueued();
    EXPECT_TRUE(m_observer.m_calls.empty());
    EXPECT_TRUE(trace.contains("too short"));
    ose::Signal* foreign = ose::alloc(8, 0x1234);
    m_timers->receiveSignal(foreign);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 1, "Unknown signal (4660) arrived in receiveSignal"), 1u);
    ose::free_buf(&foreign);
}

TEST_F(TimerHandlerTest, AnExpiryOfTheOtherKindIsTracedAndDroppedAndTheTimerStaysAsItWas)
{
    TraceCapture trace("supSysCtrlSWU:5");
    auto forge = [&](ose::SIGSELECT sigNo, std::uint32_t timerRef) {
        auto* signal = ose::alloc_as<SSC_TIMER_EXPIRED_S>(sigNo);
        signal->timerRef = timerRef;
        m_os.deliver(reinterpret_cast<ose::Signal*>(signal), FakeOsHandler::kOwnPid);
    };
    TimerService::startTimer(500, 7, &m_observer, 1);
    TimerService::startCyclicTimer(1000, 8, &m_observer, 2);
    const std::uint32_t oneShotRef = m_timers->m_created[0].timerRef;
    const std::uint32_t cyclicRef = m_timers->m_created[1].timerRef;
    forge(SSC_CYCLIC_TIMER_EXPIRED, oneShotRef);
    forge(SSC_TIMER_EXPIRED, cyclicRef);
    runQueued();
    EXPECT_TRUE(m_observer.m_calls.empty());
    EXPECT_EQ(m_timers->timerCount(), 2u);
    EXPECT_EQ(m_timers->m_created.size(), 2u) << "the one-shot timer must not be made cyclic";
    EXPECT_EQ(trace.count("supSysCtrlSWU", 5,
                          "Timer expiry signal 0x1705001 for timer " + std::to_string(oneShotRef) +
                              " of the other kind, dropped"),
              1u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 5,
                          "Timer expiry signal 0x1705000 for timer " + std::to_string(cyclicRef) +
                              " of the other kind, dropped"),
              1u);

    // The real expiries still work.
    m_timers->expire(1);
    m_timers->expire(2);
    runQueued();
    EXPECT_EQ(m_observer.m_calls, (std::vector<TimerId>{{7, 1}, {8, 2}}));
    EXPECT_EQ(TimerService::isTimerRunning(7, &m_observer, 1), 0);
    EXPECT_EQ(TimerService::isTimerRunning(8, &m_observer, 2), 1);
}

TEST_F(TimerHandlerTest, ARequestWithoutObserverIsRefused)
{
    EXPECT_EQ(TimerService::startTimer(100, 1, nullptr, 0), 0);
    EXPECT_EQ(TimerService::startCyclicTimer(1000, 1, nullptr, 0), 0);
    EXPECT_EQ(m_timers->timerCount(), 0u);
}

} // namespace
