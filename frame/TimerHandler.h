#pragma once
// The timers of the core. A timer is known to its user by the triple
// (observer, type, argument) and to the kernel by a timer reference carried
// in its expiry signal, which comes back through the receive loop. The kernel
// calls are left to a subclass (WLTimerHandler on the target, a fake in tests).

#include "frame/EC_LinkedList.h"
#include "frame/Noncopyable.h"
#include "frame/SignalDispatcherClient.h"
#include "frame/SignalDispatcherIf.h"
#include "frame/TimerObserverIf.h"

#include "ose/Types.h"

#include <cstdint>

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

    std::uint32_t timerCount() const { return m_timers.count(); }

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
    // A cyclic timer whose observer runs: not in the list meanwhile.
    struct RunningCyclic {
        const TimerData* pTimer;
        bool stopped;
        RunningCyclic* pOuter;
    };

    int startOrRestart(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer, std::uint32_t argument,
                       bool cyclic);
    void addTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer, std::uint32_t argument,
                  bool cyclic);
    TimerData* findTimer(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument);
    // Takes the row of an expiry out of the list; false for an unknown reference.
    bool takeExpired(ose::Signal* signal, TimerData& expired);
    void handleExpiry(ose::Signal* signal);
    void handleCyclicExpiry(ose::Signal* signal);
    void handleTestTrigger(ose::Signal* signal);
    void markRunningCyclicStopped(TimerObserverIf* observer);

    SignalDispatcherIf* m_pDispatcher; // not owned
    std::uint32_t m_clientRef;
    std::uint32_t m_nextTimerRef = 0;
    EC_LinkedList<TimerData> m_timers;
    RunningCyclic* m_pRunningCyclic = nullptr;
};
