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
    // None is owned; each may be NIL while its side does not exist yet.
    struct Sides {
        ClimateCtrlIf* climate = nullptr;
        AlarmCtrlIf* alarms = nullptr;
        EFuseCtrlIf* efuses = nullptr;
        PowerCtrlManagerIf* power = nullptr;
        CabinetCtrlIf* cabinet = nullptr;
    };

    HwuUnitFactory() = default;
    explicit HwuUnitFactory(const Sides& sides) : m_sides(sides) {}

    // The sides are made after the broker that uses this factory; units made
    // from then on get them.
    void setSides(const Sides& sides) { m_sides = sides; }

    std::unique_ptr<HwuStatusIf> createUnit(const HwuUnitArgs& args) override;

private:
    Sides m_sides;
};
