// Fan groups against a real SCU on the simulated bus: what the configuration
// asks for and what the hardware has, compared into the mismatch, failure
// and disconnect faults; and the SCU configuration held to the SCU's limits.

#include "climate/ClimateCtrlManager.h"
#include "climate/ClimateCtrlServer.h"
#include "climate/ExternalNodeControl.h"
#include "climate/TemperatureRegulator.h"
#include "climate/FanGroupControl.h"
#include "climate/ScuConfigurator.h"
#include "frame/SignalDispatcher.h"
#include "frame/testSupport/TraceCapture.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/testSupport/HwuNodeHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::Contains;
using ::testing::Not;

constexpr std::uint32_t kCabinet = 0;

class FanGroupControlTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
        m_scu = &addUnit(sim::UnitType::SCU, 1, 32);
    }
    void TearDown() override
    {
        // Outside the world there is no timer left to stop.
        TimerService::setHandler(nullptr);
        ClimateCtrlManager::destroy();
        HwuNodeHarness::TearDown();
    }

    // The manager with two blowers expected; group 3 external.
    void startClimate(std::int16_t blowers = 2, std::uint32_t climateSystem = 0)
    {
        step(0, [this, blowers, climateSystem](HWU_Broker& broker) {
            m_pDispatcher = std::make_unique<SignalDispatcher>();
            m_pServer = std::make_unique<ClimateCtrlServer>(m_pDispatcher.get());
            m_units.setSides({m_pServer.get(), nullptr, nullptr, nullptr, nullptr});
            ClimateCtrlManager* climate = ClimateCtrlManager::create(m_ssc, broker, m_faults);
            std::array<std::int16_t, ClimateCfg::kNumbers> numbers{};
            numbers[0] = blowers;
            numbers[15] = 1;
            numbers[16] = 1;
            numbers[17] = ClimateCfg::kExternalFanGroup;
            ClimateCfg cfg;
            cfg.setCabinetParameters(climateSystem, 0, numbers);
            climate->setClimateCfg(cfg);
            climate->setSupportSystemControl(true);
            climate->update(0);
            broker.configureHwu({func_type::kScu, 1}, "", 0, kCabinet);
        });
    }
    void inCore(std::uint32_t atMs, std::function<void(ClimateCtrlManager&)> action)
    {
        step(atMs, [action](HWU_Broker&) { action(*ClimateCtrlManager::getInstance()); });
    }
    const std::vector<std::string>& faults() const { return m_recorder.m_faults; }

    HwuUnitFactory m_units;
    std::unique_ptr<SignalDispatcher> m_pDispatcher;
    std::unique_ptr<ClimateCtrlServer> m_pServer;
    sim::SimUnit* m_scu = nullptr;
};

TEST_F(FanGroupControlTest, AConfiguredGroupTheScuLacksIsAMismatchUntilItsConfigurationGoes)
{
    m_scu->set("cap.availableFanGroups", 0x01); // group 1 only
    m_scu->set("connectedFans", 0x01);
    startClimate();
    inCore(100, [](ClimateCtrlManager& climate) {
        climate.configureFanGroup(101, 1, kCabinet);
        climate.configureFanGroup(103, 3, kCabinet);
        climate.configureFanGroup(105, 5, kCabinet); // refused
    });
    inCore(8000, [](ClimateCtrlManager& climate) { climate.deleteFanGroup(103); });
    runNode(9000);
    EXPECT_THAT(faults(), Contains("raise 14006 Cabinet-0 @4s"));
    EXPECT_THAT(faults(), Contains("cease 14006 Cabinet-0 @8s"));
    EXPECT_THAT(faults(), Not(Contains(::testing::HasSubstr("FAN-105"))));
}

TEST_F(FanGroupControlTest, MoreConnectedGroupsThanBlowersAndAFailedOrDisconnectedGroupAreFaulted)
{
    m_scu->set("connectedFans", 0x0B); // groups 1, 2 and 4
    startClimate(2);
    inCore(100, [](ClimateCtrlManager& climate) {
        for (std::uint32_t group = 1; group <= 3; ++group) climate.configureFanGroup(100 + group, group, kCabinet);
    });
    // Group 1 fails; group 3 (external) fails later and is raised after 5 s.
    step(6000, [this](HWU_Broker&) { m_scu->set("fanGroupFailure", 0x01); });
    step(8000, [this](HWU_Broker&) { m_scu->set("fanGroupFailure", 0x05); });
    step(20000, [this](HWU_Broker&) { m_scu->set("fanGroupFailure", 0x00); });
    runNode(22000);
    EXPECT_THAT(faults(), Contains("raise 14006 FAN-0 @4s"));
    EXPECT_THAT(faults(), Contains("raise 21502 FAN-103 @4s")) << "group 3 is not connected";
    EXPECT_THAT(faults(), Contains("raise 21501 FAN-101 @6s"));
    EXPECT_THAT(faults(), Contains("raise 21501 FAN-103 @13s"));
    EXPECT_THAT(faults(), Contains("cease 21501 FAN-101 @20s"));
}

