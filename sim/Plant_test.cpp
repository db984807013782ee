#include "sim/Plant.h"

#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"
#include "sim/SimControlSignals.h"
#include "sim/SiteFile.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace sim;

class PlantTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(SiteFile::load(SSC_SOURCE_DIR "/sim/sites/default.xml", m_cabinet, error)) << error;
        ASSERT_NE(m_cabinet.plant, nullptr);
    }
    std::int32_t value(std::uint8_t address, const char* name) { return m_cabinet.unit(1, address)->get(name).value_or(-1); }
    void advanceBy(std::uint64_t ms)
    {
        m_nowMs += ms;
        m_cabinet.advancePlant(m_nowMs);
    }

    SimCabinet m_cabinet;
    std::uint64_t m_nowMs = 0;
};

TEST_F(PlantTest, TheUnitsMeasurementsFollowTheModelsWithTheSignsTheNodeExpects)
{
    m_cabinet.unit(1, 32)->set("set.fanSpeed1", 0);
    m_cabinet.unit(1, 32)->set("set.fanSpeed2", 0);
    advanceBy(3600 * 1000);
    // Three PSUs share 1.2 kW (at 01:00 on the day's curve, busiest at
    // 20:00 with 10 % swing) on a bus near their set point.
    const double load = 1200.0 * (1.0 + 0.1 * std::cos(2.0 * 3.14159265358979 * (1.0 - 20.0) / 24.0));
    const std::int32_t bus = value(48, "outputVoltage");
    EXPECT_LT(bus, -5300);
    EXPECT_GT(bus, -5450);
    EXPECT_EQ(value(80, "systemVoltage"), bus);
    EXPECT_EQ(value(64, "systemVoltage"), bus);
    const std::int32_t current = value(48, "outputCurrent") + value(49, "outputCurrent") + value(50, "outputCurrent");
    EXPECT_NEAR(current / 10.0, load / (-bus / 100.0) + value(64, "batteryCurrent") / 10.0, 0.3);
    EXPECT_GE(value(64, "batteryCurrent"), 0) << "a full battery floats or charges";
    // The fans are off: the cabinet is well above the ambient air.
    EXPECT_GT(value(32, "scuTemperature"), 40);
}

TEST_F(PlantTest, AMainsLossMovesTheLoadToTheBatteryAndTheNodesSetPointMovesTheBus)
{
    advanceBy(60 * 1000);
    m_cabinet.unit(1, 48)->set("set.outputVoltage", -5300);
    m_cabinet.unit(1, 49)->set("set.outputVoltage", -5300);
    m_cabinet.unit(1, 50)->set("set.outputVoltage", -5300);
    advanceBy(60 * 1000);
    EXPECT_LT(value(48, "outputVoltage"), -5250);
    EXPECT_GT(value(48, "outputVoltage"), -5300);

    m_cabinet.plant->electrical().setMains(false);
    advanceBy(10 * 1000);
    EXPECT_EQ(value(48, "outputCurrent"), 0);
    EXPECT_EQ(value(48, "inputVoltageLow"), 1);
    // Some 24 A out of the battery at about 50 V.
    EXPECT_LT(value(64, "batteryCurrent"), -200);
    EXPECT_GT(value(64, "batteryCurrent"), -280);
    EXPECT_EQ(value(64, "batteryVoltage"), value(64, "systemVoltage"));
}

TEST_F(PlantTest, FansFromTheNodeCoolTheCabinetAndTheSameRunGivesTheSameNumbers)
{
    m_cabinet.unit(1, 32)->set("set.fanSpeed1", 100);
    m_cabinet.unit(1, 32)->set("set.fanSpeed2", 100);
    advanceBy(4 * 3600 * 1000);
    const std::int32_t cooled = value(32, "scuTemperature");
    EXPECT_LT(cooled, 40);

    SimCabinet again;
    std::string error;
    ASSERT_TRUE(SiteFile::load(SSC_SOURCE_DIR "/sim/sites/default.xml", again, error));
    again.unit(1, 32)->set("set.fanSpeed1", 100);
    again.unit(1, 32)->set("set.fanSpeed2", 100);
    again.advancePlant(4 * 3600 * 1000);
    EXPECT_EQ(again.unit(1, 32)->get("scuTemperature"), cooled);
    EXPECT_EQ(again.unit(1, 48)->get("outputVoltage"), m_cabinet.unit(1, 48)->get("outputVoltage"));
}

