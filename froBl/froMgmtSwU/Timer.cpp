#include "froBl/froMgmtSwU/export/Timer.h"

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/TimerSignals.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include "ose/Kernel.h"

using namespace sup_sys_trace;

namespace {

// The kernel counts time unsigned: a negative time runs out at once, and a
// repeating timer waits at least a tick so that it cannot hold the process.
ose::OSTIME kernelTime(const std::uint32_t kind, const std::int32_t milliseconds)
{
    const std::int32_t least = kind == TimerApi::Repeating ? 1 : 0;
    return static_cast<ose::OSTIME>(milliseconds < least ? least : milliseconds);
}

} // namespace

Timer::Timer(SignalDistributorAPI& distributor) : m_distributor(distributor), m_signals{SUP_SYS_TIMER_SIG} {}

Timer::~Timer()
{
    while (!m_records.empty()) cancel(m_records.begin()->first);
    for (ose::SIGSELECT sigNo : m_signals) m_distributor.unsubscribe(sigNo, this);
}

Timer& Timer::instance()
{
    return SupSysSingletons::get<Timer>([] { return std::make_unique<Timer>(SignalDistributor::instance()); });
}

void Timer::init()
{
    for (ose::SIGSELECT sigNo : m_signals)
        if (m_distributor.subscribe(sigNo, this) == 0)
            SSC_TRACE(timerGroup(), kError, "Timer: subscription of 0x%x failed", sigNo);
}

std::uint32_t Timer::takeId()
{
    if (!m_freeIds.empty()) {
        const std::uint32_t id = m_freeIds.front();
        m_freeIds.pop_front();
        return id;
    }
    return m_nextId++;
}

void Timer::request(const std::uint32_t timerId, const Record& record)
{
    auto* signal = ose::alloc_as<SUP_SYS_TIMER_SIG_S>(SUP_SYS_TIMER_SIG);
    signal->timerId = timerId;
    ose::Signal* buffer = reinterpret_cast<ose::Signal*>(signal);
    Record stored = record;
    stored.request = ose::request_tmo(kernelTime(record.kind, record.milliseconds), &buffer);
    m_records[timerId] = stored;
}

std::uint32_t Timer::start(TimerObserver* observer, const std::uint32_t kind, const std::int32_t milliseconds)
{
    const std::uint32_t id = takeId();
    request(id, Record{observer, kind, milliseconds, {}});
    SSC_TRACE(timerGroup(), kFlow, "Timer %u started: kind %u, %d ms", id, kind, milliseconds);
    return id;
}

void Timer::cancel(const std::uint32_t timerId)
{
    auto it = m_records.find(timerId);
    if (it == m_records.end()) return;
    ose::Signal* signal = ose::cancel_tmo(&it->second.request);
    if (signal != nullptr) ose::free_buf(&signal);
    else m_expiredCancelled.insert(timerId);
    m_records.erase(it);
    m_freeIds.push_back(timerId);
    SSC_TRACE(timerGroup(), kFlow, "Timer %u cancelled", timerId);
}

void Timer::handleSignal(ose::Signal* signal)
{
    const auto* timeout = ose::signal_cast<SUP_SYS_TIMER_SIG_S>(signal);
    if (ose::signalNumber(signal) != SUP_SYS_TIMER_SIG || timeout == nullptr) {
        SSC_TRACE(timerGroup(), kError, "Unknown signal number: 0x%x", ose::signalNumber(signal));
        return;
    }
    onTimeout(timeout->timerId);
}

void Timer::onTimeout(const std::uint32_t timerId)
{
    auto stale = m_expiredCancelled.find(timerId);
    if (stale != m_expiredCancelled.end()) {
        m_expiredCancelled.erase(stale);
        SSC_TRACE(timerGroup(), kFlow, "Time-out of cancelled timer %u dropped", timerId);
        return;
    }
    auto it = m_records.find(timerId);
    // A kind of timer that is neither stays as it is until it is cancelled.
    if (it == m_records.end() || (it->second.kind != OneShot && it->second.kind != Repeating)) return;
    const Record record = it->second;
    m_records.erase(it);
    if (record.kind == OneShot) m_freeIds.push_back(timerId);
    else request(timerId, record);
    if (record.observer != nullptr) record.observer->timeout(timerId);
}
