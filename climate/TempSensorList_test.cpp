// Temperature sensors: the gains each derives in single precision, its
// supervision and age, and a client's measurements spread over its sensors.

#include "climate/TempSensorList.h"

#include "frame/FuncType.h"
#include "frame/testSupport/TraceCapture.h"

#include <gtest/gtest.h>

#include <bit>
#include <vector>

namespace {

TEST(TempSensorTest, GainsFollowTheCoolingGainTimeConstantAndPlacementInSinglePrecision)
{
    // A gain of 50 asks for less air when warm; -50 for more.
    TempSensorElement away(400, 50, 100, 100, 1, 1, func_type::kPsu);
    EXPECT_EQ(away.tempChangePressureDrop(), -0.5f);
    EXPECT_EQ(away.ku(), -0.5f);
    EXPECT_EQ(away.k(), -3.0f);
    TempSensorElement warm(400, -50, 100, 100, 2, 1, func_type::kPsu);
    EXPECT_EQ(warm.ku(), 0.5f);
    EXPECT_EQ(warm.k(), 3.0f);
    EXPECT_EQ(warm.timeConstChangePressureDrop(), 10.0f);
    // 4/3 as the float 0x3FAAAAAB over 5.0: 0x3E888889.
    EXPECT_EQ(std::bit_cast<std::uint32_t>(warm.ki()), 0x3E888889U);

    // Half the placement doubles the gains.
    TempSensorElement half(400, -50, 100, 50, 3, 1, func_type::kDu);
    EXPECT_EQ(half.ku(), 0.25f);
    EXPECT_EQ(half.k(), 6.0f);
    // A gain and time constant of 0 are replaced so that nothing divides by zero.
    TempSensorElement zero(400, 0, 0, 100, 4, 1, func_type::kRu);
    EXPECT_EQ(zero.tempChangePressureDrop(), -0.1f);
    EXPECT_EQ(zero.timeConstChangePressureDrop(), 0.1f);
    EXPECT_EQ(zero.k(), 1.5f / -0.1f);
}

TEST(TempSensorTest, PlacementFactorsOutOfRangeBecomeFullAnd101LeavesTheHotSpotAlgorithm)
{
    for (const std::int32_t factor : {0, -5, 150}) {
        TempSensorElement sensor(400, -50, 100, factor, 1, 1, func_type::kCbu);
        EXPECT_EQ(sensor.unitPlacement(), 100.0f) << factor;
    }
    TraceCapture trace("supSysCtrlClimate:all");
    TempSensorElement out(400, -50, 100, 101, 1, 1, func_type::kTx);
    EXPECT_EQ(out.unitPlacement(), 101.0f);
    out.setValid(true);
    EXPECT_FALSE(out.isValid()) << "whatever its temperature";
    EXPECT_TRUE(trace.contains("\tTemp sensor not allowed to participate in hot spot algorithm"));
    // The SCU's sensor keeps its factor and traces nothing of it.
    const std::size_t linesBefore = trace.lines().size();
    TempSensorElement scu(400, -50, 100, 0, 2, 2, func_type::kScu);
    EXPECT_EQ(scu.unitPlacement(), 0.0f);
    EXPECT_EQ(trace.lines().size(), linesBefore);
    EXPECT_EQ(scu.placementIndex(), -1);
    EXPECT_EQ(TempSensorElement(400, -50, 100, 100, 3, 3, func_type::kDu).placementIndex(), 5);
}

TEST(TempSensorTest, ANewSensorHasNoDeviationIsNotValidAndAgesUntilItDelivers)
{
    TempSensorList list;
    list.addTempSensor(func_type::kPsu, 100, 455, -50, 100, 7, 70);
    TempSensorElement* sensor = list.find(7);
    ASSERT_NE(sensor, nullptr);
    EXPECT_EQ(sensor->temperature(), 45.5f);
    EXPECT_EQ(sensor->calcTempDeviation(), 0.0f);
    EXPECT_FALSE(sensor->isValid());
    EXPECT_EQ(sensor->checkAge(), 1u);
    EXPECT_EQ(sensor->checkAge(), 2u);

    list.updateTemperature(7, 501);
    EXPECT_EQ(sensor->temperature(), 50.1f);
    EXPECT_EQ(sensor->checkAge(), 0u);
    // The period ends with a temperature: still valid; the next without one: not.
    EXPECT_TRUE(list.checkSensorStatus(7));
    EXPECT_TRUE(sensor->isValid());
    EXPECT_TRUE(list.checkSensorStatus(7));
    EXPECT_FALSE(sensor->isValid());
    // Undefined values change nothing, so the supervision runs out.
    list.updateTemperature(7, TempSensorElement::kUndefinedTenths);
    EXPECT_FALSE(sensor->updated());
    EXPECT_EQ(sensor->temperature(), 50.1f);
    // A fault reported by the unit makes it unusable until cleared.
    list.updateTemperature(7, 480);
    list.setSensorFault(7);
    EXPECT_FALSE(sensor->isValid());
    list.clearSensorFault(7);
    EXPECT_TRUE(sensor->isValid());
    EXPECT_FALSE(list.checkSensorStatus(8));
}

TEST(TempSensorTest, AClientsMeasurementGoesToItsSensorsInOrderAndAWrongCountIsReported)
{
    TraceCapture trace("supSysCtrlClimate:all");
    TempSensorList list;
    list.addTempSensor(func_type::kDu, 100, 500, -50, 100, 1, 9);
    list.addTempSensor(func_type::kRu, 100, 500, -50, 100, 2, 8);
    list.addTempSensor(func_type::kDu, 100, 500, -50, 100, 3, 9);
    EXPECT_TRUE(trace.contains("TempSensor on DU, ID 1, max temp desired = 50.00[C]."));

    const std::vector<std::int32_t> two{410, 420};
    EXPECT_TRUE(list.updateTemperatures(9, two));
    EXPECT_EQ(list.find(1)->temperature(), 41.0f);
    EXPECT_EQ(list.find(3)->temperature(), 42.0f);
    EXPECT_FALSE(list.find(2)->updated());
    const std::vector<std::int32_t> one{430};
    EXPECT_FALSE(list.updateTemperatures(9, one));
    EXPECT_EQ(list.find(1)->temperature(), 43.0f);
    EXPECT_EQ(list.find(3)->temperature(), 42.0f);
    const std::vector<std::int32_t> three{440, 450, 460};
    EXPECT_FALSE(list.updateTemperatures(9, three));
    EXPECT_EQ(list.find(3)->temperature(), 45.0f);

    list.updateTemperature(5, 300);
    EXPECT_TRUE(trace.contains("TempSensor with ID 5 not found. Temperature not updated."));
    list.removeTempSensorsOfClient(9);
    EXPECT_EQ(list.count(), 1u);
    EXPECT_TRUE(trace.contains("TempSensor on DU, ID 3 removed."));
    list.removeTempSensor(2);
    EXPECT_EQ(list.count(), 0u);
}

TEST(TempSensorTest, PlacementFactorsFromTheCabinetGoByTheUnitsKind)
{
    TraceCapture trace("supSysCtrlClimate:all");
    TempSensorList list;
    list.addTempSensor(func_type::kPsu, 0, 500, -50, 100, 1, 1);
    list.addTempSensor(func_type::kRax, 0, 500, -50, 100, 2, 1);
    list.addTempSensor(func_type::kBfu, 0, 500, -50, 100, 3, 1);
    list.updatePlacementFactors(10, 20, 30, 40, 50, 101);
    EXPECT_EQ(list.find(1)->unitPlacement(), 20.0f);
    EXPECT_EQ(list.find(2)->unitPlacement(), 30.0f);
    EXPECT_EQ(list.find(3)->unitPlacement(), 100.0f) << "an unknown unit takes 0, which becomes 100";
    EXPECT_EQ(trace.count("Temperature sensor defined for unknown HW unit"), 1u);
}

} // namespace
