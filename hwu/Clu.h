#pragma once
// The wrapper of a climate unit.

#include "hwu/CluIf.h"
#include "hwu/HWU_CL.h"
#include "hwu/HwuWrapper.h"

class Clu : public HwuWrapper<CluIf, HWU_CL> {
public:
    Clu(const HwuUnitArgs& args, ClimateCtrlIf* climate) : HwuWrapper(args, climate) {}

    bool isFaulty() const override { return m_pUnit->isFaulty(); }
    bool isFanAlarmGroup2() const override { return m_pUnit->isFanAlarmGroup2(); }
    bool isFanAlarmGroup4() const override { return m_pUnit->isFanAlarmGroup4(); }
    bool setFanSpeed(std::uint8_t speed) override { return m_pUnit->setFanSpeed(speed); }
    bool subscribeStatus(std::uint32_t id, Observer* observer) override
    {
        return m_pUnit->subscribeStatus(id, observer);
    }
    bool unsubscribeStatus(std::uint32_t id, Observer* observer) override
    {
        return m_pUnit->unsubscribeStatus(id, observer);
    }
};
