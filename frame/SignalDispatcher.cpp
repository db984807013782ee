#include "frame/SignalDispatcher.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcherClient.h"
#include "frame/SscTrace.h"

using namespace ssc_trace;

namespace {

// The trace has no data channel: the buffer's address and size follow the text.
void traceSignal(unsigned level, ose::Signal* signal)
{
    if (!ose::Trace::enabled(swuGroup(), level)) return;
    SSC_TRACE(swuGroup(), level, "SigNo: %d (%p, %u bytes)", static_cast<int>(ose::signalNumber(signal)),
              static_cast<void*>(signal), static_cast<unsigned>(OsService::sigsize(signal)));
}

} // namespace

SignalDispatcher::SignalDispatcher(std::uint32_t firstClientRef)
    : m_ownPid(OsService::currentProcess()), m_nextClientRef(firstClientRef != 0 ? firstClientRef : 1)
{
}

SignalDispatcher::~SignalDispatcher() = default;

void SignalDispatcher::run()
{
    for (;;) receiveAndDispatch();
}

void SignalDispatcher::receiveAndDispatch()
{
    ose::Signal* signal = OsService::receive(ose::kAnySignal);
    if (signal == nullptr) return;
    traceSignal(kSignalReceived, signal);
    dispatch(signal);
}

void SignalDispatcher::dispatch(ose::Signal* signal)
{
    if (signal == nullptr) return;
    // Freed however the handlers end: also when the process is killed while
    // a handler waits (a restart of the core), its stack unwinding.
    struct SignalInHand {
        ose::Signal* signal;
        ~SignalInHand() { OsService::free(&signal); }
    } inHand{signal};
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    bool received = false;
    auto found = m_dispatcherList.find(sigNo);
    if (found != m_dispatcherList.end()) {
        // An iterator, not the list's cursor: a handler may dispatch again
        // (sendAndReceive to this process) or change the subscriptions.
        EC_LinkedListIterator<SignalSubscribers> walk(*found->second);
        while (SignalSubscribers* row = walk.next()) {
            SignalDispatcherClient* client = row->client;
            if (client == nullptr || row->clientRef != client->getClientRef()) continue;
            received = true;
            client->receiveSignal(signal);
        }
    }
    if (!received) SSC_TRACE(swuGroup(), kFlow, "No receiver for signal:%d with OODB_Ref:%d", static_cast<int>(sigNo), 0);
}

SignalDispatcher::Subscribers& SignalDispatcher::subscribersOf(ose::SIGSELECT sigNo)
{
    std::unique_ptr<Subscribers>& list = m_dispatcherList[sigNo];
    if (list == nullptr) list = std::make_unique<Subscribers>();
    return *list;
}

void SignalDispatcher::subscribeSignal(ose::SIGSELECT sigNo, SignalDispatcherClient* client, std::uint32_t clientRef)
{
    if (sigNo == 0 || client == nullptr || clientRef == 0) {
        SSC_TRACE(swuGroup(), kFlow, "Invalid inparameters in subscribe signal");
        return;
    }
    Subscribers& subscribers = subscribersOf(sigNo);
    if (subscribers.find([&](const SignalSubscribers& row) { return row.client == client; })) return;
    subscribers.add({sigNo, clientRef, client});
    ++m_subscriptionCount;
    SSC_TRACE(swuGroup(), kFlow, "Added subscribeSignal with sigNo:%d and clientRef:%d in DispatcherList",
              static_cast<int>(sigNo), static_cast<int>(clientRef));
}

void SignalDispatcher::unsubscribeSignal(ose::SIGSELECT sigNo, SignalDispatcherClient* client)
{
    auto found = m_dispatcherList.find(sigNo);
    if (found == m_dispatcherList.end()) return;
    EC_LinkedListIterator<SignalSubscribers> walk(*found->second);
    while (SignalSubscribers* row = walk.next()) {
        if (row->client != client) continue;
        SSC_TRACE(swuGroup(), kFlow, "Removed subscribeSignal with sigNo:%d and clientRef:%d in DispatcherList",
                  static_cast<int>(row->sigNo), static_cast<int>(row->clientRef));
        walk.removeCurrent();
        --m_subscriptionCount;
    }
}

