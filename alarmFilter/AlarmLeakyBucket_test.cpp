// The leaky bucket on the virtual clock. A process like the object process
// runs the bucket on the real timer; a driver process hands it the steps of
// a script at chosen times. What reaches the client is recorded with the
// time it left.

#include "alarmFilter/AlarmLeakyBucket.h"

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/Timer.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"
#include "ose/Trace.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace ose;
using namespace ose::testing;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;
using Lines = std::vector<std::string>;
using Step = std::function<void(AlarmLeakyBucket&)>;

constexpr SIGSELECT kStep = 960; // test: run script step <word> in the bucket's process
constexpr std::int32_t kExternal = 4097;
constexpr std::int32_t kDoor = 4105;
constexpr std::int32_t kSmoke = 4106;
constexpr std::uint64_t kMinute = 60000;

// One line per indication: time, kind, fault, ldn, class/external id and,
// for a fault, its text.
class RecordingIndications : public AlarmIndicationIf {
public:
    void sendFaultInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn, std::int32_t faultId,
                      const std::string& faultDescription, const std::vector<std::string>& additionalData,
                      std::int32_t eventId) override
    {
        std::string line = head("fault", froId, froType, ldn, faultId) + " '" + faultDescription + "'";
        if (!additionalData.empty() || eventId != 0) line += " with extras";
        lines.push_back(line);
    }
    void sendFaultCeaseInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                           std::int32_t faultId) override
    {
        lines.push_back(head("cease", froId, froType, ldn, faultId));
    }

    Lines lines;

private:
    static std::string head(const char* kind, std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                            std::int32_t faultId)
    {
        return std::to_string(get_time_ms()) + " " + kind + " " + std::to_string(faultId) + " " + ldn + " " +
               std::string(fro_types::className(froType)) + "/" + std::to_string(froId);
    }
};

class AlarmLeakyBucketTest : public TestWorld {
protected:
    void SetUp() override
    {
        TestWorld::SetUp();
        Trace::configure("supSysAlarmFilterSwU:all");
        Trace::setSink([this](const TraceRecord& record) {
            if (record.group == "supSysAlarmFilterSwU")
                m_trace.push_back(std::to_string(record.level) + " " + std::string(record.text));
        });
        m_table.createMO("Cabinet=1", fro_types::kCabinet, 1);
        m_table.createMO("Cabinet=10", fro_types::kCabinet, 10);
        m_table.createMO("HwUnit=1", fro_types::kHwUnit, 1);
        m_table.createMO("AlarmPort=3", fro_types::kAlarmPort, 3);
        m_bucketProcess = spawn("support_system_control_thread", [this] { bucketProcess(); });
        world().runUntilIdle();
        ASSERT_NE(m_pTimer, nullptr);
    }
    void TearDown() override
    {
        TestWorld::TearDown();
        Trace::setSink({});
        Trace::reset();
    }

    void bucketProcess()
    {
        SignalDistributor distributor;
        Timer timer(distributor);
        timer.init();
        AlarmLeakyBucket bucket(m_sent, timer, m_table);
        m_pTimer = &timer;
        for (;;) {
            Signal* signal = receive(kAnySignal);
            if (signalNumber(signal) == kStep) m_steps.at(valueOf(signal)).second(bucket);
            else distributor.distribute(signal);
            free_buf(&signal);
        }
    }

    // Steps are given in the order of their times.
    void at(std::uint64_t ms, Step step)
    {
        ASSERT_TRUE(m_steps.empty() || m_steps.back().first <= ms);
        m_steps.emplace_back(ms, std::move(step));
    }
    void raise(std::uint64_t ms, const std::string& ldn, std::int32_t faultId)
    {
        at(ms, [this, ldn, faultId](AlarmLeakyBucket& b) { b.raise(fro(ldn), faultId, "door", ldn); });
    }
    void cease(std::uint64_t ms, const std::string& ldn, std::int32_t faultId)
    {
        at(ms, [this, ldn, faultId](AlarmLeakyBucket& b) { b.cease(fro(ldn), faultId, ldn); });
    }
    void pulse(std::uint64_t ms, const std::string& ldn, std::int32_t faultId)
    {
        at(ms, [this, ldn, faultId](AlarmLeakyBucket& b) { b.pulse(fro(ldn), faultId, ldn); });
    }

