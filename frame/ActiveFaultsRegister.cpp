#include "frame/ActiveFaultsRegister.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"

#include <array>

using namespace ssc_trace;
using namespace fault_id;
using namespace func_type;

namespace {

// One suppressor and what it hides; the hidden list ends at the first 0.
struct RuleRow {
    std::int32_t suppressor;
    std::uint32_t on;
    std::array<std::int32_t, 7> hides;
    std::uint32_t hiddenOn;
};

// A missing unit hides what it reported; a faulty unit hides its symptoms.
constexpr std::array<RuleRow, 17> kRuleRows{{
    {kHwuMissing, kPsu,
     {kPsuInputVoltageHigh, kPsuInputVoltageLow, kPsuHighTemperatureClass2, kPsuLowTemperatureClass2,
      kPsuHighTemperatureClass1, kPsuLowTemperatureClass1, kHwuFaulty},
     kPsu},
    {kHwuFaulty, kPsu,
     {kPsuInputVoltageHigh, kPsuInputVoltageLow, kPsuHighTemperatureClass2, kPsuLowTemperatureClass2,
      kPsuHighTemperatureClass1, kPsuLowTemperatureClass1},
     kPsu},
    {kHwuMissing, kBfu, {kHwuFaulty}, kBfu},
    {kHwuFaulty, kBfu, {kBfuCircuitBreaker, kBfuTemperature}, kBfu},
    {kBatteryTempSensorFaulty, kBatteryBackup, {kBatteryOverTemperature}, kBatteryBackup},
    {kHwuMissing, kBfu, {kBfuCircuitBreaker, kBfuTemperature}, kBfu},
    {kNoBatteryPresent, kBatteryBackup, {kBfuCircuitBreaker, kBfuTemperature}, kBfu},
    {kHwEntitiesMismatch, kBfu, {kMultiplePowerSubracks}, kBatteryBackup},
    {kHwuMissing, kPdu, {kPduMainTemperatureHigh, kHwuFaulty}, kPdu},
    {kHwuFaulty, kPdu, {kPduMainTemperatureHigh}, kPdu},
    {kHwuMissing, kFan, {kHwuFaulty}, kFan},
    {kSmokeDetectorDisconnected, kCabinet, {kSmokeDetectorAlarm, kSmokeDetectorHwFailure}, kCabinet},
    {kSmokeDetectorHwFailure, kCabinet, {kSmokeDetectorAlarm}, kCabinet},
    {kHwuMissing, kScu, {kSmokeDetectorAlarm, kSmokeDetectorHwFailure, kSmokeDetectorDisconnected, kDoorAlarm},
     kCabinet},
    {kHwuMissing, kScu, {kHwuFaulty}, kScu},
    {kHwuMissing, kSau, {kHwuFaulty}, kSau},
    {kFaultyHubPosition, kEquipSupFunc, {kEquipSupFuncFault}, kEquipSupFunc},
}};

std::uint32_t asRuleId(std::int32_t faultId) { return static_cast<std::uint32_t>(faultId); }

} // namespace

ActiveFaultsRegister& ActiveFaultsRegister::instance()
{
    // Never destroyed: objects that go away late still cease their faults.
    static ActiveFaultsRegister* const s_pRegister = new ActiveFaultsRegister();
    return *s_pRegister;
}

ActiveFaultsRegister::ActiveFaultsRegister(std::uint32_t lastActionId) : m_lastActionId(lastActionId)
{
    for (const RuleRow& row : kRuleRows) {
        for (std::int32_t hidden : row.hides) {
            if (hidden == 0) break;
            m_rules.addLast({asRuleId(row.suppressor), asRuleId(hidden), row.on, row.hiddenOn});
        }
    }
}

ActiveFaultsRegister::~ActiveFaultsRegister() { TimerService::stopAllTimers(this); }

void ActiveFaultsRegister::clear()
{
    TimerService::stopAllTimers(this);
    m_delayedActions.clear();
    m_rowIndex.clear();
    m_kindCount.clear();
    m_activeFaults.clear();
}

// ---- raise and cease ----

void ActiveFaultsRegister::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId, std::uint32_t delayMs)
{
    if (delayMs == 0) {
        raiseFault(faultId, funcId);
        return;
    }
    ActiveFault* row = addFault(faultId, funcId);
    if (row == nullptr) return;
    row->waiting = true;
    delay(*row, delayMs, true);
}

