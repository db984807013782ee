#include "sim/ThermalModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace {

using sim::ThermalModel;
using sim::ThermalParameters;

TEST(ThermalModelTest, TheCabinetSettlesWhereHeatInAndOutBalance)
{
    ThermalParameters parameters;
    ThermalModel model(parameters);
    model.setFanSpeed(0, 50.0);
    for (int second = 0; second < 4 * 3600; ++second) model.step(1.0, 12ULL * 3600 * 1000);
    // 1.2 kW through the walls and half a fan group's air.
    const double conductance = 15.0 + 0.12 * 0.5 * 1200.0;
    EXPECT_NEAR(model.airC(), 20.0 + 1200.0 / conductance, 0.01);
    // More air, a cooler cabinet; a failed fan moves none.
    model.setFanSpeed(1, 100.0);
    for (int second = 0; second < 4 * 3600; ++second) model.step(1.0, 12ULL * 3600 * 1000);
    EXPECT_NEAR(model.airC(), 20.0 + 1200.0 / (conductance + 0.12 * 1200.0), 0.01);
    for (std::uint32_t fan = 0; fan < ThermalModel::kFansPerGroup; ++fan) model.setFan(1, fan, sim::FanState::Failed);
    EXPECT_NEAR(model.steadyStateC(0), 20.0 + 1200.0 / conductance, 1e-9);
}

TEST(ThermalModelTest, HeatersAndPsuLossesWarmAndAHotSpotFollowsTheAirWithItsLag)
{
    ThermalParameters parameters;
    parameters.radioLoadW = 0.0;
    ThermalModel model(parameters);
    const std::size_t sensor = model.addHotSpot(3.0, 600.0);
    model.setHeater(0, true);
    model.setPsuLossW(100.0);
    model.step(60.0, 0);
    const double airAfterAMinute = model.airC();
    EXPECT_GT(airAfterAMinute, 20.0);
    // The spot lags: after a minute it is still below the air plus offset.
    EXPECT_LT(model.hotSpotC(sensor), airAfterAMinute + 3.0);
    for (int second = 0; second < 12 * 3600; ++second) model.step(1.0, 0);
    EXPECT_NEAR(model.airC(), 20.0 + 600.0 / 15.0, 0.01);
    EXPECT_NEAR(model.hotSpotC(sensor), model.airC() + 3.0, 0.01);
}

TEST(ThermalModelTest, AirFlowFollowsTheFanCurveAndOnlyTheFansThatMoveAir)
{
    ThermalParameters parameters;
    const double curve[5] = {0.0, 0.1, 0.3, 0.7, 1.0};
    std::copy(std::begin(curve), std::end(curve), std::begin(parameters.fanCurve));
    parameters.cluAirflowM3PerS = 0.0;
    ThermalModel model(parameters);
    const double full = 0.12 * 1200.0;
    model.setFanSpeed(0, 50.0);
    EXPECT_NEAR(model.airflowConductanceWPerK(), 0.3 * full, 1e-9);
    model.setFanSpeed(0, 62.5);
    EXPECT_NEAR(model.airflowConductanceWPerK(), 0.5 * full, 1e-9);
    // One of two fans blocked, or failed: half the group's air.
    model.setFanSpeed(0, 100.0);
    model.setFansInGroup(0, 2);
    model.setFan(0, 1, sim::FanState::Blocked);
    EXPECT_NEAR(model.airflowConductanceWPerK(), 0.5 * full, 1e-9);
    model.setFan(0, 0, sim::FanState::Failed);
    EXPECT_NEAR(model.airflowConductanceWPerK(), 0.0, 1e-9);
    // The climate unit's exchanger passes its share of its air.
    ThermalParameters withClu;
    ThermalModel clu(withClu);
    clu.setCluFanSpeed(100.0);
    EXPECT_NEAR(clu.airflowConductanceWPerK(), 0.2 * 0.6 * 1200.0, 1e-9);
}

TEST(ThermalModelTest, TheAmbientCurveIsColdestAtFourAndWarmestAtSixteen)
{
    ThermalParameters parameters;
    parameters.ambientSwingC = 8.0;
    ThermalModel model(parameters);
    const auto at = [](int hour) { return static_cast<std::uint64_t>(hour) * 3600 * 1000; };
    EXPECT_NEAR(model.ambientC(at(4)), 12.0, 1e-9);
    EXPECT_NEAR(model.ambientC(at(16)), 28.0, 1e-9);
    EXPECT_NEAR(model.ambientC(at(28)), 12.0, 1e-9);
    // A hot day moves the curve.
    model.setAmbientC(35.0);
    EXPECT_NEAR(model.ambientC(at(16)), 43.0, 1e-9);
}

TEST(ThermalModelTest, AnAmbientProfileIsFollowedHourByHourAndWrapsAtMidnight)
{
    ThermalParameters parameters;
    for (int hour = 0; hour < 24; ++hour) parameters.ambientProfileC.push_back(10.0 + hour);
    ThermalModel model(parameters);
    EXPECT_NEAR(model.airC(), 10.0, 1e-9) << "the cabinet starts at the ambient air";
    EXPECT_NEAR(model.ambientC(5ULL * 3600 * 1000 + 30 * 60 * 1000), 15.5, 1e-9);
    // 23:30 lies halfway back to the first hour's 10 degrees.
    EXPECT_NEAR(model.ambientC(23ULL * 3600 * 1000 + 30 * 60 * 1000), 21.5, 1e-9);
    EXPECT_NEAR(model.ambientC(24ULL * 3600 * 1000), 10.0, 1e-9);
    model.setAmbientC(0.0); // the profile's mean is 21.5
    EXPECT_NEAR(model.ambientC(0), -11.5, 1e-9);
    // A profile of the wrong length is not used.
    parameters.ambientProfileC.pop_back();
    EXPECT_NEAR(ThermalModel(parameters).ambientC(0), 20.0, 1e-9);
}

} // namespace
