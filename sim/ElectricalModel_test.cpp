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

TEST(ElectricalModelTest, TheLoadIsDisconnectedAtItsThresholdAndConnectedWhenMainsHoldsTheBusAgain)
{
    BatteryParameters battery;
    battery.stateOfCharge = 0.1;
    ElectricalParameters parameters;
    ElectricalModel model(parameters, battery);
    model.addPsu(PsuParameters{});
    model.setMains(false);
    double lastV = 0.0;
    int seconds = 0;
    while (!model.loadDisconnected() && seconds < 4 * 3600) {
        lastV = model.busV();
        model.step(1.0);
        ++seconds;
    }
    ASSERT_TRUE(model.loadDisconnected());
    // 1.2 kW at some 26 A from 10 Ah (of 100) until the exhausted
    // battery's knee, less its I R, meets the threshold: near 3 % left. It
    // disconnected in the step in which the bus fell below the threshold.
    EXPECT_GT(seconds, 12 * 60);
    EXPECT_LT(seconds, 20 * 60);
    EXPECT_GE(lastV, parameters.disconnectV);
    EXPECT_NEAR(model.stateOfCharge(), 0.03, 0.01) << "the disconnect keeps a remnant in the battery";
    EXPECT_NEAR(model.ampHoursOut(), (0.1 - model.stateOfCharge()) * battery.capacityAh, 1e-6);
    model.step(1.0);
    EXPECT_DOUBLE_EQ(model.loadCurrentA(), 0.0);
    EXPECT_NEAR(model.busV(), model.openCircuitV(), 1e-3) << "the battery rests on the bus";
    EXPECT_LT(model.busV(), parameters.reconnectV);
    run(model, 3600);
    EXPECT_TRUE(model.loadDisconnected()) << "a resting battery does not reconnect the load";
    // Mains back: the one PSU at its limit charges the empty battery and the
    // bus rises with the battery until it reaches the node's reconnect
    // threshold, within minutes.
    model.setDisconnect(44.0, 48.5);
    model.setMains(true);
    run(model, 2);
    EXPECT_TRUE(model.loadDisconnected());
    // The PSU walks in over 10 s: two seconds give a fifth of its limit.
    EXPECT_NEAR(model.psuCurrentA(0), 0.2 * PsuParameters{}.currentLimitA, 1e-6);
    run(model, 10);
    EXPECT_NEAR(model.psuCurrentA(0), PsuParameters{}.currentLimitA, 1e-6);
    seconds = 0;
    while (model.loadDisconnected() && seconds < 3600) {
        model.step(1.0);
        ++seconds;
    }
    EXPECT_FALSE(model.loadDisconnected());
    EXPECT_GT(seconds, 60);
    EXPECT_LT(seconds, 20 * 60);
    EXPECT_GE(model.busV(), 48.5 - 1.0) << "the load's current pulls the bus back a little";
    EXPECT_TRUE(model.contactorClosed());
    // The battery takes what the PSU has left and holds the bus between its
    // own voltage and the set point.
    run(model, 2);
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