void ActiveFaultsRegister::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (addFault(faultId, funcId) == nullptr) return;
    evaluate(faultId, funcId);
    notifyObservers();
}

void ActiveFaultsRegister::raiseFault(std::int32_t faultId, const FuncId_t& funcId, std::uint32_t delayMs)
{
    raiseFault(FaultId_t(faultId), funcId, delayMs);
}

void ActiveFaultsRegister::raiseFault(std::int32_t faultId, const FuncId_t& funcId)
{
    raiseFault(FaultId_t(faultId), funcId);
}

void ActiveFaultsRegister::ceaseFault(std::int32_t faultId, const FuncId_t& funcId, std::uint32_t delayMs)
{
    if (delayMs == 0) {
        ceaseFault(faultId, funcId);
        return;
    }
    // The cease happens at the end of the delay, whatever is raised meanwhile.
    if (ActiveFault* row = findFault(faultId, funcId); row != nullptr) delay(*row, delayMs, false);
}

void ActiveFaultsRegister::ceaseFault(std::int32_t faultId, const FuncId_t& funcId)
{
    ceaseFault(FaultId_t(faultId), funcId);
}

void ActiveFaultsRegister::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (ActiveFault* row = findFault(faultId.id, funcId); row != nullptr) {
        // The row's own id, with the text it was raised with, goes to the
        // reporters and to the release; the caller's may have none.
        const FaultId_t held = row->faultId;
        if (row->reported) reportCease(held, funcId);
        removeRow(held, funcId);
        releaseHidden(held, funcId);
    }
    notifyObservers();
}

void ActiveFaultsRegister::ceaseFaults(const FuncId_t& funcId)
{
    EC_LinkedListIterator<ActiveFault> it(m_activeFaults);
    while (ActiveFault* row = it.next()) {
        if (!(row->funcId == funcId) || row->faultId.id == kHwEntitiesMismatch) continue;
        const FaultId_t held = row->faultId;
        if (row->reported && !row->suppressed) reportCease(held, funcId);
        removeRow(held, funcId);
    }
}

void ActiveFaultsRegister::removeFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    removeRow(faultId, funcId);
}

void ActiveFaultsRegister::removeFaults(const FuncId_t& funcId)
{
    EC_LinkedListIterator<ActiveFault> it(m_activeFaults);
    while (ActiveFault* row = it.next()) {
        if (!(row->funcId == funcId)) continue;
        const FaultId_t held = row->faultId;
        removeRow(held, funcId);
    }
}

// ---- delayed actions ----

void ActiveFaultsRegister::delay(ActiveFault& row, std::uint32_t delayMs, bool raise)
{
    const std::uint32_t actionId = nextActionId();
    m_delayedActions.insert(actionId, {actionId, row.faultId, row.funcId, raise});
    row.actionIds.push_back(actionId);
    TimerService::startTimer(delayMs, kDelayedActionTimer, this, actionId);
    SSC_TRACE(swuGroup(), kFlow, raise ? "FaultId:%d on %s-%d, raise timer activated"
                                       : "FaultId:%d on %s-%d, cease timer activated",
              row.faultId.id, text(row.funcId.FuncType), row.funcId.FuncInst);
}

std::uint32_t ActiveFaultsRegister::nextActionId()
{
    // After a wrap an id may still be waiting for its timer: a second timer
    // under the same id would restart the first and lose its action.
    do {
        m_lastActionId = (m_lastActionId + 1) % kActionIdModulo;
    } while (m_delayedActions.find(m_lastActionId) != nullptr);
    return m_lastActionId;
}

void ActiveFaultsRegister::timeout(TimerId timerId)
{
    if (timerId.timerType != kDelayedActionTimer) return;
    const DelayedAction* action = m_delayedActions.find(timerId.argument);
    if (action == nullptr) return;
    const DelayedAction taken = *action;
    m_delayedActions.erase(taken.actionId);
    ActiveFault* row = findFault(taken.faultId.id, taken.funcId);
    if (row == nullptr) return;
    std::erase(row->actionIds, taken.actionId);
    const FaultId_t held = row->faultId;
    if (taken.raise) {
        row->waiting = false;
        evaluate(held, taken.funcId);
    } else {
        ceaseFault(held, taken.funcId);
    }
}

