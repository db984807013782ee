#pragma once
// The facade of the climate units. A CLU's measurements are not handed out:
// asking tells only whether the unit is available.

#include "frame/FuncType.h"
#include "hwu/HwuFacade.h"

class CluFacade : public HwuFacade {
public:
    CluFacade(SscHandleIf& ssc, FaultsRegisterIf& faults) : HwuFacade(ssc, faults, func_type::kClu) {}

    bool getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record) override
    {
        if (measurableUnit(funcInst, "CluFacade", "CLU", "Clu") == nullptr) return false;
        if (record != nullptr) *record = {};
        return true;
    }
};
