#include "froBl/froMgmtSwU/export/SignalDistributor.h"

#include "ose/TestWorld.h"

#include <string>
#include <vector>

namespace {

using namespace ose;
using namespace ose::testing;

struct Recorder : SignalSubscriber {
    Recorder(std::string name, std::vector<std::string>& log) : m_name(std::move(name)), m_log(log) {}
    void handleSignal(Signal* signal) override
    {
        m_log.push_back(m_name + ":" + std::to_string(valueOf(signal)));
        if (m_onSignal)
            m_onSignal();
    }
    std::string m_name;
    std::vector<std::string>& m_log;
    std::function<void()> m_onSignal;
};

class SignalDistributorTest : public TestWorld {
protected:
    // Delivers a signal from `from` to a process that distributes it.
    bool deliver(SIGSELECT sigNo, std::uint32_t value, const std::string& from = "sender")
    {
        bool handled = false;
        const PROCESS receiver = spawn("receiver", [&] {
            Signal* signal = receive(kAnySignal);
            handled = m_distributor.distribute(signal);
            free_buf(&signal);
        });
        m_senderPid = spawn(from, [=] {
            Signal* signal = word(sigNo, value);
            send(&signal, receiver);
        });
        world().runUntilIdle();
        return handled;
    }

    SignalDistributor m_distributor;
    std::vector<std::string> m_log;
    Recorder m_first{"first", m_log};
    Recorder m_second{"second", m_log};
    PROCESS m_senderPid = 0;
};

TEST_F(SignalDistributorTest, SubscribersOfANumberAreCalledInTheOrderTheySubscribed)
{
    EXPECT_EQ(m_distributor.subscribe(0x100, &m_second), 1);
    EXPECT_EQ(m_distributor.subscribe(0x100, &m_first), 1);
    EXPECT_EQ(m_distributor.subscribe(0x101, &m_first), 1);
    EXPECT_TRUE(deliver(0x100, 7));
    EXPECT_EQ(m_log, (std::vector<std::string>{"second:7", "first:7"}));
    EXPECT_FALSE(deliver(0x102, 8)) << "nobody takes it";
    EXPECT_EQ(m_distributor.count(), 3u);
}

TEST_F(SignalDistributorTest, OneSubscriptionPerSubscriberAndNumberAndOnlyAlignedFieldFilters)
{
    EXPECT_EQ(m_distributor.subscribe(0x100, &m_first), 1);
    EXPECT_EQ(m_distributor.subscribe(0x100, 4, 9, &m_first), 0) << "another filter does not make it new";
    EXPECT_EQ(m_distributor.subscribe(0x100, PROCESS{5}, &m_first), 0);
    EXPECT_EQ(m_distributor.subscribe(0x200, 6, 9, &m_first), 0) << "offset 6 is not a word";
    EXPECT_EQ(m_distributor.subscribe(0x200, nullptr), 0);
    EXPECT_EQ(m_distributor.unsubscribe(0x100, &m_second), 0);
    EXPECT_EQ(m_distributor.unsubscribe(0x100, &m_first), 1);
    EXPECT_EQ(m_distributor.unsubscribe(0x100, &m_first), 0);
    EXPECT_EQ(m_distributor.count(), 0u);
    EXPECT_FALSE(deliver(0x100, 1));
}

TEST_F(SignalDistributorTest, FiltersOnSenderAndOnAFieldSelectTheSubscribers)
{
    ASSERT_EQ(m_distributor.subscribe(0x100, 4, 42, &m_first), 1);
    EXPECT_FALSE(deliver(0x100, 41));
    EXPECT_TRUE(deliver(0x100, 42));
    ASSERT_EQ(m_distributor.subscribe(0x200, 8, 0, &m_first), 1);
    EXPECT_FALSE(deliver(0x200, 0)) << "the field lies beyond the end of the signal";

    // The sender's pid is known only once it runs: the same name is spawned again with the next pid.
    deliver(0x300, 1, "known");
    const PROCESS next = m_senderPid + 2; // receiver, then sender
    ASSERT_EQ(m_distributor.subscribe(0x300, next, &m_second), 1);
    ASSERT_EQ(m_distributor.subscribe(0x300, next, 4, 6, &m_first), 1); // right sender, wrong field
    EXPECT_TRUE(deliver(0x300, 5));
    ASSERT_EQ(m_senderPid, next);
    EXPECT_FALSE(deliver(0x300, 5)) << "another sender";
    EXPECT_EQ(m_log, (std::vector<std::string>{"first:42", "second:5"}));
}

TEST_F(SignalDistributorTest, ASubscriberMayUnsubscribeOthersWhileItHandlesASignal)
{
    ASSERT_EQ(m_distributor.subscribe(0x100, &m_first), 1);
    ASSERT_EQ(m_distributor.subscribe(0x100, &m_second), 1);
    m_first.m_onSignal = [&] {
        m_distributor.unsubscribe(0x100, &m_second);
        m_distributor.unsubscribe(0x100, &m_first);
    };
    EXPECT_TRUE(deliver(0x100, 3));
    EXPECT_EQ(m_log, (std::vector<std::string>{"first:3"}));
    EXPECT_EQ(m_distributor.offsetOf(&m_log, reinterpret_cast<const char*>(&m_log) + 12), 12u);
}

} // namespace
