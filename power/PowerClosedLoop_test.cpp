// The system voltage control in a closed loop with the simulated cabinet's
// physics, on the virtual clock: three PSUs whose outputs sit a little apart,
// a battery string behind the BFU and 1.2 kW of radio load behind the PDU's
// e-fuses. With SSC_RECORD_DIR set, each scenario leaves its recording there
// for scripts/plot-run.

#include "frame/testSupport/TraceCapture.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerIf.h"
#include "power/PowerDistributionCfg.h"
#include "power/testSupport/PowerNodeHarness.h"
#include "sim/SiteFile.h"
#include "sim/testSupport/ScenarioRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using ::testing::Contains;
using ::testing::StartsWith;

constexpr std::uint64_t kMinuteMs = 60'000;
constexpr std::uint64_t kHourMs = 60 * kMinuteMs;
constexpr std::uint8_t kPsuAddresses[] = {48, 49, 50};

class PowerClosedLoopTest : public PowerNodeHarness {
protected:
    void SetUp() override
    {
        PowerNodeHarness::SetUp();
        std::string error;
        ASSERT_TRUE(sim::SiteFile::load(SSC_SOURCE_DIR "/sim/sites/default.xml", m_cabinet, error)) << error;
        // Calibration leaves the outputs 0.1 V apart: 5 A of difference
        // through each PSU's droop, until load sharing evens it out.
        m_cabinet.unit(1, 48)->set("setPointError", 10);
        m_cabinet.unit(1, 50)->set("setPointError", -10);
        recordScenarioIfAsked(*m_cabinet.plant);
    }

    // The site as the object layer configures it: its supply, battery and
    // distribution, the three PSUs, the BFU and the PDU.
    void startSite()
    {
        startPower({{{func_type::kPsu, 1}, "A1"},
                    {{func_type::kPsu, 2}, "B1"},
                    {{func_type::kPsu, 3}, "A2"},
                    {{func_type::kBfu, 1}, "A1"},
                    {{func_type::kPdu, 1}, "A1"}});
        step(11'000, [](HWU_Broker&) {
            power().updateBatteryParameters(leadAcidString());
            PowerDistributionCfg distribution;
            distribution.mainLoadUndervoltageDisconnect = -432;
            distribution.priorityLoadUndervoltageDisconnect = -440;
            distribution.undervoltageDisconnectCeaseOffset = 30;
            power().updatePowerDistribution(distribution);
        });
    }

    // Four 12 V blocks of 100 Ah: floated at 55.0 V (13.75 V a block) at 25
    // degrees, 72 mV less for each degree warmer within 54 to 56 V, charged
    // with at most 20 A, boosted at 55.5 V for two hours after a discharge
    // below 48 V.
    static BatteryBackupCfg leadAcidString()
    {
        BatteryBackupCfg battery;
        battery.chargeMaxCurrent = 20;
        battery.batteryDisconnectTemp = 50;
        battery.batteryDisconnectTempCeaseOffset = 5;
        battery.chargingVoltage = -55.0F;
        battery.tempCompVoltageSlope = -0.072F;
        battery.nominalTemp = 25.0F;
        battery.tempCompMinVoltage = -54.0F;
        battery.tempCompMaxVoltage = -56.0F;
        battery.increasedChargeVoltage = -55.5F;
        battery.boostChargeTime = 2;
        battery.boostChargeTriggerVoltage = -48.0F;
        return battery;
    }

    void mainsAt(std::uint64_t atMs, bool present)
    {
        step(static_cast<std::uint32_t>(atMs),
             [this, present](HWU_Broker&) { m_cabinet.plant->electrical().setMains(present); });
    }

    struct Sample {
        std::uint64_t timeMs;
        double busV;
        std::vector<double> psuA; // of the PSUs still in the cabinet
        double loadW;
        double wantedV; // magnitude, as the charger asks it
        std::uint32_t chargingState;
        double batteryA; // positive while charging
        double chargePercent;
    };

    void runSampled(std::uint64_t untilMs)
    {
        runNode(kMinuteMs);
        sample();
        for (std::uint64_t now = 2 * kMinuteMs; now <= untilMs; now += kMinuteMs) {
            world().runFor(kMinuteMs);
            sample();
        }
    }

    void sample()
    {
        Sample taken{world().now(), m_cabinet.plant->electrical().busV(), {},
                     m_cabinet.plant->electrical().loadNowW(), std::fabs(power().getWantedVoltage()),
                     power().charger().getChargingStateId(), m_cabinet.plant->electrical().batteryCurrentA(),
                     100.0 * m_cabinet.plant->electrical().stateOfCharge()};
        for (const std::uint8_t address : kPsuAddresses)
            if (const sim::SimUnit* unit = m_cabinet.unit(1, address))
                taken.psuA.push_back(unit->get("outputCurrent").value_or(0) / 10.0);
        m_samples.push_back(taken);
    }

    std::vector<Sample> between(std::uint64_t fromMs, std::uint64_t toMs) const
    {
        std::vector<Sample> found;
        for (const Sample& sample : m_samples)
            if (sample.timeMs >= fromMs && sample.timeMs <= toMs) found.push_back(sample);
        return found;
    }

    static double spreadA(const Sample& sample)
    {
        const auto [low, high] = std::minmax_element(sample.psuA.begin(), sample.psuA.end());
        return *high - *low;
    }

    // Samples whose PSUs carry more than the load sharing band apart.
    static std::size_t unevenSamples(const std::vector<Sample>& samples)
    {
        return static_cast<std::size_t>(
            std::count_if(samples.begin(), samples.end(), [](const Sample& sample) { return spreadA(sample) > 3.05; }));
    }

    std::vector<Sample> m_samples;
};

