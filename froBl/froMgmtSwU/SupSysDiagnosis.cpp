#include "froBl/froMgmtSwU/export/SupSysDiagnosis.h"

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosisSignals.h"
#include "froBl/froMgmtSwU/export/Timer.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include "ose/Kernel.h"

#include <limits>

using namespace sup_sys_trace;

SupSysDiagnosis::SupSysDiagnosis(SignalDistributorAPI& distributor, TimerApi& timer)
    : m_distributor(distributor), m_timer(timer)
{
}

SupSysDiagnosis::~SupSysDiagnosis()
{
    for (const auto& [timerId, waiting] : m_waiting) m_timer.cancel(timerId);
    m_distributor.unsubscribe(SUP_SYS_DIAG_TIMER_REQ, this);
}

SupSysDiagnosis& SupSysDiagnosis::instance()
{
    return SupSysSingletons::get<SupSysDiagnosis>(
        [] { return std::make_unique<SupSysDiagnosis>(SignalDistributor::instance(), Timer::instance()); });
}

void SupSysDiagnosis::init()
{
    if (m_distributor.subscribe(SUP_SYS_DIAG_TIMER_REQ, this) == 0)
        SSC_TRACE(engineGroup(), kError, "Signal subscription failed!");
}

void SupSysDiagnosis::handleSignal(ose::Signal* signal)
{
    const auto* request = ose::signal_cast<SUP_SYS_DIAG_TIMER_REQ_S>(signal);
    if (request == nullptr || request->delayMs > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max())) {
        SSC_TRACE(engineGroup(), kUnexpected, "SUP_SYS_DIAG_TIMER_REQ too short or its time out of range, dropped");
        return;
    }
    const Waiting waiting{ose::sender(&signal), request->clientRef, static_cast<std::uint32_t>(ose::get_ticks())};
    const std::uint32_t timerId =
        m_timer.start(this, TimerApi::OneShot, static_cast<std::int32_t>(static_cast<std::uint32_t>(request->delayMs)));
    m_waiting[timerId] = waiting;
}

void SupSysDiagnosis::timeout(const std::uint32_t timerId)
{
    auto it = m_waiting.find(timerId);
    if (it == m_waiting.end()) return;
    const Waiting waiting = it->second;
    m_waiting.erase(it);
    auto* answer = ose::alloc_as<SUP_SYS_DIAG_TIMER_CFM_S>(SUP_SYS_DIAG_TIMER_CFM);
    answer->clientRef = waiting.clientRef;
    answer->timerId = timerId;
    answer->requestedAtMs = waiting.requestedAtMs;
    answer->answeredAtMs = static_cast<std::uint32_t>(ose::get_ticks());
    ose::Signal* buffer = reinterpret_cast<ose::Signal*>(answer);
    ose::send(&buffer, waiting.client);
}
