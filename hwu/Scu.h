#pragma once
// The wrapper of a support control unit.

#include "hwu/HWU_SC.h"
#include "hwu/HwuWrapper.h"
#include "hwu/ScuIf.h"

class Scu : public HwuWrapper<ScuIf, HWU_SC> {
public:
    Scu(const HwuUnitArgs& args, const HWU_SC::Collaborators& collaborators) : HwuWrapper(args, collaborators) {}

    const ScuStatus& getStatus() const override { return m_pUnit->getStatus(); }
    const PpScuCapabilities& getCapabilities() const override { return m_pUnit->getCapabilities(); }
    bool getAddCapabilities(PpScuAddCapabilities* out) const override { return m_pUnit->getAddCapabilities(out); }
    std::int8_t getTemperature() const override { return m_pUnit->getTemperature(); }
    bool writeCabinetPid(const HwuProductRecord& pid) override { return m_pUnit->writeCabinetPid(pid); }
    bool readCabinetPid(HwuProductRecord* pid) override { return m_pUnit->readCabinetPid(pid); }
    bool setConfig(const PpScuConfig& config) override { return m_pUnit->setConfig(config); }
    bool setAddConfig(const PpScuAddConfig& config) override { return m_pUnit->setAddConfig(config); }
    bool setFanSpeed(std::uint8_t speed1, std::uint8_t speed2, std::uint8_t speed3, std::uint8_t speed4) override
    {
        return m_pUnit->setFanSpeed(speed1, speed2, speed3, speed4);
    }
    bool subscribeStatus(std::uint32_t id, Observer* observer) override
    {
        return m_pUnit->subscribeStatus(id, observer);
    }
    bool unsubscribeStatus(std::uint32_t id, Observer* observer) override
    {
        return m_pUnit->unsubscribeStatus(id, observer);
    }
    std::uint16_t getAvailableExternalInputs() const override { return m_pUnit->getAvailableExternalInputs(); }
    bool isOnPort1() const override { return getPort() == 1; }
    std::uint32_t getCabinetFuncInst() const override { return m_pUnit->getCabinetFuncInst(); }
};
