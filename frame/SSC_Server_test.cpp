#include "frame/SSC_Server.h"

#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "frame/testSupport/FakeOsHandler.h"
#include "frame/testSupport/TraceCapture.h"

#include "ose/SignalPool.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::testing::_;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::StrEq;

constexpr ose::SIGSELECT kPing = 0x1704601;
constexpr ose::SIGSELECT kStatus = 0x1704602;

class PingServer : public SSC_Server {
public:
    explicit PingServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}
    ~PingServer() override { deregisterSignals(); }

    const char* getProcessName() const override { return "ping_server"; }
    const char* getServerName() const override { return "PingServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override { return makeSignalIterator(*this, kSignalTable); }

    std::vector<ose::SIGSELECT> m_handled;

private:
    void handlePing(ose::Signal* signal) { m_handled.push_back(ose::signalNumber(signal)); }
    void handleStatus(ose::Signal* signal) { m_handled.push_back(ose::signalNumber(signal) + 1000); }

    static constexpr SignalTableRow<PingServer> kSignalTable[] = {
        {kPing, "PING_REQ", &PingServer::handlePing},
        {kStatus, "STATUS_REQ", &PingServer::handleStatus},
    };
};

class SSC_ServerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_liveBefore = ose::SignalPool::liveCount();
        OsService::setHandler(&m_os);
        m_dispatcher = std::make_unique<SignalDispatcher>();
    }
    void TearDown() override
    {
        m_dispatcher.reset();
        OsService::setHandler(nullptr);
        m_os.drain();
        EXPECT_EQ(ose::SignalPool::liveCount(), m_liveBefore);
    }

    std::size_t m_liveBefore = 0;
    NiceMock<FakeOsHandler> m_os;
    std::unique_ptr<SignalDispatcher> m_dispatcher;
};

TEST_F(SSC_ServerTest, RegisteredSignalsReachTheirHandlersThroughTheDispatcherAndDeregistrationEndsThat)
{
    TraceCapture trace("supSysCtrlSWU:7");
    auto server = std::make_unique<PingServer>(m_dispatcher.get());
    server->registerSignals();
    EXPECT_EQ(m_dispatcher->subscriptionCount(), 2u);
    EXPECT_EQ(trace.texts("supSysCtrlSWU", 7),
              (std::vector<std::string>{
                  "PingServer: Registering signal PING_REQ (0x1704601) in SignalDispatcher",
                  "Added subscribeSignal with sigNo:" + std::to_string(kPing) + " and clientRef:1 in DispatcherList",
                  "PingServer: Registering signal STATUS_REQ (0x1704602) in SignalDispatcher",
                  "Added subscribeSignal with sigNo:" + std::to_string(kStatus) + " and clientRef:1 in DispatcherList",
              }));

    m_dispatcher->dispatch(ose::alloc(8, kStatus));
    m_dispatcher->dispatch(ose::alloc(8, kPing));
    EXPECT_EQ(server->m_handled, (std::vector<ose::SIGSELECT>{kStatus + 1000, kPing}));
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "PingServer: Handling signal STATUS_REQ (0x1704602)"), 1u);

    server.reset();
    EXPECT_EQ(m_dispatcher->subscriptionCount(), 0u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "PingServer: Deregistering signal STATUS_REQ (0x1704602) in SignalDispatcher"),
              1u);
}

TEST_F(SSC_ServerTest, AnUnhandledOrNilSignalIsTracedAndNothingIsCalled)
{
    TraceCapture trace("supSysCtrlSWU:5");
    PingServer server(m_dispatcher.get());
    ose::Signal* signal = ose::alloc(8, 0x99);
    server.receiveSignal(signal);
    server.receiveSignal(nullptr);
    EXPECT_TRUE(server.m_handled.empty());
    EXPECT_EQ(trace.texts("supSysCtrlSWU", 5),
              (std::vector<std::string>{"PingServer: Unhandled signal: 153",
                                        "Received NULL-pointer in PingServer::receiveSignal"}));
    EXPECT_EQ(trace.lines().size(), 2u) << "nothing else at levels 1 to 5";
    ose::free_buf(&signal);
}

TEST_F(SSC_ServerTest, ThePhantomIsCreatedUnderTheProcessNameAndKilledOnceOnStopOrDestruction)
{
    TraceCapture trace("supSysCtrlSWU:7");
    EXPECT_CALL(m_os, createPhantom(StrEq("ping_server"))).Times(2).WillOnce(Return(0x777)).WillOnce(Return(0x778));
    EXPECT_CALL(m_os, killProcess(0x777)).Times(1);
    EXPECT_CALL(m_os, killProcess(0x778)).Times(1);
    EXPECT_CALL(m_os, killProcess(0)).Times(0);
    {
        PingServer server(m_dispatcher.get());
        server.startProcess();
        server.startProcess(); // one phantom a server
        EXPECT_EQ(server.getPid(), 0x777u);
        EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "Created phantom process: ping_server [pid: 1911]"), 1u);
        server.stopProcess();
        server.stopProcess();
        EXPECT_EQ(server.getPid(), 0u);
        server.startProcess();
    }
}

TEST_F(SSC_ServerTest, ClientRefsComeFromTheDispatcherAndResolveGivesTheServerItself)
{
    PingServer a(m_dispatcher.get());
    PingServer b(m_dispatcher.get());
    EXPECT_NE(a.getClientRef(), 0u);
    EXPECT_NE(a.getClientRef(), b.getClientRef());
    EXPECT_EQ(resolveAs<SSC_Server>(&a), &a);
    EXPECT_EQ(resolveAs<SignalDispatcherClient>(&a), nullptr) << "only the type the server gives";
    EXPECT_EQ(resolveAs<SSC_Server>(nullptr), nullptr);
}

// A number that stands twice in a table: the first row is the handler, once.
class TwiceServer : public SSC_Server {
public:
    explicit TwiceServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}
    const char* getProcessName() const override { return "twice_server"; }
    const char* getServerName() const override { return "TwiceServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override { return makeSignalIterator(*this, kSignalTable); }

    std::vector<std::string> m_calls;

private:
    void first(ose::Signal*) { m_calls.push_back("first"); }
    void status(ose::Signal*) { m_calls.push_back("status"); }
    void second(ose::Signal*) { m_calls.push_back("second"); }

    static constexpr SignalTableRow<TwiceServer> kSignalTable[] = {
        {kPing, "PING_REQ", &TwiceServer::first},
        {kStatus, "STATUS_REQ", &TwiceServer::status},
        {kPing, "PING_REQ_AGAIN", &TwiceServer::second},
    };
};

TEST_F(SSC_ServerTest, ANumberTwiceInATableGoesToItsFirstRowOnlyAndEachNumberToItsOwnHandler)
{
    TraceCapture trace("supSysCtrlSWU:7");
    TwiceServer server(m_dispatcher.get());
    for (ose::SIGSELECT sigNo : {kStatus, kPing, kPing, kStatus}) {
        ose::Signal* signal = ose::SignalPool::allocate(8, sigNo);
        server.receiveSignal(signal);
        ose::SignalPool::release(signal);
    }
    EXPECT_EQ(server.m_calls, (std::vector<std::string>{"status", "first", "first", "status"}));
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "TwiceServer: Handling signal PING_REQ (0x1704601)"), 2u);
    EXPECT_EQ(trace.count("PING_REQ_AGAIN"), 0u);
}

} // namespace
