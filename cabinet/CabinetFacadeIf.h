#pragma once
// The cabinets as the cabinet management interface and the inter-node link
// configure and read them.

#include "cabinet/CabinetEventIf.h"
#include "cabinet/ProductData.h"

#include <cstdint>
#include <string>

class CabinetFacadeIf {
public:
    virtual ~CabinetFacadeIf() = default;
    // A cabinet already known keeps its door switch.
    virtual void addCabinet(std::uint32_t funcInst) = 0;
    virtual void deleteCabinet(std::uint32_t funcInst) = 0;
    // The identity from configuration; makes the cabinet when it is new.
    virtual void setProductData(const ProductData& pid, std::uint32_t funcInst) = 0;
    // The identity from the operator, who settles a disagreement.
    virtual void updateProductData(const ProductData& pid, std::uint32_t funcInst) = 0;
    // The product name of the managed element, against which an SCU's
    // identity is checked before the cabinet takes it.
    virtual void setProductNameME(const std::string& name) = 0;
    virtual void setNodeConfigured() = 0;
    // 0 for a cabinet not configured.
    virtual std::uint8_t getDoorSwitch(std::uint32_t funcInst) = 0;
    virtual void setDoorSwitch(std::uint32_t funcInst, std::uint8_t value) = 0;
    virtual void setSmokeDetectorConfigured(std::uint32_t funcInst, bool configured) = 0;
    // Whether the cabinet's primary SCU has a smoke detector connected.
    virtual bool getSmokeDetectorStatus(std::uint32_t funcInst) = 0;
    // Cleared for an unknown cabinet.
    virtual ProductData getProductData(std::uint32_t funcInst) = 0;
    virtual std::string getCabinetIdentifier(std::uint32_t funcInst) = 0;
    virtual void setCabinetIdentifier(std::uint32_t funcInst, const std::string& identifier) = 0;
    virtual void setEventHandler(CabinetEventIf* handler) = 0;
};
