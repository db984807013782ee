#pragma once
// The power distribution unit: the system voltage, its limits, and up to 16
// e-fuses, which the core opens one at a time when the batteries are
// overloaded and closes again after a restart of the unit.

#include "hwu/EFuseCtrlIf.h"
#include "hwu/HWU_ImplBase.h"
#include "hwu/HwuFactoryIf.h"
#include "hwu/HwuSubscriptions.h"

class HWU_PD : public HWU_ImplBase, public HwuSubscriptions {
public:
    enum Flag : unsigned {
        kFault = 0,
        kVoltageLow = 1,
        kVoltageHigh = 2,
        kMainTemperatureHigh = 3,
        kPriorityTemperatureHigh = 4,
        kStartFlag = 6,
    };
    static constexpr std::uint32_t kMaxEfuses = 16;
    static constexpr float kNoValue = 999.0F;

    HWU_PD(const HwuUnitArgs& args, EFuseCtrlIf* efuses);
    ~HWU_PD() override;

    std::uint32_t getPowerDistrFaultIndicator() override;
    void unitFound() override;
    void unitMissing() override;

    bool hasCapabilities() const { return m_capabilitiesRead; }
    const PpPduCapabilities& capabilities() const { return m_capabilities; }
    bool isVoltageHigh() const { return flag(kVoltageHigh); }
    bool isVoltageLow() const { return flag(kVoltageLow); }
    bool isFaulty() const { return flag(kFault); }
    float getSystemVoltage() const { return m_measuredOk ? m_systemVoltage : kNoValue; }
    bool setLimits(std::int16_t overvoltageRaise, std::int16_t overvoltageCease, std::int16_t undervoltageRaise,
                   std::int16_t undervoltageCease);
    bool openEfuse();
    void closeEfuses();
    // The LED state of e-fuse `number`, from 1.
    std::uint32_t getEfuseIndicator(std::uint32_t number) const;

protected:
    pp::MessageNo getStatusMsg() const override { return pp::PDU_GET_STATUS_REQ; }
    pp::MessageNo getCapabilityMsg() const override { return pp::PDU_GET_CAPABILITIES_REQ; }
    void parseStatus(const PpDeviceData& data) override;
    bool isStartFlagSet() const override { return flag(kStartFlag); }
    bool fetchMeasurements() override;
    void capabilitiesDone() override;
    void storeCapabilities(const PpDeviceData& data) override;
    void clearCapabilities() override { m_capabilities = {}; }
    void handleStatus(bool measured) override;
    void clearStatus() override;

private:
    bool flag(unsigned bit) const { return ((m_pduStatus.flags >> bit) & 1U) != 0; }
    bool changed(unsigned bit) const
    {
        return isChanged(flag(bit), ((m_oldStatus.flags >> bit) & 1U) != 0);
    }
    void reportEfuse(std::uint32_t number, std::uint32_t state);
    void traceAndNotify(unsigned bit, const char* onText, const char* offText);
    bool sendEfuses(const PpPduEfuses& request);

    float m_systemVoltage = 0;
    PpPduCapabilities m_capabilities;
    PpPduStatus m_pduStatus;
    PpPduStatus m_oldStatus;
    EFuseCtrlIf* m_pEfuses;
};
