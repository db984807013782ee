#pragma once
// Makes the wrapper of each of the six kinds of unit with the collaborators
// of its kind. Other kinds are refused, and the broker traces them.

#include "adapters/AlarmCtrlIf.h"
#include "cabinet/CabinetCtrlIf.h"
#include "climate/ClimateCtrlIf.h"
#include "hwu/EFuseCtrlIf.h"
#include "hwu/HwuFactoryIf.h"
#include "power/PowerCtrlManagerIf.h"

class HwuUnitFactory : public HwuFactoryIf {
public:
    // None is owned; each may be NIL while its side does not exist.
    HwuUnitFactory(ClimateCtrlIf* climate, AlarmCtrlIf* alarms, EFuseCtrlIf* efuses, PowerCtrlManagerIf* power,
                   CabinetCtrlIf* cabinet)
        : m_pClimate(climate), m_pAlarms(alarms), m_pEfuses(efuses), m_pPower(power), m_pCabinet(cabinet)
    {
    }

    std::unique_ptr<HwuStatusIf> createUnit(const HwuUnitArgs& args) override;

private:
    ClimateCtrlIf* m_pClimate;
    AlarmCtrlIf* m_pAlarms;
    EFuseCtrlIf* m_pEfuses;
    PowerCtrlManagerIf* m_pPower;
    CabinetCtrlIf* m_pCabinet;
};
