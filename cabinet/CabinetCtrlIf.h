#pragma once
// What the SCU tells the cabinet, and asks of it.

#include <cstdint>
#include <string>

class CabinetCtrlIf {
public:
    virtual ~CabinetCtrlIf() = default;
    virtual void notifySmokeDetectorStatusUpdated(std::uint32_t cabinetFuncInst) = 0;
    virtual void notifyCabinetIdentifierUpdated(std::uint32_t cabinetFuncInst, const std::string& identifier) = 0;
    virtual void setSmokeDetectorConfigured(std::uint32_t cabinetFuncInst, bool configured) = 0;
    virtual bool getSmokeDetectorConfigured(std::uint32_t cabinetFuncInst) = 0;
};
