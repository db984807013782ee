#include "frame/SignalDispatcher.h"

#include "frame/OsService.h"
#include "frame/SignalDispatcherClient.h"
#include "frame/testSupport/FakeOsHandler.h"
#include "frame/testSupport/TraceCapture.h"

#include "ose/SignalPool.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using ::testing::_;
using ::testing::NiceMock;

constexpr ose::SIGSELECT kReq = 0x1704501;
constexpr ose::SIGSELECT kCfm = 0x1704502;
constexpr ose::SIGSELECT kOther = 0x1704503;

struct Call {
    std::string client;
    ose::Signal* signal;
};

class RecordingClient : public SignalDispatcherClient {
public:
    RecordingClient(std::string name, std::vector<Call>& calls, std::uint32_t clientRef)
        : m_name(std::move(name)), m_calls(calls), m_clientRef(clientRef)
    {
    }
    void receiveSignal(ose::Signal* signal) override
    {
        m_calls.push_back({m_name, signal});
        if (m_onSignal) m_onSignal(signal);
    }
    std::uint32_t getClientRef() override { return m_clientRef; }
    void registerSignals() override {}

    std::string m_name;
    std::vector<Call>& m_calls;
    std::uint32_t m_clientRef;
    std::function<void(ose::Signal*)> m_onSignal;
};

class SignalDispatcherTest : public ::testing::Test {
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
        EXPECT_EQ(ose::SignalPool::liveCount(), m_liveBefore) << "signal buffers leaked";
    }

    RecordingClient& client(const std::string& name)
    {
        m_clients.push_back(std::make_unique<RecordingClient>(name, m_calls, m_dispatcher->newClientRef()));
        return *m_clients.back();
    }
    void subscribe(RecordingClient& c, ose::SIGSELECT sigNo) { m_dispatcher->subscribeSignal(sigNo, &c, c.m_clientRef); }

    std::size_t m_liveBefore = 0;
    NiceMock<FakeOsHandler> m_os;
    std::unique_ptr<SignalDispatcher> m_dispatcher;
    std::vector<std::unique_ptr<RecordingClient>> m_clients;
    std::vector<Call> m_calls;
};

TEST_F(SignalDispatcherTest, AllSubscribersOfANumberGetTheSameBufferNewestFirstAndItIsFreedOnceAfterTheLast)
{
    RecordingClient& older = client("older");
    RecordingClient& newer = client("newer");
    RecordingClient& other = client("other");
    subscribe(older, kReq);
    subscribe(newer, kReq);
    subscribe(other, kOther);
    bool freedBeforeLast = false;
    older.m_onSignal = [&](ose::Signal* signal) { freedBeforeLast = !ose::SignalPool::isLive(signal); };

    ose::Signal* signal = ose::alloc(8, kReq);
    EXPECT_CALL(m_os, free(_)).Times(1);
    m_dispatcher->dispatch(signal);

    ASSERT_EQ(m_calls.size(), 2u);
    EXPECT_EQ(m_calls[0].client, "newer");
    EXPECT_EQ(m_calls[1].client, "older");
    EXPECT_EQ(m_calls[0].signal, signal);
    EXPECT_EQ(m_calls[1].signal, signal);
    EXPECT_FALSE(freedBeforeLast);
}

TEST_F(SignalDispatcherTest, ARowUnderAnOldClientRefIsSkippedAndWithoutOtherReceiverTheSignalIsTracedAndFreed)
{
    TraceCapture trace("supSysCtrlSWU:7");
    RecordingClient& renewed = client("renewed");
    subscribe(renewed, kReq);
    renewed.m_clientRef = m_dispatcher->newClientRef();

    m_dispatcher->dispatch(ose::alloc(8, kReq));
    EXPECT_TRUE(m_calls.empty());
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "No receiver for signal:" + std::to_string(kReq) + " with OODB_Ref:0"), 1u);

    // Subscribed anew under the new reference, the client is reached again.
    m_dispatcher->unsubscribeSignal(kReq, &renewed);
    subscribe(renewed, kReq);
    m_dispatcher->dispatch(ose::alloc(8, kReq));
    EXPECT_EQ(m_calls.size(), 1u);
}

TEST_F(SignalDispatcherTest, ASecondSubscriptionOfTheSameClientAndBadArgumentsChangeNothing)
{
    TraceCapture trace("supSysCtrlSWU:7");
    RecordingClient& c = client("c");
    subscribe(c, kReq);
    subscribe(c, kReq);
    m_dispatcher->subscribeSignal(kReq, &c, c.m_clientRef + 5);
    EXPECT_EQ(m_dispatcher->subscriptionCount(), 1u);
    EXPECT_EQ(trace.count("Added subscribeSignal with sigNo:" + std::to_string(kReq) + " and clientRef:"), 1u);

    m_dispatcher->subscribeSignal(0, &c, c.m_clientRef);
    m_dispatcher->subscribeSignal(kOther, nullptr, c.m_clientRef);
    m_dispatcher->subscribeSignal(kOther, &c, 0);
    EXPECT_EQ(m_dispatcher->subscriptionCount(), 1u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "Invalid inparameters in subscribe signal"), 3u);

    m_dispatcher->dispatch(ose::alloc(8, kReq));
    EXPECT_EQ(m_calls.size(), 1u);
}

