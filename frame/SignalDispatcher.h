#pragma once
// The receive loop of the core process. A received signal goes to every
// client that subscribed its number under the client's current reference,
// newest subscription first, and is freed after the last of them.

#include "frame/EC_LinkedList.h"
#include "frame/Noncopyable.h"
#include "frame/SignalDispatcherIf.h"

#include <cstdint>
#include <memory>
#include <unordered_map>

class SignalDispatcher : public SignalDispatcherIf, private Noncopyable {
public:
    struct SignalSubscribers {
        ose::SIGSELECT sigNo;
        std::uint32_t clientRef;
        SignalDispatcherClient* client; // not owned
    };

    // Reads the pid of the calling process: this dispatcher belongs to it.
    // Client references count up from `firstClientRef`, skipping 0.
    explicit SignalDispatcher(std::uint32_t firstClientRef = 1);
    ~SignalDispatcher() override;

    void sendSignal(ose::Signal* signal, ose::PROCESS pid) override;
    ose::Signal* sendAndReceive(ose::Signal* signal, ose::PROCESS pid, ose::SIGSELECT replySigNo,
                                std::uint32_t timeoutMs) override;
    ose::Signal* sendAndReceive(ose::Signal* signal, ose::PROCESS pid, ose::SIGSELECT replySigNo1,
                                ose::SIGSELECT replySigNo2, std::uint32_t timeoutMs) override;
    ose::Signal* receiveWithTimeout(ose::SIGSELECT sigNo, std::uint32_t timeoutMs) override;
    ose::Signal* receiveWithTimeout(ose::SIGSELECT sigNo1, ose::SIGSELECT sigNo2, std::uint32_t timeoutMs) override;
    void subscribeSignal(ose::SIGSELECT sigNo, SignalDispatcherClient* client, std::uint32_t clientRef) override;
    void unsubscribeSignal(ose::SIGSELECT sigNo, SignalDispatcherClient* client) override;
    ose::PROCESS getSender(ose::Signal* signal) override;
    std::uint32_t newClientRef() override;
    void run() override;

    // One turn of the loop: waits for any signal and dispatches it.
    void receiveAndDispatch();
    // Hands the signal to its subscribers and frees it.
    void dispatch(ose::Signal* signal);

    ose::PROCESS getOwnPid() const { return m_ownPid; }
    std::uint32_t subscriptionCount() const { return m_subscriptionCount; }

private:
    // Sends after the trace of a sent signal; the number of what was sent.
    ose::SIGSELECT traceAndSend(ose::Signal* signal, ose::PROCESS pid);
    // The sending half of sendAndReceive; false when no reply can come (the
    // signal is freed then).
    bool sendForReply(ose::Signal* signal, ose::PROCESS pid, std::uint32_t timeoutMs);
    ose::Signal* receiveSelected(ose::Selector selector, std::uint32_t timeoutMs);

    using Subscribers = EC_LinkedList<SignalSubscribers>;
    // The list of one number; made at its first subscription.
    Subscribers& subscribersOf(ose::SIGSELECT sigNo);

    ose::PROCESS m_ownPid;
    // The subscriptions by number, each list newest first. A list, once made,
    // stays while the dispatcher lives: a walk over it may be under way when
    // its last row goes.
    std::unordered_map<ose::SIGSELECT, std::unique_ptr<Subscribers>> m_dispatcherList;
    std::uint32_t m_subscriptionCount = 0;
    std::uint32_t m_nextClientRef = 1;
};
