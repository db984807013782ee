#include "sim/ThermalModel.h"

#include <gtest/gtest.h>

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
    model.setFanFailed(1, true);
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

TEST(ThermalModelTest, TheAmbientCurveIsColdestAtFourAndWarmestAtSixteen)
{
    ThermalParameters parameters;
    parameters.ambientSwingC = 8.0;
    ThermalModel model(parameters);
    const auto at = [](int hour) { return static_cast<std::uint64_t>(hour) * 3600 * 1000; };
    EXPECT_NEAR(model.ambientC(at(4)), 12.0, 1e-9);
    EXPECT_NEAR(model.ambientC(at(16)), 28.0, 1e-9);
    EXPECT_NEAR(model.ambientC(at(28)), 12.0, 1e-9);
}

} // namespace
