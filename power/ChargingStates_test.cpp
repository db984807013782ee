// The rules of the charging states through the charger's interface: how
// each state regulates, what moves it on, and what a change does to the
// timers of the state that is left.

#include "power/ChargingStateBoost.h"
#include "power/testSupport/ChargerHarness.h"

#include <gtest/gtest.h>

namespace {

using namespace charging_state;

class ChargingStatesTest : public ChargerHarness {
protected:
    // One pass with a given system voltage; the change of the wanted voltage.
    float step(float systemVoltage, float current)
    {
        const float before = charger().getWantedVoltage();
        bfus.current = current;
        charger().updateCharging(systemVoltage, -53.0F, current);
        return charger().getWantedVoltage() - before;
    }
    // From Float through a loss of AC with the battery down to `lowest`.
    void discharge(float lowest)
    {
        toFloat();
        charger().handleEvent(BatteryChargerIf::kAcMainsLost);
        pass(lowest, -40.0F);
    }
    std::size_t changes() { return trace.count("Charging State changed"); }
};

TEST_F(ChargingStatesTest, SoftStartStepsFollowTheChargeCurrentAndWaitForTheSystem)
{
    std::vector<float> steps;
    at(10, [&] {
        charger().handleEvent(BatteryChargerIf::kBeginCharging);
        const float w = charger().getWantedVoltage();
        steps.push_back(w);
        for (float current : {60.0F, 30.0F, 34.0F, 38.0F, 42.0F, 44.0F, 46.0F})
            steps.push_back(step(charger().getWantedVoltage(), current));
        // The system lags more than 0.6 V behind: no step.
        steps.push_back(step(charger().getWantedVoltage() + 0.7F, 10.0F));
    });
    play(100);
    ASSERT_EQ(steps.size(), 9U);
    EXPECT_EQ(steps[0], -50.5F);
    const float expected[] = {0.1F, -0.5F, -0.2F, -0.1F, -0.05F, -0.02F, 0.0F, 0.0F};
    for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR(steps[i + 1], expected[i], 1e-5F) << "step " << i;
    EXPECT_EQ(state(), kSoftStart);
}

TEST_F(ChargingStatesTest, SoftStartEndsInFloatAtTheCompensatedTargetOfTheColdestBattery)
{
    bfus.lowestTemp = 35.0F;
    at(10, [&] { toFloat(); });
    play(100);
    EXPECT_EQ(state(), kFloat);
    EXPECT_FLOAT_EQ(charger().getSoftStartTarget(), -53.5F);
    EXPECT_FLOAT_EQ(charger().getWantedVoltage(), -53.5F);
    EXPECT_TRUE(trace.contains("SOFT_START: wanted sysVolCharging is -51.00V"));
}

TEST_F(ChargingStatesTest, SoftStartHoldsTheBatteryOffUntilTheSystemCanTakeIt)
{
    bfus.voltageConnect = true;
    bfus.highestTemp = 50.0F; // hot enough for TempAdjust, not for a disconnect
    std::vector<std::uint32_t> reached;
    std::size_t connectsAfterLowSystem = 0;
    at(10, [&] {
        charger().handleEvent(BatteryChargerIf::kBeginCharging);
        charger().updateCharging(-45.0F, -50.0F, 0.0F); // at the disconnect cease limit
        connectsAfterLowSystem = control.connects.size();
        reached.push_back(state());
        charger().updateCharging(-45.1F, -50.0F, 0.0F);
        reached.push_back(state());
    });
    play(100);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kSoftStart, kTempAdjust}));
    EXPECT_EQ(connectsAfterLowSystem, 1U);
    EXPECT_EQ(control.connects, (std::vector<std::pair<bool, bool>>{{false, false}, {true, true}}));
}

