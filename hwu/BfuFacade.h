#pragma once
// The facade of the battery fuse units.

#include "frame/FuncType.h"
#include "hwu/HwuFacade.h"

class BfuFacade : public HwuFacade {
public:
    BfuFacade(SscHandleIf& ssc, FaultsRegisterIf& faults) : HwuFacade(ssc, faults, func_type::kBfu) {}

    // With the battery fault indicator.
    bool getStatusData(std::uint32_t funcInst, HwuStatusRecord* status) override;
    // Battery voltage and current in tenths, battery temperature.
    bool getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record) override;

protected:
    const char* statusTraceEnd() const override { return " from HWU_Broker"; }
};
