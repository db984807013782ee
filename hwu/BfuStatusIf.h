#pragma once
// One summary over all BFUs for the power control. "Operational" is a BFU
// that is available; values over no BFU are 999.

class BfuStatusIf {
public:
    virtual ~BfuStatusIf() = default;
    virtual bool anyBfuSlowCharging() = 0;
    virtual bool anyBfuOperational() = 0;
    virtual bool allBfusOperational() = 0;
    virtual bool allTempSensorsOk() = 0;
    virtual float getBatteryCurrent() = 0;
    virtual float getLowestCurrent() = 0;
    virtual float getHighestCurrent() = 0;
    virtual float getAverageTemperature() = 0;
    virtual float getLowestTemperature() = 0;
    virtual float getHighestTemperature() = 0;
    virtual bool anyBfuConnected() = 0;
    virtual bool allBfusConnected() = 0;
    virtual bool anyBatteryPresent() = 0;
    virtual float getBatteryVoltage() = 0;
    virtual float getLowestBatteryVoltage() = 0;
    virtual bool isChargeCurrentHigh(float limit, float* result) = 0;
    virtual bool anyHwFault() = 0;
    virtual bool anyMainLoadDisconnected() = 0;
    virtual bool anyBatteryOverTemperature() = 0;
    virtual bool anyCircuitBreakerFault() = 0;
    virtual bool anyExtFlag12Clear() = 0;
    virtual bool isBatteryVoltageBelowLimits() = 0;
    virtual bool allBfusHaveVoltageConnect() = 0;
    virtual bool isDischargeOverload() = 0;
};
