#pragma once
// Unit status, measurements and climate reports as the equipment interface
// carries them.

#include "adapters/EmiSignals.h"
#include "hwu/HwuFacadeIf.h"
#include "hwu/HwuStatusRecord.h"

#include <cstdint>

namespace hwu_converter {

// The objectType of a FuncType; 0 for one that has none.
std::uint16_t objectTypeOf(std::uint32_t funcType);

// An LED state on the wire; a state the wire does not know goes as 0.
std::uint16_t ledOnWire(std::uint32_t state);

// False, with a trace, for an objectType that has no unit status.
bool createEmiResourceStatusDataUnionU(std::uint16_t objectType, const HwuStatusRecord& status,
                                       ose::be_u16 (&words)[emi::kResourceDataSize / 2]);
// False, with a trace, for an objectType that has no measurements.
bool createEmiMeasuredStatusDataUnionU(std::uint16_t objectType, const HwuMeasurementRecord& record,
                                       ose::be_i32 (&words)[4]);
// The SCU climate report, 33 bytes of the action result.
void createClimateReport(const ScuClimateParams& params, ose::be_u8 (&result)[emi::kActionResultSize]);

} // namespace hwu_converter
