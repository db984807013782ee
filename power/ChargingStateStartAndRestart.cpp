#include "power/ChargingStateStartAndRestart.h"

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

void ChargingStateStartAndRestart::initCharging()
{
    SSC_TRACE(batteryGroup(), kFlow, "Charging is initiated");
    startTimer(Callback::kEqualizeCycleTimer, Callback::kDayMs);
    m_pCharger->setChargeTargetVoltage(m_pCfg->chargingVoltage);
    m_pCharger->setFirstRegulationVoltage(Callback::kFirstRegulationVoltage);
    m_pCharger->setChargingType(charging_state::kFloat);
    // A shared battery is discharged by others as well: its count would mean nothing.
    m_pCharger->setCapacityCounting(m_pCfg->sharedBattery == 0 && m_pCfg->totalDischargeCapacity != 0.0F);
    if (m_pCharger->anyBfuOperational() && m_pCharger->anyBfuConnected())
        changeState(m_pCharger->anyBfuSlowCharging() ? charging_state::kSlow : charging_state::kSoftStart);
    else
        changeState(charging_state::kFixed);
}

void ChargingStateStartAndRestart::contactRestored()
{
    if (isTimerRunning(Callback::kBoostTimer)) {
        SSC_TRACE(batteryGroup(), kError, "Illegal change between ChargingTypes: from %d to %d", 0, 2);
    } else if (isTimerRunning(Callback::kEqualizeTimer)) {
        SSC_TRACE(batteryGroup(), kError, "Illegal change between charging states: from %d to %d", 0, 2);
    } else {
        startDisconnectTimer();
        changeState(charging_state::kFloat);
    }
}

void ChargingStateStartAndRestart::regulate(float, float, float)
{
    m_pCharger->setWantedVoltage(m_pCfg->chargingVoltage);
}
