#pragma once
// The faults that stand on a hardware unit, kept while it is locked so that
// an unlock can report them again.

#include "alarmFilter/FroData.h"

#include <cstdint>
#include <string>
#include <vector>

struct HwUnitData : FroData {
    std::vector<std::int32_t> faultIds;
    std::string faultDescription; // the unit's faults carry no text
};