TEST_F(SignalDispatcherTest, UnsubscribeTakesOnlyThatClientsRowsOfThatNumber)
{
    RecordingClient& a = client("a");
    RecordingClient& b = client("b");
    subscribe(a, kReq);
    subscribe(a, kOther);
    subscribe(b, kReq);
    m_dispatcher->unsubscribeSignal(kReq, &a);
    EXPECT_EQ(m_dispatcher->subscriptionCount(), 2u);
    m_dispatcher->dispatch(ose::alloc(8, kReq));
    m_dispatcher->dispatch(ose::alloc(8, kOther));
    ASSERT_EQ(m_calls.size(), 2u);
    EXPECT_EQ(m_calls[0].client, "b");
    EXPECT_EQ(m_calls[1].client, "a");
}

TEST_F(SignalDispatcherTest, AHandlerMayUnsubscribeItselfAndTheNextReceiverDuringTheWalk)
{
    RecordingClient& last = client("last");
    RecordingClient& middle = client("middle");
    RecordingClient& first = client("first");
    subscribe(last, kReq);
    subscribe(middle, kReq);
    subscribe(first, kReq);
    first.m_onSignal = [&](ose::Signal*) {
        m_dispatcher->unsubscribeSignal(kReq, &first);
        m_dispatcher->unsubscribeSignal(kReq, &middle);
    };
    m_dispatcher->dispatch(ose::alloc(8, kReq));
    ASSERT_EQ(m_calls.size(), 2u);
    EXPECT_EQ(m_calls[0].client, "first");
    EXPECT_EQ(m_calls[1].client, "last");
    EXPECT_EQ(m_dispatcher->subscriptionCount(), 1u);
}

TEST_F(SignalDispatcherTest, TheLoopTracesAReceivedSignalAndGoesOnAfterOneWithoutReceiver)
{
    TraceCapture trace("supSysCtrlSWU:16");
    RecordingClient& c = client("c");
    subscribe(c, kReq);
    m_os.deliver(ose::alloc(8, 0x4711), 0x20000);
    m_os.deliver(ose::alloc(12, kReq), 0x20000);
    m_dispatcher->receiveAndDispatch();
    m_dispatcher->receiveAndDispatch();
    EXPECT_EQ(m_calls.size(), 1u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "No receiver for signal:18193 with OODB_Ref:0"), 1u);
    const std::vector<std::string> received = trace.texts("supSysCtrlSWU", 16);
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].rfind("SigNo: 18193 (", 0), 0u) << received[0];
    EXPECT_EQ(received[1].rfind("SigNo: " + std::to_string(kReq) + " (", 0), 0u) << received[1];
    EXPECT_NE(received[1].find(", 12 bytes)"), std::string::npos) << received[1];
    EXPECT_TRUE(trace.texts("supSysCtrlSWU", 15).empty()) << "nothing was sent";
}

TEST_F(SignalDispatcherTest, SendAndReceiveWithNilSendsNothingAndGivesNil)
{
    TraceCapture trace("supSysCtrlSWU:7");
    EXPECT_CALL(m_os, send(_, _)).Times(0);
    EXPECT_EQ(m_dispatcher->sendAndReceive(nullptr, 0x20000, kCfm, 100), nullptr);
    EXPECT_EQ(m_dispatcher->sendAndReceive(nullptr, 0x20000, kCfm, kOther, 100), nullptr);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "Try to send signal = NIL"), 2u);
}

TEST_F(SignalDispatcherTest, SendAndReceiveToTheOwnProcessRunsTheLocalHandlerThenReturnsTheReply)
{
    RecordingClient& server = client("server");
    subscribe(server, kReq);
    server.m_onSignal = [&](ose::Signal* request) {
        m_dispatcher->sendSignal(ose::alloc(8, kCfm), m_dispatcher->getSender(request));
    };
    // A signal of another number waits in the queue before the request.
    m_os.deliver(ose::alloc(8, kOther), 0x20000);

    ose::Signal* reply = m_dispatcher->sendAndReceive(ose::alloc(8, kReq), FakeOsHandler::kOwnPid, kCfm, 2000);
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(ose::signalNumber(reply), kCfm);
    EXPECT_EQ(m_calls.size(), 1u);
    EXPECT_EQ(m_os.queued(), 1u) << "the other signal stays for the loop";
    ose::free_buf(&reply);
}

