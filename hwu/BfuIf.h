#pragma once
// A battery fuse unit as the power control sees it. Measurements read while
// the unit gave none are 999; additional capabilities not read are 0.

#include "frame/Observer.h"
#include "hwu/HwuStatusIf.h"

#include <cstdint>

class BfuIf : public HwuStatusIf {
public:
    virtual bool isFaulty() const = 0;
    virtual bool isMainLoadDisconnected() const = 0;
    virtual bool isPriorityLoadDisconnected() const = 0;
    virtual bool isTempSensorFaulty() const = 0;
    virtual bool isSlowCharging() const = 0;
    virtual bool isBatteryConnected() const = 0;
    virtual bool isBatteryPresent() const = 0;
    virtual bool isBatteryOverTemperature() const = 0;
    virtual bool isTemperatureFault() const = 0;
    virtual bool isCircuitBreakerFault() const = 0;
    virtual bool isExtFlag12Clear() const = 0;
    virtual std::int16_t getMainLoadUvMin() const = 0;
    virtual std::int16_t getMainLoadUvMax() const = 0;
    virtual std::int16_t getPrioLoadUvMin() const = 0;
    virtual std::int16_t getPrioLoadUvMax() const = 0;
    virtual std::int16_t getUvCeaseMin() const = 0;
    virtual std::int16_t getUvCeaseMax() const = 0;
    virtual std::int8_t getDisconnectTempMin() const = 0;
    virtual std::int8_t getDisconnectTempMax() const = 0;
    virtual std::int8_t getCeaseTempMin() const = 0;
    virtual std::int8_t getCeaseTempMax() const = 0;
    virtual float getCurrentLimit() const = 0;
    virtual std::int16_t getVoltageLimit() const = 0;
    virtual bool hasVoltageConnect() const = 0;
    virtual bool hasLoadControl() const = 0;
    virtual float getBatteryVoltage() const = 0;
    virtual float getBatteryCurrent() const = 0;
    virtual float getSystemVoltage() const = 0;
    virtual float getBatteryTemperature() const = 0;
    virtual bool setControl(bool main, bool priority) = 0;
    virtual bool setConfig(std::int16_t mainLoadUv, std::int16_t prioLoadUv, std::int16_t uvCease,
                           std::int8_t disconnectTemp, std::int8_t ceaseTemp) = 0;
    virtual bool subscribeStatus(std::uint32_t id, Observer* observer) = 0;
    virtual bool unsubscribeStatus(std::uint32_t id, Observer* observer) = 0;
    virtual std::uint32_t getBatteryFaultIndicator() = 0;
};
