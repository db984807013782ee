#pragma once
// Hub positions, the texts by which an operator says where a unit is plugged
// into the cabinet's EC hub, turned into HDLC addresses and back. Pure data:
// the tables live in HdlcAddressBroker.cpp.

#include "hwu/HdlcAddress.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

// The hub positions of a node as the equipment interface carries them: a
// count and fields of 12 characters, each ended by a NUL or by its size.
struct HubPositionList {
    static constexpr std::size_t kMaxPositions = 6;
    static constexpr std::size_t kFieldSize = 12;

    std::uint16_t count = 0;
    std::array<std::array<char, kFieldSize>, kMaxPositions> positions{};

    // The text of field `index`; empty beyond the fields.
    std::string_view text(std::size_t index) const;
};

// A hub position split into its port word and the position proper.
struct HubPositionText {
    std::uint32_t port = 1;
    std::string_view position;
};

namespace Hdlc {

inline constexpr std::uint32_t kMainPort = 1;
inline constexpr std::uint32_t kAuxPort = 2;

// "AUX A3" is position "A3" on the auxiliary port; any other word before the
// first blank, or none, means the main port.
HubPositionText splitHubPosition(std::string_view hubPosition);

// The address of a unit of `funcType` at the position proper (no port word);
// only the address is set. False when the position gives none.
bool getHdlcAddress(std::string_view hubPosition, std::uint32_t funcType, HdlcAddress* address);
// The same for an external node.
bool getHdlcAddress(std::string_view hubPosition, HdlcAddress* address);
// Each external node position found gives its address at its own index of
// `addresses`; true if any was found.
bool getHdlcAddresses(const HubPositionList& hubPositions, std::span<HdlcAddress> addresses);
// The address of an SCU in a cascade, order 1 to 7.
bool getCascadingAddress(std::uint32_t order, HdlcAddress* address);

// Put in a unit's hub position when its address was taken; no position.
std::string_view getAlreadyInUse();

// The first position with this offset from the base address; empty if none.
std::string_view getHubPosition(std::uint32_t offset);
// The position of a unit of `funcType` found at `address`.
std::string_view getHubPosition(std::uint32_t funcType, std::uint32_t address);
std::uint32_t getBaseAddress(std::uint32_t funcType, std::uint32_t address);

} // namespace Hdlc
