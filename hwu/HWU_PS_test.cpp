// The PSU on the virtual clock through the simulated bus: its sensor, its
// measurements, its status flags as faults, its output voltage.

#include "hwu/HwuUnitFactory.h"
#include "hwu/Psu.h"
#include "hwu/testSupport/UnitSideRecorder.h"

#include "frame/testSupport/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using sim::UnitType;

constexpr FuncId_t kPsu1{func_type::kPsu, 1};

class HwuPsuTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
    }
    sim::SimUnit& plugIn()
    {
        sim::SimUnit& psu = addUnit(UnitType::PSU, 1, 48);
        step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
        return psu;
    }
    PsuIf& psu() { return *dynamic_cast<PsuIf*>(m_pBroker->getHwu(kPsu1)); }

    UnitSideRecorder m_sides;
    HwuUnitFactory m_units{{&m_sides, &m_sides, &m_sides, &m_sides, &m_sides}};
};

TEST_F(HwuPsuTest, AFoundPsuAddsItsHotSpotSensorAndReportsItsMeasurements)
{
    plugIn();
    runNode(6000);
    // The first status reports its clear sensor flag as a change too.
    EXPECT_THAT(m_sides.m_calls, ElementsAre("addSensor 1 450 10 300 -> 7 @4s", "sensorOk 7 @4s"));
    EXPECT_EQ(m_sides.m_lastSensor, 7u);
    EXPECT_EQ(m_sides.m_lastTemperature, 30);
    EXPECT_TRUE(psu().isAvailable());
    EXPECT_FLOAT_EQ(psu().getOutputVoltage(), -54.5F);
    EXPECT_FLOAT_EQ(psu().getOutputCurrent(), 12.0F);
    EXPECT_FLOAT_EQ(psu().getLoad(), 25.0F);
    EXPECT_FLOAT_EQ(psu().getLoadForSharing(), 25.0F);
    EXPECT_FLOAT_EQ(psu().getUnitTemperature(), 30.0F);
    EXPECT_TRUE(psu().isInputVoltageOk());
    // The additional capabilities were asked for, as the unit has them.
    EXPECT_THAT(requestsTo(48), ::testing::Contains("80 @4s"));
}

TEST_F(HwuPsuTest, InputVoltageFlagsRaiseAndCeaseTheirFaults)
{
    sim::SimUnit& unit = plugIn();
    step(6500, [&unit](HWU_Broker&) { unit.set("inputVoltageHigh", 1); });
    step(8500, [&unit](HWU_Broker&) {
        unit.set("inputVoltageHigh", 0);
        unit.set("inputVoltageLow", 1);
    });
    bool okWhileLow = true;
    step(9500, [&](HWU_Broker&) { okWhileLow = psu().isInputVoltageOk(); });
    runNode(10000);
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 20001 PSU-1 @7s", "cease 20001 PSU-1 @9s",
                                                 "raise 20002 PSU-1 @9s"));
    EXPECT_FALSE(okWhileLow);
}

TEST_F(HwuPsuTest, AFaultyTemperatureSensorCeasesEveryTemperatureFaultAndItsHealingRaisesThemAgain)
{
    sim::SimUnit& unit = plugIn();
    step(6500, [&unit](HWU_Broker&) {
        unit.set("highTempClass1", 1);
        unit.set("lowTempClass2", 1);
    });
    step(8500, [&unit](HWU_Broker&) { unit.set("tempSensorFault", 1); });
    step(10500, [&unit](HWU_Broker&) { unit.set("tempSensorFault", 0); });
    runNode(12000);
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 20006 PSU-1 @7s", "raise 20003 PSU-1 @7s",
                                                 "cease 20006 PSU-1 @9s", "cease 20003 PSU-1 @9s",
                                                 "raise 20006 PSU-1 @11s", "raise 20003 PSU-1 @11s"));
    EXPECT_THAT(m_sides.m_calls, ElementsAre("addSensor 1 450 10 300 -> 7 @4s", "sensorOk 7 @4s",
                                             "sensorFault 7 @9s", "sensorOk 7 @11s"));
}

TEST_F(HwuPsuTest, TheOutputVoltageIsHeldWithinTheLimitsByMagnitude)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    sim::SimUnit& unit = plugIn();
    std::vector<std::int32_t> sent;
    step(5500, [&](HWU_Broker&) {
        for (float volts : {-60.0F, -40.0F, -53.5F, 1.0e9F}) {
            EXPECT_TRUE(psu().setOutputVoltage(volts));
            sent.push_back(*unit.get("set.outputVoltage"));
        }
    });
    runNode(6000);
    EXPECT_EQ(sent, (std::vector<std::int32_t>{-5800, -4500, -5350, -5800}));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5,
                          "Requested output voltage '-6000' is limited to max control voltage '-5800' for 'PSU-1'"),
              1u);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5,
                          "Requested output voltage '-4000' is limited to min control voltage '-4500' for 'PSU-1'"),
              1u);
}

TEST_F(HwuPsuTest, WithoutVoltageControlNothingIsSentAndWithoutLedsTheyStayNotApplicable)
{
    sim::SimUnit& unit = plugIn();
    unit.set("cap.outputVoltageControl", 0);
    unit.set("add.faultLedNotAvailable", 1);
    std::uint32_t faultLedAfterFault = 99;
    step(5500, [&](HWU_Broker&) { EXPECT_TRUE(psu().setOutputVoltage(-53.0F)); });
    step(6500, [&unit](HWU_Broker&) { unit.set("fault", 1); });
    step(7500, [&](HWU_Broker&) { faultLedAfterFault = psu().getFaultLedState(); });
    runNode(8000);
    EXPECT_THAT(requestsTo(48), ::testing::Not(::testing::Contains(::testing::StartsWith("68 "))));
    EXPECT_EQ(faultLedAfterFault, Led::kNotApplicable);
    // A faulty PSU gives no measurements.
    EXPECT_FALSE(psu().isAvailable());
    EXPECT_FLOAT_EQ(psu().getLoad(), 999.0F);
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 21501 PSU-1 @7s"));
}

TEST_F(HwuPsuTest, ASilentPsuGivesUpItsSensorAtTheFirstMissAndGetsItBackWhenFoundAgain)
{
    sim::SimUnit& unit = plugIn();
    step(6500, [&unit](HWU_Broker&) { unit.faults().silent.arm(0); });
    step(40000, [&unit](HWU_Broker&) { unit.faults().clear(); });
    runNode(50000);
    EXPECT_THAT(m_sides.m_calls, ElementsAre("addSensor 1 450 10 300 -> 7 @4s", "sensorOk 7 @4s",
                                             "removeSensor 7 @7s", "addSensor 1 450 10 300 -> 8 @44s",
                                             "sensorOk 8 @44s"));
}

} // namespace
