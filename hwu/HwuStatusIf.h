#pragma once
// What everybody outside sees of a unit.

#include "frame/FuncId.h"
#include "hwu/HwuStatusRecord.h"

#include <cstdint>
#include <string>

class HwuStatusIf {
public:
    virtual ~HwuStatusIf() = default;
    virtual bool isAvailable() const = 0;
    virtual const FuncId_t& getFuncId() const = 0;
    virtual std::uint32_t getPort() const = 0;
    virtual std::uint32_t getHdlcAddress() const = 0;
    virtual const std::string& getHubPosition() const = 0;
    virtual bool isSameFuncId(const FuncId_t& funcId) const = 0;
    virtual void reset() = 0;
    // Asks the unit for its product data now; false when it did not answer.
    virtual bool getProductData(HwuProductRecord* record) = 0;
    virtual std::uint32_t getOperationalLedState() const = 0;
    virtual std::uint32_t getFaultLedState() const = 0;
    virtual bool isCommunicating() const = 0;
};
