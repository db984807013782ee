#include "power/BatteryCharger.h"

#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "hwu/BfuStatusIf.h"
#include "ose/Format.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryControlIf.h"
#include "power/BatteryStatus.h"
#include "power/ChargingStateBoost.h"
#include "power/ChargingStateCurrentLimitation.h"
#include "power/ChargingStateDischarge.h"
#include "power/ChargingStateEqualize.h"
#include "power/ChargingStateFixed.h"
#include "power/ChargingStateFloat.h"
#include "power/ChargingStateIntermittent.h"
#include "power/ChargingStateSlow.h"
#include "power/ChargingStateSoftStart.h"
#include "power/ChargingStateStartAndRestart.h"
#include "power/ChargingStateTempAdjust.h"
#include "power/PowerDistributionCfg.h"

using namespace ssc_trace;

namespace {

constexpr float kNotAvailable = 999.0F;

std::string text(float value) { return ose::floatToString(value); }

// No BFU at all: what the summary says over an empty cabinet.
class NoBfus : public BfuStatusIf {
public:
    bool anyBfuSlowCharging() override { return false; }
    bool anyBfuOperational() override { return false; }
    bool allBfusOperational() override { return false; }
    bool allTempSensorsOk() override { return true; }
    float getBatteryCurrent() override { return kNotAvailable; }
    float getLowestCurrent() override { return kNotAvailable; }
    float getHighestCurrent() override { return kNotAvailable; }
    float getAverageTemperature() override { return kNotAvailable; }
    float getLowestTemperature() override { return kNotAvailable; }
    float getHighestTemperature() override { return kNotAvailable; }
    bool anyBfuConnected() override { return false; }
    bool allBfusConnected() override { return false; }
    bool anyBatteryPresent() override { return false; }
    float getBatteryVoltage() override { return kNotAvailable; }
    float getLowestBatteryVoltage() override { return kNotAvailable; }
    bool isChargeCurrentHigh(float, float*) override { return false; }
    bool anyHwFault() override { return false; }
    bool anyMainLoadDisconnected() override { return false; }
    bool anyBatteryOverTemperature() override { return false; }
    bool anyCircuitBreakerFault() override { return false; }
    bool anyExtFlag12Clear() override { return false; }
    bool isBatteryVoltageBelowLimits() override { return false; }
    bool allBfusHaveVoltageConnect() override { return false; }
    bool isDischargeOverload() override { return false; }
};

class NoBatteryControl : public BatteryControlIf {
public:
    void connectBattery(bool, bool) override {}
    void batteryFullyCharged() override {}
};

// The state operation of each event; 5 has none.
using EventOperation = bool (*)(ChargingState&);
struct EventRow {
    const char* trace;
    EventOperation operation;
};
template <void (ChargingState::*Operation)()>
bool run(ChargingState& state)
{
    (state.*Operation)();
    return true;
}
constexpr std::array<EventRow, 14> kEvents{{
    {"Init charging", run<&ChargingState::initCharging>},
    {"AC mains lost", run<&ChargingState::acMainsLost>},
    {"AC mains returned", run<&ChargingState::acMainsReturned>},
    {"Lost contact with all BFUs", run<&ChargingState::lostContactWithBfus>},
    {"Restored contact with the BFU", run<&ChargingState::contactRestored>},
    {nullptr, nullptr},
    {"BFU restarted", run<&ChargingState::bfuRestarted>},
    {"Start equalize charging", [](ChargingState& state) { return state.startEqualize(); }},
    {"Stop equalize charging", [](ChargingState& state) { return state.stopEqualize(); }},
    {"At least one PSU is accessible and has no hardware error.", run<&ChargingState::psuRestored>},
    {"All PSUs are detected hardware error and/or inaccessible", run<&ChargingState::allPsusFailed>},
    {"Start battery test", run<&ChargingState::startBatteryTest>},
    {"Stop battery test", run<&ChargingState::stopBatteryTest>},
    {"Multiple power subracks detected", run<&ChargingState::multipleSubracks>},
}};

} // namespace

struct BatteryCharger::Fallbacks {
    NoBfus bfus;
    NoBatteryControl control;
    BatteryBackupCfg batteryCfg;
    PowerDistributionCfg distributionCfg;
};