TEST_F(FanGroupControlTest, AClimateUnitOwnsGroupsTwoAndFourAndTheLastGroupsDeletionLeavesItsFaults)
{
    m_scu->set("connectedFans", 0x04); // group 3 only
    m_scu->set("fansConnected", 0x0F00);
    startClimate();
    inCore(100, [](ClimateCtrlManager& climate) {
        climate.configureFanGroup(101, 1, kCabinet);
        climate.configureFanGroup(102, 2, kCabinet);
    });
    bool group2Before = false;
    bool group2WithClu = true;
    bool group1WithClu = false;
    inCore(6000, [&](ClimateCtrlManager& climate) {
        group2Before = climate.isFanGroupConfigured(kCabinet, 2);
        climate.cluPresent(true);
        group2WithClu = climate.isFanGroupConfigured(kCabinet, 2);
        group1WithClu = climate.isFanGroupConfigured(kCabinet, 1);
        climate.deleteFanGroup(101);
        climate.deleteFanGroup(102);
    });
    bool anyAfterDeletion = true;
    inCore(7000, [&](ClimateCtrlManager& climate) {
        anyAfterDeletion = climate.fanGroupControl().find(kCabinet) != nullptr;
    });
    runNode(8000);
    EXPECT_TRUE(group2Before);
    EXPECT_FALSE(group2WithClu);
    EXPECT_TRUE(group1WithClu);
    EXPECT_FALSE(anyAfterDeletion);
    // The climate unit connects group 2; group 1 stays disconnected, and
    // deleting it does not cease its fault.
    EXPECT_THAT(faults(), Contains("raise 21502 FAN-101 @4s"));
    EXPECT_THAT(faults(), Contains("raise 21502 FAN-102 @4s"));
    EXPECT_THAT(faults(), Contains("cease 21502 FAN-102 @6s"));
    EXPECT_THAT(faults(), Not(Contains(::testing::StartsWith("cease 21502 FAN-101"))));
}

TEST_F(FanGroupControlTest, ParametersWithAnUnknownClimateSystemDoNotRegulateUntilTheNextUpdate)
{
    m_scu->set("set.fanSpeed1", 50);
    startClimate(2, ClimateCfg::kUnknownClimateSystem);
    inCore(100, [](ClimateCtrlManager& climate) { climate.configureFanGroup(101, 1, kCabinet); });
    bool possibleBefore = true;
    inCore(20000, [&](ClimateCtrlManager& climate) {
        possibleBefore = climate.isRegulationPossible();
        climate.update(0); // the same record again goes the whole way
    });
    runNode(19000);
    EXPECT_EQ(m_scu->get("set.fanSpeed1"), 50) << "no pass with limits of 0";
    world().runFor(11000);
    EXPECT_FALSE(possibleBefore);
    EXPECT_EQ(m_scu->get("set.fanSpeed1"), 100) << "the basic speed falls back to 100";
}

TEST_F(FanGroupControlTest, ASecondaryWithoutADemandLowersTheFloorAndItsDemandRaisesTheAirFlow)
{
    std::vector<std::int32_t> basic;
    float demand = 0.0f;
    startClimate();
    inCore(1000, [&](ClimateCtrlManager& climate) {
        basic.push_back(climate.regulator().basicFanSpeed());
        climate.externalNodeControl().nodeAdded(ExternalNode(3));
        climate.updateBasicFanSpeed();
        basic.push_back(climate.regulator().basicFanSpeed());
        climate.airflowDemandFromSecondary(3, 250.0f);
        basic.push_back(climate.regulator().basicFanSpeed());
        climate.getMaxAirflowDemand(&demand);
    });
    runNode(2000);
    // Basic 0 and missing-node 0 fall back to 100 and 30.
    EXPECT_EQ(basic, (std::vector<std::int32_t>{100, 30, 100}));
    EXPECT_EQ(demand, 250.0f);
}

TEST(ScuConfiguratorTest, ValuesOutsideTheScusLimitsBecomeNotApplicableWithTheirTrace)
{
    TraceCapture trace("supSysCtrlClimate:1");
    // Temperatures as signed bytes; -127 always passes.
    EXPECT_EQ(ScuConfigurator::checkTemperature("heater1OnTemp", -127, 0, 10), -127);
    EXPECT_EQ(ScuConfigurator::checkTemperature("heater1OnTemp", -20, -20, 10), -20);
    EXPECT_EQ(ScuConfigurator::checkTemperature("heater1OnTemp", 50, -20, 10), -127);
    EXPECT_TRUE(trace.contains("SCU configuration parameter heater1OnTemp = 50 is not within SCU capabilities "
                               "[-20..10]. Value changed to NA (-127)."));
    // Inverted limits let nothing but the marker through.
    EXPECT_EQ(ScuConfigurator::checkTemperature("intFanLoTemp", 7, 10, 5), -127);
    // Speeds as unsigned bytes: 200 is a speed, not a negative number; 0 is never checked.
    EXPECT_EQ(ScuConfigurator::checkSpeed("extFanSpeedFault", 200, 10, 250), 200);
    EXPECT_EQ(ScuConfigurator::checkSpeed("extFanSpeedFault", 0, 10, 50), 0);
    EXPECT_EQ(ScuConfigurator::checkSpeed("extFanSpeedFault", 60, 10, 50), 0);
    EXPECT_EQ(trace.count("is not within SCU capabilities"), 3u);
}

TEST_F(FanGroupControlTest, TheScuIsConfiguredWithinItsLimitsOnceItIsOperationalAndTheParametersAreThere)
{
    TraceCapture trace("supSysCtrlClimate:7");
    startClimate();
    runNode(6000);
    // The door switch is off; group 3 is external: flag 2 on the wire.
    EXPECT_EQ(m_scu->get("set.scuConfigFanGroup"), 0x04);
    EXPECT_EQ(m_scu->get("set.scuConfigOtherPorts"), 0);
    // intFanHiTemp 0 lies below the SCU's 20..50: sent as not applicable.
    EXPECT_EQ(static_cast<std::int8_t>(m_scu->get("set.scuIntFanHiTemp").value_or(0)), -127);
    EXPECT_EQ(trace.count("supSysCtrlClimate", 7, "Configuration of SCU done OK"), 1u);
}

} // namespace