TEST_F(ChargingStatesTest, WithEveryTemperatureSensorFailedSoftStartConnectsAndTheFaultLeadsToFixed)
{
    bfus.voltageConnect = true;
    bfus.sensorsOk = false;
    bfus.lowestTemp = 999.0F; // no healthy sensor gives a reading
    bfus.highestTemp = 999.0F;
    at(10, [&] {
        charger().handleEvent(BatteryChargerIf::kBeginCharging);
        charger().updateCharging(-50.0F, -50.0F, 0.0F);
        charger().handleBfuStatus();
    });
    play(100);
    EXPECT_EQ(control.connects, (std::vector<std::pair<bool, bool>>{{false, false}, {true, true}}));
    EXPECT_EQ(state(), kFixed);
}

TEST_F(ChargingStatesTest, ALossOfAcLeavesSoftStartEvenWithTheBatteryOff)
{
    bfus.voltageConnect = true;
    at(10, [&] {
        charger().handleEvent(BatteryChargerIf::kBeginCharging);
        charger().handleEvent(BatteryChargerIf::kAcMainsLost);
    });
    play(100);
    EXPECT_EQ(state(), kDischarge);
}

TEST_F(ChargingStatesTest, FloatCompensatesForTemperatureWithinItsRange)
{
    std::vector<float> wanted;
    at(10, [&] {
        toFloat();
        for (float temperature : {25.0F, 40.0F, 49.0F, 60.0F, 5.0F, -10.0F}) {
            bfus.lowestTemp = temperature;
            pass(-54.0F, 1.0F);
            wanted.push_back(charger().getWantedVoltage());
        }
    });
    play(100);
    ASSERT_EQ(wanted.size(), 6U);
    EXPECT_FLOAT_EQ(wanted[0], -54.5F);
    EXPECT_FLOAT_EQ(wanted[1], -53.0F);
    EXPECT_FLOAT_EQ(wanted[2], -52.1F);
    EXPECT_EQ(wanted[3], -52.0F); // the lower end
    EXPECT_FLOAT_EQ(wanted[4], -56.0F);
    EXPECT_EQ(wanted[5], -56.0F); // the upper end
}

TEST_F(ChargingStatesTest, AWarmBatteryIsCooledInTempAdjustAndClimbsBackThroughSoftStart)
{
    std::vector<float> steps;
    std::vector<std::uint32_t> reached;
    at(10, [&] {
        toFloat();
        bfus.highestTemp = 49.9F;
        pass(-54.0F, 1.0F);
        reached.push_back(state());
        bfus.highestTemp = 50.0F;
        pass(-54.0F, 1.0F);
        reached.push_back(state());
        steps.push_back(charger().getWantedVoltage());
        // The pass that entered TempAdjust was its first: it kept -50.5.
        for (float current : {90.0F, 90.0F, 60.0F, 40.0F, 20.0F, 10.0F, 2.0F})
            steps.push_back(step(-50.0F, current));
        bfus.highestTemp = 48.0F; // not yet 2 degrees under the cease temperature
        step(-50.0F, 10.0F);
        reached.push_back(state());
        bfus.highestTemp = 47.9F;
        step(-50.0F, 10.0F);
        reached.push_back(state());
    });
    play(100);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFloat, kTempAdjust, kTempAdjust, kSoftStart}));
    EXPECT_EQ(charger().getChargingType(), kFloat);
    ASSERT_EQ(steps.size(), 8U);
    EXPECT_EQ(steps[0], -50.5F);
    const float expected[] = {1.0F, 1.0F, 0.5F, 0.2F, 0.02F, 0.0F, -0.02F};
    for (std::size_t i = 0; i < 7; ++i) EXPECT_NEAR(steps[i + 1], expected[i], 1e-5F) << "step " << i;
    // SoftStart starts from where TempAdjust left the voltage.
    EXPECT_FLOAT_EQ(charger().getFirstRegulationVoltage(), -50.5F + 2.0F + 0.5F + 0.2F + 0.02F - 0.02F);
}

