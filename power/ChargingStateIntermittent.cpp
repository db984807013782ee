#include "power/ChargingStateIntermittent.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryChargerCallbackIf.h"
#include "power/BatteryChargerIf.h"

#include <cmath>

using namespace ssc_trace;
using Callback = BatteryChargerCallbackIf;

namespace {

// A battery that gives this much, or more, feeds the system: it is on it.
constexpr float kDischargingCurrent = -2.0F;
// More connections than this in one rest end it.
constexpr std::uint8_t kMaxConnects = 2;
constexpr std::uint32_t kPowerDisturbanceMs = 30'000;

} // namespace

void ChargingStateIntermittent::enter()
{
    ChargingState::enter();
    connectBattery(false, true);
    m_pCharger->clearIntermittentPending();
    startTimer(Callback::kIntermittentConnectTimer, hoursToMs(m_pCfg->intermittentChargeConnectTime));
}

bool ChargingStateIntermittent::exit()
{
    connectBattery(true, true);
    return true;
}

void ChargingStateIntermittent::acMainsLost() { stopTimersAndDischarge({Callback::kIntermittentConnectTimer}); }

void ChargingStateIntermittent::connectBattery(bool connect, bool extended)
{
    if (stopTimer(Callback::kIntermittentConnectTimer))
        SSC_TRACE(batteryGroup(), kFlow, "INTERMITT_CHARGE_CONN_TIMER canceled");
    ChargingState::connectBattery(connect, extended);
}

void ChargingStateIntermittent::regulate(float, float, float)
{
    m_pCharger->setWantedVoltage(m_pCfg->chargingVoltage);
}

void ChargingStateIntermittent::checkConditions(float, float batteryVoltage, float current)
{
    if (std::fabs(batteryVoltage) <= std::fabs(m_pCfg->intermittentChargeConnectVoltage)) {
        raiseFault(fault_id::kIntermittentConnectedTooOften);
        startDisconnectTimer();
        changeState(charging_state::kFloat);
    } else if (m_pCharger->isBatteryConnected() && current <= kDischargingCurrent) {
        stopPowerDisturbanceTimer();
    }
}

void ChargingStateIntermittent::batteryConnected()
{
    if (m_connectCount > kMaxConnects) {
        SSC_TRACE(batteryGroup(), kFlow, "Battery connected in INTERMITTENT state too many times");
        m_connectCount = 0;
        startDisconnectTimer();
        changeState(charging_state::kFloat);
        return;
    }
    startTimer(Callback::kPowerDisturbanceTimer, kPowerDisturbanceMs);
    SSC_TRACE(batteryGroup(), kFlow, "Battery connected in INTERMITTENT state, POWER_DISTURBANCE_TIMER started");
    ++m_connectCount;
}

void ChargingStateIntermittent::batteryDisconnected() { stopPowerDisturbanceTimer(); }

void ChargingStateIntermittent::lostContactWithBfus() { changeState(charging_state::kFixed); }

void ChargingStateIntermittent::bfuFault()
{
    stopTimer(Callback::kPowerDisturbanceTimer);
    changeState(charging_state::kFixed);
}

void ChargingStateIntermittent::allPsusFailed() { changeState(charging_state::kFixed); }

void ChargingStateIntermittent::contactRestored()
{
    if (isTimerRunning(Callback::kEqualizeTimer)) {
        changeState(charging_state::kEqualize);
        return;
    }
    startDisconnectTimer();
    changeState(charging_state::kFloat);
}

bool ChargingStateIntermittent::startEqualize()
{
    if (m_pCfg->equalizeChargeTime != 0) changeState(charging_state::kEqualize);
    return true;
}

void ChargingStateIntermittent::powerDisturbanceTimerExpired()
{
    m_connectCount = 0;
    startDisconnectTimer();
    changeState(charging_state::kFloat);
}

void ChargingStateIntermittent::intermittentConnectTimerExpired()
{
    if (stopTimer(Callback::kIntermittentConnectTimer))
        SSC_TRACE(batteryGroup(), kFlow,
                  "Battery disconnected in INTERMITTENT state, INTERMITT_CHARGE_CONN_TIMER canceled");
    ceaseFault(fault_id::kIntermittentConnectedTooOften);
    startDisconnectTimer();
    changeState(charging_state::kFloat);
}

void ChargingStateIntermittent::stopPowerDisturbanceTimer()
{
    if (stopTimer(Callback::kPowerDisturbanceTimer))
        SSC_TRACE(batteryGroup(), kFlow,
                  "Battery disconnected in INTERMITTENT state, POWER_DISTURBANCE_TIMER canceled");
}
