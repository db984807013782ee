#pragma once
// One state of the battery charger. Each event is a virtual operation whose
// default here stands wherever a state doesn't change it; the states move
// the machine on through the callback.

#include "frame/Noncopyable.h"
#include "frame/TimerId.h"

#include <cstdint>
#include <initializer_list>

class BatteryBackupCfg;
class BatteryChargerCallbackIf;
class BatteryControlIf;
class FaultsRegisterIf;

class ChargingState : private Noncopyable {
public:
    // A current of at least this many amperes, by absolute value, charges
    // or discharges the battery; a shared battery needs more to count.
    static constexpr float kChargeThreshold = 2.0F;
    static constexpr float kSharedChargeThreshold = 10.0F;
    // One voltage control pass of 6 seconds, in hours.
    static constexpr float kPassHours = 0.0016666667F;
    // A recharge must give back this share of the last discharge.
    static constexpr float kRechargeShare = 0.7F;
    // A temperature this far under the disconnect temperature already counts as hot.
    static constexpr float kHotMargin = 5.0F;

    ChargingState(FaultsRegisterIf* faults, BatteryBackupCfg* cfg, BatteryChargerCallbackIf* charger,
                  BatteryControlIf* control);
    virtual ~ChargingState() = default;

    virtual const char* getName() const = 0;
    virtual void batteryConnected() {}
    virtual void batteryDisconnected();
    virtual void lostContactWithBfus();
    virtual void bfuFault();
    virtual void bfuRestarted();
    virtual void allPsusFailed();
    virtual void contactRestored() {}
    virtual void initCharging() {}
    virtual void acMainsReturned() {}
    virtual void acMainsLost() {}
    virtual void enter();
    // False keeps the machine in this state.
    virtual bool exit() { return true; }
    virtual void psuRestored() {}
    virtual void enterSlowCharging();
    virtual void exitSlowCharging() {}
    virtual void slowTimerExpired() {}
    virtual bool startEqualize();
    virtual bool stopEqualize() { return false; }
    virtual void startBatteryTest();
    virtual void stopBatteryTest() {}
    virtual void multipleSubracks();
    virtual void decideNextChargingType() {}
    virtual void boostTimerExpired() {}
    virtual void equalizeTimerExpired() {}
    virtual void powerDisturbanceTimerExpired() {}
    virtual void intermittentConnectTimerExpired() {}
    virtual void batteryStayedCharged() {}
    virtual void checkConditions(float systemVoltage, float batteryVoltage, float current);
    virtual void regulate(float systemVoltage, float batteryVoltage, float current);
    // `recharged` and `discharged` are the charger's counts, in ampere hours.
    virtual void countCapacity(float current, float& recharged, float& discharged);
    virtual void connectBattery(bool connect, bool extended);

    // The charging voltage moved by the battery temperature, kept within the
    // configured compensation range.
    static float temperatureCompensatedVoltage(const BatteryBackupCfg& cfg, float temperature);
    static float chargeThreshold(const BatteryBackupCfg& cfg);

protected:
    bool changeState(std::uint32_t stateId);
    void startTimer(TimerType type, std::uint32_t timeMs);
    // True when it was running.
    bool stopTimer(TimerType type);
    bool isTimerRunning(TimerType type);
    void stopTimersAndDischarge(std::initializer_list<TimerType> timers);
    // A hour count as a timer time, cut at the longest single run.
    static std::uint32_t hoursToMs(std::uint32_t hours);

    // The highest battery temperature is near the disconnect temperature.
    bool isTooWarm();
    // High temperature leads to TempAdjust, a high charge current to
    // CurrentLimitation, each remembering where charging was.
    void checkTemperatureAndCurrent();
    // Timer 43 counts down to Intermittent; it runs on across the states
    // and is never restarted while it runs.
    void startDisconnectTimer();
    // SoftStart and CurrentLimitation hand over to what was running before.
    void leaveLimitState();
    void raiseFault(std::int32_t faultId);
    void ceaseFault(std::int32_t faultId);

    FaultsRegisterIf* m_pFaults;
    BatteryBackupCfg* m_pCfg;
    BatteryChargerCallbackIf* m_pCharger;
    BatteryControlIf* m_pControl;
};
