#pragma once
// The timers of the core. A timer is known to its user by the triple
// (observer, type, argument) and to the kernel by a timer reference carried
// in its expiry signal, which comes back through the receive loop. The kernel
// calls are left to a subclass (WLTimerHandler on the target, a fake in tests).

#include "frame/FlatHashMap.h"
#include "frame/Noncopyable.h"
#include "frame/SignalDispatcherClient.h"
#include "frame/SignalDispatcherIf.h"
#include "frame/TimerObserverIf.h"

#include "ose/Types.h"

#include <cstdint>
#include <vector>

struct TimerData {
    ose::OSTMOREF handle;          // the kernel's time-out
    std::uint32_t timerRef = 0;    // carried by the expiry signal
    TimerType timerType = 0;
    std::uint32_t argument = 0;
    TimerObserverIf* observer = nullptr; // not owned
    std::uint32_t timeMs = 0;      // the one-shot time or the cyclic period
    bool cyclic = false;
};

class TimerHandler : public SignalDispatcherClient, private Noncopyable {
public:
    // The shortest period of a cyclic timer.
    static constexpr std::uint32_t kMinCyclicMs = 1000;

    explicit TimerHandler(SignalDispatcherIf* dispatcher);
    ~TimerHandler() override;

    void receiveSignal(ose::Signal* signal) override;
    std::uint32_t getClientRef() override { return m_clientRef; }
    void registerSignals() override;

    // Starting a running triple restarts it with the new time. Result 1,
    // 0 for a request without observer.
    virtual int startTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                           std::uint32_t argument);
    // As startTimer; 0 when the period is under kMinCyclicMs.
    virtual int startCyclicTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                                 std::uint32_t argument);
    virtual int stopTimer(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument);
    virtual int stopAllTimers(TimerObserverIf* observer);
    virtual int isTimerRunning(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument);
    virtual void init();

    std::uint32_t timerCount() const { return static_cast<std::uint32_t>(m_byRef.size()); }

protected:
    // Asks the kernel to send an 8-byte signal `sigNo` carrying `timerRef`
    // back to this process after `timeMs`.
    virtual ose::OSTMOREF createOsTimer(std::uint32_t timeMs, std::uint32_t timerRef, ose::SIGSELECT sigNo) = 0;
    // Moves the running time-out to `timeMs` from now; false when it has
    // expired already (its signal is on its way).
    virtual bool restartOsTimer(TimerData& timerData, std::uint32_t timeMs) = 0;
    // Cancels the time-out; a signal it gives back is freed.
    virtual void cancelOsTimer(ose::OSTMOREF& handle) = 0;
    // Releases the handle of an expired time-out.
    virtual void deleteOsTimer(ose::OSTMOREF& handle) = 0;
    // Reads the timer reference of an expiry signal; false when it is too short.
    virtual bool getTimerRef(ose::Signal* signal, std::uint32_t& timerRef) = 0;

    // For the destructor of a subclass: cancels every kernel time-out.
    void cancelAllOsTimers();

private:
    // A cyclic timer whose observer runs: not in the table meanwhile.
    struct RunningCyclic {
        const TimerData* pTimer;
        bool stopped;
        RunningCyclic* pOuter;
    };

    // A row of the table; `seq` orders rows by when they were added.
    struct Slot {
        TimerData timer;
        std::uint64_t seq = 0;
        bool used = false;
    };

    struct Triple {
        TimerType timerType = 0;
        const TimerObserverIf* observer = nullptr;
        std::uint32_t argument = 0;
        friend bool operator==(const Triple&, const Triple&) = default;
    };
    struct TripleHash {
        std::size_t operator()(const Triple& key) const;
    };
    struct RefHash {
        std::size_t operator()(std::uint32_t timerRef) const { return timerRef; }
    };
    static constexpr std::uint32_t kNoSlot = UINT32_MAX;

    int startOrRestart(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer, std::uint32_t argument,
                       bool cyclic);
    void addTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer, std::uint32_t argument,
                  bool cyclic);
    std::uint32_t findTimer(TimerType timerType, const TimerObserverIf* observer, std::uint32_t argument) const;
    std::uint32_t findByRef(std::uint32_t timerRef) const;
    // The newest timer of a type; kNoSlot when none runs.
    std::uint32_t findNewestOfType(TimerType timerType) const;
    // Takes a row out of the table and gives its timer.
    TimerData removeSlot(std::uint32_t slot);
    // Takes the row of an expiry out of the table; false for an unknown reference.
    bool takeExpired(ose::Signal* signal, TimerData& expired);
    void handleExpiry(ose::Signal* signal);
    void handleCyclicExpiry(ose::Signal* signal);
    void handleTestTrigger(ose::Signal* signal);
    void markRunningCyclicStopped(TimerObserverIf* observer);

    SignalDispatcherIf* m_pDispatcher; // not owned
    std::uint32_t m_clientRef;
    std::uint32_t m_nextTimerRef = 0;
    std::uint64_t m_nextSeq = 0;
    // Rows stay where they are while they run; freed rows are reused, so a
    // timer that expires and starts again allocates nothing.
    std::vector<Slot> m_slots;
    std::vector<std::uint32_t> m_freeSlots;
    FlatHashMap<std::uint32_t, std::uint32_t, RefHash> m_byRef;
    FlatHashMap<Triple, std::uint32_t, TripleHash> m_byTriple;
    RunningCyclic* m_pRunningCyclic = nullptr;
};
