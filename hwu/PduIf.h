#pragma once
// A power distribution unit as the power control sees it: the system
// voltage, its limits, and the e-fuses it may open and close.

#include "frame/Observer.h"
#include "hwu/HwuStatusIf.h"

#include <cstdint>

class PduIf : public HwuStatusIf {
public:
    virtual bool hasCapabilities() const = 0;
    virtual std::int16_t getOvervoltageRaiseMin() const = 0;
    virtual std::int16_t getOvervoltageRaiseMax() const = 0;
    virtual std::int16_t getOvervoltageCeaseMin() const = 0;
    virtual std::int16_t getOvervoltageCeaseMax() const = 0;
    virtual std::int16_t getUndervoltageRaiseMin() const = 0;
    virtual std::int16_t getUndervoltageRaiseMax() const = 0;
    virtual std::int16_t getUndervoltageCeaseMin() const = 0;
    virtual std::int16_t getUndervoltageCeaseMax() const = 0;
    virtual bool isVoltageHigh() const = 0;
    virtual bool isVoltageLow() const = 0;
    virtual bool isFaulty() const = 0;
    virtual bool subscribeStatus(std::uint32_t id, Observer* observer) = 0;
    virtual bool unsubscribeStatus(std::uint32_t id, Observer* observer) = 0;
    virtual float getSystemVoltage() const = 0;
    virtual bool setLimits(std::int16_t overvoltageRaise, std::int16_t overvoltageCease,
                           std::int16_t undervoltageRaise, std::int16_t undervoltageCease) = 0;
    virtual bool openEfuse() = 0;
    virtual void closeEfuses() = 0;
    virtual std::uint32_t getPowerDistrFaultIndicator() = 0;
    virtual std::uint32_t getEfuseIndicator(std::uint32_t number) const = 0;
};
