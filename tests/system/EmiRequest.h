#pragma once
// Requests of the equipment management interface as a client sends them
// through the gateway; every request carries client reference 5.

#include "adapters/EmiSignals.h"
#include "tests/system/SignalBytes.h"

#include <cstring>
#include <string>

namespace systemtest {

inline constexpr std::uint32_t kEmiClientRef = 5;

template <typename T>
std::string emiSignal(T body, ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t objectId)
{
    auto& header = reinterpret_cast<emi::EMI_HEADER_S&>(body);
    header.sigNo = sigNo;
    header.clientRef = kEmiClientRef;
    header.objectType = objectType;
    header.objectId = objectId;
    return bytesOf(body);
}

inline std::string configure(std::uint16_t objectType, std::uint32_t objectId, const char* hubPosition)
{
    emi::EMI_SET_CONFIG_HWU_REQ_S body{};
    std::strncpy(body.hubPosition, hubPosition, sizeof body.hubPosition - 1);
    return emiSignal(body, emi::EMI_SET_CONFIG_REQ, objectType, objectId);
}

} // namespace systemtest
