#include "power/ChargingStateEqualize.h"

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

void ChargingStateEqualize::acMainsLost()
{
    stopTimersAndDischarge({Callback::kEqualizeTimer, Callback::kDisconnectTimer});
}

void ChargingStateEqualize::enterSlowCharging()
{
    m_pCharger->setChargingType(charging_state::kEqualize);
    changeState(charging_state::kSlow);
}

bool ChargingStateEqualize::exit()
{
    stopTimer(Callback::kEqualizeTimer);
    return true;
}

bool ChargingStateEqualize::stopEqualize()
{
    startDisconnectTimer();
    changeState(charging_state::kFloat);
    return true;
}

void ChargingStateEqualize::checkConditions(float, float batteryVoltage, float)
{
    if (std::fabs(batteryVoltage) >= std::fabs(m_pCfg->increasedChargeVoltage) &&
        !isTimerRunning(Callback::kEqualizeTimer))
        startTimer(Callback::kEqualizeTimer, hoursToMs(m_pCfg->equalizeChargeTime));
    checkTemperatureAndCurrent();
}

void ChargingStateEqualize::regulate(float, float, float)
{
    m_pCharger->setWantedVoltage(m_pCfg->increasedChargeVoltage);
}

void ChargingStateEqualize::equalizeTimerExpired()
{
    if (m_pCharger->isIntermittentPending() && m_pCharger->isFullyCharged()) {
        changeState(charging_state::kIntermittent);
        return;
    }
    startDisconnectTimer();
    changeState(charging_state::kFloat);
}
