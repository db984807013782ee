#include "frame/ActiveFaultsRegister.h"

#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/TimerService.h"
#include "frame/testSupport/TraceCapture.h"
#include "platform/testSupport/CoreHarness.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using namespace fault_id;
using namespace func_type;
using ose::testing::TestWorld;

constexpr FuncId_t kPsu1{kPsu, 1};
constexpr FuncId_t kPsu2{kPsu, 2};
constexpr FuncId_t kCabinet1{kCabinet, 1};
constexpr FuncId_t kCabinet2{kCabinet, 2};
constexpr FuncId_t kScu1{kScu, 1};
constexpr FuncId_t kBfu1{kBfu, 1};
constexpr FuncId_t kBattery1{kBatteryBackup, 1};
constexpr FuncId_t kPdu1{kPdu, 1};

std::string name(const char* what, const FaultId_t& faultId, const FuncId_t& funcId)
{
    std::string line = std::string(what) + " " + std::to_string(faultId.id) + " " + text(funcId.FuncType) + "-" +
                       std::to_string(funcId.FuncInst);
    if (!faultId.text.empty()) line += " \"" + faultId.text + "\"";
    return line + " @" + std::to_string(ose::get_time_ms());
}

// Everything the register tells, with the virtual time it was told at.
class Recorder : public FaultsRegisterReportIf, public AlarmObserverIf {
public:
    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override
    {
        m_events.push_back(name("raise", faultId, funcId));
    }
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override
    {
        m_events.push_back(name("cease", faultId, funcId));
    }
    void faultsChanged() override { ++m_changes; }

    std::vector<std::string> m_events;
    int m_changes = 0;
};

// Steps run inside the core process at given virtual times.
class Script : public TimerObserverIf {
public:
    static constexpr TimerType kStepTimer = 1;

    Script& at(std::uint32_t timeMs, std::function<void()> step)
    {
        m_steps.push_back({timeMs, std::move(step)});
        return *this;
    }
    void start()
    {
        for (std::uint32_t index = 0; index < m_steps.size(); ++index)
            TimerService::startTimer(m_steps[index].first, kStepTimer, this, index);
    }
    void timeout(TimerId timerId) override { m_steps.at(timerId.argument).second(); }

private:
    std::vector<std::pair<std::uint32_t, std::function<void()>>> m_steps;
};

class ActiveFaultsRegisterTest : public TestWorld {
protected:
    void SetUp() override
    {
        TestWorld::SetUp();
        m_register.addReporter(&m_recorder);
        m_register.addAlarmObserver(&m_recorder);
    }

    void play(std::uint32_t untilMs)
    {
        spawn("SSC_THREAD", core_harness::coreBody([this](SignalDispatcher&) { m_script.start(); }));
        world().runFor(untilMs);
    }

    ActiveFaultsRegister m_register;
    Recorder m_recorder;
    Script m_script;
};

TEST_F(ActiveFaultsRegisterTest, ADelayedRaiseIsActiveAtOnceButReportedOnlyWhenItsDelayEnds)
{
    bool activeAtOnce = false;
    int changesBeforeTimer = -1;
    m_script
        .at(10,
            [&] {
                m_register.raiseFault(kFaultyHubPosition, kPsu1, 5000);
                m_register.raiseFault(kFaultyHubPosition, kPsu1, 5000);
                activeAtOnce = m_register.isFaultActive(kFaultyHubPosition, kPsu1);
            })
        .at(5000, [&] { changesBeforeTimer = m_recorder.m_changes; });
    play(20000);
    EXPECT_TRUE(activeAtOnce);
    EXPECT_EQ(changesBeforeTimer, 0);
    // Raised twice, held once: one row, one report, at the end of the first delay.
    EXPECT_EQ(m_recorder.m_events, (std::vector<std::string>{"raise 21503 PSU-1 @5010"}));
    EXPECT_EQ(m_register.activeCount(), 1U);
    EXPECT_EQ(m_register.delayedCount(), 0U);
    // A delayed raise taking effect does not tell the observers.
    EXPECT_EQ(m_recorder.m_changes, 0);
}