TEST_F(ChargingStatesTest, AHighCurrentIsLimitedAndHandedBackAtNominalVoltage)
{
    std::vector<float> steps;
    std::uint16_t capabilityLimit = 0;
    at(10, [&] {
        toFloat();
        pass(-54.0F, 60.0F);
        steps.push_back(static_cast<float>(charger().getCurrentLimit()));
        for (float current : {46.0F, 20.0F, 30.0F, 38.0F, 42.0F, 44.0F})
            steps.push_back(step(charger().getWantedVoltage(), current));
        steps.push_back(step(charger().getWantedVoltage() + 0.7F, 10.0F));
        // Climb until nominal with a low current: back to Float.
        for (int i = 0; i < 10 && state() == kCurrentLimitation; ++i) step(charger().getWantedVoltage(), 10.0F);
        // A BFU near its own capability limits to that capability.
        bfus.capability = 40.0F;
        pass(-54.0F, 39.0F);
        capabilityLimit = charger().getCurrentLimit();
    });
    play(100);
    ASSERT_EQ(steps.size(), 8U);
    EXPECT_EQ(steps[0], 50.0F);
    const float expected[] = {0.5F, -0.5F, -0.2F, -0.1F, -0.05F, 0.0F, 0.0F};
    for (std::size_t i = 0; i < 7; ++i) EXPECT_NEAR(steps[i + 1], expected[i], 1e-5F) << "step " << i;
    EXPECT_EQ(capabilityLimit, 40U);
    EXPECT_EQ(state(), kCurrentLimitation);
    EXPECT_TRUE(trace.contains("Charging State changed from CURRENT_LIMITATION to FLOAT."));
}

TEST_F(ChargingStatesTest, ADeepDischargeClimbsBackIntoABoostOfTheConfiguredTime)
{
    std::vector<std::uint32_t> reached;
    at(10, [&] {
        discharge(-46.0F);
        charger().handleEvent(BatteryChargerIf::kAcMainsBack);
        reached.push_back(state());
        reached.push_back(charger().getChargingType());
        for (int i = 0; i < 30 && state() == kSoftStart; ++i) pass(-53.0F, 10.0F);
        reached.push_back(state());
        pass(-56.5F, 10.0F); // the battery reaches the boost voltage: the boost time begins
    });
    at(10 + 2 * kHourMs - 100, [&] { reached.push_back(state()); });
    at(10 + 2 * kHourMs + 100, [&] { reached.push_back(state()); });
    play(3 * kHourMs);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kSoftStart, kBoost, kBoost, kBoost, kFloat}));
    EXPECT_EQ(charger().getChargeTargetVoltage(), -46.0F);
    EXPECT_FALSE(charger().isBoostPending());
    EXPECT_EQ(charger().getChargingType(), kBoost);
    EXPECT_TRUE(trace.contains("boostChargeTime + boostIncreaseTime = 7200000 + 0 = 7200000"));
}

TEST_F(ChargingStatesTest, TheAutomaticBoostIncreaseShrinksWithTheDaysSinceTheLastBoost)
{
    cfg.chargingMode = BatteryBackupCfg::kChargingModeAutomatic;
    std::vector<std::uint32_t> times;
    at(10, [&] {
        ChargingStateBoost boost(&faults, &cfg, &charger(), &control);
        times.push_back(boost.boostTimeMs(1'000'000)); // never boosted
        boost.exit();
        const std::uint32_t now = OsService::getMinutes();
        for (std::uint32_t days : {0U, 10U, 30U, 35U, 41U}) times.push_back(boost.boostTimeMs(now + days * 1440));
    });
    play(100);
    constexpr std::uint32_t kBase = 7'200'000;
    EXPECT_EQ(times, (std::vector<std::uint32_t>{kBase + 43'200'000, kBase + 43'200'000, kBase + 32'400'000,
                                                 kBase + 10'800'000, kBase + 10'800'000, kBase + 43'200'000}));
}

