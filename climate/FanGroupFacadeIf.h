#pragma once
// The fan groups as the cabinet adapter configures them.

#include <cstdint>

class FanGroupEventIf;

class FanGroupFacadeIf {
public:
    virtual ~FanGroupFacadeIf() = default;
    virtual void setEventHandler(FanGroupEventIf* handler) = 0;
    virtual void configureFanGroup(std::uint32_t funcInst, std::uint32_t fanGroupNumber, std::uint32_t cabinetId) = 0;
    virtual void deleteFanGroup(std::uint32_t funcInst) = 0;
};