TEST_F(ActiveFaultsRegisterTest, ADelayedRaiseCeasedInTimeIsNeverHeardAndAStaleTimerDoesNotActOnALaterRaise)
{
    m_script.at(10, [&] { m_register.raiseFault(kFaultyHubPosition, kPsu1, 5000); })
        .at(100, [&] { m_register.ceaseFault(kFaultyHubPosition, kPsu1); })
        .at(1000, [&] { m_register.raiseFault(kFaultyHubPosition, kPsu1, 5000); });
    play(20000);
    // The second raise counts 5000 ms from its own start, not from the first.
    EXPECT_EQ(m_recorder.m_events, (std::vector<std::string>{"raise 21503 PSU-1 @6000"}));
    // The cease reached the observers although nobody had heard the fault.
    EXPECT_EQ(m_recorder.m_changes, 1);
}

TEST_F(ActiveFaultsRegisterTest, ADelayedCeaseRaisedAgainMeanwhileStillCeasesAtTheEndOfItsDelay)
{
    bool activeDuringDelay = false;
    m_script.at(10, [&] { m_register.raiseFault(kNoBatteryPresent, kBattery1); })
        .at(100, [&] { m_register.ceaseFault(kNoBatteryPresent, kBattery1, 3000); })
        .at(1000,
            [&] {
                m_register.raiseFault(kNoBatteryPresent, kBattery1);
                activeDuringDelay = m_register.isFaultActive(kNoBatteryPresent);
            })
        .at(3200, [&] { m_register.ceaseFault(kNoBatteryPresent, kBattery1, 3000); });
    play(10000);
    EXPECT_TRUE(activeDuringDelay);
    // The cease of 3200 found nothing active: no second timer.
    EXPECT_EQ(m_recorder.m_events,
              (std::vector<std::string>{"raise 6003 Battery Backup-1 @10", "cease 6003 Battery Backup-1 @3100"}));
    EXPECT_FALSE(m_register.isFaultActive(kNoBatteryPresent));
    EXPECT_EQ(m_register.delayedCount(), 0U);
}

TEST_F(ActiveFaultsRegisterTest, AMissingPsuHidesItsOwnSymptomsAndUncoversThemWhenItReturns)
{
    m_script.at(10, [&] { m_register.raiseFault(FaultId_t(kPsuInputVoltageHigh, "input high"), kPsu1); })
        .at(20, [&] { m_register.raiseFault(kHwuMissing, kPsu1); })
        .at(25, [&] { m_register.raiseFault(kPsuInputVoltageHigh, kPsu2); })
        .at(27, [&] { m_register.raiseFault(kHwuFaulty, kPsu1); })
        .at(30, [&] { m_register.ceaseFault(kHwuMissing, kPsu1); });
    play(1000);
    EXPECT_EQ(m_recorder.m_events, (std::vector<std::string>{
                                       "raise 20001 PSU-1 \"input high\" @10",
                                       "cease 20001 PSU-1 \"input high\" @20",
                                       "raise 21502 PSU-1 @20",
                                       "raise 20001 PSU-2 @25",
                                       "cease 21502 PSU-1 @30",
                                       // Uncovered by the missing unit, but still
                                       // hidden by the faulty one: only 21501 shows.
                                       "raise 21501 PSU-1 @30",
                                   }));
    EXPECT_EQ(m_recorder.m_changes, 5);
}

TEST_F(ActiveFaultsRegisterTest, ASmokeDetectorChainReleasesOneLayerAtATime)
{
    m_script.at(10, [&] { m_register.raiseFault(kSmokeDetectorDisconnected, kCabinet1); })
        .at(20, [&] { m_register.raiseFault(kSmokeDetectorHwFailure, kCabinet1); })
        .at(30, [&] { m_register.raiseFault(kSmokeDetectorAlarm, kCabinet1); })
        .at(40, [&] { m_register.ceaseFault(kSmokeDetectorDisconnected, kCabinet1); })
        .at(50, [&] { m_register.ceaseFault(kSmokeDetectorHwFailure, kCabinet1); });
    play(1000);
    EXPECT_EQ(m_recorder.m_events, (std::vector<std::string>{
                                       "raise 14003 Cabinet-1 @10",
                                       "cease 14003 Cabinet-1 @40",
                                       "raise 14005 Cabinet-1 @40",
                                       "cease 14005 Cabinet-1 @50",
                                       "raise 14004 Cabinet-1 @50",
                                   }));
}

