#pragma once
// The wrapper of a battery fuse unit.

#include "hwu/BfuIf.h"
#include "hwu/HWU_BF.h"
#include "hwu/HwuWrapper.h"

class Bfu : public HwuWrapper<BfuIf, HWU_BF> {
public:
    Bfu(const HwuUnitArgs& args, PowerCtrlManagerIf* power) : HwuWrapper(args, power) {}

    bool isFaulty() const override { return flag(HWU_BF::kFault); }
    bool isMainLoadDisconnected() const override { return flag(HWU_BF::kMainLoadDisconnected); }
    bool isPriorityLoadDisconnected() const override { return flag(HWU_BF::kPriorityLoadDisconnected); }
    bool isTempSensorFaulty() const override { return flag(HWU_BF::kBatteryTempSensorFault); }
    bool isSlowCharging() const override { return flag(HWU_BF::kSlowCharging); }
    bool isBatteryConnected() const override { return flag(HWU_BF::kBatteryConnected); }
    bool isBatteryPresent() const override { return !flag(HWU_BF::kBatteryNotPresent); }
    bool isBatteryOverTemperature() const override { return flag(HWU_BF::kBatteryOverTemperature); }
    bool isTemperatureFault() const override { return flag(HWU_BF::kTemperatureFault); }
    bool isCircuitBreakerFault() const override { return flag(HWU_BF::kCircuitBreakerFault); }
    bool isExtFlag12Clear() const override { return !flag(HWU_BF::kFlag12); }
    std::int16_t getMainLoadUvMin() const override { return limits().mainLoadDisconnectMin; }
    std::int16_t getMainLoadUvMax() const override { return limits().mainLoadDisconnectMax; }
    std::int16_t getPrioLoadUvMin() const override { return limits().priorityLoadDisconnectMin; }
    std::int16_t getPrioLoadUvMax() const override { return limits().priorityLoadDisconnectMax; }
    std::int16_t getUvCeaseMin() const override { return limits().disconnectCeaseMin; }
    std::int16_t getUvCeaseMax() const override { return limits().disconnectCeaseMax; }
    std::int8_t getDisconnectTempMin() const override { return limits().disconnectTempMin; }
    std::int8_t getDisconnectTempMax() const override { return limits().disconnectTempMax; }
    std::int8_t getCeaseTempMin() const override { return limits().disconnectCeaseTempMin; }
    std::int8_t getCeaseTempMax() const override { return limits().disconnectCeaseTempMax; }
    float getCurrentLimit() const override { return m_pUnit->getCurrentLimit(); }
    std::int16_t getVoltageLimit() const override { return m_pUnit->getVoltageLimit(); }
    bool hasVoltageConnect() const override { return m_pUnit->hasAddCapability(HWU_BF::kVoltageConnect); }
    bool hasLoadControl() const override { return m_pUnit->hasAddCapability(HWU_BF::kLoadControl); }
    float getBatteryVoltage() const override { return m_pUnit->getBatteryVoltage(); }
    float getBatteryCurrent() const override { return m_pUnit->getBatteryCurrent(); }
    float getSystemVoltage() const override { return m_pUnit->getSystemVoltage(); }
    float getBatteryTemperature() const override { return m_pUnit->getBatteryTemperature(); }
    bool setControl(bool main, bool priority) override { return m_pUnit->setControl(main, priority); }
    bool setConfig(std::int16_t mainLoadUv, std::int16_t prioLoadUv, std::int16_t uvCease, std::int8_t disconnectTemp,
                   std::int8_t ceaseTemp) override
    {
        return m_pUnit->setConfig(mainLoadUv, prioLoadUv, uvCease, disconnectTemp, ceaseTemp);
    }
    bool subscribeStatus(std::uint32_t id, Observer* observer) override
    {
        return m_pUnit->subscribeStatus(id, observer);
    }
    bool unsubscribeStatus(std::uint32_t id, Observer* observer) override
    {
        return m_pUnit->unsubscribeStatus(id, observer);
    }
    std::uint32_t getBatteryFaultIndicator() override { return m_pUnit->getBatteryFaultIndicator(); }

private:
    bool flag(unsigned bit) const { return m_pUnit->flag(bit); }
    const PpBfuCapabilities& limits() const { return m_pUnit->capabilities(); }
};
