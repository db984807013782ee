// The BFU on the virtual clock through the simulated bus: measurements and
// their news, flags as faults, the plain and extended control paths, and the
// battery fault LED.

#include "hwu/Bfu.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/testSupport/UnitSideRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using sim::UnitType;

constexpr FuncId_t kBfu1{func_type::kBfu, 1};

class HwuBfuTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
    }
    sim::SimUnit& plugIn()
    {
        sim::SimUnit& bfu = addUnit(UnitType::BFU, 1, 64);
        step(100, [](HWU_Broker& broker) { broker.configureHwu(kBfu1, "A1", 0, 0); });
        return bfu;
    }
    BfuIf& bfu() { return *dynamic_cast<BfuIf*>(m_pBroker->getHwu(kBfu1)); }

    UnitSideRecorder m_sides;
    HwuUnitFactory m_units{{&m_sides, &m_sides, &m_sides, &m_sides, &m_sides}};
};

TEST_F(HwuBfuTest, WithItsAdditionalCapabilitiesABfuUsesExtendedStatusAndControlAndLightsItsLed)
{
    sim::SimUnit& unit = plugIn();
    step(5500, [&](HWU_Broker&) { EXPECT_TRUE(bfu().setControl(false, true)); });
    runNode(7000);
    const std::vector<std::string> requests = requestsTo(64);
    EXPECT_THAT(requests, Contains("176 @4s"));
    EXPECT_THAT(requests, Contains("185 @6s"));
    EXPECT_THAT(requests, Not(Contains("118 @5s")));
    EXPECT_THAT(requests, Contains("182 @5s"));
    // Main load off, priority load on: the unit disconnected the main load.
    EXPECT_EQ(*unit.get("mainLoadDisconnected"), 1);
    EXPECT_EQ(*unit.get("priorityLoadDisconnected"), 0);
    EXPECT_FLOAT_EQ(bfu().getCurrentLimit(), 30.0F);
    EXPECT_EQ(bfu().getVoltageLimit(), -5650);
    EXPECT_TRUE(bfu().hasLoadControl());
    // The battery is below its voltage limit: the LED is steady on.
    EXPECT_EQ(bfu().getBatteryFaultIndicator(), Led::kSteadyOn);
    EXPECT_EQ(*unit.get("set.batteryFaultLed"), 2);
    EXPECT_FLOAT_EQ(bfu().getBatteryVoltage(), -54.4F);
    EXPECT_FLOAT_EQ(bfu().getSystemVoltage(), -54.5F);
}

TEST_F(HwuBfuTest, WithoutAdditionalCapabilitiesStatusAndControlTakeThePlainMessages)
{
    sim::SimUnit& unit = plugIn();
    for (const char* id : {"add.id1", "add.id3", "add.id4", "add.id5", "add.id6"}) unit.set(id, 0);
    step(5500, [&](HWU_Broker&) { EXPECT_TRUE(bfu().setControl(false, true)); });
    runNode(7000);
    const std::vector<std::string> requests = requestsTo(64);
    EXPECT_THAT(requests, Contains("124 @6s"));
    EXPECT_THAT(requests, Contains("118 @5s"));
    EXPECT_EQ(*unit.get("set.connect"), 0);
    EXPECT_FLOAT_EQ(bfu().getCurrentLimit(), 135.0F);
    EXPECT_EQ(bfu().getVoltageLimit(), 0);
    EXPECT_EQ(bfu().getBatteryFaultIndicator(), Led::kNotApplicable);
}

TEST_F(HwuBfuTest, OnlyNewFiguresAreNewsToThePowerControl)
{
    sim::SimUnit& unit = plugIn();
    std::uint32_t newsBefore = 0;
    step(6500, [&](HWU_Broker&) {
        newsBefore = m_sides.m_powerNews;
        unit.set("batteryCurrent", -250);
    });
    runNode(9000);
    EXPECT_EQ(newsBefore, 1u);
    EXPECT_EQ(m_sides.m_powerNews, 2u);
    EXPECT_FLOAT_EQ(bfu().getBatteryCurrent(), -25.0F);
}

