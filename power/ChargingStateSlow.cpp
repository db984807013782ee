#include "power/ChargingStateSlow.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"

#include <cmath>

using namespace ssc_trace;
using Callback = BatteryChargerCallbackIf;

namespace {

constexpr std::uint32_t kStepMs = 60'000;
constexpr float kStep = 1.0F;

} // namespace

void ChargingStateSlow::enter()
{
    ChargingState::enter();
    m_pCharger->setWantedVoltage(Callback::kFirstRegulationVoltage);
    if (!isTimerRunning(Callback::kSlowTimer)) startTimer(Callback::kSlowTimer, kStepMs);
}

bool ChargingStateSlow::exit()
{
    stopTimer(Callback::kSlowTimer);
    return true;
}

void ChargingStateSlow::acMainsLost()
{
    stopTimersAndDischarge({Callback::kBoostTimer, Callback::kEqualizeTimer, Callback::kDisconnectTimer});
}

void ChargingStateSlow::enterSlowCharging()
{
    SSC_TRACE(batteryGroup(), kFlow, "State not changed. Is already in %s.", getName());
}

void ChargingStateSlow::exitSlowCharging()
{
    if (m_tooWarm) {
        m_tooWarm = false;
        changeState(charging_state::kTempAdjust);
    } else {
        changeState(charging_state::kSoftStart);
    }
}

// The step is +1.0 V, towards a lower absolute voltage, as the pattern of
// the slow charge asks.
void ChargingStateSlow::slowTimerExpired()
{
    m_pCharger->setWantedVoltage(m_pCharger->getWantedVoltage() + kStep);
    startTimer(Callback::kSlowTimer, kStepMs);
}

void ChargingStateSlow::checkConditions(float, float, float)
{
    if (isTooWarm()) m_tooWarm = true;
}