    // Hands the steps not yet handed over to a driver and runs the world to ms.
    void runUntil(std::uint64_t ms)
    {
        const std::size_t first = m_handedOver;
        const std::size_t end = m_handedOver = m_steps.size();
        spawn("driver", [this, first, end] {
            for (std::size_t i = first; i < end; ++i) {
                const std::uint64_t now = get_time_ms();
                if (m_steps[i].first > now) delay(static_cast<OSTIME>(m_steps[i].first - now));
                Signal* step = word(kStep, static_cast<std::uint32_t>(i));
                send(&step, m_bucketProcess);
            }
        });
        world().runFor(ms - world().now());
    }

    const fRO& fro(const std::string& ldn) const { return *m_table.getFro(ldn); }
    std::size_t timers() const { return m_pTimer->size(); }
    Lines ceases() const
    {
        Lines result;
        for (const std::string& line : m_sent.lines)
            if (line.find(" cease ") != std::string::npos) result.push_back(line);
        return result;
    }
    int traced(const std::string& words) const
    {
        return static_cast<int>(std::count_if(m_trace.begin(), m_trace.end(), [&](const std::string& line) {
            return line.find(words) != std::string::npos;
        }));
    }

    froIdHandler m_ids;
    fROFactory m_factory{m_ids};
    froMgr m_table{m_factory};
    RecordingIndications m_sent;
    Lines m_trace;
    std::vector<std::pair<std::uint64_t, Step>> m_steps;
    std::size_t m_handedOver = 0;
    PROCESS m_bucketProcess = 0;
    Timer* m_pTimer = nullptr; // lives in the bucket's process
};

// --- raise and cease ----------------------------------------------------------

TEST_F(AlarmLeakyBucketTest, FirstRaiseAndCeaseGoOutAtOnceAndARepeatHoldsItsCeaseUntilLevelOne)
{
    raise(1000, "Cabinet=1", kDoor);
    cease(11000, "Cabinet=1", kDoor);
    raise(21000, "Cabinet=1", kDoor);
    cease(31000, "Cabinet=1", kDoor);
    runUntil(kMinute);
    EXPECT_EQ(m_sent.lines, (Lines{"1000 fault 4105 Cabinet=1 Cabinet/1 'door'", "11000 cease 4105 Cabinet=1 Cabinet/1",
                                   "21000 fault 4105 Cabinet=1 Cabinet/1 'door'"}));
    runUntil(3 * kMinute);
    EXPECT_EQ(ceases(), (Lines{"11000 cease 4105 Cabinet=1 Cabinet/1", "61000 cease 4105 Cabinet=1 Cabinet/1"}));
    EXPECT_EQ(timers(), 0u);
}

// n raises in a row, then a cease: it waits one period per level above 1,
// and the level stops at 3. The fault id is the number of raises.
TEST_F(AlarmLeakyBucketTest, HeldCeaseWaitsOnePeriodPerLevelAndTheLevelStopsAtThree)
{
    const std::vector<int> raises{2, 3, 4, 6};
    for (int i = 0; i < 6; ++i)
        for (int n : raises)
            if (i < n) raise(1000 + i * 1000, "Cabinet=1", n);
    for (int n : raises) cease(9000, "Cabinet=1", n);
    runUntil(4 * kMinute);
    EXPECT_EQ(ceases(), (Lines{"61000 cease 2 Cabinet=1 Cabinet/1", "121000 cease 3 Cabinet=1 Cabinet/1",
                               "121000 cease 4 Cabinet=1 Cabinet/1", "121000 cease 6 Cabinet=1 Cabinet/1"}));
    EXPECT_EQ(m_sent.lines.size(), 4u + raises.size()) << "one fault per entry: the repeats were reported";
    EXPECT_EQ(traced("increased to (3)"), 3);
    EXPECT_THAT(m_trace, Not(Contains(HasSubstr("increased to (4)"))));
}