ose::SIGSELECT SignalDispatcher::traceAndSend(ose::Signal* signal, ose::PROCESS pid)
{
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    traceSignal(kSignalSent, signal);
    OsService::send(&signal, pid);
    return sigNo;
}

void SignalDispatcher::sendSignal(ose::Signal* signal, ose::PROCESS pid)
{
    if (signal == nullptr || pid == 0) {
        if (signal != nullptr) OsService::free(&signal);
        SSC_TRACE(swuGroup(), kFlow, "sendSignal with invalid parameters");
        return;
    }
    traceAndSend(signal, pid);
}

bool SignalDispatcher::sendForReply(ose::Signal* signal, ose::PROCESS pid, std::uint32_t timeoutMs)
{
    if (signal == nullptr) {
        SSC_TRACE(swuGroup(), kFlow, "Try to send signal = NIL");
        return false;
    }
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    // A request that reaches no process can get no reply: waiting out the
    // time-out would only stop the whole core for nothing.
    const ose::PROCESS receiver = pid != 0 ? OsService::receiverOf(pid, sigNo) : 0;
    if (receiver == 0) {
        SSC_TRACE(swuGroup(), kUnexpected, "sendAndReceive of signal %d to %u: no process receives it, no reply can come",
                  static_cast<int>(sigNo), static_cast<unsigned>(pid));
        OsService::free(&signal);
        return false;
    }
    traceAndSend(signal, pid);
    // Addressed to this very process, directly or through one of its own
    // phantoms: the local receiver runs first, so that its reply can come.
    if (receiver == m_ownPid) {
        if (ose::Signal* local = receiveWithTimeout(sigNo, timeoutMs)) dispatch(local);
    }
    return true;
}

ose::Signal* SignalDispatcher::sendAndReceive(ose::Signal* signal, ose::PROCESS pid, ose::SIGSELECT replySigNo,
                                              std::uint32_t timeoutMs)
{
    if (!sendForReply(signal, pid, timeoutMs)) return nullptr;
    return receiveWithTimeout(replySigNo, timeoutMs);
}

ose::Signal* SignalDispatcher::sendAndReceive(ose::Signal* signal, ose::PROCESS pid, ose::SIGSELECT replySigNo1,
                                              ose::SIGSELECT replySigNo2, std::uint32_t timeoutMs)
{
    if (!sendForReply(signal, pid, timeoutMs)) return nullptr;
    return receiveWithTimeout(replySigNo1, replySigNo2, timeoutMs);
}

ose::Signal* SignalDispatcher::receiveSelected(ose::Selector selector, std::uint32_t timeoutMs)
{
    ose::Signal* signal = OsService::receiveWithTimeout(selector, timeoutMs);
    if (signal != nullptr) traceSignal(kSignalReceived, signal);
    return signal;
}

ose::Signal* SignalDispatcher::receiveWithTimeout(ose::SIGSELECT sigNo, std::uint32_t timeoutMs)
{
    const ose::SIGSELECT selector[] = {1, sigNo};
    return receiveSelected(selector, timeoutMs);
}

ose::Signal* SignalDispatcher::receiveWithTimeout(ose::SIGSELECT sigNo1, ose::SIGSELECT sigNo2, std::uint32_t timeoutMs)
{
    const ose::SIGSELECT selector[] = {2, sigNo1, sigNo2};
    return receiveSelected(selector, timeoutMs);
}

ose::PROCESS SignalDispatcher::getSender(ose::Signal* signal)
{
    return signal != nullptr ? OsService::sender(signal) : 0;
}

std::uint32_t SignalDispatcher::newClientRef()
{
    const std::uint32_t clientRef = m_nextClientRef++;
    if (m_nextClientRef == 0) m_nextClientRef = 1; // 0 means no reference
    return clientRef;
}