BatteryCharger::BatteryCharger(BatteryControlIf* control, FaultsRegisterIf* faults, BatteryBackupCfg* batteryCfg,
                               PowerDistributionCfg* distributionCfg, BfuStatusIf* bfuStatus, BatteryLogIf* batteryLog)
    : m_pFallbacks(std::make_unique<Fallbacks>()),
      m_pBatteryControl(control),
      m_pFaults(faults),
      m_pBatteryCfg(batteryCfg),
      m_pPowerDistributionCfg(distributionCfg),
      m_pBfuStatus(bfuStatus),
      m_pBatteryLog(batteryLog)
{
    if (control == nullptr || faults == nullptr || batteryCfg == nullptr || distributionCfg == nullptr ||
        bfuStatus == nullptr)
        SSC_TRACE(batteryGroup(), kError, "BatteryCharger: missing part, charging runs without it");
    if (m_pBatteryControl == nullptr) m_pBatteryControl = &m_pFallbacks->control;
    if (m_pBatteryCfg == nullptr) m_pBatteryCfg = &m_pFallbacks->batteryCfg;
    if (m_pPowerDistributionCfg == nullptr) m_pPowerDistributionCfg = &m_pFallbacks->distributionCfg;
    if (m_pBfuStatus == nullptr) m_pBfuStatus = &m_pFallbacks->bfus;

    m_pBatteryStatus = std::make_unique<BatteryStatus>(this, m_pFaults, m_pBatteryCfg);
    auto make = [this]<class State>() {
        return std::make_unique<State>(m_pFaults, m_pBatteryCfg, this, m_pBatteryControl);
    };
    m_states = {make.operator()<ChargingStateStartAndRestart>(),  make.operator()<ChargingStateSoftStart>(),
                make.operator()<ChargingStateBoost>(),            make.operator()<ChargingStateFloat>(),
                make.operator()<ChargingStateEqualize>(),         make.operator()<ChargingStateIntermittent>(),
                make.operator()<ChargingStateTempAdjust>(),       make.operator()<ChargingStateSlow>(),
                make.operator()<ChargingStateCurrentLimitation>(), make.operator()<ChargingStateFixed>(),
                make.operator()<ChargingStateDischarge>()};
}

BatteryCharger::~BatteryCharger()
{
    if (TimerService::getHandler() != nullptr) TimerService::stopAllTimers(static_cast<BatteryChargerIf*>(this));
}

bool BatteryCharger::handleEvent(std::uint32_t event)
{
    if (event >= kEvents.size() || kEvents[event].operation == nullptr) {
        SSC_TRACE(batteryGroup(), kError, "Illegal charging event: %d", static_cast<int>(event));
        return false;
    }
    SSC_TRACE(batteryGroup(), kFlow, "%s", kEvents[event].trace);
    if (event == kAcMainsLost) m_acOk = false;
    if (event == kAcMainsBack) m_acOk = true;
    if (event == kPsuAccessible) m_psuOk = true;
    if (event == kNoPsuAccessible) m_psuOk = false;
    return kEvents[event].operation(state());
}

bool BatteryCharger::changeState(std::uint32_t stateId)
{
    // An unknown number is refused before the present state is left, so
    // that the machine never stands half way between two states.
    if (stateId >= charging_state::kCount) {
        SSC_TRACE(batteryGroup(), kError, "Illegal ChargingState: %d", static_cast<int>(stateId));
        return false;
    }
    if (!state().exit()) return false;
    const char* oldName = state().getName();
    m_previousStateId = m_stateId;
    m_stateId = stateId;
    SSC_TRACE(batteryGroup(), kInfo, "Charging State changed from %s to %s.", oldName, state().getName());
    state().enter();
    return true;
}

void BatteryCharger::updateCharging(float systemVoltage, float batteryVoltage, float batteryCurrent)
{
    SSC_TRACE(batteryGroup(), kFlow, "Battery current: %s, Battery volt: %s", text(batteryCurrent).c_str(),
              text(batteryVoltage).c_str());
    if (checkBatteryStatus(batteryVoltage, batteryCurrent)) {
        // A current that was not measured (999.0) is no charge moved.
        if (m_capacityCounting && batteryCurrent != 999.0F)
            state().countCapacity(batteryCurrent, m_rechargedCapacity, m_dischargedCapacity);
        state().checkConditions(systemVoltage, batteryVoltage, batteryCurrent);
        state().regulate(systemVoltage, batteryVoltage, batteryCurrent);
    }
    SSC_TRACE(batteryGroup(), kFlow, "%s: wanted sysVolCharging is %sV", state().getName(),
              text(m_wantedVoltage).c_str());
}

