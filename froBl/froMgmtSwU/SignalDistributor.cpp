#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"

#include "froBl/froMgmtSwU/export/froTrace.h"

#include "ose/Kernel.h"

#include <cstring>
#include <vector>

using namespace fro_trace;

namespace {

ose::TraceGroupId sigGroup() { return ose::traceGroup<"supSysSigSubscrLU">(); }

} // namespace

SignalDistributor& SignalDistributor::instance()
{
    return SupSysSingletons::get<SignalDistributor>();
}

int SignalDistributor::add(ose::SIGSELECT sigNo, const Subscription& subscription)
{
    if (subscription.subscriber == nullptr || (subscription.contentFilterOn && subscription.fieldOffset % 4 != 0)) {
        SSC_TRACE(sigGroup(), kError, "Subscription of 0x%08x refused: no subscriber or offset %u", sigNo,
                  subscription.fieldOffset);
        return 0;
    }
    const auto [first, last] = m_table.equal_range(sigNo);
    for (auto it = first; it != last; ++it) {
        if (it->second.subscriber == subscription.subscriber) {
            SSC_TRACE(sigGroup(), kFlow, "Subscriber already subscribes to 0x%08x", sigNo);
            return 0;
        }
    }
    m_table.emplace_hint(last, sigNo, subscription); // behind those with the same number
    ++m_count;
    return 1;
}

int SignalDistributor::subscribe(ose::SIGSELECT sigNo, SignalSubscriber* subscriber)
{
    return add(sigNo, {subscriber, false, 0, false, 0, 0});
}

int SignalDistributor::subscribe(ose::SIGSELECT sigNo, ose::PROCESS senderPid, SignalSubscriber* subscriber)
{
    return add(sigNo, {subscriber, true, senderPid, false, 0, 0});
}

int SignalDistributor::subscribe(ose::SIGSELECT sigNo, ose::PROCESS senderPid, std::uint32_t fieldOffset,
                                 std::uint32_t fieldValue, SignalSubscriber* subscriber)
{
    return add(sigNo, {subscriber, true, senderPid, true, fieldOffset, fieldValue});
}

int SignalDistributor::subscribe(ose::SIGSELECT sigNo, std::uint32_t fieldOffset, std::uint32_t fieldValue,
                                 SignalSubscriber* subscriber)
{
    return add(sigNo, {subscriber, false, 0, true, fieldOffset, fieldValue});
}

int SignalDistributor::unsubscribe(ose::SIGSELECT sigNo, SignalSubscriber* subscriber)
{
    const auto [first, last] = m_table.equal_range(sigNo);
    for (auto it = first; it != last; ++it) {
        if (it->second.subscriber == subscriber) {
            m_table.erase(it);
            --m_count;
            return 1;
        }
    }
    return 0;
}

std::uint32_t SignalDistributor::offsetOf(const void* signalStart, const void* field) const
{
    return static_cast<std::uint32_t>(static_cast<const char*>(field) - static_cast<const char*>(signalStart));
}

bool SignalDistributor::passes(const Subscription& subscription, ose::Signal* signal)
{
    if (subscription.senderFilterOn && ose::sender(&signal) != subscription.senderPid)
        return false;
    if (!subscription.contentFilterOn)
        return true;
    // A field beyond the end of a short signal fails the filter.
    if (ose::sigsize(&signal) < subscription.fieldOffset + 4u)
        return false;
    return ose::loadBe32(reinterpret_cast<const char*>(signal) + subscription.fieldOffset) == subscription.fieldValue;
}

bool SignalDistributor::stillSubscribed(ose::SIGSELECT sigNo, const SignalSubscriber* subscriber) const
{
    const auto [first, last] = m_table.equal_range(sigNo);
    for (auto it = first; it != last; ++it)
        if (it->second.subscriber == subscriber)
            return true;
    return false;
}

bool SignalDistributor::distribute(ose::Signal* signal)
{
    if (signal == nullptr)
        return false;
    // A subscriber may subscribe or unsubscribe while it handles the signal:
    // the walk is over a copy of the matching subscriptions, and each is
    // checked to be still there before it is called.
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    std::vector<Subscription> matching;
    const auto [first, last] = m_table.equal_range(sigNo);
    for (auto it = first; it != last; ++it)
        matching.push_back(it->second);
    bool handled = false;
    for (const Subscription& subscription : matching) {
        if (!stillSubscribed(sigNo, subscription.subscriber) || !passes(subscription, signal))
            continue;
        subscription.subscriber->handleSignal(signal);
        handled = true;
    }
    return handled;
}