TEST_F(HwuBfuTest, FlagsRaiseTheBfuFaultsAndAFaultyBfuHasNoMeasurements)
{
    sim::SimUnit& unit = plugIn();
    std::uint32_t ledWithBreakerFault = 0;
    step(5500, [&unit](HWU_Broker&) {
        unit.set("circuitBreakerFault", 1);
        unit.set("batteryVoltage", -5700); // above the limit: the LED follows the flags
    });
    step(6500, [&](HWU_Broker&) {
        ledWithBreakerFault = bfu().getBatteryFaultIndicator();
        unit.set("temperatureFault", 1);
    });
    step(7500, [&unit](HWU_Broker&) { unit.set("fault", 1); });
    runNode(9000);
    EXPECT_EQ(ledWithBreakerFault, Led::kSlowBlink);
    // The faulty unit hides its symptoms from the reporters.
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 7001 BFU-1 @6s", "raise 7002 BFU-1 @7s",
                                                 "cease 7001 BFU-1 @8s", "cease 7002 BFU-1 @8s",
                                                 "raise 21501 BFU-1 @8s"));
    EXPECT_FLOAT_EQ(bfu().getBatteryVoltage(), 999.0F);
    EXPECT_FLOAT_EQ(bfu().getBatteryTemperature(), 999.0F);
    // Not operational: the LED is not available, and nothing is sent for it.
    EXPECT_EQ(bfu().getBatteryFaultIndicator(), Led::kNotAvailable);
}

TEST_F(HwuBfuTest, TheBatteryLedIsSteadyOnlyBelowTheVoltageLimitByMagnitude)
{
    sim::SimUnit& unit = plugIn();
    unit.set("add.batteryVoltageLimit", -4600);
    unit.set("batteryVoltage", -4500);
    std::uint32_t below = 0;
    step(5500, [&](HWU_Broker&) {
        below = bfu().getBatteryFaultIndicator();
        unit.set("batteryVoltage", -4600);
    });
    step(7500, [&unit](HWU_Broker&) { unit.set("flag12", 1); });
    runNode(9000);
    EXPECT_EQ(below, Led::kSteadyOn);
    // At the limit the flags decide: flag 12 with no temperature fault is off.
    EXPECT_EQ(bfu().getBatteryFaultIndicator(), Led::kOff);
    EXPECT_EQ(*unit.get("set.batteryFaultLed"), 0);
}

TEST_F(HwuBfuTest, TheSummaryOverAllBfusCountsOnlyOperationalOnesAndGives999OverNone)
{
    std::vector<float> empty;
    std::vector<bool> emptyFlags;
    step(50, [&](HWU_Broker& broker) {
        BfuStatusIf& all = broker.getBfuStatus();
        empty = {all.getBatteryCurrent(), all.getAverageTemperature(), all.getLowestBatteryVoltage()};
        emptyFlags = {all.allBfusOperational(), all.allBfusConnected(), all.allBfusHaveVoltageConnect()};
    });
    sim::SimUnit& first = plugIn();
    sim::SimUnit& second = addUnit(UnitType::BFU, 1, 65);
    second.set("batteryVoltage", -5300);
    second.set("batteryCurrent", -100);
    second.set("batteryTemperature", 35);
    first.set("batteryCurrent", 50);
    step(150, [](HWU_Broker& broker) { broker.configureHwu(FuncId_t{func_type::kBfu, 2}, "B1", 0, 0); });
    std::vector<float> values;
    std::vector<bool> flags;
    float chargeLimit = 0;
    step(5500, [&](HWU_Broker& broker) {
        BfuStatusIf& all = broker.getBfuStatus();
        values = {all.getBatteryCurrent(), all.getLowestCurrent(), all.getHighestCurrent(),
                  all.getAverageTemperature(), all.getBatteryVoltage(), all.getLowestBatteryVoltage()};
        flags = {all.allBfusOperational(), all.allBfusConnected(), all.isChargeCurrentHigh(4.0F, &chargeLimit),
                 all.isDischargeOverload(), all.isBatteryVoltageBelowLimits()};
    });
    runNode(6000);
    EXPECT_EQ(empty, (std::vector<float>{999.0F, 999.0F, 999.0F}));
    EXPECT_EQ(emptyFlags, (std::vector<bool>{true, false, true}));
    EXPECT_EQ(values, (std::vector<float>{-5.0F, -10.0F, 5.0F, 30.0F, -53.7F, -54.4F}));
    // 5 A charging is above the 4 A asked about; nothing discharges near its
    // limit; -54.4 V is above the -56.5 V limit.
    EXPECT_EQ(flags, (std::vector<bool>{true, true, true, false, false}));
    EXPECT_FLOAT_EQ(chargeLimit, 4.0F);
}

} // namespace
