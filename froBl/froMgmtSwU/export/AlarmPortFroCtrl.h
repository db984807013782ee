#pragma once
// The controller of AlarmPort objects: the generic behaviour, under a class of
// its own so that the kind of controller shows in a debugger and a trace.

#include "froBl/froMgmtSwU/export/SupSysGenericFroCtrl.h"

class AlarmPortFroCtrl : public SupSysGenericFroCtrl {
public:
    using SupSysGenericFroCtrl::SupSysGenericFroCtrl;
};