void BatteryCharger::handleBfuStatus()
{
    const bool sensorsOk = m_pBfuStatus->allTempSensorsOk();
    const bool operational = m_pBfuStatus->anyBfuOperational();
    const bool connected = m_pBfuStatus->anyBfuConnected();
    const bool slow = m_pBfuStatus->anyBfuSlowCharging();
    if (!sensorsOk || !operational) {
        SSC_TRACE(batteryGroup(), kFlow,
                  "handleBFU2_StatusUpdate: BFU fault occurred, i.e. at least one BFU reports temp. sensor failure "
                  "or no BFU is operational (accessible, no hw error)");
        state().bfuFault();
    } else if (slow) {
        SSC_TRACE(batteryGroup(), kFlow, "handleBFU2_StatusUpdate: At least one BFU entered slow charging");
        state().enterSlowCharging();
    } else if (m_slowCharging) {
        SSC_TRACE(batteryGroup(), kFlow, "handleBFU2_StatusUpdate: BFU exited slow charging");
        state().exitSlowCharging();
    } else if (connected && !m_batteryConnected) {
        SSC_TRACE(batteryGroup(), kFlow,
                  "handleBFU2_StatusUpdate: Battery status is changed from disconnected to connected  (at least one "
                  "BFU connected to battery)");
        state().batteryConnected();
    } else if (!connected && m_batteryConnected) {
        SSC_TRACE(batteryGroup(), kFlow,
                  "handleBFU2_StatusUpdate: Battery status is changed from connected to disconnected (no BFU "
                  "connected to battery)");
        state().batteryDisconnected();
    } else {
        SSC_TRACE(batteryGroup(), kFlow, "handleBFU2_StatusUpdate(): No BFU faults, decideNextChargingType");
        state().decideNextChargingType();
    }
    m_batteryConnected = connected;
    m_slowCharging = slow;
}

void BatteryCharger::timeout(TimerId timerId)
{
    switch (timerId.timerType) {
    case kBoostTimer:
        SSC_TRACE(batteryGroup(), kFlow, "Boost charging timer expired.");
        state().boostTimerExpired();
        break;
    case kEqualizeTimer:
        SSC_TRACE(batteryGroup(), kFlow, "Equalize charging timer expired.");
        state().equalizeTimerExpired();
        break;
    case kEqualizeCycleTimer:
        SSC_TRACE(batteryGroup(), kFlow, "Equalize charging cyclic interval timer expired.");
        equalizeDayPassed();
        break;
    case kIntermittentConnectTimer:
        SSC_TRACE(batteryGroup(), kFlow, "Intermittent charging connection timer expired.");
        state().intermittentConnectTimerExpired();
        break;
    case kDisconnectTimer:
        SSC_TRACE(batteryGroup(), kFlow, "Intermittent charging disconnect timer expired.");
        disconnectTimerExpired();
        break;
    case kStayedChargedTimer:
        SSC_TRACE(batteryGroup(), kFlow, "Battery stayed charged for 30 minutes.");
        m_pBatteryStatus->stayedCharged();
        m_pBatteryControl->batteryFullyCharged();
        state().batteryStayedCharged();
        break;
    case kPowerDisturbanceTimer:
        state().powerDisturbanceTimerExpired();
        break;
    case kSlowTimer:
        state().slowTimerExpired();
        break;
    default:
        SSC_TRACE(batteryGroup(), kError, "Illegal subscriptionId: %d", static_cast<int>(timerId.timerType));
        break;
    }
}

void BatteryCharger::equalizeDayPassed()
{
    TimerService::startTimer(kDayMs, kEqualizeCycleTimer, static_cast<BatteryChargerIf*>(this), 0);
    ++m_equalizeDayCount;
    if (m_pBatteryCfg->equalizeChargeCyclicInterval > m_equalizeDayCount) return;
    m_equalizeDayCount = 0;
    state().startEqualize();
}

