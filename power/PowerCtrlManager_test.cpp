// The system voltage control against simulated units on the virtual clock:
// the units answer what the test sets, so that each pass's arithmetic, the
// load sharing, the battery mode, the class 2 faults, the limits sent to the
// units and the e-fuses opened on overload can be pinned exactly.

#include "frame/testSupport/TraceCapture.h"
#include "power/BatteryBackupCfg.h"
#include "power/PowerDistributionCfg.h"
#include "power/testSupport/PowerNodeHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr FuncId_t kPsu1{func_type::kPsu, 1};
constexpr FuncId_t kPsu2{func_type::kPsu, 2};
constexpr FuncId_t kBfu1{func_type::kBfu, 1};
constexpr FuncId_t kPdu1{func_type::kPdu, 1};

class PowerCtrlManagerTest : public PowerNodeHarness {
protected:
    sim::SimUnit& sim(std::uint8_t address) { return *m_cabinet.unit(1, address); }
    std::int32_t commanded(std::uint8_t address) { return sim(address).get("set.outputVoltage").value_or(0); }
    void setAt(std::uint32_t timeMs, std::uint8_t address, const char* name, std::int32_t value)
    {
        step(timeMs, [this, address, name, value](HWU_Broker&) { sim(address).set(name, value); });
    }
    bool anyFault(const std::string& part) const
    {
        return std::any_of(m_recorder.m_faults.begin(), m_recorder.m_faults.end(),
                           [&part](const std::string& line) { return line.find(part) != std::string::npos; });
    }
};

