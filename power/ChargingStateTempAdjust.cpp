#include "power/ChargingStateTempAdjust.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"

#include <cmath>

using namespace ssc_trace;
using Callback = BatteryChargerCallbackIf;

namespace {

// Cooled: this far under the cease temperature of the BFU's disconnect.
constexpr float kCoolMargin = 2.0F;

// Current in amperes from which a step applies, and the step in volts
// towards a lower absolute voltage; the first row that holds counts.
struct Step {
    float above;
    float step;
};
constexpr Step kSteps[] = {{80.0F, 1.0F}, {50.0F, 0.5F}, {30.0F, 0.2F}, {15.0F, 0.02F}};
constexpr float kRaiseBelow = 5.0F;
constexpr float kRaiseStep = 0.02F;

} // namespace

void ChargingStateTempAdjust::enter()
{
    ChargingState::enter();
    SSC_TRACE(batteryGroup(), kFlow, "TEMP_ADJUST: use first regulation system volt value.");
    m_pCharger->setWantedVoltage(Callback::kFirstRegulationVoltage);
    m_firstPass = true;
}

void ChargingStateTempAdjust::acMainsLost()
{
    stopTimersAndDischarge({Callback::kBoostTimer, Callback::kEqualizeTimer, Callback::kDisconnectTimer});
}

void ChargingStateTempAdjust::enterSlowCharging()
{
    m_pCharger->setChargingType(charging_state::kTempAdjust);
    changeState(charging_state::kSlow);
}

void ChargingStateTempAdjust::checkConditions(float, float, float)
{
    const float cool = static_cast<float>(m_pCfg->batteryDisconnectTemp) -
                       static_cast<float>(m_pCfg->batteryDisconnectTempCeaseOffset) - kCoolMargin;
    if (m_pCharger->getHighestTemperature() >= cool) return;
    m_pCharger->setFirstRegulationVoltage(m_pCharger->getWantedVoltage());
    changeState(charging_state::kSoftStart);
}

void ChargingStateTempAdjust::regulate(float, float, float current)
{
    // The first pass runs at the entry voltage: the system has yet to reach it.
    if (m_firstPass) {
        m_firstPass = false;
        return;
    }
    const float wanted = m_pCharger->getWantedVoltage();
    for (const Step& step : kSteps) {
        if (current > step.above) {
            m_pCharger->setWantedVoltage(wanted + step.step);
            return;
        }
    }
    if (current < kRaiseBelow) m_pCharger->setWantedVoltage(wanted - kRaiseStep);
}
