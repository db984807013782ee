#pragma once
// The climate control's fan group bytes hold fan group 1 in the top bit
// (group g in bit 8 - g); the units' records hold group 1 first. This is the
// one place where one becomes the other.

#include <array>
#include <cstdint>

namespace fan_group {

inline constexpr unsigned kGroups = 4;

constexpr std::uint8_t bit(unsigned group) { return static_cast<std::uint8_t>(0x80U >> (group - 1)); }

constexpr std::uint8_t toClimateByte(const std::array<bool, kGroups>& groups)
{
    std::uint8_t byte = 0;
    for (unsigned group = 1; group <= kGroups; ++group)
        if (groups[group - 1]) byte = static_cast<std::uint8_t>(byte | bit(group));
    return byte;
}

// The units' capability flags hold group 1 in bit 0.
constexpr std::uint8_t fromUnitFlags(std::uint8_t flags)
{
    std::uint8_t byte = 0;
    for (unsigned group = 1; group <= kGroups; ++group)
        if (((flags >> (group - 1)) & 1U) != 0) byte = static_cast<std::uint8_t>(byte | bit(group));
    return byte;
}

// And back: a climate byte's top four bits as the units' flags, bit 7 in
// flag 0. The SCU's configuration bytes are built in the climate order.
constexpr std::uint8_t toUnitFlags(std::uint8_t climateByte)
{
    std::uint8_t flags = 0;
    for (unsigned group = 1; group <= kGroups; ++group)
        if ((climateByte & bit(group)) != 0) flags = static_cast<std::uint8_t>(flags | (1U << (group - 1)));
    return flags;
}

constexpr bool has(std::uint8_t climateByte, unsigned group) { return (climateByte & bit(group)) != 0; }

static_assert(fromUnitFlags(0x05) == 0xA0);
static_assert(toUnitFlags(0xA0) == 0x05 && toUnitFlags(0x40) == 0x02);
static_assert(bit(1) == 0x80 && bit(2) == 0x40 && bit(4) == 0x10);
static_assert(toClimateByte({true, false, false, true}) == 0x90);

} // namespace fan_group
