#pragma once
// The station alarm unit: its alarm port masks and states go to the alarm
// side at each poll. It has no measurements, so it is available as soon as
// it is found.

#include "adapters/AlarmCtrlIf.h"
#include "hwu/HWU_ImplBase.h"
#include "hwu/HwuFactoryIf.h"

class HWU_SA : public HWU_ImplBase {
public:
    static constexpr unsigned kFaultFlag = 0;
    static constexpr unsigned kStartFlag = 1;

    HWU_SA(const HwuUnitArgs& args, AlarmCtrlIf* alarms);
    ~HWU_SA() override;

    void unitMissing() override;
    std::uint16_t getAvailablePortsA() const { return m_availableInPortsA; }
    std::uint16_t getAvailablePortsB() const { return m_availableInPortsB; }

protected:
    pp::MessageNo getStatusMsg() const override { return pp::SAU_GET_STATUS_REQ; }
    pp::MessageNo getCapabilityMsg() const override { return pp::SAU_GET_CAPABILITIES_REQ; }
    void parseStatus(const PpDeviceData& data) override;
    bool isStartFlagSet() const override { return flag(m_sauStatus.flags, kStartFlag); }
    bool fetchMeasurements() override { return false; }
    void commLost() override {}
    void storeCapabilities(const PpDeviceData& data) override;
    void clearCapabilities() override;
    void handleStatus(bool measured) override;
    void clearStatus() override;

private:
    static bool flag(std::uint8_t flags, unsigned bit) { return ((flags >> bit) & 1U) != 0; }

    AlarmCtrlIf* m_pAlarms;
    std::uint16_t m_availableInPortsA = 0;
    std::uint16_t m_availableInPortsB = 0;
    std::uint8_t m_availableOutPorts = 0;
    PpSauStatus m_sauStatus;
    PpSauStatus m_oldStatus;
};
