#include "power/ChargingState.h"

#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "ose/Format.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"
#include "power/BatteryControlIf.h"

#include <cmath>

using namespace ssc_trace;

namespace {

constexpr FuncId_t kBatteryBackup{func_type::kBatteryBackup, 0};
// What a BFU summary gives when no BFU has a value.
constexpr float kNotAvailable = 999.0F;

} // namespace

ChargingState::ChargingState(FaultsRegisterIf* faults, BatteryBackupCfg* cfg, BatteryChargerCallbackIf* charger,
                             BatteryControlIf* control)
    : m_pFaults(faults), m_pCfg(cfg), m_pCharger(charger), m_pControl(control)
{
}

void ChargingState::batteryDisconnected() { changeState(charging_state::kFixed); }
void ChargingState::lostContactWithBfus() { changeState(charging_state::kFixed); }
void ChargingState::bfuFault() { changeState(charging_state::kFixed); }
void ChargingState::allPsusFailed() { changeState(charging_state::kFixed); }
void ChargingState::bfuRestarted() { changeState(charging_state::kSoftStart); }
void ChargingState::multipleSubracks() { changeState(charging_state::kSoftStart); }
void ChargingState::startBatteryTest() { changeState(charging_state::kDischarge); }

void ChargingState::enter() { m_pCharger->setDischargedCapacity(m_pCfg->totalDischargeCapacity); }

void ChargingState::enterSlowCharging()
{
    SSC_TRACE(batteryGroup(), kFlow, "Entering slow charge denied in current state %s.", getName());
}

bool ChargingState::startEqualize()
{
    SSC_TRACE(batteryGroup(), kFlow, "Start equalized charging denied. Cannot be started in current state %s.",
              getName());
    return false;
}

void ChargingState::checkConditions(float, float, float) {}
void ChargingState::regulate(float, float, float) {}

void ChargingState::countCapacity(float current, float& recharged, float& discharged)
{
    const float covered = kRechargeShare * std::fabs(discharged);
    if (std::fabs(current) < chargeThreshold(*m_pCfg)) {
        if (std::fabs(recharged) < covered)
            raiseFault(fault_id::kConsumedCapacityNotCovered);
        else
            ceaseFault(fault_id::kConsumedCapacityNotCovered);
        return;
    }
    recharged += current * kPassHours;
    if (std::fabs(recharged) > covered) {
        m_pCharger->setCapacityCounting(false);
        ceaseFault(fault_id::kConsumedCapacityNotCovered);
    }
}

void ChargingState::connectBattery(bool connect, bool extended)
{
    if (m_pControl != nullptr) m_pControl->connectBattery(connect, extended);
}

float ChargingState::temperatureCompensatedVoltage(const BatteryBackupCfg& cfg, float temperature)
{
    float volts = cfg.chargingVoltage - (temperature - cfg.nominalTemp) * cfg.tempCompVoltageSlope;
    if (std::fabs(volts) > std::fabs(cfg.tempCompMaxVoltage)) volts = cfg.tempCompMaxVoltage;
    if (std::fabs(volts) < std::fabs(cfg.tempCompMinVoltage)) volts = cfg.tempCompMinVoltage;
    return volts;
}

float ChargingState::chargeThreshold(const BatteryBackupCfg& cfg)
{
    return cfg.sharedBattery != 0 ? kSharedChargeThreshold : kChargeThreshold;
}

bool ChargingState::changeState(std::uint32_t stateId) { return m_pCharger->changeState(stateId); }

void ChargingState::startTimer(TimerType type, std::uint32_t timeMs)
{
    TimerService::startTimer(timeMs, type, m_pCharger, 0);
}

bool ChargingState::stopTimer(TimerType type)
{
    if (!isTimerRunning(type)) return false;
    TimerService::stopTimer(type, m_pCharger, 0);
    return true;
}

bool ChargingState::isTimerRunning(TimerType type) { return TimerService::isTimerRunning(type, m_pCharger, 0) != 0; }

void ChargingState::stopTimersAndDischarge(std::initializer_list<TimerType> timers)
{
    for (TimerType type : timers) stopTimer(type);
    changeState(charging_state::kDischarge);
}

std::uint32_t ChargingState::hoursToMs(std::uint32_t hours)
{
    return hours >= BatteryChargerCallbackIf::kMaxRunHours ? BatteryChargerCallbackIf::kMaxRunMs
                                                           : hours * BatteryChargerCallbackIf::kHourMs;
}

bool ChargingState::isTooWarm()
{
    // Without a reading (999.0) nothing is known to be warm; a BFU without
    // a healthy sensor sends the machine to Fixed by its own event.
    const float highest = m_pCharger->getHighestTemperature();
    return highest != kNotAvailable && highest >= static_cast<float>(m_pCfg->batteryDisconnectTemp) - kHotMargin;
}

void ChargingState::checkTemperatureAndCurrent()
{
    if (isTooWarm()) {
        m_pCharger->setChargingTypeToCurrent();
        changeState(charging_state::kTempAdjust);
        return;
    }
    float limit = 0.0F;
    if (!m_pCharger->chargeCurrentAboveLimit(static_cast<float>(m_pCfg->chargeMaxCurrent), limit)) return;
    m_pCharger->setChargingTypeToCurrent();
    m_pCharger->setCurrentLimit(static_cast<std::uint16_t>(limit));
    changeState(charging_state::kCurrentLimitation);
}

void ChargingState::startDisconnectTimer()
{
    // A shared battery charged automatically is never left idle.
    if (m_pCfg->sharedBattery != 0 && m_pCfg->chargingMode == BatteryBackupCfg::kChargingModeAutomatic) return;
    const std::uint32_t hours = m_pCfg->intermittentChargeDisconnectTime;
    if (hours == 0 || isTimerRunning(BatteryChargerCallbackIf::kDisconnectTimer) ||
        m_pCharger->isIntermittentPending())
        return;
    // What a longer time leaves for the next run; nothing of an earlier run
    // that was stopped may add to this one.
    m_pCharger->setRemainingDisconnectHours(static_cast<std::uint16_t>(
        hours > BatteryChargerCallbackIf::kMaxRunHours ? hours - BatteryChargerCallbackIf::kMaxRunHours : 0));
    startTimer(BatteryChargerCallbackIf::kDisconnectTimer, hoursToMs(hours));
    SSC_TRACE(batteryGroup(), kFlow, "INTERMITT_CHARGE_DISC_TIMER started");
}

void ChargingState::leaveLimitState()
{
    if (isTimerRunning(BatteryChargerCallbackIf::kBoostTimer)) {
        changeState(charging_state::kBoost);
    } else if (!isTimerRunning(BatteryChargerCallbackIf::kEqualizeTimer)) {
        startDisconnectTimer();
        changeState(charging_state::kFloat);
    } else {
        changeState(charging_state::kEqualize);
    }
}

void ChargingState::raiseFault(std::int32_t faultId)
{
    if (m_pFaults != nullptr && !m_pFaults->isFaultActive(faultId, kBatteryBackup))
        m_pFaults->raiseFault(faultId, kBatteryBackup);
}

void ChargingState::ceaseFault(std::int32_t faultId)
{
    if (m_pFaults != nullptr && m_pFaults->isFaultActive(faultId, kBatteryBackup))
        m_pFaults->ceaseFault(faultId, kBatteryBackup);
}
