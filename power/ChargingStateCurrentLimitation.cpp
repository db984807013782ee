#include "power/ChargingStateCurrentLimitation.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"

#include <cmath>

using namespace ssc_trace;
using Callback = BatteryChargerCallbackIf;

void ChargingStateCurrentLimitation::acMainsLost()
{
    stopTimersAndDischarge({Callback::kBoostTimer, Callback::kEqualizeTimer, Callback::kDisconnectTimer});
}

void ChargingStateCurrentLimitation::enterSlowCharging() { changeState(charging_state::kSlow); }

void ChargingStateCurrentLimitation::checkConditions(float, float, float)
{
    if (isTooWarm()) {
        changeState(charging_state::kTempAdjust);
        return;
    }
    const float limit = static_cast<float>(m_pCharger->getCurrentLimit());
    if (std::fabs(m_pCharger->getWantedVoltage()) >= std::fabs(m_pCharger->getNominalVoltage()) &&
        m_pCharger->getHighestCurrent() <= 0.9F * limit)
        leaveLimitState();
}

void ChargingStateCurrentLimitation::regulate(float systemVoltage, float, float)
{
    const float limit = static_cast<float>(m_pCharger->getCurrentLimit());
    const float highest = m_pCharger->getHighestCurrent();
    const float wanted = m_pCharger->getWantedVoltage();
    float next = wanted;
    if (highest > 0.9F * limit)
        next = wanted + 0.5F;
    else if (std::fabs(systemVoltage) < std::fabs(wanted) - 0.6F)
        next = wanted; // the system has not followed the last step yet
    else if (highest < 0.5F * limit)
        next = wanted - 0.5F;
    else if (highest < 0.7F * limit)
        next = wanted - 0.2F;
    else if (highest < 0.8F * limit)
        next = wanted - 0.1F;
    else if (highest < 0.87F * limit)
        next = wanted - 0.05F;
    m_pCharger->setWantedVoltage(next);
}
