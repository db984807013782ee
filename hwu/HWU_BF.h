#pragma once
// The battery fuse unit between the system and a battery string: its
// measurements, its load and battery disconnects, its flags as faults and
// subscriber news, and the battery fault LED where it has one.

#include "hwu/HWU_ImplBase.h"
#include "hwu/HwuFactoryIf.h"
#include "hwu/HwuSubscriptions.h"
#include "power/PowerCtrlManagerIf.h"

class HWU_BF : public HWU_ImplBase, public HwuSubscriptions {
public:
    enum Flag : unsigned {
        kFault = 0,
        kMainLoadDisconnected = 1,
        kPriorityLoadDisconnected = 2,
        kBatteryOverTemperature = 3,
        kBatteryTempSensorFault = 4,
        kStartFlag = 5,
        kBatteryNotPresent = 6,
        kCircuitBreakerFault = 7,
        kBatteryConnected = 8,
        kSlowCharging = 9,
        kTemperatureFault = 10,
        kFlag12 = 12,
    };
    // Additional capability ids.
    enum AddId : unsigned {
        kLoadControl = 1,
        kCurrentLimit = 3,
        kVoltageLimit = 4,
        kExtendedIds = 5,
        kExtendedStatus = 6,
        kVoltageConnect = 8,
    };
    static constexpr std::uint8_t kBatteryFaultLedControl = 2;
    static constexpr float kNoValue = 999.0F;
    static constexpr float kDefaultCurrentLimit = 135.0F;

    HWU_BF(const HwuUnitArgs& args, PowerCtrlManagerIf* power);
    ~HWU_BF() override;

    std::uint32_t getBatteryFaultIndicator() override { return m_batteryFaultLed.getLedState(); }
    void unitFound() override;
    void unitMissing() override;

    bool flag(unsigned bit) const { return ((m_bfuStatus >> bit) & 1U) != 0; }
    const PpBfuCapabilities& capabilities() const { return m_capabilities; }
    bool hasAddCapability(unsigned id) const { return m_addCapabilitiesRead && id < 9 && m_addCapabilities.id[id]; }
    float getCurrentLimit() const;
    std::int16_t getVoltageLimit() const;
    float getBatteryVoltage() const { return measured(m_batteryVoltageRaw / 100.0F); }
    float getBatteryCurrent() const { return measured(m_batteryCurrentRaw / 10.0F); }
    float getSystemVoltage() const { return measured(m_systemVoltageRaw / 100.0F); }
    float getBatteryTemperature() const { return measured(static_cast<float>(m_batteryTemperature)); }
    bool setControl(bool main, bool priority);
    bool setConfig(std::int16_t mainLoadUv, std::int16_t prioLoadUv, std::int16_t uvCease, std::int8_t disconnectTemp,
                   std::int8_t ceaseTemp);

protected:
    pp::MessageNo getStatusMsg() const override;
    pp::MessageNo getCapabilityMsg() const override { return pp::BFU_GET_CAPABILITIES_REQ; }
    void parseStatus(const PpDeviceData& data) override;
    bool isStartFlagSet() const override { return flag(kStartFlag); }
    bool fetchMeasurements() override;
    void storeCapabilities(const PpDeviceData& data) override;
    void clearCapabilities() override { m_capabilities = {}; }
    void handleStatus(bool measured) override;
    void clearStatus() override;

private:
    float measured(float value) const { return m_measuredOk ? value : kNoValue; }
    bool changed(unsigned bit) const { return isChanged(flag(bit), ((m_oldStatus >> bit) & 1U) != 0); }
    bool hasExtendedControl(std::uint8_t id) const;
    void traceAndNotify(unsigned bit, const char* onText, const char* offText);
    void raiseOrCease(unsigned bit, std::int32_t faultId, const char* raiseText, const char* ceaseText);
    std::uint32_t wantedBatteryFaultLed() const;
    void updateBatteryFaultLed();

    PpBfuCapabilities m_capabilities;
    PpBfuAddCapabilities m_addCapabilities;
    bool m_addCapabilitiesRead = false;
    std::uint16_t m_bfuStatus = 0;
    std::uint16_t m_oldStatus = 0;
    std::int16_t m_systemVoltageRaw = 0;
    std::int16_t m_batteryVoltageRaw = 0;
    std::int16_t m_batteryCurrentRaw = 0;
    std::int8_t m_batteryTemperature = 0;
    PowerCtrlManagerIf* m_pPower;
    Led m_batteryFaultLed{Led::kBattery};
};
