#pragma once
// The servers that Ssc hands out by type. There is no 3.

#include <cstdint>

enum class ServerType : std::uint32_t {
    AlarmControl = 1,
    ApcInci = 2,
    ClimateControl = 4,
};