TEST_F(PlantTest, TheLoadsDrawThroughTheirEfusesAndTheirHeatWarmsTheCabinet)
{
    advanceBy(600 * 1000);
    const auto sourceA = [this] {
        return (value(48, "outputCurrent") + value(49, "outputCurrent") + value(50, "outputCurrent") -
                value(64, "batteryCurrent")) / 10.0;
    };
    const double busV = -value(48, "outputVoltage") / 100.0;
    // Four loads of 300 W; at 00:10 the day's curve (busiest at 20:00, 10 %)
    // gives them 1 + 0.1 cos(200 degrees).
    const double factor = 1.0 + 0.1 * std::cos(2.0 * 3.14159265358979 * (600.0 / 3600.0 - 20.0) / 24.0);
    EXPECT_NEAR(sourceA(), 1200.0 * factor / busV, 0.3);
    const double warm = m_cabinet.plant->thermal().steadyStateC(m_nowMs);
    // Two e-fuses opened by the node: half the load, less heat.
    ASSERT_TRUE(m_cabinet.unit(1, 80)->set("efuseOn", 0x0C));
    advanceBy(1000);
    EXPECT_NEAR(sourceA(), 600.0 * factor / busV, 0.3);
    EXPECT_LT(m_cabinet.plant->thermal().steadyStateC(m_nowMs), warm - 3.0);
    // Without the PDU the loads have no feed at all.
    ASSERT_TRUE(m_cabinet.removeUnit(1, 80));
    advanceBy(1000);
    EXPECT_NEAR(sourceA(), 0.0, 0.3);
}