TEST_F(SignalDispatcherTest, SendAndReceiveToAnotherProcessTakesEitherReplyAndNothingElse)
{
    ose::Signal* request = ose::alloc(8, kReq);
    m_os.deliver(ose::alloc(8, kOther), 0x20000);
    m_os.deliver(ose::alloc(8, kCfm + 1), 0x20000);
    ose::Signal* reply = m_dispatcher->sendAndReceive(request, 0x20000, kCfm, kCfm + 1, 2000);
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(ose::signalNumber(reply), kCfm + 1);
    ASSERT_EQ(m_os.sent().size(), 1u);
    EXPECT_EQ(m_os.sent()[0].to, 0x20000u);
    EXPECT_EQ(m_os.queued(), 1u);
    EXPECT_EQ(m_dispatcher->sendAndReceive(ose::alloc(8, kReq), 0x20000, kCfm, 2000), nullptr) << "time-out";
    ose::free_buf(&reply);
}

TEST_F(SignalDispatcherTest, SendAndReceiveWhereNoProcessReceivesSendsNothingWaitsNotAndGivesNil)
{
    TraceCapture trace("supSysCtrlSWU:7");
    m_os.markDead(0x20001);
    EXPECT_CALL(m_os, send(_, _)).Times(0);
    EXPECT_CALL(m_os, receiveWithTimeout(_, _)).Times(0);
    EXPECT_EQ(m_dispatcher->sendAndReceive(ose::alloc(8, kReq), 0, kCfm, 100), nullptr);
    EXPECT_EQ(m_dispatcher->sendAndReceive(ose::alloc(8, kReq), 0x20001, kCfm, kOther, 100), nullptr);
    EXPECT_EQ(trace.texts("supSysCtrlSWU", 5),
              (std::vector<std::string>{
                  "sendAndReceive of signal " + std::to_string(kReq) + " to 0: no process receives it, no reply can come",
                  "sendAndReceive of signal " + std::to_string(kReq) +
                      " to 131073: no process receives it, no reply can come"}));
}

TEST_F(SignalDispatcherTest, SendAndReceiveThroughTheOwnPhantomRunsTheLocalHandlerFirst)
{
    constexpr ose::PROCESS kOwnPhantom = 0x10200;
    m_os.addPhantom(kOwnPhantom, FakeOsHandler::kOwnPid);
    RecordingClient& server = client("server");
    subscribe(server, kReq);
    server.m_onSignal = [&](ose::Signal* request) {
        m_dispatcher->sendSignal(ose::alloc(8, kCfm), m_dispatcher->getSender(request));
    };
    ose::Signal* reply = m_dispatcher->sendAndReceive(ose::alloc(8, kReq), kOwnPhantom, kCfm, 2000);
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(ose::signalNumber(reply), kCfm);
    EXPECT_EQ(m_calls.size(), 1u);
    ose::free_buf(&reply);
}

TEST_F(SignalDispatcherTest, SendSignalWithoutAddresseeFreesTheSignal)
{
    TraceCapture trace("supSysCtrlSWU:7");
    EXPECT_CALL(m_os, send(_, _)).Times(0);
    m_dispatcher->sendSignal(ose::alloc(8, kReq), 0);
    m_dispatcher->sendSignal(nullptr, 0x20000);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 7, "sendSignal with invalid parameters"), 2u);
}

TEST_F(SignalDispatcherTest, ClientReferencesStartAtOneAndAreNeverZeroAlsoAfterTheyWrap)
{
    SignalDispatcher fresh;
    EXPECT_EQ(fresh.newClientRef(), 1u);
    EXPECT_EQ(fresh.newClientRef(), 2u);
    EXPECT_EQ(fresh.getOwnPid(), FakeOsHandler::kOwnPid);

    // A reference of 0 would make every subscription of its client invalid.
    SignalDispatcher nearTheEnd(0xFFFFFFFEu);
    EXPECT_EQ(nearTheEnd.newClientRef(), 0xFFFFFFFEu);
    EXPECT_EQ(nearTheEnd.newClientRef(), 0xFFFFFFFFu);
    EXPECT_EQ(nearTheEnd.newClientRef(), 1u);
    EXPECT_EQ(nearTheEnd.newClientRef(), 2u);
}

TEST_F(SignalDispatcherTest, SentSignalsAreTracedAtFifteenAndReceivedOnesAtSixteen)
{
    TraceCapture trace("supSysCtrlSWU:all");
    RecordingClient& c = client("c");
    subscribe(c, kReq);
    m_dispatcher->sendSignal(ose::alloc(8, kCfm), 0x20000);
    m_os.deliver(ose::alloc(8, kReq), 0x20000);
    m_dispatcher->receiveAndDispatch();
    const std::vector<std::string> sent = trace.texts("supSysCtrlSWU", 15);
    const std::vector<std::string> received = trace.texts("supSysCtrlSWU", 16);
    ASSERT_EQ(sent.size(), 1u);
    ASSERT_EQ(received.size(), 1u);
    EXPECT_EQ(sent[0].rfind("SigNo: " + std::to_string(kCfm) + " (", 0), 0u) << sent[0];
    EXPECT_EQ(received[0].rfind("SigNo: " + std::to_string(kReq) + " (", 0), 0u) << received[0];
}

} // namespace
