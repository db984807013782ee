#include "power/ChargingStateSoftStart.h"

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

void ChargingStateSoftStart::enter()
{
    ChargingState::enter();
    SSC_TRACE(batteryGroup(), kFlow, "SOFT_START: use first regulation system voltage value.");
    m_batteryConnected = true;
    if (m_pCharger->getPreviousStateId() == charging_state::kDischarge) {
        m_pCharger->setWantedVoltage(m_pCharger->getFirstRegulationVoltage());
    } else if (m_pCharger->allBfusHaveVoltageConnect() && m_pCharger->isAcOk()) {
        // The BFUs put the battery back themselves once the system voltage
        // has come up to it; until then it is off, so no inrush can flow.
        connectBattery(false, false);
        m_batteryConnected = false;
        m_pCharger->setWantedVoltage(m_pCharger->getFirstRegulationVoltage());
    } else {
        m_pCharger->setWantedVoltage(Callback::kFirstRegulationVoltage);
    }
}

void ChargingStateSoftStart::acMainsLost()
{
    // On battery power the battery must be on the system whatever the climb had reached.
    m_batteryConnected = true;
    stopTimersAndDischarge({Callback::kBoostTimer, Callback::kEqualizeTimer, Callback::kDisconnectTimer});
}

void ChargingStateSoftStart::enterSlowCharging() { changeState(charging_state::kSlow); }

bool ChargingStateSoftStart::startEqualize()
{
    SSC_TRACE(batteryGroup(), kFlow, "Could not start EqualizeCharging in state SOFT_START");
    return false;
}

void ChargingStateSoftStart::checkConditions(float systemVoltage, float, float)
{
    const float target = m_pCharger->getChargingType() == charging_state::kFloat
                             ? temperatureCompensatedVoltage(*m_pCfg, m_pCharger->getLowestTemperature())
                             : m_pCfg->increasedChargeVoltage;
    m_pCharger->setSoftStartTarget(target);
    if (!m_batteryConnected && mayConnect(systemVoltage)) {
        connectBattery(true, true);
        m_batteryConnected = true;
    }
    if (isTooWarm()) {
        changeState(charging_state::kTempAdjust);
        return;
    }
    if (std::fabs(m_pCharger->getWantedVoltage()) < std::fabs(target)) return;
    if (!m_pCharger->allTempSensorsOk() || !m_pCharger->anyBfuOperational() || !m_pCharger->isPsuOk()) {
        changeState(charging_state::kFixed);
    } else if (m_pCharger->isBoostPending()) {
        // A refused change keeps the boost for the next pass.
        if (changeState(charging_state::kBoost)) m_pCharger->clearBoostPending();
    } else {
        leaveLimitState();
    }
}

bool ChargingStateSoftStart::mayConnect(float systemVoltage)
{
    if (!m_pCharger->allBfusHaveVoltageConnect()) return true;
    const PowerDistributionCfg& distribution = m_pCharger->getPowerDistributionCfg();
    const float disconnectCease =
        (std::fabs(static_cast<float>(distribution.mainLoadUndervoltageDisconnect)) +
         static_cast<float>(distribution.undervoltageDisconnectCeaseOffset)) /
        10.0F;
    if (std::fabs(systemVoltage) <= disconnectCease) return false;
    if (m_pCharger->batteryVoltageBelowConnectLimit()) return false;
    // Without any healthy sensor (999.0) the battery is not known to be hot;
    // kept off the bus, it would also keep the machine from the fixed state
    // that a sensor fault leads to.
    const float highest = m_pCharger->getHighestTemperature();
    if (highest != 999.0F && highest >= static_cast<float>(m_pCfg->batteryDisconnectTemp)) return false;
    return !m_pCharger->anyBatteryOverTemperature();
}

void ChargingStateSoftStart::regulate(float systemVoltage, float, float current)
{
    const float limit = static_cast<float>(m_pCfg->chargeMaxCurrent);
    const float wanted = m_pCharger->getWantedVoltage();
    float next = wanted;
    if (current > limit)
        next = wanted + 0.1F;
    else if (std::fabs(systemVoltage) < std::fabs(wanted) - 0.6F)
        next = wanted; // the system has not followed the last step yet
    else if (current < 0.65F * limit)
        next = wanted - 0.5F;
    else if (current < 0.7F * limit)
        next = wanted - 0.2F;
    else if (current < 0.8F * limit)
        next = wanted - 0.1F;
    else if (current < 0.87F * limit)
        next = wanted - 0.05F;
    else if (current < 0.9F * limit)
        next = wanted - 0.02F;
    m_pCharger->setWantedVoltage(next);
}
