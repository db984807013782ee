#include "frame/TimerHandler.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/OsService.h"
#include "frame/SscTrace.h"
#include "frame/TimerSignals.h"

#include "ose/Kernel.h"

using namespace ssc_trace;

TimerHandler::TimerHandler(SignalDispatcherIf* dispatcher)
    : m_pDispatcher(dispatcher), m_clientRef(dispatcher->newClientRef())
{
}

// The handler lives as long as the receive loop; at the end of the process
// the dispatcher goes first, so its subscriptions are not touched here.
TimerHandler::~TimerHandler() = default;

void TimerHandler::init() { registerSignals(); }

void TimerHandler::registerSignals()
{
    m_pDispatcher->subscribeSignal(SSC_TIMER_EXPIRED, this, m_clientRef);
    m_pDispatcher->subscribeSignal(SSC_CYCLIC_TIMER_EXPIRED, this, m_clientRef);
    m_pDispatcher->subscribeSignal(SSC_TEST_TRIGGER_TIMER_REQ, this, m_clientRef);
}

void TimerHandler::receiveSignal(ose::Signal* signal)
{
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    switch (sigNo) {
    case SSC_TIMER_EXPIRED:
        handleExpiry(signal);
        break;
    case SSC_CYCLIC_TIMER_EXPIRED:
        handleCyclicExpiry(signal);
        break;
    case SSC_TEST_TRIGGER_TIMER_REQ:
        handleTestTrigger(signal);
        break;
    default:
        SSC_TRACE(swuGroup(), kError, "Unknown signal (%d) arrived in receiveSignal", static_cast<int>(sigNo));
        break;
    }
}

int TimerHandler::startTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                             std::uint32_t argument)
{
    return startOrRestart(timeMs == 0 ? 1 : timeMs, timerType, observer, argument, false);
}

int TimerHandler::startCyclicTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                                   std::uint32_t argument)
{
    if (timeMs < kMinCyclicMs) {
        SSC_TRACE(swuGroup(), kFlow, "%dms cyclic timer requested, too short time!", static_cast<int>(timeMs));
        return 0;
    }
    return startOrRestart(timeMs, timerType, observer, argument, true);
}

int TimerHandler::startOrRestart(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                                 std::uint32_t argument, bool cyclic)
{
    if (observer == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "Timer of type %u requested without observer", timerType);
        return 0;
    }
    if (TimerData* running = findTimer(timerType, observer, argument)) {
        // A restart keeps the reference, so a time-out that already expired
        // cannot be moved: its signal is queued and would fire the timer
        // early. It is replaced instead, and the queued signal finds no row.
        // A change between one-shot and cyclic is a new timer as well.
        if (running->cyclic == cyclic && restartOsTimer(*running, timeMs)) {
            running->timeMs = timeMs;
            return 1;
        }
        cancelOsTimer(running->handle);
        m_timers.removeFirst([running](const TimerData& row) { return &row == running; });
    }
    addTimer(timeMs, timerType, observer, argument, cyclic);
    return 1;
}

void TimerHandler::addTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                            std::uint32_t argument, bool cyclic)
{
    TimerData timer;
    timer.timerRef = m_nextTimerRef++;
    timer.timerType = timerType;
    timer.argument = argument;
    timer.observer = observer;
    timer.timeMs = timeMs;
    timer.cyclic = cyclic;
    timer.handle = createOsTimer(timeMs, timer.timerRef, cyclic ? SSC_CYCLIC_TIMER_EXPIRED : SSC_TIMER_EXPIRED);
    m_timers.add(timer);
}

int TimerHandler::stopTimer(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument)
{
    if (TimerData* running = findTimer(timerType, observer, argument)) {
        cancelOsTimer(running->handle);
        m_timers.removeFirst([running](const TimerData& row) { return &row == running; });
    }
    return 1;
}

int TimerHandler::stopAllTimers(TimerObserverIf* observer)
{
    markRunningCyclicStopped(observer);
    EC_LinkedListIterator<TimerData> walk(m_timers);
    while (TimerData* timer = walk.next()) {
        if (timer->observer != observer) continue;
        cancelOsTimer(timer->handle);
        walk.removeCurrent();
        SSC_TRACE(swuGroup(), kFlow, "Timer cancelled from users list");
    }
    SSC_TRACE(swuGroup(), kFlow, "No Timer left in users list");
    return 1;
}

int TimerHandler::isTimerRunning(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument)
{
    return findTimer(timerType, observer, argument) != nullptr ? 1 : 0;
}

TimerData* TimerHandler::findTimer(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument)
{
    return m_timers.find([&](const TimerData& row) {
        return row.timerType == timerType && row.observer == observer && row.argument == argument;
    });
}

