#pragma once
// The one battery backup object, and the power faults that share one fault
// id on it and so one indication with a joined text.

#include "alarmFilter/FroData.h"

#include <cstdint>
#include <string>
#include <vector>

struct BatteryBackupData : FroData {
    struct Fault {
        std::int32_t faultId = 0;
        std::uint32_t faultType = 0;
        std::string text;
    };

    // ldn is empty while no battery backup exists.
    std::vector<Fault> batteryFaults;
};
