#pragma once
// The power supply unit: its measurements, its output voltage, its status
// flags turned into faults, and its hot-spot sensor for the climate control.

#include "climate/ClimateCtrlIf.h"
#include "hwu/HWU_ImplBase.h"
#include "hwu/HwuFactoryIf.h"

class HWU_PS : public HWU_ImplBase {
public:
    // Status flags of the PSU's status word.
    enum Flag : unsigned {
        kFault = 0,
        kInputVoltageLow = 1,
        kTempSensorFault = 2,
        kHighTempClass2 = 3,
        kLowTempClass2 = 4,
        kHighTempClass1 = 5,
        kLowTempClass1 = 6,
        kStartFlag = 7,
        kInputVoltageHigh = 8,
    };
    static constexpr float kNoValue = 999.0F;

    HWU_PS(const HwuUnitArgs& args, ClimateCtrlIf* climate);
    ~HWU_PS() override;

    void unitFound() override;

    bool isInputVoltageOk() const;
    float getOutputVoltage() const { return m_measuredOk ? m_outputVoltage : kNoValue; }
    float getLoad() const { return m_measuredOk ? m_load : kNoValue; }
    bool setOutputVoltage(float volts);
    float getOutputCurrent() const { return m_measuredOk ? m_outputCurrent : kNoValue; }
    float getUnitTemperature() const { return m_measuredOk ? m_temperature : kNoValue; }
    float getSharingOff() const { return m_sharingOff; }
    void setSharingOff(float volts) { m_sharingOff = volts; }

protected:
    pp::MessageNo getStatusMsg() const override { return pp::PSU_GET_STATUS_REQ; }
    pp::MessageNo getCapabilityMsg() const override { return pp::PSU_GET_CAPABILITIES_REQ; }
    void parseStatus(const PpDeviceData& data) override;
    bool isStartFlagSet() const override { return flag(m_psuStatus, kStartFlag); }
    bool fetchMeasurements() override;
    void storeCapabilities(const PpDeviceData& data) override;
    void clearCapabilities() override { m_capabilities = {}; }
    void readAdditionalCapabilities(std::uint8_t sequence) override;
    void handleStatus(bool measured) override;
    void clearStatus() override;
    void firstPollMissed() override;
    bool isOperationalLedAvailable() const override { return m_operationalLedAvailable; }
    bool isFaultLedAvailable() const override { return m_faultLedAvailable; }

private:
    static bool flag(std::uint16_t word, unsigned bit) { return ((word >> bit) & 1U) != 0; }
    bool changed(unsigned bit) const { return isChanged(flag(m_psuStatus, bit), flag(m_oldStatus, bit)); }
    void raiseOrCease(bool raise, std::int32_t faultId, const char* raiseText, const char* ceaseText);
    void handleTemperatureFaults();

    float m_outputVoltage = 0;
    float m_outputCurrent = 0;
    float m_load = 0;
    float m_temperature = 0;
    float m_sharingOff = 0;
    PpPsuCapabilities m_capabilities;
    PpPsuAddCapabilities m_addCapabilities;
    std::uint16_t m_psuStatus = 0;
    std::uint16_t m_oldStatus = 0;
    std::uint32_t m_sensorId = 0;
    std::int32_t m_setPoint = -9999;
    std::int32_t m_coolingGain = 0;
    std::int32_t m_timeConstant = 0;
    ClimateCtrlIf* m_pClimate;
    bool m_addCapabilitiesRead = false;
    bool m_operationalLedAvailable = true;
    bool m_faultLedAvailable = true;
};
