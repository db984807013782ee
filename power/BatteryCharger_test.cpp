// The charging machine as the power control drives it: events, refused and
// illegal changes, the start of charging, the full charge watch, the
// capacity count and the long timers of the equalize cycle and the
// disconnect time, on the virtual clock.

#include "power/testSupport/ChargerHarness.h"

#include <gtest/gtest.h>

namespace {

using namespace charging_state;

class BatteryChargerTest : public ChargerHarness {};

TEST_F(BatteryChargerTest, UnknownEventsStatesAndTimersAreTracedAndChangeNothing)
{
    bool event5 = true, event14 = true, equalizeAtStart = true, change11 = true;
    at(10, [&] {
        event5 = charger().handleEvent(5);
        event14 = charger().handleEvent(14);
        equalizeAtStart = charger().handleEvent(BatteryChargerIf::kStartEqualize);
        change11 = charger().changeState(11);
        charger().timeout({99, 0});
    });
    play(100);
    EXPECT_FALSE(event5);
    EXPECT_FALSE(event14);
    EXPECT_FALSE(equalizeAtStart);
    EXPECT_FALSE(change11);
    EXPECT_EQ(state(), kStartAndRestart);
    EXPECT_STREQ(charger().getChargingStateName(), "CHARGING_UNDEFINED");
    EXPECT_EQ(trace.count("supSysCtrlBattery", 1, "Illegal charging event: 5"), 1U);
    EXPECT_EQ(trace.count("supSysCtrlBattery", 1, "Illegal charging event: 14"), 1U);
    EXPECT_EQ(trace.count("supSysCtrlBattery", 1, "Illegal ChargingState: 11"), 1U);
    EXPECT_EQ(trace.count("supSysCtrlBattery", 1, "Illegal subscriptionId: 99"), 1U);
    EXPECT_TRUE(trace.contains("Start equalized charging denied. Cannot be started in current state CHARGING_UNDEFINED."));
}

TEST_F(BatteryChargerTest, BeginChargingGoesToSoftStartSlowOrFixedByTheBfus)
{
    std::vector<std::uint32_t> reached;
    auto begin = [&] {
        m_pCharger = std::make_unique<BatteryCharger>(&control, &faults, &cfg, &distribution, &bfus, nullptr);
        charger().handleEvent(BatteryChargerIf::kBeginCharging);
        reached.push_back(state());
    };
    at(10, begin);
    at(20, [&] { bfus.slow = true; begin(); });
    at(30, [&] { bfus.slow = false; bfus.connected = false; begin(); });
    at(40, [&] { bfus.connected = true; bfus.operational = false; begin(); });
    play(100);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kSoftStart, kSlow, kFixed, kFixed}));
    EXPECT_TRUE(trace.contains("Charging State changed from CHARGING_UNDEFINED to SOFT_START."));
    EXPECT_EQ(charger().getChargeTargetVoltage(), -54.5F);
}

TEST_F(BatteryChargerTest, BfuStatusGivesFaultSlowAndConnectionEventsInTheirOrder)
{
    std::vector<std::uint32_t> reached;
    at(10, [&] {
        toFloat();
        bfus.sensorsOk = false;
        charger().handleBfuStatus(); // fault first, whatever else changed
        reached.push_back(state());
        bfus.sensorsOk = true;
        charger().handleBfuStatus(); // Fixed: decideNextChargingType, no dip, Float
        reached.push_back(state());
        bfus.slow = true;
        charger().handleBfuStatus();
        reached.push_back(state());
        bfus.slow = false;
        charger().handleBfuStatus();
        reached.push_back(state());
    });
    play(100);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFixed, kFloat, kSlow, kSoftStart}));
    EXPECT_TRUE(trace.contains("handleBFU2_StatusUpdate: BFU exited slow charging"));
    EXPECT_EQ(charger().getChargingType(), kFloat);
}

TEST_F(BatteryChargerTest, AMissingValueSkipsThePassAndKeepsTheWantedVoltage)
{
    float before = 0.0F, after = 0.0F;
    at(10, [&] {
        toFloat();
        bfus.lowestTemp = 45.0F; // would move the compensated voltage
        before = charger().getWantedVoltage();
        pass(999.0F, 1.0F);
        pass(-54.0F, 999.0F);
        after = charger().getWantedVoltage();
    });
    play(100);
    EXPECT_EQ(before, -54.5F);
    EXPECT_EQ(after, before);
}

