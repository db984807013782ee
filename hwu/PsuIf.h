#pragma once
// A power supply unit as the power control sees it. Values read while the
// unit gave no measurement are 999.

#include "hwu/HwuStatusIf.h"

class PsuIf : public HwuStatusIf {
public:
    virtual bool isInputVoltageOk() const = 0;
    virtual float getOutputVoltage() const = 0;
    virtual float getLoad() const = 0;
    virtual bool setOutputVoltage(float volts) = 0;
    virtual float getOutputCurrent() const = 0;
    virtual float getUnitTemperature() const = 0;
    virtual float getSharingOff() const = 0;
    virtual void setSharingOff(float volts) = 0;
    virtual float getLoadForSharing() const = 0;
};
