#include "power/ChargingStateDischarge.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"

#include <cmath>

using namespace ssc_trace;
using Callback = BatteryChargerCallbackIf;

namespace {

// A battery that stayed at or above this, by absolute value, needs no climb.
constexpr float kShallowDischarge = 52.0F;

} // namespace

void ChargingStateDischarge::enter()
{
    m_lowestBatteryVoltage = m_pCfg->chargingVoltage;
    m_slowRequested = false;
    m_pCharger->setCapacityCounting(m_pCfg->sharedBattery == 0);
}

bool ChargingStateDischarge::exit()
{
    if (!m_pCharger->isAcOk()) return false;
    m_pCharger->setChargeTargetVoltage(m_lowestBatteryVoltage);
    m_lowestBatteryVoltage = m_pCfg->chargingVoltage;
    return true;
}

void ChargingStateDischarge::checkConditions(float, float batteryVoltage, float)
{
    if (std::fabs(batteryVoltage) < std::fabs(m_lowestBatteryVoltage)) m_lowestBatteryVoltage = batteryVoltage;
}

void ChargingStateDischarge::regulate(float, float, float)
{
    m_pCharger->setWantedVoltage(m_pCfg->chargingVoltage);
}

void ChargingStateDischarge::countCapacity(float current, float&, float& discharged)
{
    discharged += current * kPassHours;
    m_pCfg->totalDischargeCapacity = discharged;
}

void ChargingStateDischarge::resume()
{
    if (!m_pCharger->anyBfuOperational()) return;
    if (m_slowRequested) {
        changeState(charging_state::kSlow);
    } else if (std::fabs(m_lowestBatteryVoltage) >= kShallowDischarge) {
        changeState(charging_state::kFloat);
    } else {
        m_pCharger->setFirstRegulationVoltage(m_lowestBatteryVoltage);
        if (m_pCfg->boostChargeTime != 0 &&
            std::fabs(m_lowestBatteryVoltage) < std::fabs(m_pCfg->boostChargeTriggerVoltage)) {
            m_pCharger->setChargingType(charging_state::kBoost);
            m_pCharger->setBoostPending();
        } else {
            m_pCharger->setChargingType(charging_state::kFloat);
        }
        changeState(charging_state::kSoftStart);
    }
}