TEST_F(PowerClosedLoopTest, TheSystemVoltageIsHeldAtItsSetPointAsTheLoadSwingsOverADay)
{
    startSite();
    runSampled(24 * kHourMs);
    const auto first = between(kMinuteMs, kMinuteMs);
    ASSERT_FALSE(first.empty());
    EXPECT_GT(spreadA(first.front()), 6.0) << "the outputs start apart";
    const auto settled = between(kHourMs, 24 * kHourMs);
    ASSERT_FALSE(settled.empty());
    double lowestW = 1e9;
    double highestW = 0.0;
    for (const Sample& sample : settled) {
        // Within the load sharing band, read in the units' hundredths.
        EXPECT_NEAR(sample.busV, sample.wantedV, 0.06) << sample.timeMs;
        lowestW = std::min(lowestW, sample.loadW);
        highestW = std::max(highestW, sample.loadW);
    }
    // Load sharing evens the PSUs out to its band; each time the charger
    // moves the wanted voltage with the battery's temperature (72 mV a
    // degree), voltage regulation takes over for a few minutes and the PSUs
    // part again.
    EXPECT_LT(unevenSamples(settled), settled.size() / 5);
    EXPECT_GT(highestW - lowestW, 200.0) << "the day's load swing was there to follow";
}

TEST_F(PowerClosedLoopTest, APsuLostLeavesItsLoadToTheOthersAndTheVoltageComesBack)
{
    startSite();
    step(static_cast<std::uint32_t>(2 * kHourMs), [this](HWU_Broker&) { m_cabinet.removeUnit(1, 49); });
    runSampled(3 * kHourMs);
    EXPECT_THAT(m_recorder.m_faults, Contains(StartsWith("raise 21502 PSU-2")));
    const auto before = between(2 * kHourMs - kMinuteMs, 2 * kHourMs - kMinuteMs);
    const auto after = between(2 * kHourMs + 15 * kMinuteMs, 3 * kHourMs);
    ASSERT_FALSE(before.empty());
    ASSERT_FALSE(after.empty());
    for (const Sample& sample : after) {
        ASSERT_EQ(sample.psuA.size(), 2u);
        EXPECT_NEAR(sample.busV, sample.wantedV, 0.06) << sample.timeMs;
        // Two carry what three did.
        EXPECT_NEAR(sample.psuA[0] + sample.psuA[1], sample.loadW / sample.busV, 1.0) << sample.timeMs;
    }
    EXPECT_LT(unevenSamples(after), after.size() / 10);
    EXPECT_GT(after.back().psuA[0], before.back().psuA[0] + 2.0);
}