TEST_F(PowerCtrlManagerTest, TheRegulatorOffsetStepsByAThirdOfTwoThirdsOfTheDeviationWithinItsLimits)
{
    addUnit(sim::UnitType::PSU, 1, 48);
    std::vector<float> offsets;
    std::vector<std::int32_t> commands;
    for (std::uint32_t at = 17'000; at <= 35'000; at += 6000)
        step(at, [&](HWU_Broker&) {
            offsets.push_back(power().getRegulatorOffset());
            commands.push_back(commanded(48));
        });
    startPower({{kPsu1, "A1"}}, {.nominal = -535});
    runNode(42'000);
    ASSERT_EQ(offsets.size(), 4u);
    // 54.50 V read against 53.5 V wanted: -1.0 / 1.5 is held at -0.5.
    EXPECT_FLOAT_EQ(offsets[0], -0.5F);
    EXPECT_EQ(commands[0], -5300);
    // The unit now reads what it was told: 53.00 V.
    const float second = -0.5F + (53.5F - 53.0F) / 1.5F;
    EXPECT_FLOAT_EQ(offsets[1], second);
    EXPECT_EQ(commands[1], -5333) << "hundredths, cut towards zero by the unit";
    EXPECT_FLOAT_EQ(offsets[2], second + (53.5F - 53.33F) / 1.5F);
    // At 53.48 V, within 30 mV, the offset stands still and load sharing
    // takes over.
    EXPECT_TRUE(power().loadSharing().isActive());
    EXPECT_FLOAT_EQ(offsets[3], power().getRegulatorOffset());
    EXPECT_LE(std::abs(commands.back() + 5350), 3);
}

TEST_F(PowerCtrlManagerTest, LoadSharingEvensTheLoadsInSteps_LeavesUnloadedPsusOut_AndHoldsItsLimits)
{
    TraceCapture trace("supSysCtrlPower:7");
    addUnit(sim::UnitType::PSU, 1, 48).set("load", 100);
    addUnit(sim::UnitType::PSU, 1, 49).set("load", 110);
    addUnit(sim::UnitType::PDU, 1, 80).set("systemVoltage", -5350);
    std::vector<float> first;
    std::vector<float> second;
    auto sample = [&](HWU_Broker&) {
        first.push_back(psu(1).getSharingOff());
        second.push_back(psu(2).getSharingOff());
    };
    // Passes at 16, 22, 28 ... s.
    step(17'000, sample);
    setAt(18'000, 48, "load", 3);
    step(23'000, sample);
    setAt(24'000, 48, "load", 10);
    setAt(24'000, 49, "load", 250);
    step(29'000, sample);
    step(113'000, sample);
    setAt(114'000, 80, "systemVoltage", -5346);
    step(119'000, sample);
    setAt(120'000, 80, "systemVoltage", -5344);
    step(125'000, sample);
    startPower({{kPsu1, "A1"}, {kPsu2, "B1"}, {kPdu1, "A1"}}, {.nominal = -535});
    runNode(126'000);
    ASSERT_EQ(first.size(), 6u);
    // 100 W and 110 W: 5 W from the average of 105 W moves each by 2.5 mV.
    EXPECT_FLOAT_EQ(first[0], 0.0025F);
    EXPECT_FLOAT_EQ(second[0], -0.0025F);
    EXPECT_TRUE(trace.contains("change to Active Load sharing"));
    // 3 W is unloaded: that PSU is reset and the other one is the average.
    EXPECT_FLOAT_EQ(first[1], 0.0F);
    EXPECT_FLOAT_EQ(second[1], -0.0025F);
    EXPECT_TRUE(trace.contains("Load balance 0.00 within limits, sharingOff set to -0.00250"));
    // 120 W from the average: 60 mV a pass, up to 0.75 V and no further.
    EXPECT_FLOAT_EQ(first[2], 0.06F);
    EXPECT_FLOAT_EQ(first[3], 0.75F);
    EXPECT_FLOAT_EQ(second[3], -0.75F);
    // 40 mV off target is inside the band, 60 mV outside it.
    EXPECT_FLOAT_EQ(first[4], 0.75F);
    EXPECT_FLOAT_EQ(first[5], 0.0F);
    EXPECT_FLOAT_EQ(second[5], 0.0F);
    EXPECT_EQ(trace.count("System Voltage Control set to voltage regulation."), 1u);
    EXPECT_TRUE(trace.contains("Load sharing not performed"));
}

TEST_F(PowerCtrlManagerTest, BatteryModeHoldsForThirtySecondsBeforeItCountsBothWaysAndADipCancels)
{
    TraceCapture trace("supSysCtrlPower:7");
    addUnit(sim::UnitType::PSU, 1, 48);
    addUnit(sim::UnitType::BFU, 1, 64);
    addUnit(sim::UnitType::PDU, 1, 80);
    // Passes at 16 + 6k s. Mains goes at 20 s and is back at 60 s.
    setAt(20'000, 80, "systemVoltage", -5100);
    setAt(20'000, 64, "batteryCurrent", -100);
    setAt(60'000, 80, "systemVoltage", -5450);
    setAt(60'000, 64, "batteryCurrent", 50);
    // A dip of one pass at 100 s.
    setAt(99'000, 80, "systemVoltage", -5100);
    setAt(99'000, 64, "batteryCurrent", -100);
    setAt(103'000, 80, "systemVoltage", -5450);
    setAt(103'000, 64, "batteryCurrent", 50);
    startPower({{kPsu1, "A1"}, {kBfu1, "A1"}, {kPdu1, "A1"}});
    runNode(150'000);
    EXPECT_EQ(m_events.m_events, (std::vector<std::string>{"on batteries @52s", "off batteries @94s"}));
    EXPECT_TRUE(anyFault("raise 6004")) << ::testing::PrintToString(m_recorder.m_faults);
    EXPECT_TRUE(anyFault("cease 6004"));
    EXPECT_EQ(trace.count("supSysCtrlPower", 7, "Battery Mode timer set."), 2u);
    EXPECT_EQ(trace.count("supSysCtrlPower", 7, "Battery Mode timer canceled."), 1u);
    EXPECT_EQ(trace.count("supSysCtrlPower", 7, "Cease Battery Mode timer set."), 1u);
    EXPECT_EQ(trace.count("supSysCtrlPower", 4, "TBN is running on batteries"), 1u);
    EXPECT_EQ(trace.count("supSysCtrlPower", 7, "Battery mode ON. Three minutes count STARTED."), 1u);
    EXPECT_EQ(trace.count("supSysCtrlPower", 7, "Battery mode OFF. Three minutes count CANCELLED."), 1u);
    EXPECT_TRUE(trace.contains("Battery voltage -54.40V"));
    EXPECT_FALSE(power().isRunningOnBatteries());
}

TEST_F(PowerCtrlManagerTest, ANominalVoltageOf50Point5GivesABatteryModeThresholdOf50)
{
    TraceCapture trace("supSysCtrlPower:7");
    addUnit(sim::UnitType::BFU, 1, 64).set("batteryCurrent", -100);
    addUnit(sim::UnitType::PDU, 1, 80).set("systemVoltage", -5004);
    setAt(24'000, 80, "systemVoltage", -4996);
    startPower({{kBfu1, "A1"}, {kPdu1, "A1"}}, {.nominal = -505});
    runNode(30'000);
    EXPECT_EQ(trace.count("supSysCtrlPower", 7, "Battery Mode timer set."), 1u) << "only 49.96 V is below 50.0";
}

TEST_F(PowerCtrlManagerTest, Class2FaultsFollowTheBfusReadingWithTheirHysteresisButNotAPdus)
{
    addUnit(sim::UnitType::BFU, 1, 64);
    // Passes at 16 + 6k s; each value holds for one pass.
    const std::vector<std::pair<std::uint32_t, std::int32_t>> readings{
        {20'000, -4350}, {26'000, -4550}, {32'000, -4750}, {38'000, -5800}, {44'000, -5720}, {50'000, -5690}};
    for (const auto& [at, centivolts] : readings) setAt(at, 64, "systemVoltage", centivolts);
    startPower({{kBfu1, "A1"}});
    runNode(57'000);
    const std::vector<std::string> class2{"raise 14008 ", "cease 14008 ", "raise 14007 ", "cease 14007 "};
    std::vector<std::string> seen;
    for (const std::string& line : m_recorder.m_faults)
        for (const std::string& part : class2)
            if (line.rfind(part, 0) == 0) seen.push_back(part + line.substr(line.find('@')));
    EXPECT_EQ(seen, (std::vector<std::string>{"raise 14008 @22s", "cease 14008 @34s", "raise 14007 @40s",
                                              "cease 14007 @52s"}));
}

TEST_F(PowerCtrlManagerTest, APduReadingLeavesTheClass2EvaluationToThePdu)
{
    addUnit(sim::UnitType::BFU, 1, 64).set("systemVoltage", -4350);
    addUnit(sim::UnitType::PDU, 1, 80);
    startPower({{kBfu1, "A1"}, {kPdu1, "A1"}});
    runNode(30'000);
    EXPECT_FALSE(anyFault("raise 14008"));
    EXPECT_FLOAT_EQ(m_events.m_lastSystemVoltage, -54.5F);
}

TEST_F(PowerCtrlManagerTest, UnusableVoltagesAndLimitsAreReplacedWithTheirTraceAndOneFaultThatGoesWhenFixed)
{
    TraceCapture trace("supSysCtrlPower:1");
    addUnit(sim::UnitType::BFU, 1, 64);
    addUnit(sim::UnitType::PDU, 1, 80);
    step(12'000, [](HWU_Broker&) {
        BatteryBackupCfg battery;
        battery.batteryDisconnectTemp = 50;
        battery.batteryDisconnectTempCeaseOffset = 5;
        power().updateBatteryParameters(battery);
        PowerDistributionCfg distribution;
        distribution.mainLoadUndervoltageDisconnect = -350; // below what the BFU can take
        distribution.priorityLoadUndervoltageDisconnect = 440;  // its sign forgotten
        distribution.undervoltageDisconnectCeaseOffset = 20;
        power().updatePowerDistribution(distribution);
    });
    std::vector<float> nominals;
    auto supply = [&nominals](std::int16_t nominal, std::int16_t overvoltageRaise = -575) {
        return [&nominals, nominal, overvoltageRaise](HWU_Broker&) {
            PowerNodeHarness::Supply values{.nominal = nominal, .overvoltageRaise = overvoltageRaise};
            power().updatePowerSupply(PowerNodeHarness::values(values).data());
            nominals.push_back(power().getNominalVoltage());
        };
    };
    step(14'000, supply(-479));
    step(15'000, supply(-480));
    step(16'000, supply(-570));
    step(17'000, supply(545));
    step(18'000, supply(-545, -430)); // overvoltage below the undervoltage
    step(19'000, supply(-545, -650)); // more than the PDU can take
    step(20'000, supply(-545));
    std::vector<std::string> faultsBeforeFix;
    std::optional<std::int32_t> refusedMain;
    step(20'500, [this, &faultsBeforeFix, &refusedMain](HWU_Broker&) {
        faultsBeforeFix = m_recorder.m_faults;
        refusedMain = sim(64).get("set.mainLoadDisconnect");
        PowerDistributionCfg distribution;
        distribution.mainLoadUndervoltageDisconnect = -432;
        distribution.priorityLoadUndervoltageDisconnect = -440;
        distribution.undervoltageDisconnectCeaseOffset = 20;
        power().updatePowerDistribution(distribution);
    });
    startPower({{kBfu1, "A1"}, {kPdu1, "A1"}});
    runNode(21'000);
    EXPECT_EQ(nominals, (std::vector<float>{-54.5F, -48.0F, -57.0F, -54.5F, -54.5F, -54.5F, -54.5F}));
    EXPECT_TRUE(trace.contains("Using default voltage -54.5V, Faulty IDB NominalVoltage -47.90"));
    EXPECT_TRUE(trace.contains("Using default voltage -54.5V, Faulty IDB NominalVoltage 54.50"));
    EXPECT_TRUE(trace.contains("overlap, using the default limits"));
    EXPECT_TRUE(trace.contains("Over voltage raise limit (-6500) is outside PDU capabilities"));
    EXPECT_TRUE(trace.contains("Main load UV disconnect limit (-3500) is outside BFU capabilities"));
    // The BFU got the bound it crossed and the sign its voltages carry.
    EXPECT_EQ(refusedMain, -4000);
    EXPECT_FALSE(trace.contains("Prio load UV"));
    EXPECT_EQ(sim(64).get("set.priorityLoadDisconnect"), -4400);
    EXPECT_EQ(sim(64).get("set.disconnectTemp"), 50);
    EXPECT_EQ(sim(64).get("set.disconnectCeaseTemp"), 45);
    EXPECT_EQ(sim(80).get("set.overvoltageRaise"), -5750);
    EXPECT_EQ(sim(80).get("set.undervoltageCease"), -4700);
    // The fault stood until the last refused limit, the BFU's, was fixed.
    EXPECT_TRUE(anyFault("raise 14009 Cabinet-0"));
    EXPECT_THAT(faultsBeforeFix, Not(Contains(HasSubstr("cease 14009"))));
    EXPECT_TRUE(anyFault("cease 14009 Cabinet-0 @20s"));
    EXPECT_EQ(sim(64).get("set.mainLoadDisconnect"), -4320);
}

TEST_F(PowerCtrlManagerTest, AnOverloadOpensAFuseASecondUpToThreeAndTheChargingBatteryClosesThemAMinuteLater)
{
    TraceCapture trace("supSysCtrlPower:7");
    addUnit(sim::UnitType::BFU, 1, 64).set("add.batteryCurrentLimit", 200); // 20 A
    addUnit(sim::UnitType::PDU, 1, 80);
    // 25 A out of the battery is more than 0.96 of its 20 A.
    setAt(20'000, 64, "batteryCurrent", -250);
    setAt(30'000, 64, "batteryCurrent", 30);
    // The last BFU going ends the load check, though the broker still lists
    // it while it tells.
    step(100'000, [](HWU_Broker& broker) { broker.deleteHwu(kBfu1); });
    startPower({{kBfu1, "A1"}, {kPdu1, "A1"}});
    runNode(101'000);
    EXPECT_TRUE(trace.contains("BFU overloaded power system: fuse number 1 opened"));
    EXPECT_TRUE(trace.contains("BFU overloaded power system: fuse number 3 opened"));
    EXPECT_FALSE(trace.contains("fuse number 4 opened"));
    EXPECT_EQ(trace.count("supSysCtrlPower", 4, "BFU overloaded power system"), 1u) << "once, with its three fuses open";
    EXPECT_EQ(trace.count("Battery current above +2A, start RECONNECT_EFUSE timer"), 1u);
    // Closed once by the charging battery, once more when no BFU is left.
    EXPECT_EQ(trace.count("BFU overloaded power system, all fuses have been closed"), 2u);
    // The PDU's last three e-fuses went and came back.
    EXPECT_EQ(sim(80).get("efuseOn"), 0x00FF);
    EXPECT_EQ(power().getFusesOpened(), 0u);
    EXPECT_EQ(trace.count("supSysCtrlPower", 7, "Stopping recurring timer to check BFU power load"), 1u);
}

} // namespace

namespace {

TEST_F(PowerCtrlManagerTest, ABfuIsGivenItsLimitsOnceItHasToldWhatItCanTake)
{
    TraceCapture trace("supSysCtrlPower:1");
    addUnit(sim::UnitType::BFU, 1, 64);
    // Configured before the BFU has finished its start.
    step(1'500, [](HWU_Broker&) {
        BatteryBackupCfg battery;
        battery.batteryDisconnectTemp = 50;
        battery.batteryDisconnectTempCeaseOffset = 5;
        power().updateBatteryParameters(battery);
        PowerDistributionCfg distribution;
        distribution.mainLoadUndervoltageDisconnect = -432;
        distribution.priorityLoadUndervoltageDisconnect = -440;
        distribution.undervoltageDisconnectCeaseOffset = 30;
        power().updatePowerDistribution(distribution);
    });
    startPower({{kBfu1, "A1"}}, {}, 1'000);
    runNode(12'000);
    EXPECT_FALSE(trace.contains("outside BFU capabilities")) << trace.text();
    EXPECT_EQ(sim(64).get("set.mainLoadDisconnect"), -4320);
    EXPECT_EQ(sim(64).get("set.disconnectCease"), -4620);
    EXPECT_FALSE(anyFault("14009"));
}

} // namespace
