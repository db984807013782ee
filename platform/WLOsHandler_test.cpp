#include "platform/WLOsHandler.h"

#include "frame/SSC_Server.h"
#include "platform/WLHuntHandler.h"
#include "platform/testSupport/CoreHarness.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <vector>

namespace {

using ose::testing::TestWorld;

constexpr ose::SIGSELECT kPing = 0x1704601;
constexpr ose::SIGSELECT kPong = 0x1704602;
constexpr ose::SIGSELECT kStop = 0x1704603;

// Answers a ping to its sender; a stop takes its phantom away.
class PingServer : public SSC_Server {
public:
    explicit PingServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}
    ~PingServer() override { deregisterSignals(); }
    const char* getProcessName() const override { return "ping_server"; }
    const char* getServerName() const override { return "PingServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override { return makeSignalIterator(*this, kTable); }

private:
    void handlePing(ose::Signal* signal)
    {
        m_pDispatcher->sendSignal(ose::testing::word(kPong, ose::testing::valueOf(signal) + 1),
                                  m_pDispatcher->getSender(signal));
    }
    void handleStop(ose::Signal*) { stopProcess(); }

    static constexpr SignalTableRow<PingServer> kTable[] = {
        {kPing, "PING", &PingServer::handlePing},
        {kStop, "STOP", &PingServer::handleStop},
    };
};

using WLOsHandlerTest = TestWorld;

// Its handler waits on the bus, as a unit's poll does.
class WaitingServer : public SSC_Server {
public:
    explicit WaitingServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}
    ~WaitingServer() override { deregisterSignals(); }
    const char* getProcessName() const override { return "waiting_server"; }
    const char* getServerName() const override { return "WaitingServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override { return makeSignalIterator(*this, kTable); }

private:
    void handlePing(ose::Signal*) { OsService::delay(1'000'000); }
    static constexpr SignalTableRow<WaitingServer> kTable[] = {{kPing, "PING", &WaitingServer::handlePing}};
};

TEST_F(WLOsHandlerTest, ASignalInHandIsFreedWhenTheCoreEndsWhileItsHandlerWaits)
{
    // TestWorld's tear-down counts the signal buffers still alive.
    spawn("SSC_THREAD", [] {
        WLOsHandler os;
        OsService::setHandler(&os);
        struct Reset {
            ~Reset() { OsService::setHandler(nullptr); }
        } reset;
        SignalDispatcher dispatcher;
        WaitingServer server(&dispatcher);
        server.registerSignals();
        server.startProcess();
        dispatcher.run();
    });
    spawn("tester", [] {
        ose::delay(10);
        ose::PROCESS server = 0;
        ASSERT_TRUE(ose::hunt("waiting_server", 0, &server, nullptr));
        ose::Signal* ping = ose::testing::word(kPing, 1);
        ose::send(&ping, server);
    });
    world().runFor(100);
}

TEST_F(WLOsHandlerTest, AServersPhantomIsHuntedByNameAndItsSignalsReachTheCoreProcess)
{
    std::unique_ptr<PingServer> server;
    ose::PROCESS core = spawn("SSC_THREAD", core_harness::coreBody([&](SignalDispatcher& dispatcher) {
        server = std::make_unique<PingServer>(&dispatcher);
        server->registerSignals();
        server->startProcess();
    }));
    ose::PROCESS phantom = 0;
    ose::PROCESS replier = 0;
    std::uint32_t answer = 0;
    bool foundAfterStop = true;
    spawn("client", [&] {
        ASSERT_TRUE(ose::hunt("ping_server", 0, &phantom, nullptr));
        ose::Signal* ping = ose::testing::word(kPing, 41);
        ose::send(&ping, phantom);
        const ose::SIGSELECT pong[] = {1, kPong};
        ose::Signal* reply = ose::receive_w_tmo(1000, pong);
        ASSERT_NE(reply, nullptr);
        replier = ose::sender(&reply);
        answer = ose::testing::valueOf(reply);
        ose::free_buf(&reply);
        ose::Signal* stop = ose::testing::word(kStop, 0);
        ose::send(&stop, phantom);
        ose::delay(10);
        ose::PROCESS again = 0;
        foundAfterStop = ose::hunt("ping_server", 0, &again, nullptr);
    });
    world().runFor(2000);
    EXPECT_NE(phantom, 0u);
    EXPECT_NE(phantom, core);
    EXPECT_EQ(replier, core);
    EXPECT_EQ(answer, 42u);
    EXPECT_FALSE(foundAfterStop);
    EXPECT_EQ(server->getPid(), 0u);
    // The server must go while its dispatcher lives: inside the world.
    world().post([&] { server.reset(); });
    world().runFor(1);
}

// A server of the core that asks, from inside a handler, with sendAndReceive;
// each answer tells how much world time the wait took.
class AskingServer : public SSC_Server {
public:
    static constexpr ose::SIGSELECT kAsk = 0x1704611;
    static constexpr ose::SIGSELECT kTold = 0x1704612;

