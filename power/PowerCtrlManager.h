#pragma once
// The regulator of the -48 V system. Every 6 seconds it reads the system
// voltage from the best source that answers, decides whether the site runs
// on batteries, moves a common regulator offset towards the wanted voltage
// and sends each PSU its output voltage. It raises the class 2 voltage
// faults, gives the PDUs and BFUs their limits within what each can take,
// and opens and closes e-fuses while a BFU reports the power system
// overloaded. One per core process, reached through getInstance().

#include "frame/Noncopyable.h"
#include "frame/Observer.h"
#include "frame/TimerObserverIf.h"
#include "hwu/BrokerObserverIf.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryControlIf.h"
#include "power/LoadSharing.h"
#include "power/PowerCtrlManagerIf.h"
#include "power/PowerDistributionCfg.h"

#include <cstdint>
#include <memory>
#include <optional>

class BatteryBackupEventIf;
class BfuIf;
class BatteryChargerIf;
class BatteryLogIf;
class BatteryTestIf;
class CabinetObserverIf;
class FaultsRegisterIf;
class HwuBrokerIf;
class PduIf;
class PowerSupplyEventIf;

class PowerCtrlManager : public PowerCtrlManagerIf,
                         public Observer,
                         public BrokerObserverIf,
                         public TimerObserverIf,
                         public BatteryControlIf,
                         private Noncopyable {
public:
    // Timers of the voltage control.
    static constexpr TimerType kRegulationTimer = 29;
    static constexpr TimerType kBatteryModeTimer = 30;
    static constexpr TimerType kThreeMinutesTimer = 32;
    static constexpr TimerType kDayTimer = 33;
    static constexpr TimerType kBatteryLogStartTimer = 34;
    static constexpr TimerType kReconnectEfuseTimer = 38;
    static constexpr TimerType kBfuLoadTimer = 110;
    static constexpr std::uint32_t kRegulationPeriodMs = 6000;
    static constexpr std::uint32_t kBatteryModeConfirmMs = 30000;
    static constexpr std::uint32_t kThreeMinutesMs = 180000;
    static constexpr std::uint32_t kDayMs = 86400000;
    static constexpr std::uint32_t kBatteryLogStartMs = 60000;
    static constexpr std::uint32_t kReconnectEfuseMs = 60000;
    static constexpr std::uint32_t kBfuLoadCheckMs = 1000;
    // Events of the observer interface.
    static constexpr std::uint32_t kCabinetConfigured = 0;
    static constexpr std::uint32_t kBfuStatusChanged = 4;
    static constexpr std::uint32_t kPduStatusChanged = 5;

    // The battery test's answers while no test is built in: a start that
    // ends without a running test, a stop of a test that is not running.
    static constexpr std::uint32_t kNoTestToStart = 5;
    static constexpr std::uint32_t kNoTestRunning = 3;

    static constexpr float kDefaultNominalVoltage = -54.5F;
    static constexpr float kNoValue = 999.0F;

    struct Handlers {
        BatteryBackupEventIf* batteryBackup = nullptr;
        PowerSupplyEventIf* powerSupply = nullptr;
        CabinetObserverIf* cabinet = nullptr;
    };

    // The one instance: made with the core's root, gone with destroy().
    static PowerCtrlManager* create(HwuBrokerIf& broker, FaultsRegisterIf& faults, const Handlers& handlers);
    static PowerCtrlManager* getInstance();
    static void destroy();
    ~PowerCtrlManager() override;

    // The battery's test and log join as they are built; without them no
    // test ever runs and nothing is logged.
    void setBatteryParts(std::unique_ptr<BatteryTestIf> test, std::unique_ptr<BatteryLogIf> log);
    const BatteryChargerIf& charger() const { return *m_pCharger; }
    // The node controls power while it is the site's primary.
    void setEnabled(bool enabled);
    bool isEnabled() const { return m_enabled; }

    // Observer: a cabinet configured (0), a BFU's (4) or a PDU's (5) status.
    void update(std::uint32_t event) override;
    void timeout(TimerId timerId) override;
    void unitOperational(const FuncId_t& funcId) override;
    void unitRemoved(const FuncId_t& funcId) override;
    void unitRestarted(const FuncId_t& funcId) override;

    // PowerCtrlManagerIf.
    void statusChanged() override;
    void updateBatteryParameters(const BatteryBackupCfg& cfg) override;
    void updatePowerDistribution(const PowerDistributionCfg& cfg) override;
    void updatePowerSupply(const std::int16_t values[kPowerSupplyValues]) override;
    void clearBatteryBackupConfigured() override { m_batteryCfg.configured = false; }
    void getBatteryBackupStatus(BatteryBackupStatus* status) override;
    void startEqualizeCharging() override;
    void stopEqualizeCharging() override;
    bool startBatteryTest(std::uint32_t initiation, std::uint32_t* error) override;
    bool stopBatteryTest(std::uint32_t reason, std::uint32_t* error) override;
    bool getBatteryTestProgress(std::int32_t words[4]) override;
    std::uint32_t getBatteryTestInitiation() override;
    bool isRunningOnBatteries() const override { return m_runningOnBatteries; }
    float getSystemVoltage() const override { return m_systemVoltage; }
    bool isSystemVoltageValid() const override { return m_systemVoltageValid; }

    // BatteryControlIf.
    void connectBattery(bool connect, bool extended) override;
    void batteryFullyCharged() override;

    // Every operational PSU gets this output voltage at once.
    void setOutputVoltage(float volts);
    bool anyPsuUsable();

    float getWantedVoltage() const { return m_wantedVoltage; }
    float getNominalVoltage() const { return m_nominalVoltage; }
    float getRegulatorOffset() const { return m_regOff; }
    float getUndervoltageRaise() const { return m_undervoltageRaise; }
    float getUndervoltageCease() const { return m_undervoltageCease; }
    float getOvervoltageRaise() const { return m_overvoltageRaise; }
    float getOvervoltageCease() const { return m_overvoltageCease; }
    std::uint32_t getFusesOpened() const { return m_fusesOpened; }
    const LoadSharing& loadSharing() const { return m_loadSharing; }

private:
    PowerCtrlManager(HwuBrokerIf& broker, FaultsRegisterIf& faults, const Handlers& handlers);

    // The voltage control pass and its steps.
    void performRegulation();
    void evaluatePsuOk();
    void watchPsuAccessibility();
    void readSystemVoltage();
    std::optional<float> averageReading(std::uint32_t funcType);
    void evaluateClass2Faults();
    void updateWantedVoltage();
    void updateRegulatorOffset();
    void sendVoltages();
    void resetRegulation();
    void checkClass2Limits();
    void useDefaultLimits();
    void updateLimitsFault();

    // Battery mode.
    float batteryModeThreshold() const;
    bool batteryModeCondition() const;
    bool batteryCharging() const;
    bool anyOtherBfuAvailable(const FuncId_t& removed);
    void testBatteryMode();
    void confirmBatteryMode();
    void setBatteryMode(bool on);
    float batteryVoltage() const;
    float limitedToClass2Band(float volts) const;
    float batteryCurrent() const;

    // Initiations: each runs once unless forced.
    void initiateCharger(bool force);
    void startBatteryLog(bool force);
    void configureBfus(bool force);
    void configurePdus(bool force);
    void initiateBatteryTest(bool force);
    bool configureBfu(BfuIf& bfu);
    bool configurePdu(PduIf& pdu);

    // Faults the units' status decides.
    void evaluateBfuFaults(const FuncId_t* removed);
    void evaluatePduFaults(const FuncId_t* removed);
    void raiseOrCease(bool raise, std::int32_t faultId, std::uint32_t funcType, std::uint32_t delayMs = 0);

    // Overload of the power system and the e-fuses it opens.
    void checkBfuLoad();
    bool openFuse(bool backwards);
    void closeAllFuses();

    void cabinetConfigured();
    void startTimer(std::uint32_t timeMs, TimerType type);
    bool isTimerRunning(TimerType type);
    void stopTimer(TimerType type);
    bool anyBatteryPresent();

    HwuBrokerIf* m_pBroker;
    FaultsRegisterIf* m_pFaults;
    Handlers m_handlers;
    std::unique_ptr<BatteryChargerIf> m_pCharger; // made with the manager, always there
    std::unique_ptr<BatteryTestIf> m_pBatteryTest;
    std::unique_ptr<BatteryLogIf> m_pBatteryLog;
    LoadSharing m_loadSharing;
    BatteryBackupCfg m_batteryCfg;
    PowerDistributionCfg m_powerDistributionCfg;
    float m_systemVoltage = kNoValue;
    bool m_systemVoltageValid = false;
    float m_batteryVoltage = kNoValue;
    float m_regOff = 0.0F;
    float m_wantedVoltage = kDefaultNominalVoltage;
    float m_nominalVoltage = kDefaultNominalVoltage;
    float m_undervoltageRaise = -44.0F;
    float m_undervoltageCease = -47.0F;
    float m_overvoltageRaise = -57.5F;
    float m_overvoltageCease = -57.0F;
    bool m_batteryCfgReceived = false;
    bool m_powerDistributionCfgReceived = false;
    bool m_powerSupplyCfgReceived = false;
    bool m_batteryBackupConfigured = false;
    bool m_runningOnBatteries = false;
    bool m_batteryModeTimerSet = false;
    bool m_ceaseBatteryModeTimerSet = false;
    bool m_psuOk = true;
    bool m_anyPsuAccessible = true;
    bool m_allowThreeMinuteCount = true;
    bool m_acLostSignalled = false;
    std::uint32_t m_cabinetNo = 0;
    std::uint32_t m_fusesOpened = 0;
    bool m_overloadHandled = false;
    bool m_chargerInitiated = false;
    bool m_batteryLogInitiated = false;
    bool m_bfusInitiated = false;
    bool m_pdusInitiated = false;
    bool m_batteryTestInitiated = false;
    bool m_enabled = false;
    // What keeps the fault of unusable limits standing.
    bool m_bfuLimitsRefused = false;
    bool m_pduLimitsRefused = false;
    bool m_nominalRefused = false;
    bool m_psuLimitsRefused = false;
};