TEST_F(PlantTest, MainsFollowsItsScheduleAndACommandHoldsUntilTheNextEdge)
{
    SimCabinet cabinet;
    std::string error;
    ASSERT_TRUE(SiteFile::parse(R"(<site><plant><outage startS="100" durationS="50" repeatS="1000"/></plant>
        <unit type="PSU" port="1" address="48"/></site>)", "t", cabinet, error)) << error;
    const auto mainsAt = [&cabinet](std::uint64_t second) {
        cabinet.advancePlant(second * 1000);
        return cabinet.plant->electrical().mains();
    };
    EXPECT_TRUE(mainsAt(100));
    EXPECT_FALSE(mainsAt(101));
    EXPECT_EQ(cabinet.unit(1, 48)->get("inputVoltageLow"), 1);
    EXPECT_FALSE(mainsAt(150));
    EXPECT_TRUE(mainsAt(151));
    // Lost by command inside the gap: it stays lost until the next outage
    // has come and gone.
    cabinet.plant->electrical().setMains(false);
    EXPECT_FALSE(mainsAt(1100));
    EXPECT_FALSE(mainsAt(1140));
    EXPECT_TRUE(mainsAt(1151));
    EXPECT_FALSE(mainsAt(2101));
}

TEST_F(PlantTest, TheClimateUnitMeasuresTheAirItExchangesAndItsFanCools)
{
    m_cabinet.unit(1, 32)->set("set.fanSpeed1", 0);
    m_cabinet.unit(1, 32)->set("set.fanSpeed2", 0);
    advanceBy(4 * 3600 * 1000);
    const std::int32_t still = value(44, "cluReturnTemp");
    EXPECT_EQ(value(44, "cluSupplyTemp"), still - 1) << "no air through the exchanger: the air itself";
    EXPECT_EQ(value(44, "cluAmbientTemp"), static_cast<std::int32_t>(std::lround(m_cabinet.plant->thermal().ambientC(m_nowMs))));
    ASSERT_TRUE(m_cabinet.unit(1, 44)->set("set.fanSpeed", 100));
    ASSERT_TRUE(m_cabinet.unit(1, 44)->set("cluIntFanSpeed", 100));
    advanceBy(2 * 3600 * 1000);
    EXPECT_LT(value(44, "cluReturnTemp"), still - 5);
    EXPECT_LT(value(44, "cluSupplyTemp"), value(44, "cluReturnTemp") - 3);
    EXPECT_EQ(value(44, "cluExtFanSpeed"), 100);
}

TEST_F(PlantTest, PlantEventsComeThroughTheControlSignalsAndARefusalNamesTheReason)
{
    A4ciSimServer server(m_cabinet);
    const auto event = [&server](simctl::FaultKind kind, std::int32_t value, std::uint64_t nowMs) {
        simctl::SIM_FAULT_REQ_S request{};
        request.sigNo = simctl::SIM_FAULT_REQ;
        request.kind = static_cast<std::uint16_t>(kind);
        request.value = value;
        const auto answers = server.handle(std::string(reinterpret_cast<const char*>(&request), sizeof request), 1, nowMs);
        return answers.empty() ? 0U : ose::loadBe32(answers.front().bytes.data());
    };
    EXPECT_EQ(event(simctl::FaultKind::MainsLoss, 0, 1000), simctl::SIM_FAULT_CFM);
    advanceBy(10 * 1000);
    EXPECT_EQ(value(49, "inputVoltageLow"), 1);
    const std::int32_t beforeCellFault = value(64, "batteryVoltage");
    EXPECT_EQ(event(simctl::FaultKind::BatteryCellFault, 0, m_nowMs), simctl::SIM_FAULT_CFM);
    advanceBy(5 * 1000);
    // A cell less: the string is weaker, its voltage falls by some 2 V more.
    EXPECT_GT(value(64, "batteryVoltage"), beforeCellFault + 150);
    EXPECT_EQ(event(simctl::FaultKind::MainsReturn, 0, m_nowMs), simctl::SIM_FAULT_CFM);
    for (const std::int32_t noFan : {0, 5, 9, 10, 15, 50, -21})
        EXPECT_EQ(event(simctl::FaultKind::FanFailure, noFan, m_nowMs), simctl::SIM_FAULT_REJ) << noFan;
    // A failed fan is reported with its group (group 1 in bit 0); a blocked
    // one is not, and a repair ends both.
    EXPECT_EQ(event(simctl::FaultKind::FanFailure, 23, m_nowMs), simctl::SIM_FAULT_CFM);
    EXPECT_EQ(event(simctl::FaultKind::FanBlocked, 1, m_nowMs), simctl::SIM_FAULT_CFM);
    advanceBy(1000);
    EXPECT_EQ(value(32, "fanGroupFailure"), 0x2);
    EXPECT_EQ(m_cabinet.plant->thermal().fan(0, 3), FanState::Blocked);
    EXPECT_EQ(event(simctl::FaultKind::FanRepair, 23, m_nowMs), simctl::SIM_FAULT_CFM);
    EXPECT_EQ(event(simctl::FaultKind::FanRepair, 1, m_nowMs), simctl::SIM_FAULT_CFM);
    advanceBy(1000);
    EXPECT_EQ(value(32, "fanGroupFailure"), 0);
    EXPECT_EQ(m_cabinet.plant->thermal().fan(0, 3), FanState::Working);
    EXPECT_EQ(event(simctl::FaultKind::Ambient, -10, m_nowMs), simctl::SIM_FAULT_CFM);
    EXPECT_DOUBLE_EQ(m_cabinet.plant->thermal().ambientC(0) + 0.0, -10.0 - 8.0 * 0.5);

    SimCabinet noPlant;
    A4ciSimServer plain(noPlant);
    simctl::SIM_FAULT_REQ_S request{};
    request.sigNo = simctl::SIM_FAULT_REQ;
    request.kind = static_cast<std::uint16_t>(simctl::FaultKind::MainsLoss);
    const auto answers = plain.handle(std::string(reinterpret_cast<const char*>(&request), sizeof request), 1, 0);
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_EQ(ose::loadBe32(answers.front().bytes.data()), simctl::SIM_FAULT_REJ);
}

} // namespace
