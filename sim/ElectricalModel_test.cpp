#include "sim/ElectricalModel.h"

#include <gtest/gtest.h>

namespace {

using sim::BatteryParameters;
using sim::ElectricalModel;
using sim::ElectricalParameters;
using sim::PsuParameters;

void run(ElectricalModel& model, int seconds)
{
    for (int second = 0; second < seconds; ++second) model.step(1.0);
}

TEST(ElectricalModelTest, TheChargeThatGoesInIsStoredWithItsEfficiencyAndTheChargeThatComesOutIsTaken)
{
    BatteryParameters battery;
    battery.stateOfCharge = 0.5;
    ElectricalModel model(ElectricalParameters{}, battery);
    model.addPsu(PsuParameters{});
    model.addPsu(PsuParameters{});
    // Twenty minutes at the PSUs' limit: well short of full.
    run(model, 20 * 60);
    const double charged = model.stateOfCharge();
    EXPECT_GT(model.batteryCurrentA(), 0.0) << "charging is positive";
    EXPECT_GT(charged, 0.5);
    EXPECT_NEAR(charged - 0.5, model.ampHoursIn() * battery.chargeEfficiency / battery.capacityAh, 1e-9);
    EXPECT_DOUBLE_EQ(model.ampHoursOut(), 0.0);

    model.setMains(false);
    run(model, 3600);
    EXPECT_LT(model.batteryCurrentA(), 0.0) << "discharging is negative";
    EXPECT_NEAR(charged - model.stateOfCharge(), model.ampHoursOut() / battery.capacityAh, 1e-9);
    // An hour of 1.2 kW near 50 V is some 24 Ah.
    EXPECT_GT(model.ampHoursOut(), 20.0);
    EXPECT_LT(model.ampHoursOut(), 30.0);
}

TEST(ElectricalModelTest, WithoutMainsThePsusGiveNothingAndTheBatteryCarriesTheLoadBehindItsResistance)
{
    BatteryParameters battery;
    battery.stateOfCharge = 0.8;
    ElectricalParameters parameters;
    parameters.loadW = 2000.0;
    ElectricalModel model(parameters, battery);
    const auto psu = model.addPsu(PsuParameters{});
    run(model, 10);
    EXPECT_GT(model.psuCurrentA(psu), 0.0);
    model.setMains(false);
    model.step(1.0);
    EXPECT_DOUBLE_EQ(model.psuCurrentA(psu), 0.0);
    const double volts = model.busV();
    const double current = parameters.loadW / volts;
    EXPECT_NEAR(-model.batteryCurrentA(), current, 1e-3);
    EXPECT_NEAR(volts, model.openCircuitV() - current * battery.internalOhm, 1e-3);
    EXPECT_LT(volts, model.openCircuitV());
}

TEST(ElectricalModelTest, TheContactorOpensAtItsThresholdAndClosesWhenMainsHoldsTheBusAgain)
{
    BatteryParameters battery;
    battery.stateOfCharge = 0.1;
    ElectricalParameters parameters;
    parameters.loadW = 5000.0;
    ElectricalModel model(parameters, battery);
    model.addPsu(PsuParameters{});
    model.setMains(false);
    double lastV = 0.0;
    int seconds = 0;
    while (model.contactorClosed() && seconds < 4 * 3600) {
        lastV = model.busV();
        model.step(1.0);
        ++seconds;
    }
    ASSERT_FALSE(model.contactorClosed());
    // It opened in the step in which the bus fell below the threshold.
    EXPECT_GE(lastV, parameters.disconnectV);
    model.step(1.0);
    EXPECT_DOUBLE_EQ(model.busV(), 0.0) << "nothing carries the load";
    // Mains back, the load shed to what one PSU carries.
    model.setLoadW(1200.0);
    model.setMains(true);
    run(model, 2);
    EXPECT_TRUE(model.contactorClosed());
    // The empty battery takes what the PSU has left and holds the bus
    // between its own voltage and the set point.
    EXPECT_GT(model.batteryCurrentA(), 0.0);
    EXPECT_GT(model.busV(), model.openCircuitV());
    EXPECT_LT(model.busV(), PsuParameters{}.setPointV);
}

TEST(ElectricalModelTest, PsusShareByTheirSetPointsWithinTheirLimitsAndTheSameStepsGiveTheSameNumbers)
{
    ElectricalParameters parameters;
    parameters.loadW = 4000.0;
    BatteryParameters battery;
    ElectricalModel first(parameters, battery);
    ElectricalModel second(parameters, battery);
    for (ElectricalModel* model : {&first, &second}) {
        model->addPsu(PsuParameters{54.5, 0.02, 30.0, 0.92});
        model->addPsu(PsuParameters{54.0, 0.02, 30.0, 0.92});
        run(*model, 100);
    }
    EXPECT_EQ(first.busV(), second.busV());
    EXPECT_GE(first.psuCurrentA(0), first.psuCurrentA(1));
    EXPECT_LE(first.psuCurrentA(0), 30.0);
    EXPECT_GT(first.psuLossW(), 0.0);
}

} // namespace
