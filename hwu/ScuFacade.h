#pragma once
// The facade of the support control units.

#include "frame/FuncType.h"
#include "hwu/HwuFacade.h"

class ScuFacade : public HwuFacade {
public:
    ScuFacade(SscHandleIf& ssc, FaultsRegisterIf& faults) : HwuFacade(ssc, faults, func_type::kScu) {}

    // The temperature, whole degrees.
    bool getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record) override;
    bool getClimateParams(std::uint32_t funcInst, ScuClimateParams* record) override;
};
