#pragma once
// Decides the voltage the system must hold for the batteries: a machine of
// eleven charging states, driven by the power control's events, its voltage
// control passes and the BFU summary, with the charger's own timers.

#include "frame/Noncopyable.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"

#include <array>
#include <cstdint>
#include <memory>

class BatteryBackupCfg;
class BatteryControlIf;
class BatteryLogIf;
class BatteryStatus;
class BfuStatusIf;
class ChargingState;
class FaultsRegisterIf;
class PowerDistributionCfg;

class BatteryCharger : public BatteryChargerIf, public BatteryChargerCallbackIf, private Noncopyable {
public:
    static constexpr float kDefaultVoltage = -54.5F;

    // Nothing is owned but the states and the battery status; both
    // configurations are the manager's records, read in place. The log may
    // be NIL; so may the others, with a trace, and then the charger stays
    // safe: no BFU, no faults, default configuration.
    BatteryCharger(BatteryControlIf* control, FaultsRegisterIf* faults, BatteryBackupCfg* batteryCfg,
                   PowerDistributionCfg* distributionCfg, BfuStatusIf* bfuStatus, BatteryLogIf* batteryLog);
    ~BatteryCharger() override;

    void timeout(TimerId timerId) override;

    // BatteryChargerIf.
    bool handleEvent(std::uint32_t event) override;
    std::uint32_t getChargingStateId() const override { return m_stateId; }
    void updateCharging(float systemVoltage, float batteryVoltage, float batteryCurrent) override;
    float getWantedVoltage() const override { return m_wantedVoltage; }
    float getChargeTargetVoltage() const override { return m_chargeTargetVoltage; }
    void handleBfuStatus() override;
    const char* getChargingStateName() const override;
    bool isIntermittent() const override { return m_stateId == charging_state::kIntermittent; }
    void setNominalVoltage(float volts) override { m_nominalVoltage = volts; }
    bool isFullyCharged() const override;
    bool checkBatteryStatus(float batteryVoltage, float batteryCurrent) override;
    bool isFixed() const override { return m_stateId == charging_state::kFixed; }
    bool changeState(std::uint32_t stateId) override;
    float getAverageTemperature() override;
    float getHighestTemperature() override;
    float getLowestTemperature() override;
    bool anyBatteryPresent() override;
    float getBatteryVoltage() override;
    float getLowestBatteryVoltage() override;
    bool anyBfuOperational() override;
    bool anyBfuSlowCharging() override;
    bool anyHwFault() override;
    bool anyMainLoadDisconnected() override;
    bool anyBatteryOverTemperature() override;
    bool allTempSensorsOk() override;
    bool anyBfuConnected() override;
    bool allBfusConnected() override;
    bool allBfusOperational() override;
    float getBatteryCurrent() override;
    float getLowestCurrent() override;
    float getHighestCurrent() override;

    // BatteryChargerCallbackIf.
    void setChargingTypeToCurrent() override { m_chargingType = m_stateId; }
    void setChargingType(std::uint32_t stateId) override { m_chargingType = stateId; }
    std::uint32_t getChargingType() const override { return m_chargingType; }
    std::uint32_t getPreviousStateId() const override { return m_previousStateId; }
    void setChargeTargetVoltage(float volts) override { m_chargeTargetVoltage = volts; }
    float getSoftStartTarget() const override { return m_softStartTarget; }
    void setSoftStartTarget(float volts) override { m_softStartTarget = volts; }
    void setIntermittentPending() override { m_intermittentPending = true; }
    void clearIntermittentPending() override { m_intermittentPending = false; }
    bool isIntermittentPending() const override { return m_intermittentPending; }
    void setBoostPending() override { m_boostPending = true; }
    void clearBoostPending() override { m_boostPending = false; }
    bool isBoostPending() const override { return m_boostPending; }
    void setWantedVoltage(float volts) override { m_wantedVoltage = volts; }
    float getFirstRegulationVoltage() const override { return m_firstRegulationVoltage; }
    void setFirstRegulationVoltage(float volts) override { m_firstRegulationVoltage = volts; }
    void setRemainingDisconnectHours(std::uint16_t hours) override { m_remainingDisconnectHours = hours; }
    std::uint16_t getRemainingDisconnectHours() const override { return m_remainingDisconnectHours; }
    bool isBatteryConnected() const override { return m_batteryConnected; }
    bool isSlowCharging() const override { return m_slowCharging; }
    bool isPsuOk() const override { return m_psuOk; }
    bool isAcOk() const override { return m_acOk; }
    bool chargeCurrentAboveLimit(float limit, float& result) override;
    float getNominalVoltage() const override { return m_nominalVoltage; }
    void setDischargedCapacity(float ampereHours) override { m_dischargedCapacity = ampereHours; }
    std::uint16_t getCurrentLimit() const override { return m_currentLimit; }
    void setCurrentLimit(std::uint16_t amperes) override { m_currentLimit = amperes; }
    bool batteryVoltageBelowConnectLimit() override;
    bool allBfusHaveVoltageConnect() override;
    const PowerDistributionCfg& getPowerDistributionCfg() const override { return *m_pPowerDistributionCfg; }
    void setCapacityCounting(bool on) override;

    // For the log and the tests: the counts of the present charge.
    float getRechargedCapacity() const { return m_rechargedCapacity; }
    float getDischargedCapacity() const { return m_dischargedCapacity; }
    bool isCapacityCounting() const { return m_capacityCounting; }
    std::uint16_t getEqualizeDayCount() const { return m_equalizeDayCount; }

private:
    // Where a NIL pointer of the constructor is replaced by something harmless.
    struct Fallbacks;

    ChargingState& state() const { return *m_states[m_stateId]; }
    void equalizeDayPassed();
    void disconnectTimerExpired();

    std::unique_ptr<Fallbacks> m_pFallbacks;
    std::array<std::unique_ptr<ChargingState>, charging_state::kCount> m_states;
    std::uint32_t m_stateId = charging_state::kStartAndRestart;
    std::uint32_t m_chargingType = 0;
    std::uint32_t m_previousStateId = 0;
    BatteryControlIf* m_pBatteryControl;
    FaultsRegisterIf* m_pFaults;
    std::unique_ptr<BatteryStatus> m_pBatteryStatus;
    BatteryBackupCfg* m_pBatteryCfg;
    PowerDistributionCfg* m_pPowerDistributionCfg;
    float m_chargeTargetVoltage = kDefaultVoltage;
    float m_softStartTarget = kDefaultVoltage;
    bool m_intermittentPending = false;
    bool m_boostPending = false;
    float m_wantedVoltage = 0.0F;
    float m_firstRegulationVoltage = kFirstRegulationVoltage;
    std::uint16_t m_remainingDisconnectHours = 0;
    std::uint16_t m_equalizeDayCount = 0;
    bool m_slowCharging = false;
    BfuStatusIf* m_pBfuStatus;
    // Not called by the charging rules: the log reads the charger, not the reverse.
    BatteryLogIf* m_pBatteryLog;
    bool m_batteryConnected = false;
    float m_nominalVoltage = kDefaultVoltage;
    float m_rechargedCapacity = 0.0F;
    float m_dischargedCapacity = 0.0F;
    bool m_capacityCounting = false;
    std::uint16_t m_currentLimit = 0;
    bool m_psuOk = true;
    bool m_acOk = true;
};
