// The regulation arithmetic pass by pass, in single precision: limits and
// the smoothing filter, the shared integral term, sensors that go old,
// invalid or abnormal, and the external fans' start, stop, line and ramp.

#include "climate/TemperatureRegulator.h"

#include "climate/ClimateConfigurationIf.h"
#include "climate/ClimateRegulationIf.h"
#include "climate/TempSensorList.h"
#include "frame/FuncType.h"
#include "frame/testSupport/TraceCapture.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// The manager's two sides: configuration in, fan speeds and demands out.
class Climate : public ClimateConfigurationIf, public ClimateRegulationIf {
public:
    Climate()
    {
        cfg.valid = true;
        cfg.flowFactor = 100;
        cfg.nominalFanSpeed = 50;
        cfg.basicFanSpeed = 1;
        cfg.minimumExternalFanSpeed = 20;
        cfg.extFanSpeedFault = 77;
        cfg.climateControlMode = 0;
    }
    const ClimateCfg& getClimateCfg() override { return cfg; }
    TempSensorList& getTempSensorList() override { return sensors; }
    void getMaxAirflowDemand(float* demand) override
    {
        if (*demand < secondaryDemand) *demand = secondaryDemand;
    }
    void sendAirflowDemand(float demand) override { sent.push_back(demand); }
    void setFanSpeeds(int internal, int external) override { speeds.push_back({internal, external}); }

    // A new configuration takes effect as the manager applies it.
    void apply(TemperatureRegulator& regulator)
    {
        regulator.useBasicFanSpeed();
        regulator.updateFanParameters();
    }

    ClimateCfg cfg;
    TempSensorList sensors;
    float secondaryDemand = 0.0f;
    std::vector<float> sent;
    std::vector<std::pair<int, int>> speeds;
};

class TemperatureRegulatorTest : public ::testing::Test {
protected:
    TemperatureRegulatorTest() { m_climate.apply(m_regulator); }
    // A PSU sensor with set point 40 degrees, cooling gain -0.5 (K 3) and
    // time constant 10 s.
    void addSensor(std::uint32_t id, std::int32_t setPointTenths = 400)
    {
        m_climate.sensors.addTempSensor(func_type::kPsu, 100, setPointTenths, -50, 100, id, id);
    }
    void addScuSensor(std::uint32_t id) { m_climate.sensors.addTempSensor(func_type::kScu, 0, 400, -50, 100, id, id); }
    // A temperature and its supervision period, as the unit and the timer give them.
    void measure(std::uint32_t id, std::int32_t tenths)
    {
        m_climate.sensors.updateTemperature(id, tenths);
        m_climate.sensors.checkSensorStatus(id);
    }
    // The SCU's temperature counts while it is fresh: between a measurement
    // and the end of its supervision period.
    void measureScu(std::uint32_t id, std::int32_t tenths)
    {
        measure(id, tenths);
        m_climate.sensors.updateTemperature(id, tenths);
    }
    int internalSpeed() const { return m_climate.speeds.back().first; }
    int externalSpeed() const { return m_climate.speeds.back().second; }

    Climate m_climate;
    TemperatureRegulator m_regulator{&m_climate, &m_climate};
};

TEST_F(TemperatureRegulatorTest, TheFlowFactorScalesTheLimitsAndADemandAboveTheMaximumIsCut)
{
    m_climate.cfg.flowFactor = 150;
    m_climate.cfg.nominalFanSpeed = 100;
    m_climate.apply(m_regulator);
    EXPECT_EQ(m_regulator.flowFactor(), 1.5f);
    EXPECT_EQ(m_regulator.nominalAirflow(), 100.0f / 1.5f);
    EXPECT_EQ(m_regulator.maxAirflow(), 100.0f / 1.5f);
    m_climate.secondaryDemand = 100.0f;
    m_regulator.setPreviousAirflow(100.0f);
    m_regulator.regulate();
    EXPECT_EQ(internalSpeed(), 100);
    EXPECT_EQ(m_regulator.maxAirflowDemand(), 100.0f) << "the secondaries' demand is limited after the filter";
}

