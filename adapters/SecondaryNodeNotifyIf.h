#pragma once
// What a secondary node hears of the primary through the inter-node link:
// the cabinet's climate system, the primary's cabinet identity and
// identifier.

#include <cstdint>
#include <string>

class SecondaryNodeNotifyIf {
public:
    virtual ~SecondaryNodeNotifyIf() = default;
    virtual void climateSystemUpdated(std::uint32_t climateSystem, std::uint32_t funcInst) = 0;
    virtual void primaryProductDataUpdated(const std::string& productionDate, const std::string& productName,
                                           const std::string& productNumber, const std::string& productRevision,
                                           const std::string& serialNumber, std::uint32_t funcInst) = 0;
    virtual void primaryIdentifierUpdated(const std::string& identifier, std::uint32_t funcInst) = 0;
};
