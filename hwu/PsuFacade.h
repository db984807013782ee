#pragma once
// The facade of the power supply units.

#include "frame/FuncType.h"
#include "hwu/HwuFacade.h"

class PsuFacade : public HwuFacade {
public:
    PsuFacade(SscHandleIf& ssc, FaultsRegisterIf& faults) : HwuFacade(ssc, faults, func_type::kPsu) {}

    // Output voltage in hundredths of a volt, current in tenths of an
    // ampere, load, temperature.
    bool getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record) override;
};