TEST_F(TemperatureRegulatorTest, TheFilterTakesAFifthOfTheDifferenceEachPassAndRemembersTheUnlimitedValue)
{
    // No sensor: the nominal air flow, 50, each pass.
    const float expected[] = {10.0f, 18.0f, 24.4f, 29.52f};
    const int speeds[] = {10, 18, 24, 30};
    for (std::size_t pass = 0; pass < std::size(expected); ++pass) {
        m_regulator.regulate();
        EXPECT_FLOAT_EQ(m_regulator.previousAirflow(), expected[pass]) << pass;
        EXPECT_EQ(internalSpeed(), speeds[pass]) << pass;
    }
    // Below the basic air flow the output holds at the limit while the
    // filter goes on from its own value.
    m_climate.cfg.basicFanSpeed = 40;
    m_climate.apply(m_regulator);
    m_regulator.regulate();
    EXPECT_FLOAT_EQ(m_regulator.previousAirflow(), 33.616f);
    EXPECT_EQ(internalSpeed(), 40);
    for (int pass = 0; pass < 3; ++pass) m_regulator.regulate();
    EXPECT_GT(m_regulator.previousAirflow(), 40.0f);
    EXPECT_EQ(internalSpeed(), static_cast<int>(m_regulator.previousAirflow() + 0.5f));
}

TEST_F(TemperatureRegulatorTest, AWarmSensorDemandsProportionalPlusTheSharedIntegral)
{
    addSensor(1);
    measure(1, 450);
    m_regulator.regulate();
    // dev 5: integral 1 + (5 * KI) * 5 with KI (4/3)/5; demand 5 * K(3) + integral.
    const float ki = (4.0f / 3.0f) / 5.0f;
    const float integral = 1.0f + (5.0f * ki) * 5.0f;
    EXPECT_FLOAT_EQ(m_regulator.integralPressure(), integral);
    EXPECT_FLOAT_EQ(m_regulator.maxAirflowDemand(), 15.0f + integral);
    EXPECT_EQ(m_regulator.highestDemandTemp(), 45.0f);
    // The integral goes on from the last pass while the sensor stays warm.
    measure(1, 450);
    m_regulator.regulate();
    EXPECT_FLOAT_EQ(m_regulator.integralPressure(), integral + 5.0f * ki * 5.0f);
    // A cool sensor pulls the integral down to the basic air flow, never below.
    for (int pass = 0; pass < 50; ++pass) {
        measure(1, 200);
        m_regulator.regulate();
    }
    EXPECT_EQ(m_regulator.integralPressure(), m_regulator.basicAirflow());
    EXPECT_EQ(m_regulator.maxAirflowDemand(), m_regulator.basicAirflow());
}

TEST_F(TemperatureRegulatorTest, TheHottestSpotRelativeToItsOwnSetPointDecides)
{
    addSensor(1, 400);
    addSensor(2, 550);
    measure(1, 430);
    measure(2, 560); // warmer, but only 1 degree over its set point
    m_regulator.regulate();
    EXPECT_EQ(m_regulator.highestDemandTemp(), 43.0f);
    // A temperature out of the normal range has no demand but counts as current.
    addSensor(3);
    measure(3, 13000);
    measure(1, 380);
    measure(2, 540);
    m_regulator.regulate();
    EXPECT_NE(m_regulator.maxAirflowDemand(), m_regulator.nominalAirflow());
    // 200 degrees lies within the range and counts as normal.
    measure(3, 2000);
    m_regulator.regulate();
    EXPECT_EQ(m_regulator.highestDemandTemp(), 200.0f);
}

TEST_F(TemperatureRegulatorTest, SilentSensorsAskForThePreviousThenTheNominalAirflow)
{
    TraceCapture trace("supSysCtrlClimate:all");
    addSensor(1);
    addSensor(2);
    measure(1, 450);
    measure(2, 450);
    m_regulator.regulate();
    // Sensor 1 goes silent: for two passes it asks for the highest integral
    // seen before it in the pass, which is none, so the basic air flow.
    m_climate.sensors.checkSensorStatus(1);
    measure(2, 300);
    m_regulator.regulate();
    EXPECT_TRUE(trace.contains("TempSensor on PSU with ID 1 has old temperature. Previous airflow requested."));
    // Both silent, ages 1 and 2 or more: no current sensor, so the nominal air flow at once.
    m_climate.sensors.checkSensorStatus(2);
    m_regulator.regulate();
    EXPECT_EQ(m_regulator.maxAirflowDemand(), m_regulator.nominalAirflow());
    EXPECT_EQ(m_regulator.integralPressure(), m_regulator.nominalAirflow());
    m_regulator.regulate();
    EXPECT_TRUE(trace.contains("TempSensor on PSU with ID 1 has old temperature. Nominal airflow requested."));
}