TEST_F(AlarmLeakyBucketTest, FlickerFiveTimesInAMinuteReleasesTheLastCeaseWithinTwoPeriods)
{
    for (int i = 0; i < 5; ++i) {
        raise(1000 + i * 10000, "Cabinet=1", kDoor);
        cease(6000 + i * 10000, "Cabinet=1", kDoor);
    }
    runUntil(5 * kMinute);
    // The last cease came at 46000; two periods of the timer started at 1000.
    EXPECT_EQ(m_sent.lines, (Lines{"1000 fault 4105 Cabinet=1 Cabinet/1 'door'", "6000 cease 4105 Cabinet=1 Cabinet/1",
                                   "11000 fault 4105 Cabinet=1 Cabinet/1 'door'",
                                   "121000 cease 4105 Cabinet=1 Cabinet/1"}));
}

TEST_F(AlarmLeakyBucketTest, TracesTellEachStepInFixedWords)
{
    raise(1000, "Cabinet=1", kDoor);
    raise(2000, "Cabinet=1", kDoor);
    cease(3000, "Cabinet=1", kDoor);
    cease(130000, "Cabinet=1", kDoor);
    runUntil(131000);
    EXPECT_EQ(m_trace, (Lines{
                           "4 LeakyBucket: FaultInd is sent with faultId (0x1009) for ldn (Cabinet=1).",
                           "4 LeakyBucket: Alarm with faultId (0x1009) for ldn (Cabinet=1) has been added to the "
                           "leaky bucket.",
                           "7 LeakyBucket: alarmLevel for ldn (Cabinet=1) has been increased to (2).",
                           "7 LeakyBucket: Active drop time interval with Id (0) has ended.",
                           "7 LeakyBucket: Decreased alarmLevel to (1) for ldn (Cabinet=1).",
                           "7 LeakyBucket: alarmLevel (1). alarmReported (1), alarmActive (0).",
                           "7 LeakyBucket: Active drop time interval with Id (0) has ended.",
                           "7 LeakyBucket: Decreased alarmLevel to (0) for ldn (Cabinet=1).",
                           "4 LeakyBucket: Removing faultId (0x1009) for ldn (Cabinet=1) from the leaky bucket and "
                           "stopping the drop timer.",
                           "4 LeakyBucket: FaultCeaseInd is sent with faultId (0x1009) for ldn (Cabinet=1).",
                       }));
}

// --- the drop timer -----------------------------------------------------------

TEST_F(AlarmLeakyBucketTest, LoneRaiseIsForgottenAfterAMinuteWithTheFaultStandingAndALaterCeaseGoesOutAtOnce)
{
    raise(1000, "Cabinet=1", kDoor);
    runUntil(62000);
    EXPECT_EQ(timers(), 0u);
    EXPECT_TRUE(ceases().empty());
    cease(70000, "Cabinet=1", kDoor);
    raise(80000, "Cabinet=1", kDoor);
    runUntil(90000);
    EXPECT_EQ(m_sent.lines, (Lines{"1000 fault 4105 Cabinet=1 Cabinet/1 'door'", "70000 cease 4105 Cabinet=1 Cabinet/1",
                                   "80000 fault 4105 Cabinet=1 Cabinet/1 'door'"}));
}

TEST_F(AlarmLeakyBucketTest, ADayOfQuietAfterABurstLeavesNothingRunning)
{
    for (std::uint64_t ms : {1000, 2000, 3000, 4000}) raise(ms, "Cabinet=1", kDoor);
    cease(5000, "Cabinet=1", kDoor);
    runUntil(24 * 60 * kMinute);
    EXPECT_EQ(ceases(), Lines{"121000 cease 4105 Cabinet=1 Cabinet/1"});
    EXPECT_EQ(timers(), 0u);
    EXPECT_EQ(traced("Active drop time interval"), 3) << "levels 3, 2, 1 drained, then nothing";
}

TEST_F(AlarmLeakyBucketTest, TimeOutOfAnUnknownTimerIsTracedAsAnErrorAndChangesNothing)
{
    raise(1000, "Cabinet=1", kDoor);
    raise(2000, "Cabinet=1", kDoor);
    at(3000, [](AlarmLeakyBucket& b) { b.timeout(77); });
    cease(4000, "Cabinet=1", kDoor);
    runUntil(62000);
    EXPECT_EQ(ceases(), Lines{"61000 cease 4105 Cabinet=1 Cabinet/1"});
    EXPECT_THAT(m_trace, Contains("1 LeakyBucket: Drop timer Id (77) does not exist in the leakyBucket."));
}

