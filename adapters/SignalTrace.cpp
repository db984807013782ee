#include "adapters/SignalTrace.h"

#include "frame/SscTrace.h"

#include <array>

using namespace ssc_trace;

namespace signal_trace {

const char* emiObjectTypeName(std::uint16_t objectType)
{
    static constexpr std::array<const char*, 8> kNames{"External node", "Scu", "Sau",   "Psu",
                                                       "Pdu",           "Bfu", "EFuse", "Alarm port group"};
    return objectType < kNames.size() ? kNames[objectType] : "Unknown";
}

const char* pmiObjectTypeName(std::uint16_t objectType)
{
    static constexpr std::array<const char*, 5> kNames{"Battery backup", "Power distribution", "Power supply",
                                                       "External node", "Equipment support function"};
    return objectType < kNames.size() ? kNames[objectType] : "Unknown";
}

void pmi(const char* headline, ose::PROCESS pid, std::uint32_t clientRef, std::uint16_t objectType,
         std::uint32_t objectId)
{
    SSC_TRACE(swuGroup(), kFlow, "%s", headline);
    SSC_TRACE(swuGroup(), kFlow, "pid = %d", static_cast<int>(pid));
    SSC_TRACE(swuGroup(), kFlow, "clientRef = %d", clientRef);
    SSC_TRACE(swuGroup(), kFlow, "objectType = %s", pmiObjectTypeName(objectType));
    SSC_TRACE(swuGroup(), kFlow, "objectId = %d", objectId);
}

void emi(const char* headline, ose::PROCESS pid, std::uint32_t clientRef, std::uint16_t objectType,
         std::uint32_t objectId)
{
    SSC_TRACE(swuGroup(), kFlow, "%s", headline);
    SSC_TRACE(swuGroup(), kFlow, "pid = %d", static_cast<int>(pid));
    SSC_TRACE(swuGroup(), kFlow, "clientRef = %d", clientRef);
    SSC_TRACE(swuGroup(), kFlow, "objectType = %s", emiObjectTypeName(objectType));
    SSC_TRACE(swuGroup(), kFlow, "objectId = %d", objectId);
}

} // namespace signal_trace
