#pragma once
// The distributor of the object process: an ordered multimap from signal
// number to subscriptions, each with an optional sender filter and an
// optional filter on one 32-bit field of the signal.

#include "froBl/froMgmtSwU/export/SignalDistributorAPI.h"

#include <map>

class SignalDistributor : public SignalDistributorAPI {
public:
    SignalDistributor() = default;
    SignalDistributor(const SignalDistributor&) = delete;
    SignalDistributor& operator=(const SignalDistributor&) = delete;

    // The distributor of the process.
    static SignalDistributor& instance();

    int subscribe(ose::SIGSELECT sigNo, SignalSubscriber* subscriber) override;
    int subscribe(ose::SIGSELECT sigNo, ose::PROCESS senderPid, SignalSubscriber* subscriber) override;
    int subscribe(ose::SIGSELECT sigNo, ose::PROCESS senderPid, std::uint32_t fieldOffset, std::uint32_t fieldValue,
                  SignalSubscriber* subscriber) override;
    int subscribe(ose::SIGSELECT sigNo, std::uint32_t fieldOffset, std::uint32_t fieldValue,
                  SignalSubscriber* subscriber) override;
    int unsubscribe(ose::SIGSELECT sigNo, SignalSubscriber* subscriber) override;
    std::uint32_t offsetOf(const void* signalStart, const void* field) const override;
    bool distribute(ose::Signal* signal) override;

    std::size_t count() const { return m_count; }

private:
    struct Subscription {
        SignalSubscriber* subscriber = nullptr; // not owned
        bool senderFilterOn = false;
        ose::PROCESS senderPid = 0;
        bool contentFilterOn = false;
        std::uint32_t fieldOffset = 0;
        std::uint32_t fieldValue = 0;
    };

    int add(ose::SIGSELECT sigNo, const Subscription& subscription);
    static bool passes(const Subscription& subscription, ose::Signal* signal);
    bool stillSubscribed(ose::SIGSELECT sigNo, const SignalSubscriber* subscriber) const;

    std::multimap<ose::SIGSELECT, Subscription> m_table;
    std::size_t m_count = 0;
};
