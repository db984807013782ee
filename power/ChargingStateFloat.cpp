#include "power/ChargingStateFloat.h"

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

void ChargingStateFloat::acMainsLost() { stopTimersAndDischarge({Callback::kDisconnectTimer}); }

void ChargingStateFloat::enterSlowCharging()
{
    m_pCharger->setChargingType(charging_state::kFloat);
    changeState(charging_state::kSlow);
}

bool ChargingStateFloat::startEqualize()
{
    // An equalize time of 0 switches equalizing off; the request is still taken.
    if (m_pCfg->equalizeChargeTime != 0) changeState(charging_state::kEqualize);
    return true;
}

void ChargingStateFloat::checkConditions(float, float, float)
{
    // A change to intermittent charging that another state had to refuse is
    // made once the battery is full: a battery that stays full never starts
    // the 30-minute watch that would otherwise make it.
    if (m_pCharger->isIntermittentPending() && m_pCharger->isFullyCharged()) {
        changeState(charging_state::kIntermittent);
        return;
    }
    checkTemperatureAndCurrent();
}

void ChargingStateFloat::regulate(float, float, float)
{
    m_pCharger->setWantedVoltage(temperatureCompensatedVoltage(*m_pCfg, m_pCharger->getLowestTemperature()));
}

void ChargingStateFloat::batteryStayedCharged()
{
    if (m_pCharger->isIntermittentPending() && m_pCharger->isFullyCharged())
        changeState(charging_state::kIntermittent);
}
