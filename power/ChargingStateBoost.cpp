#include "power/ChargingStateBoost.h"

#include "frame/FaultIds.h"
#include "frame/OsService.h"
#include "frame/SscTrace.h"
#include "ose/Format.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"
#include "power/PowerDistributionCfg.h"

#include <cmath>

using namespace ssc_trace;
using Callback = BatteryChargerCallbackIf;

#include <algorithm>

namespace {

constexpr std::int64_t kMinIncreaseMs = 10'800'000; // 3 hours
constexpr std::int64_t kMaxIncreaseMs = 43'200'000; // 12 hours
constexpr std::int64_t kIncreasePerDayMs = 1'080'000;
constexpr std::int64_t kFullIncreaseDays = 30;
// After this long, or with no boost at all, the battery gets the longest increase.
constexpr std::int64_t kLongAgoDays = 40;
constexpr std::uint32_t kMinutesPerDay = 1440;

} // namespace

void ChargingStateBoost::acMainsLost() { stopTimersAndDischarge({Callback::kBoostTimer}); }

void ChargingStateBoost::enterSlowCharging()
{
    m_pCharger->setChargingType(charging_state::kBoost);
    changeState(charging_state::kSlow);
}

bool ChargingStateBoost::exit()
{
    stopTimer(Callback::kBoostTimer);
    m_lastBoostTime = OsService::getMinutes();
    return true;
}

void ChargingStateBoost::checkConditions(float, float batteryVoltage, float)
{
    if (std::fabs(batteryVoltage) >= std::fabs(m_pCfg->increasedChargeVoltage) &&
        !isTimerRunning(Callback::kBoostTimer))
        startTimer(Callback::kBoostTimer, boostTimeMs(OsService::getMinutes()));
    checkTemperatureAndCurrent();
}

void ChargingStateBoost::regulate(float, float, float)
{
    m_pCharger->setWantedVoltage(m_pCfg->increasedChargeVoltage);
}

void ChargingStateBoost::boostTimerExpired()
{
    m_pCharger->setChargingType(charging_state::kBoost);
    startDisconnectTimer();
    changeState(charging_state::kFloat);
}

void ChargingStateBoost::batteryStayedCharged()
{
    if (m_pCfg->chargingMode == BatteryBackupCfg::kChargingModeAutomatic && m_pCfg->sharedBattery == 0)
        changeState(charging_state::kFloat);
}

std::uint32_t ChargingStateBoost::boostTimeMs(std::uint32_t nowMinutes) const
{
    const std::uint32_t base = std::min(m_pCfg->boostChargeTime, Callback::kMaxRunHours) * Callback::kHourMs;
    const std::int64_t days =
        nowMinutes >= m_lastBoostTime ? static_cast<std::int64_t>((nowMinutes - m_lastBoostTime) / kMinutesPerDay) : 0;
    std::int64_t increase = 0;
    if (m_pCfg->chargingMode == BatteryBackupCfg::kChargingModeAutomatic) {
        if (m_lastBoostTime == 0 || days > kLongAgoDays)
            increase = kMaxIncreaseMs;
        else
            increase = std::clamp((kFullIncreaseDays - days) * kIncreasePerDayMs + kMinIncreaseMs, kMinIncreaseMs,
                                  kMaxIncreaseMs);
    }
    const std::uint32_t total = static_cast<std::uint32_t>(
        std::min<std::int64_t>(static_cast<std::int64_t>(base) + increase, Callback::kMaxRunMs));
    SSC_TRACE(batteryGroup(), kFlow, "daysSinceLastBoost == %d. boostChargeTime + boostIncreaseTime = %d + %d = %d",
              static_cast<int>(days), static_cast<int>(base), static_cast<int>(increase), static_cast<int>(total));
    return total;
}