// Times of 1200 hours: in 32-bit milliseconds they would wrap to under 7
// hours. Each run is held at 596 hours.
class LongTimesTest : public ChargingStatesTest {
protected:
    static constexpr std::uint64_t kRun = 596ULL * kHourMs;

    void SetUp() override
    {
        ChargingStatesTest::SetUp();
        cfg.boostChargeTime = 1200;
        cfg.equalizeChargeTime = 1200;
        cfg.intermittentChargeConnectTime = 1200;
        cfg.equalizeChargeCyclicInterval = 200;
    }
    // The states just before and just after the held run that `begin` starts.
    std::vector<std::uint32_t> aroundTheRun(std::function<void()> begin)
    {
        std::vector<std::uint32_t> reached;
        at(10, [this, begin] {
            toFloat();
            begin();
        });
        at(10 + kRun - 100, [&] { reached.push_back(state()); });
        at(10 + kRun + 100, [&] { reached.push_back(state()); });
        play(10 + kRun + kHourMs);
        return reached;
    }
};

TEST_F(LongTimesTest, TheBoostTimeIsHeldAt596Hours)
{
    const auto reached = aroundTheRun([&] {
        charger().changeState(kBoost);
        pass(-56.5F, 1.0F); // the boost time begins
    });
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kBoost, kFloat}));
    EXPECT_TRUE(trace.contains("boostChargeTime + boostIncreaseTime = 2145600000 + 0 = 2145600000"));
}

TEST_F(LongTimesTest, TheEqualizeTimeIsHeldAt596Hours)
{
    const auto reached = aroundTheRun([&] {
        charger().handleEvent(BatteryChargerIf::kStartEqualize);
        pass(-56.5F, 1.0F); // the equalize time begins
    });
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kEqualize, kFloat}));
}

TEST_F(LongTimesTest, TheConnectTimeIsHeldAt596Hours)
{
    const auto reached = aroundTheRun([&] { charger().changeState(kIntermittent); });
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kIntermittent, kFloat}));
}

TEST_F(ChargingStatesTest, APendingBoostIsKeptWhileSoftStartCannotBeLeft)
{
    std::vector<std::uint32_t> reached;
    std::vector<bool> pending;
    at(10, [&] {
        discharge(-46.0F);
        charger().handleEvent(BatteryChargerIf::kAcMainsBack); // a boost is pending
        bfus.voltageConnect = true;
        bfus.belowConnectLimit = true; // the battery stays off: SoftStart cannot be left
        charger().handleEvent(BatteryChargerIf::kMultipleSubracks); // SoftStart again, the battery off
        for (int i = 0; i < 40; ++i) pass(-53.0F, 10.0F);
        reached.push_back(state());
        pending.push_back(charger().isBoostPending());
        bfus.belowConnectLimit = false;
        pass(-53.0F, 10.0F);
        reached.push_back(state());
        pending.push_back(charger().isBoostPending());
    });
    play(100);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kSoftStart, kBoost}));
    EXPECT_EQ(pending, (std::vector<bool>{true, false}));
    EXPECT_FLOAT_EQ(charger().getSoftStartTarget(), -56.5F);
    ASSERT_FALSE(control.connects.empty());
    EXPECT_EQ(control.connects.back(), std::make_pair(true, true));
}

TEST_F(ChargingStatesTest, ALossOfAcInBoostStopsItsTimerAndDischargeWaitsForAc)
{
    std::size_t changesInDischarge = 0;
    at(10, [&] {
        discharge(-46.0F);
        charger().handleEvent(BatteryChargerIf::kAcMainsBack);
        for (int i = 0; i < 30 && state() == kSoftStart; ++i) pass(-53.0F, 10.0F);
        pass(-56.5F, 10.0F);
        charger().handleEvent(BatteryChargerIf::kAcMainsLost);
        changesInDischarge = changes();
        charger().handleEvent(BatteryChargerIf::kAcMainsLost);   // nothing more
        charger().handleEvent(BatteryChargerIf::kStopBatteryTest); // refused without AC
    });
    play(5 * kHourMs);
    EXPECT_EQ(state(), kDischarge);
    EXPECT_EQ(changes(), changesInDischarge);
    EXPECT_FALSE(trace.contains("Boost charging timer expired."));
}