TEST_F(AlarmLeakyBucketTest, ABucketThatGoesCancelsItsTimers)
{
    at(1000, [this](AlarmLeakyBucket&) {
        {
            AlarmLeakyBucket other(m_sent, *m_pTimer, m_table);
            other.raise(fro("Cabinet=1"), kDoor, "door", "Cabinet=1");
            other.raise(fro("AlarmPort=3"), kExternal, "input", "AlarmPort=3");
            EXPECT_EQ(timers(), 2u);
        }
        EXPECT_EQ(timers(), 0u);
    });
    runUntil(3 * kMinute); // a time-out reaching the gone bucket would be a use after free
    EXPECT_EQ(traced("Active drop time interval"), 0);
}

// --- objects ------------------------------------------------------------------

TEST_F(AlarmLeakyBucketTest, OnlyTheHeldCeaseOfAnAlarmPortClearsActiveExternalAlarm)
{
    m_table.setAttribute("AlarmPort=3", "activeExternalAlarm", "1");
    raise(1000, "AlarmPort=3", kExternal);
    cease(2000, "AlarmPort=3", kExternal);
    raise(3000, "AlarmPort=3", kExternal);
    cease(4000, "AlarmPort=3", kExternal);
    runUntil(kMinute);
    EXPECT_EQ(ceases(), Lines{"2000 cease 4097 AlarmPort=3 AlarmPort/3"});
    EXPECT_EQ(m_table.getAttribute("AlarmPort=3", "activeExternalAlarm"), "1")
        << "a cease at once leaves it to the caller";
    runUntil(62000);
    EXPECT_EQ(ceases().back(), "61000 cease 4097 AlarmPort=3 AlarmPort/3");
    EXPECT_EQ(m_table.getAttribute("AlarmPort=3", "activeExternalAlarm"), "0");
}

TEST_F(AlarmLeakyBucketTest, HeldCeaseOfAnAlarmPortDeletedMeanwhileStillGoesOut)
{
    raise(1000, "AlarmPort=3", kExternal);
    raise(2000, "AlarmPort=3", kExternal);
    cease(3000, "AlarmPort=3", kExternal);
    at(4000, [this](AlarmLeakyBucket&) { m_table.deleteMO("AlarmPort=3"); });
    runUntil(62000);
    EXPECT_EQ(ceases(), Lines{"61000 cease 4097 AlarmPort=3 AlarmPort/3"});
}

TEST_F(AlarmLeakyBucketTest, ObjectsOfTwoClassesWithTheSameIdAndFaultShareOneEntry)
{
    raise(1000, "Cabinet=1", kDoor);
    raise(2000, "HwUnit=1", kDoor);
    cease(3000, "HwUnit=1", kDoor);
    raise(4000, "Cabinet=10", kDoor);
    runUntil(5000);
    EXPECT_EQ(timers(), 2u);
    runUntil(62000);
    EXPECT_EQ(m_sent.lines, (Lines{"1000 fault 4105 Cabinet=1 Cabinet/1 'door'",
                                   "4000 fault 4105 Cabinet=10 Cabinet/10 'door'",
                                   "61000 cease 4105 Cabinet=1 Cabinet/1"}))
        << "the held cease goes out for the object that made the entry";
}

// --- pulse --------------------------------------------------------------------

TEST_F(AlarmLeakyBucketTest, PulseOnAReportedFaultOnlyRaisesTheLevel)
{
    raise(1000, "AlarmPort=3", kExternal);
    raise(1000, "Cabinet=1", kDoor);
    pulse(2000, "AlarmPort=3", kExternal);
    pulse(2000, "Cabinet=1", kDoor); // the input stays active: its fault stands
    cease(3000, "AlarmPort=3", kExternal);
    runUntil(3 * kMinute);
    EXPECT_EQ(m_sent.lines, (Lines{"1000 fault 4097 AlarmPort=3 AlarmPort/3 'door'",
                                   "1000 fault 4105 Cabinet=1 Cabinet/1 'door'",
                                   "61000 cease 4097 AlarmPort=3 AlarmPort/3"}));
}