// ---- rows ----

ActiveFault* ActiveFaultsRegister::findFault(std::int32_t faultId, const FuncId_t& funcId)
{
    ActiveFault** row = m_rowIndex.find(keyOf(faultId, funcId));
    return row != nullptr ? *row : nullptr;
}

ActiveFault* ActiveFaultsRegister::findTarget(std::uint32_t faultId, std::uint32_t funcType,
                                              std::uint32_t sourceFuncType, const FuncId_t& funcId)
{
    const auto id = static_cast<std::int32_t>(faultId);
    if (funcType == sourceFuncType) return findFault(id, FuncId_t{funcType, funcId.FuncInst});
    if (m_kindCount.find(kindKeyOf(id, funcType)) == nullptr) return nullptr;
    return m_activeFaults.find(
        [&](const ActiveFault& row) { return row.faultId.id == id && row.funcId.FuncType == funcType; });
}

ActiveFault* ActiveFaultsRegister::addFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (findFault(faultId.id, funcId) != nullptr) return nullptr;
    m_activeFaults.add(ActiveFault{faultId, funcId, false, false, false, {}});
    ActiveFault* row = m_activeFaults.first();
    m_rowIndex.insert(keyOf(faultId.id, funcId), row);
    const RowKey kind = kindKeyOf(faultId.id, funcId.FuncType);
    if (std::uint32_t* count = m_kindCount.find(kind); count != nullptr)
        ++*count;
    else
        m_kindCount.insert(kind, 1);
    SSC_TRACE(swuGroup(), kFlow, "FaultId:%d on %s-%d added", faultId.id, text(funcId.FuncType), funcId.FuncInst);
    return row;
}

void ActiveFaultsRegister::removeRow(const FaultId_t& faultId, const FuncId_t& funcId)
{
    ActiveFault* row = findFault(faultId.id, funcId);
    if (row == nullptr) return;
    // Actions belong to the row they were started for: left behind they
    // would act on a later raise of the same fault.
    for (std::uint32_t actionId : row->actionIds) {
        TimerService::stopTimer(kDelayedActionTimer, this, actionId);
        m_delayedActions.erase(actionId);
    }
    m_rowIndex.erase(keyOf(faultId.id, funcId));
    const RowKey kind = kindKeyOf(faultId.id, funcId.FuncType);
    if (std::uint32_t* count = m_kindCount.find(kind); count != nullptr && --*count == 0) m_kindCount.erase(kind);
    m_activeFaults.removeFirst([row](const ActiveFault& candidate) { return &candidate == row; });
    SSC_TRACE(swuGroup(), kFlow, "FaultId:%d on %s-%d removed", faultId.id, text(funcId.FuncType), funcId.FuncInst);
}

// ---- suppression ----

void ActiveFaultsRegister::evaluate(const FaultId_t& faultId, const FuncId_t& funcId)
{
    suppressHidden(faultId, funcId);
    if (isHidden(faultId, funcId)) {
        if (ActiveFault* row = findFault(faultId.id, funcId); row != nullptr) row->suppressed = true;
        return;
    }
    reportRaise(faultId, funcId);
}

void ActiveFaultsRegister::suppressHidden(const FaultId_t& faultId, const FuncId_t& funcId)
{
    EC_LinkedListIterator<FaultSuppressionRule> it(m_rules);
    while (const FaultSuppressionRule* rule = it.next()) {
        if (rule->suppressorFaultId != asRuleId(faultId.id) || rule->suppressorFuncType != funcId.FuncType) continue;
        ActiveFault* target =
            findTarget(rule->suppressedFaultId, rule->suppressedFuncType, rule->suppressorFuncType, funcId);
        if (target == nullptr) continue;
        target->suppressed = true;
        if (target->reported) {
            const FaultId_t hidden = target->faultId;
            const FuncId_t hiddenOn = target->funcId;
            reportCease(hidden, hiddenOn);
        }
    }
}

bool ActiveFaultsRegister::isHidden(const FaultId_t& faultId, const FuncId_t& funcId)
{
    EC_LinkedListIterator<FaultSuppressionRule> it(m_rules);
    while (const FaultSuppressionRule* rule = it.next()) {
        if (rule->suppressedFaultId != asRuleId(faultId.id) || rule->suppressedFuncType != funcId.FuncType) continue;
        if (findTarget(rule->suppressorFaultId, rule->suppressorFuncType, rule->suppressedFuncType, funcId) != nullptr)
            return true;
    }
    return false;
}