TEST_F(BatteryChargerTest, ThirtyMinutesOfLowCurrentIsAFullChargeAndOneSpikeDoesNotUndoIt)
{
    std::vector<bool> full;
    at(10, [&] { toFloat(); pass(-54.0F, 0.5F); });
    at(10 + 30 * kMinuteMs - 100, [&] { full.push_back(charger().isFullyCharged()); });
    at(10 + 30 * kMinuteMs + 100, [&] {
        full.push_back(charger().isFullyCharged());
        pass(-54.0F, 20.0F); // one reading
        full.push_back(charger().isFullyCharged());
        pass(-54.0F, 20.0F); // two in a row
        full.push_back(charger().isFullyCharged());
    });
    play(2 * kHourMs);
    EXPECT_EQ(full, (std::vector<bool>{false, true, true, false}));
    EXPECT_EQ(control.fullyCharged, 1);
    EXPECT_EQ(trace.count("supSysCtrlBattery", 7, "Battery stayed charged for 30 minutes."), 1U);
}

TEST_F(BatteryChargerTest, ARechargeOfMoreThan15839MinutesRaisesTheFaultAndAFullChargeCeasesIt)
{
    std::vector<bool> raised;
    constexpr std::uint64_t kStart = 1000;
    at(kStart, [&] { toFloat(); pass(-54.0F, 20.0F); });
    at(kStart + 15839ULL * kMinuteMs, [&] {
        pass(-54.0F, 20.0F);
        raised.push_back(active(fault_id::kRechargeTooLong));
    });
    at(kStart + 15840ULL * kMinuteMs, [&] {
        pass(-54.0F, 20.0F);
        raised.push_back(active(fault_id::kRechargeTooLong));
        pass(-54.0F, 0.0F);
    });
    at(kStart + 15840ULL * kMinuteMs + 31 * kMinuteMs, [&] { raised.push_back(active(fault_id::kRechargeTooLong)); });
    play(12 * kDayMs);
    EXPECT_EQ(raised, (std::vector<bool>{false, true, false}));
    EXPECT_EQ(cfg.rechargeTime, 0U);
}

TEST_F(BatteryChargerTest, ARechargeMustGiveBack70PercentOfTheDischarge)
{
    cfg.totalDischargeCapacity = -1.0F; // 0.7 Ah to give back
    bool countingAtStart = false, faultAfterEarlyStop = false, countingAfter = true;
    at(10, [&] {
        toFloat(); // nine passes of the climb at 10 A give back 0.15 Ah
        countingAtStart = charger().isCapacityCounting();
        pass(-54.0F, 0.0F);
        faultAfterEarlyStop = active(fault_id::kConsumedCapacityNotCovered);
        for (int i = 0; i < 12; ++i) pass(-54.0F, 30.0F);
        countingAfter = charger().isCapacityCounting();
    });
    play(100);
    EXPECT_TRUE(countingAtStart);
    EXPECT_TRUE(faultAfterEarlyStop);
    EXPECT_FALSE(countingAfter);
    EXPECT_FALSE(active(fault_id::kConsumedCapacityNotCovered));
    EXPECT_EQ(cfg.totalDischargeCapacity, 0.0F);
}

TEST_F(BatteryChargerTest, ADischargeIsCountedIntoTheConfiguration)
{
    at(10, [&] {
        toFloat();
        charger().handleEvent(BatteryChargerIf::kAcMainsLost);
        for (int i = 0; i < 10; ++i) pass(-50.0F, -60.0F);
    });
    play(100);
    EXPECT_EQ(state(), kDischarge);
    EXPECT_NEAR(charger().getDischargedCapacity(), -1.0F, 1e-4F);
    EXPECT_EQ(cfg.totalDischargeCapacity, charger().getDischargedCapacity());
}