TEST_F(ActiveFaultsRegisterTest, AMissingScuHidesCabinetFaultsOfAnyInstanceButEachRuleReachesOneRow)
{
    m_script.at(10, [&] { m_register.raiseFault(kDoorAlarm, kCabinet1); })
        .at(20, [&] { m_register.raiseFault(kDoorAlarm, kCabinet2); })
        .at(30, [&] { m_register.raiseFault(kHwuMissing, kScu1); })
        .at(40, [&] { m_register.raiseFault(kSmokeDetectorAlarm, kCabinet2); })
        .at(50, [&] { m_register.ceaseFault(kHwuMissing, kScu1); });
    play(1000);
    // The newest door alarm stands first in the list and is the one reached;
    // the older stays reported. A smoke alarm raised meanwhile stays hidden
    // until the SCU is back.
    EXPECT_EQ(m_recorder.m_events, (std::vector<std::string>{
                                       "raise 14002 Cabinet-1 @10",
                                       "raise 14002 Cabinet-2 @20",
                                       "cease 14002 Cabinet-2 @30",
                                       "raise 21502 SCU-1 @30",
                                       "cease 21502 SCU-1 @50",
                                       "raise 14004 Cabinet-2 @50",
                                       "raise 14002 Cabinet-2 @50",
                                   }));
}

TEST_F(ActiveFaultsRegisterTest, ReleaseUncoversNothingTwiceAndNothingBeforeItsDelayEnds)
{
    m_script.at(10, [&] { m_register.raiseFault(kPsuInputVoltageHigh, kPsu1); })
        .at(12, [&] { m_register.raiseFault(kPsuInputVoltageLow, kPsu2, 1000); })
        .at(20,
            [&] {
                m_register.raiseFault(kHwuMissing, kPsu1, 1000);
                m_register.raiseFault(kHwuMissing, kPsu2);
            })
        .at(100, [&] {
            m_register.ceaseFault(kHwuMissing, kPsu1);
            m_register.ceaseFault(kHwuMissing, kPsu2);
        });
    play(5000);
    // PSU-1: the missing unit never counted, so 20001 was reported all along
    // and is not raised a second time. PSU-2: 20002 was hidden while it
    // waited and counts when its own delay ends, not when the suppressor goes.
    EXPECT_EQ(m_recorder.m_events, (std::vector<std::string>{"raise 20001 PSU-1 @10", "raise 21502 PSU-2 @20",
                                                             "cease 21502 PSU-2 @100", "raise 20002 PSU-2 @1012"}));
}

TEST_F(ActiveFaultsRegisterTest, CeaseFaultsKeepsTheBusScansFaultAndReleasesNothingElsewhere)
{
    bool mismatchKept = false;
    m_script.at(10, [&] { m_register.raiseFault(kHwEntitiesMismatch, kBfu1); })
        .at(20, [&] { m_register.raiseFault(kBfuCircuitBreaker, kBfu1); })
        .at(30, [&] { m_register.raiseFault(kNoBatteryPresent, kBattery1); })
        .at(40, [&] { m_register.raiseFault(kMultiplePowerSubracks, kBattery1); })
        .at(50,
            [&] {
                m_register.ceaseFaults(kBfu1);
                mismatchKept = m_register.isFaultActive(kHwEntitiesMismatch, kBfu1);
                m_register.raiseFault(kBfuTemperature, kBfu1);
                m_register.ceaseFaults(kBattery1);
                m_register.removeFaults(kBfu1);
            });
    play(1000);
    EXPECT_TRUE(mismatchKept);
    EXPECT_EQ(m_recorder.m_events, (std::vector<std::string>{
                                       "raise 14006 BFU-1 @10",
                                       "raise 7001 BFU-1 @20",
                                       "cease 7001 BFU-1 @30",
                                       "raise 6003 Battery Backup-1 @30",
                                       // 6007 stays hidden by the mismatch on the
                                       // BFU and goes unheard; 7002 is hidden by
                                       // 6003, which goes with its function
                                       // without uncovering it.
                                       "cease 6003 Battery Backup-1 @50",
                                   }));
    EXPECT_EQ(m_register.activeCount(), 0U);
}

