#pragma once
// A unit's health as it is published to the equipment manager, and the
// product data record handed out on demand.

#include "hwu/PpMessages.h"

#include <array>
#include <cstdint>

struct HwuStatusRecord {
    std::uint8_t available = 0;
    std::uint8_t commOk = 0;
    std::uint32_t operationalLed = 0;
    std::uint32_t faultLed = 0;
    std::uint32_t powerDistrFaultIndicator = 0;
    std::uint32_t batteryFaultIndicator = 0;

    friend bool operator==(const HwuStatusRecord&, const HwuStatusRecord&) = default;
};

// In the order the equipment interface carries the fields.
struct HwuProductRecord {
    std::array<char, pp::kProductNumberSize> productNumber{};
    std::array<char, pp::kRevStateSize> revState{};
    std::array<char, pp::kProductNameSize> productName{};
    std::array<char, pp::kProductionDateSize> productionDate{};
    std::array<char, pp::kSerialNumberSize> serialNumber{};
};
