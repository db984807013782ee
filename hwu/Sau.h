#pragma once
// The wrapper of a station alarm unit.

#include "hwu/HWU_SA.h"
#include "hwu/HwuWrapper.h"
#include "hwu/SauIf.h"

class Sau : public HwuWrapper<SauIf, HWU_SA> {
public:
    Sau(const HwuUnitArgs& args, AlarmCtrlIf* alarms) : HwuWrapper(args, alarms) {}

    std::uint16_t getAvailablePortsA() const override { return m_pUnit->getAvailablePortsA(); }
    std::uint16_t getAvailablePortsB() const override { return m_pUnit->getAvailablePortsB(); }
};