TEST_F(ChargingStatesTest, TheEndOfADischargeDependsOnItsDepthAndOnASlowRequest)
{
    std::vector<std::uint32_t> reached;
    std::vector<float> firstRegulation;
    auto returnAfter = [&](float lowest, bool slow) {
        discharge(lowest);
        if (slow) {
            bfus.slow = true;
            charger().handleBfuStatus();
            bfus.slow = false;
        }
        charger().handleEvent(BatteryChargerIf::kAcMainsBack);
        reached.push_back(state());
        firstRegulation.push_back(charger().getFirstRegulationVoltage());
    };
    at(10, [&] { returnAfter(-52.0F, false); });
    at(20, [&] { returnAfter(-50.0F, false); });
    at(30, [&] { returnAfter(-53.0F, true); });
    at(40, [&] {
        toFloat();
        charger().handleEvent(BatteryChargerIf::kStartBatteryTest);
        reached.push_back(state());
        bfus.operational = false;
        charger().handleEvent(BatteryChargerIf::kStopBatteryTest);
        reached.push_back(state());
        bfus.operational = true;
        charger().handleEvent(BatteryChargerIf::kStopBatteryTest);
        reached.push_back(state());
    });
    play(100);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFloat, kSoftStart, kSlow, kDischarge, kDischarge, kFloat}));
    EXPECT_EQ(firstRegulation[1], -50.0F);
}

TEST_F(ChargingStatesTest, IntermittentRestsTheBatteryForTheConnectTime)
{
    std::vector<std::uint32_t> reached;
    std::vector<std::pair<bool, bool>> connectsAtEntry;
    at(10, [&] {
        toFloat();
        charger().changeState(kIntermittent);
        connectsAtEntry = control.connects;
        pass(-51.0F, 0.0F);
        reached.push_back(state());
    });
    at(10 + 24 * kHourMs + 100, [&] { reached.push_back(state()); });
    play(25 * kHourMs);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kIntermittent, kFloat}));
    EXPECT_EQ(connectsAtEntry.back(), std::make_pair(false, true));
    EXPECT_EQ(control.connects.back(), std::make_pair(true, true));
    EXPECT_EQ(trace.count("supSysCtrlBattery", 7, "Intermittent charging connection timer expired."), 1U);
    // The timer had run out: leaving has nothing to cancel.
    EXPECT_EQ(trace.count("supSysCtrlBattery", 7, "INTERMITT_CHARGE_CONN_TIMER canceled"), 0U);
}

TEST_F(ChargingStatesTest, IntermittentEndsEarlyOnALowBatteryOrRepeatedConnections)
{
    std::vector<std::uint32_t> reached;
    bool lowBatteryFault = false;
    auto reconnect = [&] {
        bfus.connected = false;
        charger().handleBfuStatus();
        bfus.connected = true;
        charger().handleBfuStatus();
    };
    at(10, [&] {
        toFloat();
        charger().changeState(kIntermittent);
        pass(-50.0F, 0.0F); // at the connect voltage
        reached.push_back(state());
        lowBatteryFault = active(fault_id::kIntermittentConnectedTooOften);
        charger().handleBfuStatus();
        charger().changeState(kIntermittent);
        for (int i = 0; i < 3; ++i) reconnect();
        reached.push_back(state());
        reconnect(); // the fourth connection
        reached.push_back(state());
        charger().changeState(kIntermittent);
        reconnect();
        pass(-53.0F, -2.0F); // the battery feeds the system: no disturbance
    });
    at(10 + 60'000, [&] {
        reached.push_back(state());
        reconnect();
    });
    at(10 + 60'000 + 30'100, [&] { reached.push_back(state()); });
    play(200'000);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFloat, kIntermittent, kFloat, kIntermittent, kFloat}));
    EXPECT_TRUE(lowBatteryFault);
    EXPECT_TRUE(trace.contains("Battery connected in INTERMITTENT state too many times"));
    // Each early end cancels the rest of the connect time.
    EXPECT_EQ(trace.count("supSysCtrlBattery", 7, "INTERMITT_CHARGE_CONN_TIMER canceled"), 3U);
    EXPECT_EQ(trace.count("Battery disconnected in INTERMITTENT state, POWER_DISTURBANCE_TIMER canceled"), 4U);
}

