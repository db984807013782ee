#pragma once
// What the equipment interface asks of one kind of unit, by instance.

#include "hwu/HwuEventIf.h"
#include "hwu/HwuStatusRecord.h"

#include <array>
#include <cstdint>
#include <string_view>

// A unit's measurements for the interface; how many and what they are
// depends on the kind (see each facade).
struct HwuMeasurementRecord {
    std::uint32_t count = 0;
    std::array<float, 4> values{};
};

// An SCU's climate abilities and state, as the equipment interface carries
// them: flag sets with their first flag in bit 0.
struct ScuClimateParams {
    std::uint8_t availableHw = 0;        // seven flags from cabinetMemory
    std::uint8_t scuFlags = 0;           // the status byte's flags from flag 0
    std::uint16_t availableExternalInputs = 0;
    std::uint8_t availableFanGroups = 0; // four flags from fan group 1
    std::array<std::int8_t, 23> controlOutputsAndLimits{};
    std::int8_t temperature = 0;
    std::uint8_t connectedFans = 0;      // four flags from fan group 1
    std::uint8_t fanGroupFailure = 0;    // four flags from fan group 1
};

class HwuFacadeIf {
public:
    virtual ~HwuFacadeIf() = default;
    virtual void setEventHandler(HwuEventIf* handler) = 0;
    virtual bool setConfiguration(std::uint32_t funcInst, std::string_view hubPosition, std::uint32_t cascadingOrder,
                                  std::uint32_t cabinetFuncInst) = 0;
    virtual bool deleteConfiguration(std::uint32_t funcInst) = 0;
    virtual bool getStatusData(std::uint32_t funcInst, HwuStatusRecord* status) = 0;
    virtual bool getUnitProductData(std::uint32_t funcInst, HwuProductRecord* record) = 0;
    virtual bool getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record) = 0;
    virtual bool restartUnit(std::uint32_t funcInst) = 0;
    virtual bool configureEfuse(std::uint32_t parentFuncInst, std::uint32_t efuseFuncInst) = 0;
    virtual bool deleteEfuse(std::uint32_t efuseFuncInst) = 0;
    virtual bool getEfuseStatus(std::uint32_t efuseFuncInst, std::uint32_t* state) = 0;
    virtual bool getClimateParams(std::uint32_t funcInst, ScuClimateParams* record) = 0;
    virtual std::uint32_t getFuncType() const = 0;
};
