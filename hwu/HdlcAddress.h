#pragma once
// Where a unit answers on the EC bus: its HDLC address and the bus port.
// A new one is a unit whose hub position gave no address.

#include <cstdint>

class HdlcAddress {
public:
    static constexpr std::uint32_t kNoAddress = 0xFFFFFFFF;

    HdlcAddress() = default;
    HdlcAddress(std::uint32_t hdlcAddress, std::uint32_t busPort) : address(hdlcAddress), port(busPort) {}

    bool isValid() const { return address != kNoAddress; }

    std::uint32_t address = kNoAddress;
    std::uint32_t port = 0;

    friend bool operator==(const HdlcAddress&, const HdlcAddress&) = default;
};