TEST_F(ActiveFaultsRegisterTest, ActionIdsWrapWithoutLosingADelayedAction)
{
    ActiveFaultsRegister nearTheEnd(ActiveFaultsRegister::kActionIdModulo - 2);
    nearTheEnd.addReporter(&m_recorder);
    m_script.at(10, [&] {
        nearTheEnd.raiseFault(kHwuFaulty, kPsu1, 300);
        nearTheEnd.raiseFault(kHwuFaulty, kPsu2, 200);
        nearTheEnd.raiseFault(kHwuFaulty, kBfu1, 100);
        nearTheEnd.ceaseFault(kHwuFaulty, kBfu1, 150);
    });
    play(1000);
    EXPECT_EQ(m_recorder.m_events, (std::vector<std::string>{"raise 21501 BFU-1 @110", "cease 21501 BFU-1 @160",
                                                             "raise 21501 PSU-2 @210", "raise 21501 PSU-1 @310"}));
}

TEST_F(ActiveFaultsRegisterTest, TracesNameTheFaultAndTheFunctionAtEachStep)
{
    TraceCapture trace("supSysCtrlSWU:7");
    m_script.at(10, [&] { m_register.raiseFault(kFaultyHubPosition, FuncId_t{kEquipSupFunc, 2}, 100); })
        .at(200, [&] { m_register.ceaseFault(kFaultyHubPosition, FuncId_t{kEquipSupFunc, 2}, 100); })
        .at(400, [&] { m_register.raiseFault(kHwuFaulty, FuncId_t{17, 0}); });
    play(1000);
    std::vector<std::string> faultLines;
    for (const std::string& line : trace.texts("supSysCtrlSWU", 7))
        if (line.find("FaultId:") != std::string::npos) faultLines.push_back(line);
    EXPECT_EQ(faultLines, (std::vector<std::string>{
                                                   "FaultId:21503 on Equip Sup Func-2 added",
                                                   "FaultId:21503 on Equip Sup Func-2, raise timer activated",
                                                   "Raise FaultId:21503 on Equip Sup Func-2",
                                                   "FaultId:21503 on Equip Sup Func-2, cease timer activated",
                                                   "Cease FaultId:21503 on Equip Sup Func-2",
                                                   "FaultId:21503 on Equip Sup Func-2 removed",
                                                   "FaultId:21501 on UNDEFx-0 added",
                                                   "Raise FaultId:21501 on UNDEFx-0",
                                               }));
}

TEST(ActiveFaultsRegisterQueries, RowsAreFoundByFunctionAndKindAndReportersAreToldNewestFirst)
{
    ActiveFaultsRegister faults;
    std::vector<std::string> order;
    struct Named : FaultsRegisterReportIf {
        Named(std::vector<std::string>& log, std::string me) : m_log(log), m_me(std::move(me)) {}
        void raiseFault(const FaultId_t&, const FuncId_t&) override { m_log.push_back(m_me); }
        void ceaseFault(const FaultId_t&, const FuncId_t&) override {}
        std::vector<std::string>& m_log;
        std::string m_me;
    } first(order, "first"), second(order, "second");
    faults.addReporter(&first);
    faults.addReporter(&second);
    faults.addReporter(&second);
    faults.raiseFault(kPduMainTemperatureHigh, kPdu1);
    faults.raiseFault(kHwuFaulty, kPdu1);
    faults.raiseFault(kHwuFaulty, FuncId_t{kPdu, 2});
    EXPECT_EQ(order, (std::vector<std::string>{"second", "first", "second", "first", "second", "first"}));

    EC_LinkedList<FaultId_t> found;
    found.addLast(FaultId_t(1));
    faults.getFaults(kPdu, found);
    EXPECT_EQ(found.count(), 4U);
    EXPECT_TRUE(faults.isFaultActiveOn(kPdu));
    EXPECT_FALSE(faults.isFaultActiveOn(kPsu));
    EXPECT_TRUE(faults.isFaultActive(kHwuFaulty));
    EXPECT_FALSE(faults.isFaultActive(kHwuFaulty, kPsu1));

    faults.removeReporter(&second);
    faults.removeFault(FaultId_t(kHwuFaulty), kPdu1);
    // Taken out silently: its symptom stays hidden until something
    // evaluates it again.
    faults.ceaseFault(kPduMainTemperatureHigh, kPdu1);
    faults.raiseFault(kPduMainTemperatureHigh, kPdu1);
    EXPECT_EQ(order.back(), "first");
    EXPECT_EQ(order.size(), 7U);
}

} // namespace