TEST_F(AlarmLeakyBucketTest, PulseReportsWithoutTextAndLeavesTheInputStateAlone)
{
    raise(1000, "AlarmPort=3", kExternal);
    cease(2000, "AlarmPort=3", kExternal);
    pulse(3000, "AlarmPort=3", kExternal); // the input is still inactive: the timer ceases it
    pulse(4000, "Cabinet=1", kDoor);        // no entry: one that ceases nothing at level 1
    runUntil(3 * kMinute);
    EXPECT_EQ(m_sent.lines, (Lines{"1000 fault 4097 AlarmPort=3 AlarmPort/3 'door'",
                                   "2000 cease 4097 AlarmPort=3 AlarmPort/3",
                                   "3000 fault 4097 AlarmPort=3 AlarmPort/3 ''",
                                   "4000 fault 4105 Cabinet=1 Cabinet/1 ''",
                                   "61000 cease 4097 AlarmPort=3 AlarmPort/3"}));
    EXPECT_EQ(timers(), 0u);
}

// --- forgetting ---------------------------------------------------------------

struct Forgetting {
    const char* name;
    std::function<void(AlarmLeakyBucket&, const fRO& cabinet)> forget; // Cabinet=1 and its door fault
    std::size_t timersLeft;
    bool ceasesAtOnce;
};

void PrintTo(const Forgetting& forgetting, std::ostream* out) { *out << forgetting.name; }

class AlarmLeakyBucketForgetTest : public AlarmLeakyBucketTest, public ::testing::WithParamInterface<Forgetting> {};

// Four entries at level 2, so that no cease would go out at once: the door
// and smoke faults of Cabinet=1, one of HwUnit=1 (the same external id) and
// the door fault of Cabinet=10. The forgotten door fault's cease then goes out
// at once; what is left drains without a word.
TEST_P(AlarmLeakyBucketForgetTest, ForgettingStopsTheTimersOfWhatItForgets)
{
    for (std::uint64_t ms : {1000, 2000}) {
        raise(ms, "Cabinet=1", kDoor);
        raise(ms, "Cabinet=1", kSmoke);
        raise(ms, "HwUnit=1", kExternal);
        raise(ms, "Cabinet=10", kDoor);
    }
    at(3000, [this](AlarmLeakyBucket& b) { GetParam().forget(b, fro("Cabinet=1")); });
    cease(4000, "Cabinet=1", kDoor);
    runUntil(5000);
    EXPECT_EQ(timers(), GetParam().timersLeft);
    runUntil(4 * kMinute);
    Lines expected{"4000 cease 4105 Cabinet=1 Cabinet/1"};
    if (GetParam().ceasesAtOnce) expected.insert(expected.begin(), "3000 cease 4105 Cabinet=1 Cabinet/1");
    EXPECT_EQ(ceases(), expected);
    EXPECT_EQ(timers(), 0u);
}

using Bucket = AlarmLeakyBucket;

INSTANTIATE_TEST_SUITE_P(
    AllWays, AlarmLeakyBucketForgetTest,
    ::testing::Values(
        Forgetting{"remove", [](Bucket& b, const fRO& cabinet) { b.remove(cabinet, kDoor); }, 3, false},
        Forgetting{"removeAll", [](Bucket& b, const fRO& cabinet) { b.removeAll(cabinet); }, 1, false},
        Forgetting{"removeByLdn", [](Bucket& b, const fRO&) { b.removeByLdn("Cabinet=1"); }, 2, false},
        Forgetting{"ceaseAndRemove",
                   [](Bucket& b, const fRO& cabinet) { b.ceaseAndRemove(cabinet, kDoor, "Cabinet=1"); }, 3, true},
        Forgetting{"ceaseAndRemoveAll",
                   [](Bucket& b, const fRO& cabinet) { b.ceaseAndRemoveAll(cabinet, kDoor, "Cabinet=1"); }, 1, true}),
    [](const ::testing::TestParamInfo<Forgetting>& info) { return std::string(info.param.name); });

} // namespace