TEST_F(ChargingStatesTest, SlowChargingClimbsAVoltAMinuteAndLeavesByTemperature)
{
    std::vector<float> wanted;
    std::vector<std::uint32_t> reached;
    bfus.slow = true;
    at(10, [&] {
        charger().handleEvent(BatteryChargerIf::kBeginCharging);
        charger().handleBfuStatus();
        wanted.push_back(charger().getWantedVoltage());
    });
    at(10 + 60'100, [&] { wanted.push_back(charger().getWantedVoltage()); });
    at(10 + 120'100, [&] {
        wanted.push_back(charger().getWantedVoltage());
        bfus.highestTemp = 50.0F;
        pass(-50.0F, 1.0F);
        bfus.slow = false;
        charger().handleBfuStatus();
        reached.push_back(state());
    });
    play(200'000);
    EXPECT_EQ(wanted, (std::vector<float>{-50.5F, -49.5F, -48.5F}));
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kTempAdjust}));
    EXPECT_TRUE(trace.contains("State not changed. Is already in SLOW."));
}

TEST_F(ChargingStatesTest, FixedReturnsToBoostAfterADipAndToFloatWithout)
{
    std::vector<std::uint32_t> reached;
    at(10, [&] {
        toFloat();
        charger().handleEvent(BatteryChargerIf::kNoPsuAccessible);
        reached.push_back(state());
        charger().handleEvent(BatteryChargerIf::kPsuAccessible);
        reached.push_back(state());
        charger().handleEvent(BatteryChargerIf::kNoBfuOperational);
        pass(-46.5F, 0.0F);
        charger().handleEvent(BatteryChargerIf::kBfuOperational);
        reached.push_back(state());
    });
    play(100);
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kFixed, kFloat, kBoost}));
}

TEST_F(ChargingStatesTest, EqualizeRunsItsTimeAtTheIncreasedVoltage)
{
    std::vector<std::uint32_t> reached;
    bool refusedInSoftStart = true;
    at(10, [&] {
        charger().handleEvent(BatteryChargerIf::kBeginCharging);
        refusedInSoftStart = charger().handleEvent(BatteryChargerIf::kStartEqualize);
        toFloat();
        charger().handleEvent(BatteryChargerIf::kStartEqualize);
        pass(-56.0F, 5.0F);
        reached.push_back(state());
        pass(-56.5F, 5.0F); // the equalize time begins
    });
    at(10 + 4 * kHourMs + 100, [&] {
        reached.push_back(state());
        charger().handleEvent(BatteryChargerIf::kStartEqualize);
        pass(-56.5F, 5.0F);
        charger().handleEvent(BatteryChargerIf::kAcMainsLost); // with its timer running
    });
    play(10 * kHourMs);
    EXPECT_FALSE(refusedInSoftStart);
    EXPECT_TRUE(trace.contains("Could not start EqualizeCharging in state SOFT_START"));
    EXPECT_EQ(reached, (std::vector<std::uint32_t>{kEqualize, kFloat}));
    EXPECT_EQ(trace.count("supSysCtrlBattery", 7, "Equalize charging timer expired."), 1U);
    EXPECT_EQ(state(), kDischarge);
}

} // namespace
