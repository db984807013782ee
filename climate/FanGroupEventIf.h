#pragma once
// What the fan groups tell the cabinet adapter: a group's state, and its
// disconnect and hardware faults coming and going.

#include <cstdint>

class FanGroupEventIf {
public:
    virtual ~FanGroupEventIf() = default;
    virtual void fanGroupState(std::uint32_t funcInst, std::uint32_t state, std::uint32_t funcType) = 0;
    virtual void disconnectFaultRaised(std::uint32_t funcInst) = 0;
    virtual void hwFaultRaised(std::uint32_t funcInst) = 0;
    virtual void disconnectFaultCeased(std::uint32_t funcInst) = 0;
    virtual void hwFaultCeased(std::uint32_t funcInst) = 0;
};