void ActiveFaultsRegister::releaseHidden(const FaultId_t& faultId, const FuncId_t& funcId)
{
    EC_LinkedListIterator<FaultSuppressionRule> it(m_rules);
    while (const FaultSuppressionRule* rule = it.next()) {
        if (rule->suppressorFaultId != asRuleId(faultId.id) || rule->suppressorFuncType != funcId.FuncType) continue;
        ActiveFault* target =
            findTarget(rule->suppressedFaultId, rule->suppressedFuncType, rule->suppressorFuncType, funcId);
        // Only a hidden fault is released: one that was reported all along
        // must not be reported twice, and a waiting one counts when its
        // delay ends, not before.
        if (target == nullptr || !target->suppressed) continue;
        target->suppressed = false;
        if (target->waiting) continue;
        const FaultId_t released = target->faultId;
        const FuncId_t releasedOn = target->funcId;
        evaluate(released, releasedOn);
    }
}

// ---- telling others ----

void ActiveFaultsRegister::reportRaise(const FaultId_t& faultId, const FuncId_t& funcId)
{
    SSC_TRACE(swuGroup(), kFlow, "Raise FaultId:%d on %s-%d", faultId.id, text(funcId.FuncType), funcId.FuncInst);
    if (findFault(faultId.id, funcId) == nullptr) return;
    EC_LinkedListIterator<FaultsRegisterReportIf*> it(m_reporters);
    while (FaultsRegisterReportIf** reporter = it.next()) (*reporter)->raiseFault(faultId, funcId);
    if (ActiveFault* row = findFault(faultId.id, funcId); row != nullptr) row->reported = true;
}

void ActiveFaultsRegister::reportCease(const FaultId_t& faultId, const FuncId_t& funcId)
{
    SSC_TRACE(swuGroup(), kFlow, "Cease FaultId:%d on %s-%d", faultId.id, text(funcId.FuncType), funcId.FuncInst);
    if (findFault(faultId.id, funcId) == nullptr) return;
    EC_LinkedListIterator<FaultsRegisterReportIf*> it(m_reporters);
    while (FaultsRegisterReportIf** reporter = it.next()) (*reporter)->ceaseFault(faultId, funcId);
    if (ActiveFault* row = findFault(faultId.id, funcId); row != nullptr) row->reported = false;
}

void ActiveFaultsRegister::notifyObservers()
{
    EC_LinkedListIterator<AlarmObserverIf*> it(m_observers);
    while (AlarmObserverIf** observer = it.next()) (*observer)->faultsChanged();
}

// ---- queries and subscribers ----

bool ActiveFaultsRegister::isFaultActive(std::int32_t faultId, const FuncId_t& funcId)
{
    return findFault(faultId, funcId) != nullptr;
}

bool ActiveFaultsRegister::isFaultActive(std::int32_t faultId)
{
    return m_activeFaults.find([faultId](const ActiveFault& row) { return row.faultId.id == faultId; }) != nullptr;
}

void ActiveFaultsRegister::getFaults(std::uint32_t funcType, EC_LinkedList<FaultId_t>& faults)
{
    EC_LinkedListIterator<ActiveFault> it(m_activeFaults);
    while (const ActiveFault* row = it.next())
        if (row->funcId.FuncType == funcType) faults.addLast(row->faultId);
}

bool ActiveFaultsRegister::isFaultActiveOn(std::uint32_t funcType)
{
    return m_activeFaults.find([funcType](const ActiveFault& row) { return row.funcId.FuncType == funcType; }) !=
           nullptr;
}

void ActiveFaultsRegister::addReporter(FaultsRegisterReportIf* reporter)
{
    if (reporter != nullptr && !m_reporters.contains(reporter)) m_reporters.add(reporter);
}

void ActiveFaultsRegister::removeReporter(FaultsRegisterReportIf* reporter) { m_reporters.remove(reporter); }

void ActiveFaultsRegister::addAlarmObserver(AlarmObserverIf* observer)
{
    if (observer != nullptr && !m_observers.contains(observer)) m_observers.add(observer);
}

void ActiveFaultsRegister::removeAlarmObserver(AlarmObserverIf* observer) { m_observers.remove(observer); }
