#pragma once
// The check that configuration runs on hub positions before it takes them.

#include "frame/FuncId.h"
#include "hwu/HdlcAddress.h"
#include "hwu/HdlcAddressEventIf.h"

#include <cstdint>
#include <span>
#include <string_view>

class HdlcAddressFacadeIf {
public:
    virtual ~HdlcAddressFacadeIf() = default;
    // Not owned; may be set late.
    virtual void setEventHandler(HdlcAddressEventIf* handler) = 0;
    // A node's list of one or two positions: true when they can be used.
    // Raises or ceases the hub position faults of `funcId` on the way.
    virtual bool checkHubPositions(std::span<const std::string_view> hubPositions, const FuncId_t& funcId) = 0;
    virtual bool getHdlcAddress(std::string_view hubPosition, std::uint32_t funcType, HdlcAddress* address) = 0;
};
