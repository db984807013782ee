#pragma once
// The controller of a hardware unit. Alarm and control units carry their
// alarm ports in device groups: objects of memory only, made with the unit
// (also at a restore, which for a unit is a create) and deleted with it.

#include "froBl/froMgmtSwU/export/SupSysGenericFroCtrl.h"

#include <string>

class HwUnitFroCtrl : public SupSysGenericFroCtrl {
public:
    using SupSysGenericFroCtrl::SupSysGenericFroCtrl;

    void postCreate() override;
    void restore() override;
    void preDelete() override;

private:
    void makeDeviceGroups();
    void makeDeviceGroup(const std::string& ldn, int typeOfUnit, int groupOfPort, const std::string& unitType);
};
