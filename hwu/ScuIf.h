#pragma once
// The support control unit as the climate, cabinet and alarm sides see it.

#include "frame/Observer.h"
#include "hwu/HwuStatusIf.h"
#include "hwu/PpRecords.h"
#include "hwu/ScuStatus.h"

#include <cstdint>

class ScuIf : public HwuStatusIf {
public:
    virtual const ScuStatus& getStatus() const = 0;
    virtual const PpScuCapabilities& getCapabilities() const = 0;
    virtual bool getAddCapabilities(PpScuAddCapabilities* out) const = 0;
    // Whole degrees cut to a signed byte; 999 (cut the same way) without a
    // measurement.
    virtual std::int8_t getTemperature() const = 0;
    virtual bool writeCabinetPid(const HwuProductRecord& pid) = 0;
    virtual bool readCabinetPid(HwuProductRecord* pid) = 0;
    virtual bool setConfig(const PpScuConfig& config) = 0;
    virtual bool setAddConfig(const PpScuAddConfig& config) = 0;
    virtual bool setFanSpeed(std::uint8_t speed1, std::uint8_t speed2, std::uint8_t speed3, std::uint8_t speed4) = 0;
    virtual bool subscribeStatus(std::uint32_t id, Observer* observer) = 0;
    virtual bool unsubscribeStatus(std::uint32_t id, Observer* observer) = 0;
    virtual std::uint16_t getAvailableExternalInputs() const = 0;
    virtual bool isOnPort1() const = 0;
    virtual std::uint32_t getCabinetFuncInst() const = 0;
};