TEST_F(PowerClosedLoopTest, MainsLostIsConfirmedAsBatteryModeWithItsAlarmAndMainsBackCeasesIt)
{
    TraceCapture trace("supSysCtrlPower:4");
    startSite();
    mainsAt(kHourMs, false);
    mainsAt(kHourMs + 20 * kMinuteMs, true);
    runSampled(2 * kHourMs);
    // Confirmed 30 s after the first pass that saw it, the alarm 3 s later.
    ASSERT_EQ(m_events.m_events.size(), 2u) << ::testing::PrintToString(m_events.m_events);
    const auto secondsOf = [](const std::string& line) { return std::stoull(line.substr(line.find('@') + 1)); };
    EXPECT_THAT(m_events.m_events[0], StartsWith("on batteries"));
    EXPECT_GE(secondsOf(m_events.m_events[0]), 3600u + 30);
    EXPECT_LE(secondsOf(m_events.m_events[0]), 3600u + 37);
    EXPECT_THAT(m_events.m_events[1], StartsWith("off batteries"));
    // Back once the charger's soft start has the battery taking current.
    EXPECT_GT(secondsOf(m_events.m_events[1]), 4800u + 30);
    EXPECT_LE(secondsOf(m_events.m_events[1]), 4800u + 120);
    EXPECT_THAT(m_recorder.m_faults, Contains(StartsWith("raise 6004 Battery Backup-0")));
    EXPECT_THAT(m_recorder.m_faults, Contains(StartsWith("cease 6004 Battery Backup-0")));
    EXPECT_THAT(m_recorder.m_faults, Contains(StartsWith("raise 20004 Power Supply-0")));
    EXPECT_THAT(m_recorder.m_faults, Contains(StartsWith("cease 20004 Power Supply-0")));
    EXPECT_EQ(trace.count("supSysCtrlPower", 4, "TBN is running on batteries"), 1u);
    // The battery carried the load, and once mains was back the voltage returned.
    for (const Sample& sample : between(kHourMs + 2 * kMinuteMs, kHourMs + 19 * kMinuteMs)) {
        EXPECT_LT(sample.busV, 52.0) << sample.timeMs;
        EXPECT_GT(sample.loadW, 1000.0) << sample.timeMs;
    }
    // Within the load sharing band, read in the units' hundredths.
    for (const Sample& sample : between(kHourMs + 40 * kMinuteMs, 2 * kHourMs))
        EXPECT_NEAR(sample.busV, sample.wantedV, 0.06) << sample.timeMs;
}

TEST_F(PowerClosedLoopTest, ATwoHourMainsLossIsRechargedWithinTheCurrentLimitAndTheChargerFloatsAgain)
{
    startSite();
    mainsAt(kHourMs, false);
    mainsAt(3 * kHourMs, true);
    runSampled(16 * kHourMs);
    const auto outage = between(kHourMs + 2 * kMinuteMs, 3 * kHourMs - kMinuteMs);
    ASSERT_FALSE(outage.empty());
    EXPECT_EQ(outage.back().chargingState, charging_state::kDischarge);
    EXPECT_LT(outage.back().chargePercent, 60.0) << "two hours of 1.2 kW from 100 Ah";
    // The charger brings the bus up in steps, so that the battery never
    // takes much more than its 20 A.
    const auto recharge = between(3 * kHourMs + 2 * kMinuteMs, 16 * kHourMs);
    ASSERT_FALSE(recharge.empty());
    double most = 0.0;
    std::vector<std::uint32_t> states;
    for (const Sample& sample : recharge) {
        most = std::max(most, sample.batteryA);
        if (states.empty() || states.back() != sample.chargingState) states.push_back(sample.chargingState);
    }
    EXPECT_LE(most, 22.0);
    EXPECT_GT(most, 15.0) << "and it takes what it may";
    EXPECT_EQ(states.front(), charging_state::kSoftStart);
    EXPECT_EQ(states.back(), charging_state::kFloat);
    EXPECT_GT(recharge.back().chargePercent, 99.0) << "full again";
}

TEST_F(PowerClosedLoopTest, AnOverloadedBatteryHasAnEfuseOpenedUntilMainsIsBackAndTheBatteryCharges)
{
    TraceCapture trace("supSysCtrlPower:4");
    // A BFU made for 20 A, and a PDU that may open its first four e-fuses:
    // the four loads of 300 W.
    m_cabinet.unit(1, 64)->set("add.batteryCurrentLimit", 200);
    m_cabinet.unit(1, 80)->set("cap.controllable", 0x000F);
    startSite();
    mainsAt(kHourMs, false);
    mainsAt(kHourMs + 20 * kMinuteMs, true);
    runSampled(2 * kHourMs);
    // The BFU's reading after the first e-fuse opened comes a poll after the
    // next check, which opens a second one; 600 W are well within the limit.
    // Mains back, the charger starts soft, below the load's voltage, so the
    // battery may be overloaded once more before it charges; every opening
    // is closed again by a charging battery.
    const std::size_t openings =
        trace.count("supSysCtrlPower", 4, "BFU overloaded power system: fuse number 1 opened");
    EXPECT_GE(openings, 1u);
    EXPECT_EQ(trace.count("supSysCtrlPower", 4, "BFU overloaded power system: fuse number 2 opened"), openings);
    EXPECT_FALSE(trace.contains("fuse number 3 opened"));
    EXPECT_EQ(trace.count("supSysCtrlPower", 4, "BFU overloaded power system, all fuses have been closed"), openings);
    for (const Sample& sample : between(kHourMs + 2 * kMinuteMs, kHourMs + 19 * kMinuteMs))
        EXPECT_LT(sample.loadW, 1000.0) << sample.timeMs;
    // A minute of charging after mains came back, the load is whole again.
    for (const Sample& sample : between(kHourMs + 23 * kMinuteMs, 2 * kHourMs))
        EXPECT_GT(sample.loadW, 1000.0) << sample.timeMs;
}

} // namespace