TEST_F(BatteryChargerTest, AnUnmeasuredCurrentCountsNoCharge)
{
    std::vector<float> counted;
    at(10, [&] {
        toFloat();
        charger().handleEvent(BatteryChargerIf::kAcMainsLost);
        pass(-50.0F, -60.0F);
        counted.push_back(cfg.totalDischargeCapacity);
        bfus.operational = false; // no BFU measures: the summary gives 999.0
        pass(-50.0F, 999.0F);
        counted.push_back(cfg.totalDischargeCapacity);
        bfus.operational = true;
        pass(-50.0F, -60.0F);
        counted.push_back(cfg.totalDischargeCapacity);
    });
    play(100);
    EXPECT_EQ(state(), kDischarge);
    ASSERT_EQ(counted.size(), 3U);
    EXPECT_NEAR(counted[0], -0.1F, 1e-5F);
    EXPECT_EQ(counted[1], counted[0]);
    EXPECT_NEAR(counted[2], -0.2F, 1e-5F);
}

TEST_F(BatteryChargerTest, TheEqualizeCycleCountsDaysAndAnIntervalOfZeroEqualizesDaily)
{
    cfg.equalizeChargeCyclicInterval = 2;
    std::vector<std::uint32_t> reached;
    at(10, [&] { toFloat(); });
    at(kDayMs + 100, [&] { reached.push_back(state()); });
    at(2 * kDayMs + 100, [&] {
        reached.push_back(state());
        charger().handleEvent(BatteryChargerIf::kStopEqualize);
        cfg.equalizeChargeCyclicInterval = 0;
    });
    at(3 * kDayMs + 100, [&] { reached.push_back(state()); });
    play(3 * kDayMs + 1000);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFloat, kEqualize, kEqualize}));
    EXPECT_EQ(trace.count("supSysCtrlBattery", 7, "Equalize charging cyclic interval timer expired."), 3U);
    EXPECT_EQ(charger().getEqualizeDayCount(), 0U);
}

class DisconnectTimeTest : public BatteryChargerTest {};

TEST_F(DisconnectTimeTest, SixHundredHoursRunAs596AndThen4BeforeIntermittent)
{
    cfg.intermittentChargeDisconnectTime = 600;
    std::vector<std::uint32_t> reached;
    at(10, [&] { toFloat(); pass(-54.0F, 0.0F); }); // fully charged half an hour later
    at(596ULL * kHourMs + 100, [&] { reached.push_back(state()); });
    at(600ULL * kHourMs - 100, [&] { reached.push_back(state()); });
    at(600ULL * kHourMs + 100, [&] { reached.push_back(state()); });
    play(600ULL * kHourMs + 1000);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFloat, kFloat, kIntermittent}));
    EXPECT_EQ(trace.count("supSysCtrlBattery", 7, "Intermittent charging disconnect timer expired."), 2U);
    ASSERT_FALSE(control.connects.empty());
    EXPECT_EQ(control.connects.back(), std::make_pair(false, true));
}

TEST_F(DisconnectTimeTest, ABatteryNotYetFullWaitsForItsFullChargeInFloat)
{
    cfg.intermittentChargeDisconnectTime = 1;
    std::vector<std::uint32_t> reached;
    at(10, [&] { toFloat(); pass(-54.0F, 20.0F); pass(-54.0F, 20.0F); });
    at(kHourMs + 100, [&] {
        reached.push_back(state());
        pass(-54.0F, 0.0F);
    });
    at(kHourMs + 31 * kMinuteMs, [&] { reached.push_back(state()); });
    play(3 * kHourMs);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFloat, kIntermittent}));
    EXPECT_TRUE(trace.contains("Batteries are not fully charged to set INTERMITTENT"));
    EXPECT_FALSE(charger().isIntermittentPending());
}

