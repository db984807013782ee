#include "power/ChargingStateFixed.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"

#include <cmath>

using namespace ssc_trace;
using Callback = BatteryChargerCallbackIf;

void ChargingStateFixed::enter()
{
    ChargingState::enter();
    // Each stay watches its own dip: an old one must not send a later return to Boost.
    m_lowestBatteryVoltage = kStartVoltage;
    m_pCharger->setWantedVoltage(m_pCfg->chargingVoltage);
}

void ChargingStateFixed::acMainsLost()
{
    stopTimersAndDischarge({Callback::kBoostTimer, Callback::kEqualizeTimer, Callback::kDisconnectTimer});
}

void ChargingStateFixed::checkConditions(float, float batteryVoltage, float)
{
    if (std::fabs(batteryVoltage) < std::fabs(m_lowestBatteryVoltage)) m_lowestBatteryVoltage = batteryVoltage;
}

void ChargingStateFixed::resume()
{
    if (m_pCfg->boostChargeTime != 0 &&
        std::fabs(m_lowestBatteryVoltage) < std::fabs(m_pCfg->boostChargeTriggerVoltage)) {
        if (changeState(charging_state::kBoost)) m_pCharger->clearBoostPending();
        return;
    }
    startDisconnectTimer();
    changeState(charging_state::kFloat);
}
