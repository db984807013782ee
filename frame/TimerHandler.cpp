#include "frame/TimerHandler.h"

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
    const std::uint32_t slot = findTimer(timerType, observer, argument);
    if (slot != kNoSlot) {
        TimerData& running = m_slots[slot].timer;
        // A restart keeps the reference, so a time-out that already expired
        // cannot be moved: its signal is queued and would fire the timer
        // early. It is replaced instead, and the queued signal finds no row.
        // A change between one-shot and cyclic is a new timer as well.
        if (running.cyclic == cyclic && restartOsTimer(running, timeMs)) {
            running.timeMs = timeMs;
            return 1;
        }
        cancelOsTimer(running.handle);
        removeSlot(slot);
    }
    addTimer(timeMs, timerType, observer, argument, cyclic);
    return 1;
}

void TimerHandler::addTimer(std::uint32_t timeMs, TimerType timerType, TimerObserverIf* observer,
                            std::uint32_t argument, bool cyclic)
{
    std::uint32_t slot = 0;
    if (m_freeSlots.empty()) {
        slot = static_cast<std::uint32_t>(m_slots.size());
        m_slots.emplace_back();
    } else {
        slot = m_freeSlots.back();
        m_freeSlots.pop_back();
    }
    // References wrap after some years of cyclic timers; one still in use by
    // a long timer is passed over.
    std::uint32_t timerRef = m_nextTimerRef++;
    while (!m_byRef.insert(timerRef, slot)) timerRef = m_nextTimerRef++;
    m_byTriple.insert({timerType, observer, argument}, slot);
    Slot& row = m_slots[slot];
    row.used = true;
    row.seq = m_nextSeq++;
    row.timer = TimerData{};
    row.timer.timerRef = timerRef;
    row.timer.timerType = timerType;
    row.timer.argument = argument;
    row.timer.observer = observer;
    row.timer.timeMs = timeMs;
    row.timer.cyclic = cyclic;
    row.timer.handle = createOsTimer(timeMs, timerRef, cyclic ? SSC_CYCLIC_TIMER_EXPIRED : SSC_TIMER_EXPIRED);
}

TimerData TimerHandler::removeSlot(std::uint32_t slot)
{
    Slot& row = m_slots[slot];
    m_byRef.erase(row.timer.timerRef);
    m_byTriple.erase({row.timer.timerType, row.timer.observer, row.timer.argument});
    row.used = false;
    m_freeSlots.push_back(slot);
    return row.timer;
}

int TimerHandler::stopTimer(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument)
{
    const std::uint32_t slot = findTimer(timerType, observer, argument);
    if (slot != kNoSlot) {
        cancelOsTimer(m_slots[slot].timer.handle);
        removeSlot(slot);
    }
    return 1;
}

int TimerHandler::stopAllTimers(TimerObserverIf* observer)
{
    markRunningCyclicStopped(observer);
    for (std::uint32_t slot = 0; slot < m_slots.size(); ++slot) {
        if (!m_slots[slot].used || m_slots[slot].timer.observer != observer) continue;
        cancelOsTimer(m_slots[slot].timer.handle);
        removeSlot(slot);
        SSC_TRACE(swuGroup(), kFlow, "Timer cancelled from users list");
    }
    SSC_TRACE(swuGroup(), kFlow, "No Timer left in users list");
    return 1;
}

int TimerHandler::isTimerRunning(TimerType timerType, TimerObserverIf* observer, std::uint32_t argument)
{
    return findTimer(timerType, observer, argument) != kNoSlot ? 1 : 0;
}

std::size_t TimerHandler::TripleHash::operator()(const Triple& key) const
{
    // Observers lie 8 or more bytes apart; type and argument are small numbers.
    const auto observer = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key.observer));
    return static_cast<std::size_t>((observer >> 3) ^ (std::uint64_t{key.timerType} << 40) ^
                                    (std::uint64_t{key.argument} * 0xC2B2AE3D27D4EB4FULL));
}

std::uint32_t TimerHandler::findTimer(TimerType timerType, const TimerObserverIf* observer,
                                      std::uint32_t argument) const
{
    const std::uint32_t* slot = m_byTriple.find({timerType, observer, argument});
    return slot != nullptr ? *slot : kNoSlot;
}

std::uint32_t TimerHandler::findByRef(std::uint32_t timerRef) const
{
    const std::uint32_t* slot = m_byRef.find(timerRef);
    return slot != nullptr ? *slot : kNoSlot;
}

// Only the test trigger asks by type: a walk is good enough there.
std::uint32_t TimerHandler::findNewestOfType(TimerType timerType) const
{
    std::uint32_t newest = kNoSlot;
    for (std::uint32_t slot = 0; slot < m_slots.size(); ++slot) {
        const Slot& row = m_slots[slot];
        if (!row.used || row.timer.timerType != timerType) continue;
        if (newest == kNoSlot || row.seq > m_slots[newest].seq) newest = slot;
    }
    return newest;
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
    const std::uint32_t slot = findByRef(timerRef);
    if (slot == kNoSlot) return false; // stopped or replaced while its signal was queued
    const TimerData* row = &m_slots[slot].timer;
    // Only the kernel's own time-out carries the right kind; any other is stale
    // or forged, and obeying it would turn a one-shot into a cyclic timer (or
    // end a cyclic one).
    if (row->cyclic != (sigNo == SSC_CYCLIC_TIMER_EXPIRED)) {
        SSC_TRACE(swuGroup(), kUnexpected, "Timer expiry signal 0x%X for timer %u of the other kind, dropped",
                  static_cast<unsigned>(sigNo), static_cast<unsigned>(timerRef));
        return false;
    }
    expired = removeSlot(slot);
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
    // Also when the core ends inside the time-out (its stack unwinds): the
    // handler outlives the objects, which still stop their timers.
    struct Unlink {
        RunningCyclic*& head;
        RunningCyclic* outer;
        ~Unlink() { head = outer; }
    } unlink{m_pRunningCyclic, running.pOuter};
    expired.observer->timeout({expired.timerType, expired.argument});
    if (running.stopped) return;
    // The observer may have started the triple anew; its request stands.
    if (findTimer(expired.timerType, expired.observer, expired.argument) != kNoSlot) return;
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
    const std::uint32_t slot = request == nullptr ? kNoSlot : findNewestOfType(timerType);
    if (slot == kNoSlot) {
        SSC_TRACE(swuGroup(), kFlow, "Sending SSC_TEST_TRIGGER_TIMER_REJ");
        m_pDispatcher->sendSignal(OsService::alloc(sizeof(SSC_TEST_TRIGGER_TIMER_REJ_S), SSC_TEST_TRIGGER_TIMER_REJ),
                                  requester);
        return;
    }
    // The kernel's time-out runs on; its signal finds no row and is dropped.
    TimerData triggered = removeSlot(slot);
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
    for (Slot& row : m_slots)
        if (row.used) cancelOsTimer(row.timer.handle);
    m_slots.clear();
    m_freeSlots.clear();
    m_byRef.clear();
    m_byTriple.clear();
}
