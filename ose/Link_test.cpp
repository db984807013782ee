#include "ose/TestWorld.h"

#include <string>
#include <vector>

namespace ose::testing {
namespace {

class LinkTest : public TestWorld {
protected:
    void SetUp() override
    {
        TestWorld::SetUp();
        m_pHome = &world().addNode("home");
        m_pFar = &world().addNode("far");
        m_link = world().addLink(*m_pHome, "port_0_dev_12/", *m_pFar, "port_0_dev_3/");
    }
    Node& home() { return *m_pHome; }
    Node& far() { return *m_pFar; }

    Node* m_pHome = nullptr;
    Node* m_pFar = nullptr;
    std::uint32_t m_link = 0;
};

// A far server that answers every signal to its sender and notes the
// sender's name as it sees it.
std::function<void()> echoServer(std::vector<std::string>& seenSenders)
{
    return [&seenSenders] {
        for (;;) {
            Signal* s = receive(kAnySignal);
            std::string name;
            get_pid_name(sender(&s), name);
            seenSenders.push_back(name);
            PROCESS back = sender(&s);
            send(&s, back);
        }
    };
}

TEST_F(LinkTest, HuntAcrossALinkWaitsForTheLinkAndTheNameAndGivesANamedProxy)
{
    world().setLinkUp(m_link, false);
    std::vector<std::string> seenByServer;
    std::string proxyName;
    std::uint64_t foundAt = 0;
    std::uint32_t reply = 0;
    PROCESS replySender = 0;
    spawn(home(), "client", [&] {
        Signal* huntSignal = alloc(8, 0x170500A);
        EXPECT_FALSE(hunt("port_0_dev_12/APC_INCI_Server", 0, nullptr, &huntSignal));
        Signal* found = receive(kAnySignal);
        foundAt = get_time_ms();
        PROCESS server = sender(&found);
        get_pid_name(server, proxyName);
        free_buf(&found);
        Signal* ping = word(1, 42);
        send(&ping, server);
        Signal* pong = receive(kAnySignal);
        reply = valueOf(pong);
        replySender = sender(&pong);
        EXPECT_EQ(replySender, server) << "the answer comes from the same proxy";
        free_buf(&pong);
    });
    world().runFor(100);
    spawn(far(), "APC_INCI_Server", echoServer(seenByServer));
    world().runFor(100);
    EXPECT_EQ(foundAt, 0u) << "the name exists, but the link is down";
    world().setLinkUp(m_link, true);
    world().runFor(100);
    EXPECT_EQ(foundAt, 200u);
    EXPECT_EQ(proxyName, "port_0_dev_12/APC_INCI_Server");
    EXPECT_EQ(reply, 42u);
    ASSERT_EQ(seenByServer.size(), 1u);
    EXPECT_EQ(seenByServer[0], "port_0_dev_3/client") << "the far side sees a proxy of the sender";
}

TEST_F(LinkTest, AttachToAProxyFiresWhenTheLinkGoesDownAndHuntsWaitForItToComeBack)
{
    std::vector<std::string> seen;
    spawn(far(), "APC_INCI_Server", echoServer(seen));
    std::vector<std::uint64_t> lostAt;
    std::vector<std::uint64_t> foundAt;
    spawn(home(), "client", [&] {
        for (int round = 0; round < 2; ++round) {
            Signal* huntSignal = alloc(4, 10);
            hunt("port_0_dev_12/APC_INCI_Server", 0, nullptr, &huntSignal);
            Signal* found = receive(kAnySignal);
            foundAt.push_back(get_time_ms());
            PROCESS server = sender(&found);
            free_buf(&found);
            Signal* lost = alloc(4, 11);
            attach(&lost, server);
            static const SIGSELECT onlyLost[] = {1, 11};
            Signal* gone = receive(onlyLost);
            EXPECT_EQ(sender(&gone), server);
            lostAt.push_back(get_time_ms());
            free_buf(&gone);
        }
    });
    world().runFor(50);
    world().setLinkUp(m_link, false);
    world().runFor(50);
    world().setLinkUp(m_link, true);
    world().runFor(50);
    EXPECT_EQ(foundAt, (std::vector<std::uint64_t>{0, 100}));
    EXPECT_EQ(lostAt, (std::vector<std::uint64_t>{50}));
}

TEST_F(LinkTest, AttachToAProxyFiresWhenTheFarProcessDies)
{
    PROCESS farServer = spawn(far(), "almServer", [] { receive(kAnySignal); });
    bool fired = false;
    spawn(home(), "watcher", [&] {
        PROCESS proxy = 0;
        ASSERT_TRUE(hunt("port_0_dev_12/almServer", 0, &proxy, nullptr));
        EXPECT_NE(proxy, farServer);
        Signal* s = alloc(4, 5);
        attach(&s, proxy);
        Signal* got = receive(kAnySignal);
        fired = sender(&got) == proxy;
        free_buf(&got);
    });
    world().runFor(10);
    world().kill(farServer);
    world().runFor(10);
    EXPECT_TRUE(fired);
}

TEST_F(LinkTest, AnUnknownPathIsNeverFound)
{
    bool found = true;
    spawn(home(), "client", [&] { found = hunt("port_0_dev_99/APC_INCI_Server", 0, nullptr, nullptr); });
    world().runUntilIdle();
    EXPECT_FALSE(found);
}

} // namespace
} // namespace ose::testing
