#pragma once
// The support control unit: the cabinet's climate and alarm board. Its
// status carries the fan groups, the alarm inputs, the door, the smoke
// detector and its temperature sensor; it takes fan speeds and the climate
// settings, keeps the cabinet's product data, and drives the fan group
// fault LEDs. A dual box has a secondary SCU on the auxiliary port with one
// fan group of its own, reported as group 2.

#include "adapters/AlarmCtrlIf.h"
#include "cabinet/CabinetCtrlIf.h"
#include "climate/ClimateCtrlIf.h"
#include "hwu/HWU_ImplBase.h"
#include "hwu/HwuFactoryIf.h"
#include "hwu/HwuSubscriptions.h"
#include "hwu/ScuStatus.h"

class HWU_SC : public HWU_ImplBase, public HwuSubscriptions {
public:
    // Flags of the capabilities' available hardware byte.
    enum Hw : unsigned {
        kCabinetMemory = 0,
        kYellowFaultLeds = 1,
        kSmokeDetectorPort = 2,
        kSharedSmokeDetectorPort = 3,
        kHeaterControlPorts = 4,
        kDoorSwitchPort = 5,
        kTempSensor = 6,
        kAdditionalProcedures = 7,
    };
    static constexpr TimerType kDoorTimer = 3;
    static constexpr std::uint32_t kDoorPeriodMs = 60000;
    static constexpr std::int32_t kMaxDoorLevel = 3;

    struct Collaborators {
        AlarmCtrlIf* alarms = nullptr;
        CabinetCtrlIf* cabinet = nullptr;
        ClimateCtrlIf* climate = nullptr;
    };

    HWU_SC(const HwuUnitArgs& args, const Collaborators& collaborators);
    ~HWU_SC() override;

    void timeout(TimerId timerId) override;
    void unitFound() override;
    void unitMissing() override;

    const ScuStatus& getStatus() const { return m_scuStatus; }
    const PpScuCapabilities& getCapabilities() const { return m_capabilities; }
    bool getAddCapabilities(PpScuAddCapabilities* out) const;
    std::int8_t getTemperature() const;
    bool writeCabinetPid(const HwuProductRecord& pid);
    bool readCabinetPid(HwuProductRecord* pid);
    bool setConfig(const PpScuConfig& config);
    bool setAddConfig(PpScuAddConfig config);
    bool setFanSpeed(std::uint8_t speed1, std::uint8_t speed2, std::uint8_t speed3, std::uint8_t speed4);
    std::uint16_t getAvailableExternalInputs() const { return m_capabilities.availableExternalInputs; }
    std::uint32_t getCabinetFuncInst() const { return m_cabinetFuncInst; }
    std::uint32_t getFanGroupLed(unsigned group) const { return m_fanGroupLeds.at(group - 1).getLedState(); }
    std::int32_t getDoorAlarmLevel() const { return m_doorAlarmLevel; }

    bool isPrimary() const;
    bool isSecondary() const;

protected:
    pp::MessageNo getStatusMsg() const override;
    pp::MessageNo getCapabilityMsg() const override { return pp::SCU_GET_CAPABILITIES_REQ; }
    void parseStatus(const PpDeviceData& data) override;
    bool isStartFlagSet() const override { return m_scuStatus.flag(ScuStatus::kStartFlag); }
    bool readProductData(bool* replaced) override;
    bool fetchMeasurements() override;
    void storeCapabilities(const PpDeviceData& data) override;
    void clearCapabilities() override { m_capabilities = {}; }
    void readAdditionalCapabilities(std::uint8_t sequence) override;
    void handleStatus(bool measured) override;
    void clearStatus() override;

private:
    bool hasHw(unsigned flag) const { return ((m_capabilities.availableHw >> flag) & 1U) != 0; }
    bool hasFanGroup(unsigned group) const { return ((m_capabilities.availableFanGroups >> (group - 1)) & 1U) != 0; }
    bool hasExtendedControl(unsigned id) const;
    bool changed(unsigned bit) const { return isChanged(m_scuStatus.flag(bit), m_oldStatus.flag(bit)); }
    void takeStatus(const PpScuStatus& status);
    void takeExtendedStatus(const PpScuExtStatus& status);
    void applyDualBox(const ScuStatus& received);
    void traceCapabilities() const;
    void handleDoor();
    void evaluateDoorAlarm();
    void handleSmokeDetector();
    void checkFans();
    bool updateGroupLed(unsigned group);
    bool storeGroupLed(unsigned group, std::uint32_t state);
    void sendFanGroupLeds();
    void reportFanGroup(unsigned group, std::uint32_t state);
    FuncId_t cabinetSubject() const { return FuncId_t{0, m_cabinetFuncInst}; }

    float m_temperature = -127.0F;
    std::int32_t m_doorAlarmLevel = 0;
    PpScuCapabilities m_capabilities;
    PpScuAddCapabilities m_addCapabilities;
    bool m_addCapabilitiesRead = false;
    ScuStatus m_scuStatus;
    ScuStatus m_oldStatus;
    bool m_smokeDetectorConfigured = false;
    std::uint32_t m_sensorId = 0;
    std::array<Led, 4> m_fanGroupLeds{Led(Led::kFanGroup), Led(Led::kFanGroup), Led(Led::kFanGroup),
                                      Led(Led::kFanGroup)};
    std::array<bool, 16> m_fanBaseline{};
    bool m_takeBaseline = true;
    std::uint32_t m_cabinetFuncInst;
    Collaborators m_sides;
};
