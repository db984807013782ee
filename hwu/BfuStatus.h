#pragma once
// The summary over all BFUs that the broker holds, read afresh from the
// units at each question.

#include "hwu/BfuIf.h"
#include "hwu/BfuStatusIf.h"

#include <functional>
#include <vector>

class BfuStatus : public BfuStatusIf {
public:
    // Gives the BFUs there are now, in the broker's order.
    using BfuSource = std::function<std::vector<BfuIf*>()>;

    explicit BfuStatus(BfuSource bfus) : m_bfus(std::move(bfus)) {}

    bool anyBfuSlowCharging() override;
    bool anyBfuOperational() override;
    bool allBfusOperational() override;
    bool allTempSensorsOk() override;
    float getBatteryCurrent() override;
    float getLowestCurrent() override;
    float getHighestCurrent() override;
    float getAverageTemperature() override;
    float getLowestTemperature() override;
    float getHighestTemperature() override;
    bool anyBfuConnected() override;
    bool allBfusConnected() override;
    bool anyBatteryPresent() override;
    float getBatteryVoltage() override;
    float getLowestBatteryVoltage() override;
    bool isChargeCurrentHigh(float limit, float* result) override;
    bool anyHwFault() override;
    bool anyMainLoadDisconnected() override;
    bool anyBatteryOverTemperature() override;
    bool anyCircuitBreakerFault() override;
    bool anyExtFlag12Clear() override;
    bool isBatteryVoltageBelowLimits() override;
    bool allBfusHaveVoltageConnect() override;
    bool isDischargeOverload() override;

private:
    static constexpr float kNoValue = 999.0F;
    std::vector<BfuIf*> operational() const;
    std::vector<BfuIf*> withGoodSensor() const;
    std::vector<BfuIf*> withBattery() const;

    BfuSource m_bfus;
};
