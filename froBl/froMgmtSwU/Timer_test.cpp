// The object process's timers on the virtual clock: time-outs come back as
// signals through a receive loop like the process's own.

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/Timer.h"
#include "frame/testSupport/TraceCapture.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <functional>
#include <string>
#include <vector>

namespace {

using namespace ose;
using namespace ose::testing;

struct Fired {
    std::uint32_t id;
    std::uint64_t atMs;
};

class Recorder : public TimerObserver {
public:
    void timeout(std::uint32_t timerId) override
    {
        fired.push_back({timerId, get_time_ms()});
        if (onTimeout) onTimeout(timerId);
    }
    std::vector<Fired> fired;
    std::function<void(std::uint32_t)> onTimeout;
};

class TimerTest : public TestWorld {
protected:
    // Runs `script` in a process with its own distributor and timer, then
    // distributes what arrives until `untilMs` of world time.
    void runObjectProcess(std::function<void(Timer&)> script, std::uint64_t untilMs)
    {
        spawn("objects", [=, this] {
            SignalDistributor distributor;
            Timer timer(distributor);
            timer.init();
            m_pTimer = &timer;
            script(timer);
            while (get_time_ms() < untilMs) {
                Signal* signal = receive_w_tmo(static_cast<OSTIME>(untilMs - get_time_ms()), kAnySignal);
                if (signal == nullptr) break;
                distributor.distribute(signal);
                free_buf(&signal);
            }
            m_runningAtEnd = timer.size();
            m_pTimer = nullptr;
        });
        world().runFor(untilMs + 1);
    }

    Recorder m_observer;
    Timer* m_pTimer = nullptr;
    std::size_t m_runningAtEnd = 99;
};

TEST_F(TimerTest, OneShotFiresOnceAndRepeatingKeepsItsPeriodUntilCancelled)
{
    std::uint32_t shot = 99, repeating = 99;
    m_observer.onTimeout = [&](std::uint32_t id) {
        if (id == repeating && m_observer.fired.size() == 4) m_pTimer->cancel(repeating);
    };
    runObjectProcess(
        [&](Timer& timer) {
            shot = timer.start(&m_observer, TimerApi::OneShot, 2500);
            repeating = timer.start(&m_observer, TimerApi::Repeating, 1000);
            EXPECT_EQ(timer.size(), 2u);
        },
        10000);
    EXPECT_EQ(shot, 0u);
    EXPECT_EQ(repeating, 1u);
    ASSERT_EQ(m_observer.fired.size(), 4u);
    EXPECT_EQ(m_observer.fired[0].id, repeating);
    EXPECT_EQ(m_observer.fired[0].atMs, 1000u);
    EXPECT_EQ(m_observer.fired[1].atMs, 2000u);
    EXPECT_EQ(m_observer.fired[2].id, shot);
    EXPECT_EQ(m_observer.fired[2].atMs, 2500u);
    EXPECT_EQ(m_observer.fired[3].atMs, 3000u);
    EXPECT_EQ(m_runningAtEnd, 0u);
}

TEST_F(TimerTest, FreedIdsAreReusedOldestFirstAndAnUnknownIdIsIgnored)
{
    std::vector<std::uint32_t> ids;
    runObjectProcess(
        [&](Timer& timer) {
            for (int i = 0; i < 3; ++i) ids.push_back(timer.start(&m_observer, TimerApi::OneShot, 100));
            timer.cancel(2);
            timer.cancel(0);
            timer.cancel(77);
            ids.push_back(timer.start(&m_observer, TimerApi::OneShot, 100));
            ids.push_back(timer.start(&m_observer, TimerApi::OneShot, 100));
            ids.push_back(timer.start(&m_observer, TimerApi::OneShot, 100));
        },
        1000);
    EXPECT_EQ(ids, (std::vector<std::uint32_t>{0, 1, 2, 2, 0, 3}));
    EXPECT_EQ(m_observer.fired.size(), 4u);
    EXPECT_EQ(m_runningAtEnd, 0u);
}

TEST_F(TimerTest, ATimeOutAlreadyQueuedWhenItsTimerIsCancelledDoesNotFireTheIdsNextTimer)
{
    // Both run out at 100 ms. Whichever comes first cancels the other, whose
    // signal already waits in the queue, and starts two timers: the second
    // gets the cancelled timer's id.
    std::vector<std::uint32_t> restarted;
    m_observer.onTimeout = [&](std::uint32_t id) {
        if (!restarted.empty()) return;
        m_pTimer->cancel(1 - id);
        restarted.push_back(m_pTimer->start(&m_observer, TimerApi::OneShot, 5000));
        restarted.push_back(m_pTimer->start(&m_observer, TimerApi::OneShot, 5000));
    };
    runObjectProcess(
        [&](Timer& timer) {
            timer.start(&m_observer, TimerApi::OneShot, 100);
            timer.start(&m_observer, TimerApi::OneShot, 100);
        },
        10000);
    ASSERT_EQ(restarted.size(), 2u);
    EXPECT_EQ(restarted[1], 1 - m_observer.fired[0].id) << "the cancelled id comes second from the free list";
    ASSERT_EQ(m_observer.fired.size(), 3u);
    EXPECT_EQ(m_observer.fired[1].atMs, 5100u);
    EXPECT_EQ(m_observer.fired[2].atMs, 5100u);
}

TEST_F(TimerTest, TimesOutsideTheKernelsRangeAndForeignSignalsAreHandledSafely)
{
    TraceCapture trace("supSysTimerLU:1");
    std::uint32_t busy = 99;
    std::vector<std::uint64_t> busyAt;
    m_observer.onTimeout = [&](std::uint32_t id) {
        if (id != busy) return;
        busyAt.push_back(get_time_ms());
        if (busyAt.size() == 5) m_pTimer->cancel(busy);
    };
    runObjectProcess(
        [&](Timer& timer) {
            timer.start(&m_observer, TimerApi::OneShot, -5);
            busy = timer.start(&m_observer, TimerApi::Repeating, 0);
            timer.start(&m_observer, 7, 10); // neither kind: stays until cancelled
            Signal* stray = word(0x4711, 1);
            timer.handleSignal(stray);
            free_buf(&stray);
            Signal* shortTimeout = alloc(4, 0x1705100);
            timer.handleSignal(shortTimeout);
            free_buf(&shortTimeout);
        },
        100);
    ASSERT_FALSE(m_observer.fired.empty());
    EXPECT_EQ(m_observer.fired[0].atMs, 0u) << "a negative time runs out at once";
    EXPECT_EQ(busyAt, (std::vector<std::uint64_t>{1, 2, 3, 4, 5})) << "a repeating timer of 0 ms waits a tick";
    EXPECT_EQ(m_observer.fired.size(), 6u);
    EXPECT_EQ(m_runningAtEnd, 1u);
    EXPECT_NE(trace.text().find("Unknown signal number: 0x4711"), std::string::npos);
    EXPECT_NE(trace.text().find("Unknown signal number: 0x1705100"), std::string::npos);
}

} // namespace
