#pragma once
// The wrapper of a power distribution unit.

#include "hwu/HWU_PD.h"
#include "hwu/HwuWrapper.h"
#include "hwu/PduIf.h"

class Pdu : public HwuWrapper<PduIf, HWU_PD> {
public:
    Pdu(const HwuUnitArgs& args, EFuseCtrlIf* efuses) : HwuWrapper(args, efuses) {}

    bool hasCapabilities() const override { return m_pUnit->hasCapabilities(); }
    std::int16_t getOvervoltageRaiseMin() const override { return limits().overvoltageRaiseMin; }
    std::int16_t getOvervoltageRaiseMax() const override { return limits().overvoltageRaiseMax; }
    std::int16_t getOvervoltageCeaseMin() const override { return limits().overvoltageCeaseMin; }
    std::int16_t getOvervoltageCeaseMax() const override { return limits().overvoltageCeaseMax; }
    std::int16_t getUndervoltageRaiseMin() const override { return limits().undervoltageRaiseMin; }
    std::int16_t getUndervoltageRaiseMax() const override { return limits().undervoltageRaiseMax; }
    std::int16_t getUndervoltageCeaseMin() const override { return limits().undervoltageCeaseMin; }
    std::int16_t getUndervoltageCeaseMax() const override { return limits().undervoltageCeaseMax; }
    bool isVoltageHigh() const override { return m_pUnit->isVoltageHigh(); }
    bool isVoltageLow() const override { return m_pUnit->isVoltageLow(); }
    bool isFaulty() const override { return m_pUnit->isFaulty(); }
    bool subscribeStatus(std::uint32_t id, Observer* observer) override
    {
        return m_pUnit->subscribeStatus(id, observer);
    }
    bool unsubscribeStatus(std::uint32_t id, Observer* observer) override
    {
        return m_pUnit->unsubscribeStatus(id, observer);
    }
    float getSystemVoltage() const override { return m_pUnit->getSystemVoltage(); }
    bool setLimits(std::int16_t overvoltageRaise, std::int16_t overvoltageCease, std::int16_t undervoltageRaise,
                   std::int16_t undervoltageCease) override
    {
        return m_pUnit->setLimits(overvoltageRaise, overvoltageCease, undervoltageRaise, undervoltageCease);
    }
    bool openEfuse() override { return m_pUnit->openEfuse(); }
    void closeEfuses() override { m_pUnit->closeEfuses(); }
    std::uint32_t getPowerDistrFaultIndicator() override { return m_pUnit->getPowerDistrFaultIndicator(); }
    std::uint32_t getEfuseIndicator(std::uint32_t number) const override { return m_pUnit->getEfuseIndicator(number); }

private:
    const PpPduCapabilities& limits() const { return m_pUnit->capabilities(); }
};
