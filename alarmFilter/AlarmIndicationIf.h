#pragma once
// The two indications through which the fault filters reach the management
// client: a fault that stands and a fault that ceased. froId is the
// object's external id.

#include <cstdint>
#include <string>
#include <vector>

class AlarmIndicationIf {
public:
    virtual ~AlarmIndicationIf() = default;
    virtual void sendFaultInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                              std::int32_t faultId, const std::string& faultDescription,
                              const std::vector<std::string>& additionalData, std::int32_t eventId) = 0;
    virtual void sendFaultCeaseInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                                   std::int32_t faultId) = 0;
};