// A change refused when the disconnect time runs out is made later in Float.
TEST_F(DisconnectTimeTest, ARefusedChangeToIntermittentIsMadeOnceFloatHasAFullBatteryAgain)
{
    cfg.intermittentChargeDisconnectTime = 1;
    std::vector<std::uint32_t> reached;
    bool fullAtExpiry = false, pendingAtExpiry = false;
    at(10, [&] { toFloat(); pass(-54.0F, 0.0F); }); // fully charged half an hour later
    at(40 * kMinuteMs, [&] {
        charger().handleEvent(BatteryChargerIf::kStartBatteryTest);
        charger().handleEvent(BatteryChargerIf::kAcMainsLost); // Discharge cannot be left now
    });
    at(kHourMs + 100, [&] {
        reached.push_back(state());
        fullAtExpiry = charger().isFullyCharged();
        pendingAtExpiry = charger().isIntermittentPending();
        pass(-50.0F, -40.0F);
        pass(-50.0F, -40.0F);
        charger().handleEvent(BatteryChargerIf::kAcMainsBack);
        for (int i = 0; i < 20 && state() != kFloat; ++i) pass(-53.0F, 10.0F);
        reached.push_back(state());
        pass(-54.0F, 0.0F);
    });
    at(kHourMs + 31 * kMinuteMs, [&] { reached.push_back(state()); });
    play(3 * kHourMs);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kDischarge, kFloat, kIntermittent}));
    EXPECT_TRUE(fullAtExpiry);
    EXPECT_TRUE(pendingAtExpiry);
    EXPECT_FALSE(trace.contains("Batteries are not fully charged to set INTERMITTENT"));
    EXPECT_FALSE(charger().isIntermittentPending());
}

TEST_F(DisconnectTimeTest, ARefusedChangeToIntermittentInSoftStartIsMadeInFloatWithTheBatteryStillFull)
{
    cfg.intermittentChargeDisconnectTime = 1;
    std::vector<std::uint32_t> reached;
    bool pendingAtExpiry = false, fullInFloat = false;
    at(10, [&] { toFloat(); pass(-54.0F, 0.0F); });
    at(45 * kMinuteMs, [&] {
        bfus.voltageConnect = true;
        bfus.belowConnectLimit = true; // the battery stays off: SoftStart cannot be left
        charger().handleEvent(BatteryChargerIf::kBfuRestarted);
        for (int i = 0; i < 20; ++i) pass(-54.0F, 0.0F);
    });
    at(kHourMs + 100, [&] {
        reached.push_back(state());
        pendingAtExpiry = charger().isIntermittentPending();
        bfus.belowConnectLimit = false;
        pass(-54.0F, 0.0F);
        fullInFloat = charger().isFullyCharged() && state() == kFloat;
        pass(-54.0F, 0.0F);
    });
    at(2 * kHourMs, [&] {
        pass(-54.0F, 0.0F);
        reached.push_back(state());
    });
    play(3 * kHourMs);
    EXPECT_TRUE(pendingAtExpiry);
    EXPECT_TRUE(fullInFloat);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kSoftStart, kIntermittent}));
    EXPECT_FALSE(charger().isIntermittentPending());
}

// Each start of the disconnect timer sets what it leaves for a later run.
TEST_F(DisconnectTimeTest, AStoppedLongRunLeavesNothingToAShorterTimeConfiguredAfterIt)
{
    cfg.intermittentChargeDisconnectTime = 700; // 596 hours now, 104 left for later
    constexpr std::uint64_t kRestart = 2 * kHourMs;
    std::vector<std::uint32_t> reached;
    at(10, [&] { toFloat(); });
    at(kHourMs, [&] {
        charger().handleEvent(BatteryChargerIf::kAcMainsLost); // stops the first run
        pass(-50.0F, -40.0F);
        cfg.intermittentChargeDisconnectTime = 10;
    });
    at(kRestart, [&] {
        charger().handleEvent(BatteryChargerIf::kAcMainsBack);
        for (int i = 0; i < 20 && state() != kFloat; ++i) pass(-53.0F, 10.0F);
        pass(-54.0F, 0.0F); // fully charged half an hour later
    });
    at(kRestart + 10 * kHourMs - 100, [&] { reached.push_back(state()); });
    at(kRestart + 10 * kHourMs + 100, [&] { reached.push_back(state()); });
    play(kRestart + 11 * kHourMs);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFloat, kIntermittent}));
    EXPECT_EQ(trace.count("supSysCtrlBattery", 7, "Intermittent charging disconnect timer expired."), 1U);
}

TEST_F(DisconnectTimeTest, ZeroHoursNeverLeavesFloat)
{
    cfg.equalizeChargeCyclicInterval = 60;
    at(10, [&] { toFloat(); pass(-54.0F, 0.0F); });
    play(40 * kDayMs);
    EXPECT_EQ(state(), kFloat);
    EXPECT_FALSE(trace.contains("INTERMITT_CHARGE_DISC_TIMER started"));
}

} // namespace
