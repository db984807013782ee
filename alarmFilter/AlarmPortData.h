#pragma once
// An external alarm port as its object and its hardware know it. The
// hardware may report a port before its object exists: the entry then has an
// empty ldn and waits for the object.
//
// Availability is kept as a mask of status bits. Dependency locked (512)
// always brings 32 along; the attribute shows the highest status that is set.

#include "alarmFilter/FroData.h"

#include <cstdint>
#include <string>

struct AlarmPortData : FroData {
    static constexpr std::uint32_t kNotInstalled = 128;
    static constexpr std::uint32_t kDependencyLocked = 512;

    // A status other than the two above stands for no bits at all.
    void setStatus(std::uint32_t status);
    void clearStatus(std::uint32_t status);
    bool hasStatus(std::uint32_t status) const;
    // The value of the availabilityStatus attribute: 128, 544 or 0.
    std::uint32_t availabilityStatus() const;

    std::string normallyOpen;
    std::string hwType; // "SCU", "SAU" or "RRU"
    std::string portId; // decimal
    std::uint16_t instance = 0;     // of the unit that carries the port
    std::int32_t lastInputValue = -1; // -1: no input seen yet
    std::uint32_t availabilityBits = 0;
    std::uint32_t operationalState = 0; // 0 disabled, 1 enabled
};