// Timer 43 runs at most 596 hours at a time; a longer disconnect time is
// run in parts until nothing is left.
void BatteryCharger::disconnectTimerExpired()
{
    if (m_remainingDisconnectHours != 0) {
        std::uint32_t timeMs = kMaxRunMs;
        if (m_remainingDisconnectHours > kMaxRunHours) {
            m_remainingDisconnectHours = static_cast<std::uint16_t>(m_remainingDisconnectHours - kMaxRunHours);
        } else {
            timeMs = m_remainingDisconnectHours * kHourMs;
            m_remainingDisconnectHours = 0;
        }
        TimerService::startTimer(timeMs, kDisconnectTimer, static_cast<BatteryChargerIf*>(this), 0);
        return;
    }
    // A state that cannot be left now keeps the change for later.
    if (isFullyCharged()) {
        if (!changeState(charging_state::kIntermittent)) setIntermittentPending();
    } else {
        setIntermittentPending();
        SSC_TRACE(batteryGroup(), kFlow, "Batteries are not fully charged to set INTERMITTENT");
    }
}

const char* BatteryCharger::getChargingStateName() const { return state().getName(); }

bool BatteryCharger::isFullyCharged() const { return m_pBatteryStatus->isFullyCharged(); }

bool BatteryCharger::checkBatteryStatus(float batteryVoltage, float batteryCurrent)
{
    return m_pBatteryStatus->checkBatteryStatus(batteryVoltage, batteryCurrent);
}

void BatteryCharger::setCapacityCounting(bool on)
{
    m_capacityCounting = on;
    if (on) {
        m_dischargedCapacity = m_pBatteryCfg->totalDischargeCapacity;
        return;
    }
    m_dischargedCapacity = 0.0F;
    m_rechargedCapacity = 0.0F;
    m_pBatteryCfg->totalDischargeCapacity = 0.0F;
}

bool BatteryCharger::chargeCurrentAboveLimit(float limit, float& result)
{
    return m_pBfuStatus->isChargeCurrentHigh(limit, &result);
}

bool BatteryCharger::batteryVoltageBelowConnectLimit() { return m_pBfuStatus->isBatteryVoltageBelowLimits(); }
bool BatteryCharger::allBfusHaveVoltageConnect() { return m_pBfuStatus->allBfusHaveVoltageConnect(); }
float BatteryCharger::getAverageTemperature() { return m_pBfuStatus->getAverageTemperature(); }
float BatteryCharger::getHighestTemperature() { return m_pBfuStatus->getHighestTemperature(); }
float BatteryCharger::getLowestTemperature() { return m_pBfuStatus->getLowestTemperature(); }
bool BatteryCharger::anyBatteryPresent() { return m_pBfuStatus->anyBatteryPresent(); }
float BatteryCharger::getBatteryVoltage() { return m_pBfuStatus->getBatteryVoltage(); }
float BatteryCharger::getLowestBatteryVoltage() { return m_pBfuStatus->getLowestBatteryVoltage(); }
bool BatteryCharger::anyBfuOperational() { return m_pBfuStatus->anyBfuOperational(); }
bool BatteryCharger::anyBfuSlowCharging() { return m_pBfuStatus->anyBfuSlowCharging(); }
bool BatteryCharger::anyHwFault() { return m_pBfuStatus->anyHwFault(); }
bool BatteryCharger::anyMainLoadDisconnected() { return m_pBfuStatus->anyMainLoadDisconnected(); }
bool BatteryCharger::anyBatteryOverTemperature() { return m_pBfuStatus->anyBatteryOverTemperature(); }
bool BatteryCharger::allTempSensorsOk() { return m_pBfuStatus->allTempSensorsOk(); }
bool BatteryCharger::anyBfuConnected() { return m_pBfuStatus->anyBfuConnected(); }
bool BatteryCharger::allBfusConnected() { return m_pBfuStatus->allBfusConnected(); }
bool BatteryCharger::allBfusOperational() { return m_pBfuStatus->allBfusOperational(); }
float BatteryCharger::getBatteryCurrent() { return m_pBfuStatus->getBatteryCurrent(); }
float BatteryCharger::getLowestCurrent() { return m_pBfuStatus->getLowestCurrent(); }
float BatteryCharger::getHighestCurrent() { return m_pBfuStatus->getHighestCurrent(); }