    explicit AskingServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}
    ~AskingServer() override { deregisterSignals(); }
    const char* getProcessName() const override { return "asking_server"; }
    const char* getServerName() const override { return "AskingServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override { return makeSignalIterator(*this, kTable); }

    // Where the next kAsk asks: a pid, or 0xFFFFFFFF for the server's own phantom.
    ose::PROCESS m_askWhom = 0;

private:
    void handleAsk(ose::Signal* signal)
    {
        const ose::PROCESS whom = m_askWhom == 0xFFFFFFFFu ? getPid() : m_askWhom;
        const std::uint64_t before = ose::get_time_ms();
        ose::Signal* reply = m_pDispatcher->sendAndReceive(ose::testing::word(kPing, 1), whom, kPong, 1000);
        const std::uint32_t waited = static_cast<std::uint32_t>(ose::get_time_ms() - before);
        const std::uint32_t answer = reply != nullptr ? ose::testing::valueOf(reply) : 0;
        if (reply != nullptr) OsService::free(&reply);
        ose::Signal* told = ose::testing::word(kTold, waited * 1000 + answer);
        m_pDispatcher->sendSignal(told, m_pDispatcher->getSender(signal));
    }
    // The local receiver of a ping sent to the own phantom.
    void handlePing(ose::Signal* signal)
    {
        m_pDispatcher->sendSignal(ose::testing::word(kPong, ose::testing::valueOf(signal) + 6),
                                  m_pDispatcher->getSender(signal));
    }

    static constexpr SignalTableRow<AskingServer> kTable[] = {
        {kAsk, "ASK", &AskingServer::handleAsk},
        {kPing, "PING", &AskingServer::handlePing},
    };
};

TEST_F(WLOsHandlerTest, SendAndReceiveReturnsAtOnceWhereNoReplyCanComeAndWaitsForALivePeer)
{
    std::unique_ptr<AskingServer> server;
    spawn("SSC_THREAD", core_harness::coreBody([&](SignalDispatcher& dispatcher) {
        server = std::make_unique<AskingServer>(&dispatcher);
        server->registerSignals();
        server->startProcess();
    }));
    ose::PROCESS gone = spawn("gone", [] {});
    ose::PROCESS silent = spawn("silent", [] { ose::delay(100000); });
    std::vector<std::uint32_t> told;
    spawn("client", [&] {
        ose::PROCESS phantom = 0;
        ASSERT_TRUE(ose::hunt("asking_server", 0, &phantom, nullptr));
        for (ose::PROCESS whom : {ose::PROCESS{0}, gone, ose::PROCESS{0xFFFFFFFFu}, silent}) {
            server->m_askWhom = whom;
            ose::Signal* ask = ose::testing::word(AskingServer::kAsk, 0);
            ose::send(&ask, phantom);
            const ose::SIGSELECT selector[] = {1, AskingServer::kTold};
            ose::Signal* answer = ose::receive_w_tmo(5000, selector);
            ASSERT_NE(answer, nullptr);
            told.push_back(ose::testing::valueOf(answer));
            ose::free_buf(&answer);
        }
    });
    world().runFor(10000);
    // waited ms * 1000 + the answer's value: pid 0 and a dead process answer
    // at once with nothing; the own phantom is this very process, whose
    // handler answers (1 + 6); a live but silent peer costs the time-out.
    EXPECT_EQ(told, (std::vector<std::uint32_t>{0, 0, 7, 1000 * 1000}));
    world().post([&] { server.reset(); });
    world().runFor(1);
}

TEST_F(WLOsHandlerTest, HuntAndWaitGivesThePidOfAProcessThatAppearsInTimeAndZeroOtherwise)
{
    ose::PROCESS waited = 1;
    ose::PROCESS timedOut = 1;
    ose::PROCESS noWait = 1;
    std::uint64_t doneAt = 0;
    spawn("hunter", [&] {
        WLHuntHandler hunter;
        noWait = hunter.huntAndWait("late", ose::testing::word(0x500, 0), 0);
        timedOut = hunter.huntAndWait("never", ose::testing::word(0x501, 0), 100);
        waited = hunter.huntAndWait("late", ose::testing::word(0x502, 0), 1000);
        doneAt = ose::get_time_ms();
        // The first hunt for "late" is answered as well, as an ordinary signal.
        const ose::SIGSELECT first[] = {1, 0x500};
        ose::Signal* early = ose::receive_w_tmo(10, first);
        EXPECT_NE(early, nullptr);
        if (early != nullptr) ose::free_buf(&early);
    });
    spawn("creator", [&] {
        ose::delay(300);
        ose::PROCESS pid = ose::create_process(ose::ProcessType::Prioritized, "late", [] { ose::delay(10000); }, 0, 16);
        ose::start(pid);
    });
    world().runFor(2000);
    EXPECT_EQ(noWait, 0u);
    EXPECT_EQ(timedOut, 0u);
    EXPECT_NE(waited, 0u);
    EXPECT_EQ(doneAt, 300u);
}

} // namespace
