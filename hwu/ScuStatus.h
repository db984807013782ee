#pragma once
// An SCU's status with its fan groups and fans by number: group g at index
// g - 1, fan k of group g at index 4(g - 1) + k - 1.

#include <array>
#include <cstdint>

struct ScuStatus {
    // Flags of the `scu` byte.
    enum Flag : unsigned {
        kGeneralHwError = 0,
        kStartFlag = 1,
        kSmokeDetectorConnected = 2,
        kSmokeDetectorAlarm = 3,
        kSmokeDetectorHwFailure = 4,
        kDoorSwitch = 5,
        kTempSensorFault = 6,
    };

    std::array<bool, 4> connectedFans{};
    std::array<bool, 16> fans{};
    std::array<bool, 4> fanGroupFailure{};
    std::uint16_t externalInputAlarm = 0;
    std::uint8_t scu = 0;

    bool flag(unsigned bit) const { return ((scu >> bit) & 1U) != 0; }
    friend bool operator==(const ScuStatus&, const ScuStatus&) = default;
};
