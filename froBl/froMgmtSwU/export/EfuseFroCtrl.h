#pragma once
// The controller of an e-fuse: a change of its settings is told to the
// alarm filter as a new object, so its faults are looked at afresh.

#include "froBl/froMgmtSwU/export/SupSysGenericFroCtrl.h"

class EfuseFroCtrl : public SupSysGenericFroCtrl {
public:
    using SupSysGenericFroCtrl::SupSysGenericFroCtrl;

    void postSet() override;
};