TEST_F(TemperatureRegulatorTest, OnlyTheLowEightBitsOfTheAgeCount)
{
    addSensor(1);
    measure(1, 450);
    m_climate.sensors.checkSensorStatus(1);
    // 255 passes old; the 256th sees age 0 and regulates on the last temperature.
    for (int pass = 0; pass < 255; ++pass) m_regulator.regulate();
    EXPECT_EQ(m_regulator.maxAirflowDemand(), m_regulator.nominalAirflow());
    m_regulator.regulate();
    EXPECT_EQ(m_climate.sensors.find(1)->age() & 0xFFU, 0u);
    EXPECT_NE(m_regulator.maxAirflowDemand(), m_regulator.nominalAirflow());
}

TEST_F(TemperatureRegulatorTest, AnInvalidOrUnavailableScuTemperatureRunsTheExternalFansAtTheFaultSpeed)
{
    m_climate.cfg.fanGroup2Control = ClimateCfg::kExternalFanGroup;
    addScuSensor(9);
    measureScu(9, 300);
    m_regulator.regulate();
    EXPECT_EQ(m_regulator.scuTemperature(), 30.0f);
    EXPECT_NE(externalSpeed(), 77);
    m_climate.sensors.setSensorFault(9);
    m_climate.sensors.updateTemperature(9, 300);
    m_regulator.regulate();
    EXPECT_EQ(m_regulator.scuTemperature(), TemperatureRegulator::kScuInvalid);
    EXPECT_EQ(externalSpeed(), 77);
    m_climate.sensors.clearSensorFault(9);
    measureScu(9, 9990);
    m_regulator.regulate();
    EXPECT_EQ(externalSpeed(), 77);
    // Without external fan groups there is no external speed at all.
    m_climate.cfg.fanGroup2Control = ClimateCfg::kInternalFanGroup;
    measureScu(9, 300);
    m_regulator.regulate();
    EXPECT_EQ(externalSpeed(), 0);
}

TEST_F(TemperatureRegulatorTest, ExternalFansStartOnAirflowOrScuTemperatureAndFollowTheirLine)
{
    m_climate.cfg.fanGroup3Control = ClimateCfg::kExternalFanGroup;
    m_climate.cfg.basicFanSpeed = 20;
    m_climate.cfg.nominalFanSpeed = 20; // no hot spot: the air flow stays at 20
    m_climate.cfg.hysteresis = 30;
    m_climate.cfg.externalFanStartTemp = 35;
    m_climate.cfg.externalFanStopTemp = 25;
    m_climate.apply(m_regulator);
    addScuSensor(9);
    // Cool SCU and the air flow at its basic 20: the external fans stay off.
    measureScu(9, 300);
    m_regulator.setPreviousAirflow(20.0f);
    m_regulator.regulate();
    EXPECT_EQ(externalSpeed(), 0);
    // A warm SCU starts them at the internal air flow (starting point 0).
    measureScu(9, 360);
    m_regulator.regulate();
    EXPECT_EQ(externalSpeed(), internalSpeed());
    // They hold their air flow until the air flow is low and the SCU cool.
    const float running = m_regulator.externalAirflow();
    measureScu(9, 300);
    m_regulator.regulate();
    EXPECT_EQ(m_regulator.externalAirflow(), running);
    measureScu(9, 250);
    m_regulator.regulate();
    EXPECT_EQ(externalSpeed(), 0);

    // With a starting point the external fans run on a line that ends at
    // full speed with the internal ones: 20 at its minimum below.
    m_climate.cfg.startingPoint = 60;
    measureScu(9, 360);
    m_regulator.regulate();
    EXPECT_EQ(externalSpeed(), 20);
    m_climate.secondaryDemand = 100.0f;
    m_regulator.setPreviousAirflow(100.0f);
    m_regulator.regulate();
    EXPECT_EQ(internalSpeed(), 100);
    EXPECT_EQ(externalSpeed(), 100);
}

TEST_F(TemperatureRegulatorTest, InControlModeOneTheScuTemperatureRampsTheExternalFans)
{
    TraceCapture trace("supSysCtrlClimate:all");
    m_climate.cfg.fanGroup1Control = ClimateCfg::kExternalFanGroup;
    m_climate.cfg.climateControlMode = 1;
    m_climate.cfg.basicFanSpeed = 20;
    m_climate.cfg.nominalFanSpeed = 20;
    m_climate.cfg.hysteresis = 90; // the air flow alone never starts them
    m_climate.cfg.externalFanStartTemp = 30;
    m_climate.cfg.externalFanStopTemp = 25;
    m_climate.cfg.externalFanRampUpTemp = 35;
    m_climate.cfg.externalFanMaxTemp = 45;
    m_climate.apply(m_regulator);
    addScuSensor(9);
    measureScu(9, 300);
    m_regulator.regulate();
    // Started by the start rule of the internal air flow and held at the
    // minimum by the ramp's rule between stop and ramp-up.
    EXPECT_TRUE(trace.contains("External air flow demand is set by SCU temp"));
    measureScu(9, 320);
    m_regulator.regulate();
    EXPECT_EQ(m_regulator.externalAirflow(), 20.0f);
    // Halfway up the ramp the target is 60: a fifth of the way from 20 per pass.
    measureScu(9, 400);
    m_regulator.regulate();
    EXPECT_FLOAT_EQ(m_regulator.externalAirflow(), 20.0f + (60.0f - 20.0f) / 5.0f);
    measureScu(9, 460);
    m_regulator.regulate();
    EXPECT_EQ(externalSpeed(), 100);
    measureScu(9, 250);
    m_regulator.regulate();
    EXPECT_EQ(externalSpeed(), 0);
}

