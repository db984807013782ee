#pragma once
// The climate unit: its fan alarms become the failures and LEDs of fan
// groups 2 and 4 of cabinet 0; its fan speed is sent without an answer.

#include "climate/ClimateCtrlIf.h"
#include "hwu/HWU_ImplBase.h"
#include "hwu/HwuFactoryIf.h"
#include "hwu/HwuSubscriptions.h"

class HWU_CL : public HWU_ImplBase, public HwuSubscriptions {
public:
    enum Flag : unsigned { kFault = 0, kFanAlarmGroup2 = 1, kFanAlarmGroup4 = 2, kStartFlag = 9 };

    HWU_CL(const HwuUnitArgs& args, ClimateCtrlIf* climate);
    ~HWU_CL() override;

    void unitMissing() override;
    bool isFaulty() const { return flag(m_cluStatus, kFault); }
    bool isFanAlarmGroup2() const { return flag(m_cluStatus, kFanAlarmGroup2); }
    bool isFanAlarmGroup4() const { return flag(m_cluStatus, kFanAlarmGroup4); }
    bool setFanSpeed(std::uint8_t speed);

protected:
    pp::MessageNo getStatusMsg() const override { return pp::CLU_GET_STATUS_REQ; }
    pp::MessageNo getCapabilityMsg() const override { return pp::CLU_GET_CAPABILITIES_REQ; }
    void parseStatus(const PpDeviceData& data) override;
    bool isStartFlagSet() const override { return flag(m_cluStatus, kStartFlag); }
    bool fetchMeasurements() override;
    void storeCapabilities(const PpDeviceData& data) override;
    void clearCapabilities() override { m_capabilities = 0; }
    void handleStatus(bool measured) override;
    void clearStatus() override;

private:
    static bool flag(std::uint16_t word, unsigned bit) { return ((word >> bit) & 1U) != 0; }
    void reportFanGroups(std::uint32_t group2State, std::uint32_t group4State);

    std::uint16_t m_capabilities = 0;
    std::uint16_t m_cluStatus = 0;
    std::uint16_t m_oldStatus = 0;
    ClimateCtrlIf* m_pClimate;
};
