#pragma once
// The wrapper of a power supply unit.

#include "hwu/HWU_PS.h"
#include "hwu/HwuWrapper.h"
#include "hwu/PsuIf.h"

class Psu : public HwuWrapper<PsuIf, HWU_PS> {
public:
    Psu(const HwuUnitArgs& args, ClimateCtrlIf* climate) : HwuWrapper(args, climate) {}

    bool isInputVoltageOk() const override { return m_pUnit->isInputVoltageOk(); }
    float getOutputVoltage() const override { return m_pUnit->getOutputVoltage(); }
    float getLoad() const override { return m_pUnit->getLoad(); }
    bool setOutputVoltage(float volts) override { return m_pUnit->setOutputVoltage(volts); }
    float getOutputCurrent() const override { return m_pUnit->getOutputCurrent(); }
    float getUnitTemperature() const override { return m_pUnit->getUnitTemperature(); }
    float getSharingOff() const override { return m_pUnit->getSharingOff(); }
    void setSharingOff(float volts) override { m_pUnit->setSharingOff(volts); }
    float getLoadForSharing() const override { return m_pUnit->getLoad(); }
};