TEST_F(TemperatureRegulatorTest, ARampWithoutWidthAndAStartingPointOf100GiveNumbersNotInfinities)
{
    m_climate.cfg.fanGroup1Control = ClimateCfg::kExternalFanGroup;
    m_climate.cfg.climateControlMode = 1;
    m_climate.cfg.basicFanSpeed = 20;
    m_climate.cfg.nominalFanSpeed = 20;
    m_climate.cfg.externalFanStartTemp = 30;
    m_climate.cfg.externalFanStopTemp = 25;
    m_climate.cfg.externalFanRampUpTemp = 40;
    m_climate.cfg.externalFanMaxTemp = 40;
    m_climate.cfg.startingPoint = 100;
    m_climate.apply(m_regulator);
    addScuSensor(9);
    measureScu(9, 300);
    m_regulator.regulate();
    ASSERT_EQ(m_regulator.externalAirflow(), 20.0f);
    // At the ramp's one temperature the target is full flow, a fifth of the
    // way per pass; the line of a starting point of 100 is that of 99.
    measureScu(9, 400);
    m_regulator.regulate();
    EXPECT_FLOAT_EQ(m_regulator.externalAirflow(), 20.0f + (100.0f - 20.0f) / 5.0f);
    // At full internal air flow the line reaches full speed; with a slope of
    // 80 / 0 it would be infinity times nothing.
    m_climate.secondaryDemand = 100.0f;
    m_regulator.setPreviousAirflow(100.0f);
    measureScu(9, 300);
    m_regulator.regulate();
    EXPECT_EQ(internalSpeed(), 100);
    EXPECT_EQ(externalSpeed(), 100);
}

TEST_F(TemperatureRegulatorTest, ASecondaryNodeOnlyReportsItsDemand)
{
    addSensor(1);
    measure(1, 450);
    m_regulator.reportAirflowDemand();
    ASSERT_EQ(m_climate.sent.size(), 1u);
    EXPECT_EQ(m_climate.sent[0], m_regulator.maxAirflowDemand());
    EXPECT_TRUE(m_climate.speeds.empty());
}

TEST_F(TemperatureRegulatorTest, TheExternalThresholdsGuardAgainstAZeroFlowFactorAndAStartingPointOf100)
{
    TraceCapture trace("supSysCtrlClimate:all");
    m_climate.cfg.hysteresis = 10;
    m_climate.cfg.basicFanSpeed = 20;
    m_climate.cfg.flowFactor = 200;
    m_climate.apply(m_regulator);
    float start = 0.0f;
    float stop = 0.0f;
    std::int32_t slope = 0;
    m_regulator.getExternalFanThresholds(&start, &stop, &slope);
    EXPECT_EQ(start, 15.0f);
    EXPECT_EQ(stop, 11.0f);
    EXPECT_EQ(slope, 0) << "(100 - 20) / 100 in whole numbers";
    m_climate.cfg.startingPoint = 100;
    m_climate.cfg.minimumExternalFanSpeed = 40;
    m_regulator.getExternalFanThresholds(&start, &stop, &slope);
    EXPECT_EQ(slope, 60);
    EXPECT_TRUE(trace.contains("Starting point out of range (= 100)."));
    m_climate.cfg.flowFactor = 0;
    m_climate.cfg.valid = false;
    m_regulator.getExternalFanThresholds(&start, &stop, &slope);
    EXPECT_EQ(start, 3000.0f);
    EXPECT_TRUE(trace.contains("No cabinet available"));
    m_regulator.updateFanParameters();
    EXPECT_EQ(m_regulator.flowFactor(), 1.0f);
    EXPECT_TRUE(trace.contains("updateFanParameters: Climate control not possible, flow factor set to 0"));
}

} // namespace
