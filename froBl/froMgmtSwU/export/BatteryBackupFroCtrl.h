#pragma once
// The controller of the battery backup. The two standard battery types
// charged in the normal mode get fixed charging parameters whatever the
// client set.

#include "froBl/froMgmtSwU/export/SupSysGenericFroCtrl.h"

class BatteryBackupFroCtrl : public SupSysGenericFroCtrl {
public:
    using SupSysGenericFroCtrl::SupSysGenericFroCtrl;

    void postCreate() override;
    void restore() override;
    void postSet() override;

private:
    void applyBatteryDefaults();
};
