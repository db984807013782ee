#pragma once
// The one register of active faults. It holds a fault back for its delay
// before it counts, decides which active faults hide others (a missing unit
// hides what the unit had reported), and tells the reporters only what is
// left. Everything runs in the core process; reporters must not change the
// register from inside a report.

#include "frame/EC_LinkedList.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FlatHashMap.h"
#include "frame/Noncopyable.h"
#include "frame/TimerObserverIf.h"

#include <cstdint>
#include <vector>

struct ActiveFault {
    FaultId_t faultId;
    FuncId_t funcId;
    bool suppressed = false;
    bool reported = false;
    // Raised with a delay that has not run out: counts as active, evaluated
    // only when its timer expires.
    bool waiting = false;
    // The delayed actions started for this row, which go when it goes.
    std::vector<std::uint32_t> actionIds;
};

struct DelayedAction {
    std::uint32_t actionId = 0;
    FaultId_t faultId;
    FuncId_t funcId;
    bool raise = false; // false: a delayed cease
};

struct FaultSuppressionRule {
    std::uint32_t suppressorFaultId;
    std::uint32_t suppressedFaultId;
    std::uint32_t suppressorFuncType;
    std::uint32_t suppressedFuncType;
};

class ActiveFaultsRegister : public FaultsRegisterIf, public TimerObserverIf, private Noncopyable {
public:
    static constexpr TimerType kDelayedActionTimer = 107;
    static constexpr std::uint32_t kActionIdModulo = 0x7fffffff;

    // The core's register: made on first use and kept for the life of the
    // program (a restart of the core clears it).
    static ActiveFaultsRegister& instance();

    // A register of its own (tests, benchmarks). The first action id is the
    // one after `lastActionId`.
    explicit ActiveFaultsRegister(std::uint32_t lastActionId = 0);
    ~ActiveFaultsRegister() override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId, std::uint32_t delayMs) override;
    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void raiseFault(std::int32_t faultId, const FuncId_t& funcId, std::uint32_t delayMs) override;
    void raiseFault(std::int32_t faultId, const FuncId_t& funcId) override;
    void ceaseFault(std::int32_t faultId, const FuncId_t& funcId, std::uint32_t delayMs) override;
    void ceaseFault(std::int32_t faultId, const FuncId_t& funcId) override;
    void ceaseFaults(const FuncId_t& funcId) override;
    bool isFaultActive(std::int32_t faultId, const FuncId_t& funcId) override;
    bool isFaultActive(std::int32_t faultId) override;
    void addReporter(FaultsRegisterReportIf* reporter) override;
    void removeReporter(FaultsRegisterReportIf* reporter) override;
    void addAlarmObserver(AlarmObserverIf* observer) override;
    void removeAlarmObserver(AlarmObserverIf* observer) override;
    void getFaults(std::uint32_t funcType, EC_LinkedList<FaultId_t>& faults) override;
    bool isFaultActiveOn(std::uint32_t funcType) override;
    void removeFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void removeFaults(const FuncId_t& funcId) override;

    void timeout(TimerId timerId) override;

    // Forgets every fault and delayed action (their timers went with the
    // core that is restarting); reporters and observers stay registered.
    void clear();

    std::uint32_t activeCount() const { return m_activeFaults.count(); }
    std::uint32_t delayedCount() const { return static_cast<std::uint32_t>(m_delayedActions.size()); }

private:
    // Rows are looked up by fault and function, and by fault and kind of
    // function, in a hash index beside the list: a site with a thousand
    // active faults must not walk them all on every raise and cease.
    struct RowKey {
        std::int32_t faultId;
        std::uint32_t funcType;
        std::uint32_t funcInst;
        friend bool operator==(const RowKey&, const RowKey&) = default;
    };
    struct RowKeyHash {
        std::size_t operator()(const RowKey& key) const
        {
            return static_cast<std::size_t>(static_cast<std::uint32_t>(key.faultId)) * 31 * 31 +
                   static_cast<std::size_t>(key.funcType) * 31 + key.funcInst;
        }
    };
    struct ActionIdHash {
        std::size_t operator()(std::uint32_t actionId) const { return actionId; }
    };
    static RowKey keyOf(std::int32_t faultId, const FuncId_t& funcId)
    {
        return {faultId, funcId.FuncType, funcId.FuncInst};
    }
    // All instances of a kind of function share one key.
    static RowKey kindKeyOf(std::int32_t faultId, std::uint32_t funcType) { return {faultId, funcType, 0xFFFFFFFF}; }

    ActiveFault* findFault(std::int32_t faultId, const FuncId_t& funcId);
    // The row that a rule reaches from function `funcId`: within one kind of
    // function only on the same instance, across kinds the first row found.
    ActiveFault* findTarget(std::uint32_t faultId, std::uint32_t funcType, std::uint32_t sourceFuncType,
                            const FuncId_t& funcId);
    // The new row; NIL when the fault is active already.
    ActiveFault* addFault(const FaultId_t& faultId, const FuncId_t& funcId);
    void removeRow(const FaultId_t& faultId, const FuncId_t& funcId);
    void delay(ActiveFault& row, std::uint32_t delayMs, bool raise);
    std::uint32_t nextActionId();

    void evaluate(const FaultId_t& faultId, const FuncId_t& funcId);
    void suppressHidden(const FaultId_t& faultId, const FuncId_t& funcId);
    bool isHidden(const FaultId_t& faultId, const FuncId_t& funcId);
    void releaseHidden(const FaultId_t& faultId, const FuncId_t& funcId);
    void reportRaise(const FaultId_t& faultId, const FuncId_t& funcId);
    void reportCease(const FaultId_t& faultId, const FuncId_t& funcId);
    void notifyObservers();

    std::uint32_t m_lastActionId;
    EC_LinkedList<ActiveFault> m_activeFaults;
    FlatHashMap<RowKey, ActiveFault*, RowKeyHash> m_rowIndex;
    // Rows of each fault and kind of function, for rules that reach any instance.
    FlatHashMap<RowKey, std::uint32_t, RowKeyHash> m_kindCount;
    // Pending delayed actions by action id.
    FlatHashMap<std::uint32_t, DelayedAction, ActionIdHash> m_delayedActions;
    EC_LinkedList<FaultSuppressionRule> m_rules;
    EC_LinkedList<FaultsRegisterReportIf*> m_reporters;
    EC_LinkedList<AlarmObserverIf*> m_observers;
};