// An observer that goes away inside its own cyclic time-out stops all its
// timers from its destructor: its running cyclic timer must then not be made
// again after the time-out, or the next expiry would call a deleted observer.
// (A plain stopTimer there finds no row and the timer goes on, as users of
// the service expect.)
void TimerHandler::markRunningCyclicStopped(TimerObserverIf* observer)
{
    for (RunningCyclic* running = m_pRunningCyclic; running != nullptr; running = running->pOuter)
        if (running->pTimer->observer == observer) running->stopped = true;
}

bool TimerHandler::takeExpired(ose::Signal* signal, TimerData& expired)
{
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    std::uint32_t timerRef = 0;
    if (!getTimerRef(signal, timerRef)) {
        SSC_TRACE(swuGroup(), kUnexpected, "Timer expiry signal 0x%X too short, dropped", static_cast<unsigned>(sigNo));
        return false;
    }
    TimerData* row = m_timers.find([timerRef](const TimerData& timer) { return timer.timerRef == timerRef; });
    if (row == nullptr) return false; // stopped or replaced while its signal was queued
    // Only the kernel's own time-out carries the right kind; any other is stale
    // or forged, and obeying it would turn a one-shot into a cyclic timer (or
    // end a cyclic one).
    if (row->cyclic != (sigNo == SSC_CYCLIC_TIMER_EXPIRED)) {
        SSC_TRACE(swuGroup(), kUnexpected, "Timer expiry signal 0x%X for timer %u of the other kind, dropped",
                  static_cast<unsigned>(sigNo), static_cast<unsigned>(timerRef));
        return false;
    }
    expired = *row;
    m_timers.removeFirst([row](const TimerData& timer) { return &timer == row; });
    deleteOsTimer(expired.handle);
    return true;
}

void TimerHandler::handleExpiry(ose::Signal* signal)
{
    TimerData expired;
    if (!takeExpired(signal, expired)) return;
    // The row is gone first, so the observer may start the same timer again.
    expired.observer->timeout({expired.timerType, expired.argument});
}

void TimerHandler::handleCyclicExpiry(ose::Signal* signal)
{
    TimerData expired;
    if (!takeExpired(signal, expired)) return;
    RunningCyclic running{&expired, false, m_pRunningCyclic};
    m_pRunningCyclic = &running;
    expired.observer->timeout({expired.timerType, expired.argument});
    m_pRunningCyclic = running.pOuter;
    if (running.stopped) return;
    // The observer may have started the triple anew; its request stands.
    if (findTimer(expired.timerType, expired.observer, expired.argument) != nullptr) return;
    // The period counts from the end of the observer's work; a missed expiry
    // is not made up for.
    addTimer(expired.timeMs == 0 ? 1 : expired.timeMs, expired.timerType, expired.observer, expired.argument, true);
}

void TimerHandler::handleTestTrigger(ose::Signal* signal)
{
    SSC_TRACE(swuGroup(), kFlow, "Handling SSC_TEST_TRIGGER_TIMER_REQ");
    const ose::PROCESS requester = m_pDispatcher->getSender(signal);
    const auto* request = ose::signal_cast<SSC_TEST_TRIGGER_TIMER_REQ_S>(signal);
    if (request == nullptr)
        SSC_TRACE(swuGroup(), kUnexpected, "SSC_TEST_TRIGGER_TIMER_REQ too short, rejected");
    const TimerType timerType = request != nullptr ? static_cast<TimerType>(request->timerType) : 0;
    TimerData* row = request == nullptr ? nullptr
                                        : m_timers.find([timerType](const TimerData& t) { return t.timerType == timerType; });
    if (row == nullptr) {
        SSC_TRACE(swuGroup(), kFlow, "Sending SSC_TEST_TRIGGER_TIMER_REJ");
        m_pDispatcher->sendSignal(OsService::alloc(sizeof(SSC_TEST_TRIGGER_TIMER_REJ_S), SSC_TEST_TRIGGER_TIMER_REJ),
                                  requester);
        return;
    }
    // The kernel's time-out runs on; its signal finds no row and is dropped.
    TimerData triggered = *row;
    m_timers.removeFirst([row](const TimerData& timer) { return &timer == row; });
    deleteOsTimer(triggered.handle);
    SSC_TRACE(swuGroup(), kFlow, "Triggered Timer %d if type %d.", static_cast<int>(triggered.handle.seq),
              static_cast<int>(triggered.timerType));
    auto* confirm = OsService::allocAs<SSC_TEST_TRIGGER_TIMER_CFM_S>(SSC_TEST_TRIGGER_TIMER_CFM);
    confirm->timersFound = 1;
    SSC_TRACE(swuGroup(), kFlow, "Sending SSC_TEST_TRIGGER_TIMER_CFM. timersFound: %d", 1);
    m_pDispatcher->sendSignal(reinterpret_cast<ose::Signal*>(confirm), requester);
    triggered.observer->timeout({triggered.timerType, triggered.argument});
}

void TimerHandler::cancelAllOsTimers()
{
    EC_LinkedListIterator<TimerData> walk(m_timers);
    while (TimerData* timer = walk.next()) cancelOsTimer(timer->handle);
    m_timers.clear();
}
