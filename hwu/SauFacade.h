#pragma once
// The facade of the station alarm units.

#include "frame/FuncType.h"
#include "hwu/HwuFacade.h"

class SauFacade : public HwuFacade {
public:
    SauFacade(SscHandleIf& ssc, FaultsRegisterIf& faults) : HwuFacade(ssc, faults, func_type::kSau) {}
};
