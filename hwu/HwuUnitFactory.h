#pragma once
// Makes the wrapper of each kind of unit with the collaborators of its kind.
// Kinds not made here are refused, and the broker traces them.

#include "adapters/AlarmCtrlIf.h"
#include "climate/ClimateCtrlIf.h"
#include "hwu/EFuseCtrlIf.h"
#include "hwu/HwuFactoryIf.h"
#include "power/PowerCtrlManagerIf.h"

class HwuUnitFactory : public HwuFactoryIf {
public:
    // None is owned; each may be NIL while its side does not exist.
    HwuUnitFactory(ClimateCtrlIf* climate, AlarmCtrlIf* alarms, EFuseCtrlIf* efuses, PowerCtrlManagerIf* power)
        : m_pClimate(climate), m_pAlarms(alarms), m_pEfuses(efuses), m_pPower(power)
    {
    }

    std::unique_ptr<HwuStatusIf> createUnit(const HwuUnitArgs& args) override;

private:
    ClimateCtrlIf* m_pClimate;
    AlarmCtrlIf* m_pAlarms;
    EFuseCtrlIf* m_pEfuses;
    PowerCtrlManagerIf* m_pPower;
};
