#include "power/BatteryStatus.h"

#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/OsService.h"
#include "frame/TimerService.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"
#include "power/ChargingState.h"

#include <cmath>

namespace {

constexpr FuncId_t kBatteryBackup{func_type::kBatteryBackup, 0};
constexpr float kNotAvailable = 999.0F;
constexpr TimerType kStayedChargedTimer = BatteryChargerCallbackIf::kStayedChargedTimer;

} // namespace

BatteryStatus::BatteryStatus(BatteryChargerIf* charger, FaultsRegisterIf* faults, BatteryBackupCfg* cfg)
    : m_pCharger(charger), m_pFaults(faults), m_pCfg(cfg)
{
}

bool BatteryStatus::checkBatteryStatus(float batteryVoltage, float current)
{
    if (!m_pCharger->anyBfuOperational()) {
        stopStayedChargedTimer();
        return true;
    }
    if (batteryVoltage == kNotAvailable || current == kNotAvailable) return false;
    watchRecharge(current);
    return true;
}

void BatteryStatus::stayedCharged()
{
    m_fullyCharged = true;
    if (m_pFaults != nullptr && m_pFaults->isFaultActive(fault_id::kRechargeTooLong, kBatteryBackup))
        m_pFaults->ceaseFault(fault_id::kRechargeTooLong, kBatteryBackup);
}

// A reading at or above the threshold clears the full charge only when the
// one before was high as well, so that a single spike doesn't.
void BatteryStatus::watchRecharge(float current)
{
    const std::uint32_t now = OsService::getMinutes();
    if (std::fabs(current) < ChargingState::chargeThreshold(*m_pCfg)) {
        m_recharging = false;
        if (!m_fullyCharged && TimerService::isTimerRunning(kStayedChargedTimer, m_pCharger, 0) == 0)
            TimerService::startTimer(kStayedChargedMs, kStayedChargedTimer, m_pCharger, 0);
        if (m_rechargeSeen) {
            m_rechargeStart = 0;
            m_rechargeSeen = false;
            m_pCfg->rechargeTime = 0;
        }
    } else if (m_recharging) {
        m_fullyCharged = false;
        stopStayedChargedTimer();
        if (m_rechargeStart != 0 && now >= m_rechargeStart && now - m_rechargeStart > kMaxRechargeMinutes && m_pFaults != nullptr &&
            !m_pFaults->isFaultActive(fault_id::kRechargeTooLong, kBatteryBackup))
            m_pFaults->raiseFault(fault_id::kRechargeTooLong, kBatteryBackup);
    } else {
        m_recharging = true;
        m_rechargeSeen = true;
        // The configuration carries the recharge time across a restart.
        m_rechargeStart = now - m_pCfg->rechargeTime;
    }
}

void BatteryStatus::stopStayedChargedTimer()
{
    if (TimerService::isTimerRunning(kStayedChargedTimer, m_pCharger, 0) != 0)
        TimerService::stopTimer(kStayedChargedTimer, m_pCharger, 0);
}
