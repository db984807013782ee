// The gateway from outside: ssc-node runs as its own process and the tests
// reach it only through its socket.

#include "app/DemoSignals.h"
#include "ose/GatewayClient.h"
#include "tests/system/NodeProcess.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <optional>
#include <random>
#include <thread>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace systemtest {
namespace {

using namespace std::chrono_literals;
using ose::GatewayClient;
using ose::GatewayEvent;

std::string signalBytes(std::uint32_t sigNo, const std::string& rest = {})
{
    std::string bytes(4, '\0');
    ose::storeBe32(bytes.data(), sigNo);
    return bytes + rest;
}

std::string be32(std::uint32_t value)
{
    std::string bytes(4, '\0');
    ose::storeBe32(bytes.data(), value);
    return bytes;
}

class GatewaySystemTest : public ::testing::Test {
protected:
    NodeProcess m_node{{"--clock", "virtual", "--demo"}};
};

TEST_F(GatewaySystemTest, HuntFindsInsideProcessesAndWaitsForNamesThatAppear)
{
    GatewayClient client;
    ASSERT_TRUE(client.connect(m_node.socketPath(), "tester")) << client.lastError();
    EXPECT_NE(client.pid(), 0u);
    auto echo = client.hunt("echo");
    ASSERT_TRUE(echo);
    EXPECT_NE(*echo, 0u);
    EXPECT_EQ(client.hunt("nobody"), std::optional<ose::PROCESS>(0));

    GatewayClient later;
    ASSERT_TRUE(later.connect(m_node.socketPath(), "later"));
    // The hunter waits in the node; the name appears when "later" publishes it.
    GatewayClient hunter;
    ASSERT_TRUE(hunter.connect(m_node.socketPath(), "hunter"));
    std::thread publisher([&] { later.publish("A4ciServer"); });
    auto found = hunter.hunt("A4ciServer", ose::gateway::kWaitForever);
    publisher.join();
    ASSERT_TRUE(found);
    EXPECT_EQ(*found, later.pid());
}

TEST_F(GatewaySystemTest, SignalsMakeARoundTripThroughAProcessInside)
{
    GatewayClient client;
    ASSERT_TRUE(client.connect(m_node.socketPath(), "pinger"));
    auto echo = client.hunt("echo");
    ASSERT_TRUE(echo && *echo != 0);
    for (std::uint32_t i = 0; i < 20; ++i) {
        ASSERT_TRUE(client.send(*echo, signalBytes(0x1234, be32(i))));
        auto event = client.next(5s);
        ASSERT_TRUE(event);
        EXPECT_EQ(event->kind, GatewayEvent::Kind::Signal);
        EXPECT_EQ(event->sigNo(), 0x1234u);
        EXPECT_EQ(event->sender, *echo);
        EXPECT_EQ(event->addressee, client.pid());
        EXPECT_EQ(event->bytes.substr(4), be32(i));
    }
}

TEST_F(GatewaySystemTest, AttachFiresWhenAProcessInsideIsKilledAndWhenAClientLeaves)
{
    GatewayClient watcher;
    ASSERT_TRUE(watcher.connect(m_node.socketPath(), "watcher"));
    auto echo = watcher.hunt("echo");
    ASSERT_TRUE(echo && *echo != 0);
    auto ref = watcher.attach(*echo);
    ASSERT_TRUE(ref);
    ASSERT_TRUE(watcher.send(*echo, signalBytes(demo::DEMO_DIE_REQ)));
    auto died = watcher.next(5s);
    ASSERT_TRUE(died);
    EXPECT_EQ(died->kind, GatewayEvent::Kind::Died);
    EXPECT_EQ(died->pid, *echo);
    EXPECT_EQ(died->attachRef, *ref);

    auto leaver = std::make_unique<GatewayClient>();
    ASSERT_TRUE(leaver->connect(m_node.socketPath(), "leaver"));
    ose::PROCESS leaverPid = leaver->pid();
    ASSERT_TRUE(watcher.attach(leaverPid));
    leaver.reset(); // disconnecting is dying
    auto gone = watcher.next(5s);
    ASSERT_TRUE(gone);
    EXPECT_EQ(gone->kind, GatewayEvent::Kind::Died);
    EXPECT_EQ(gone->pid, leaverPid);

    auto already = watcher.attach(leaverPid); // dead already: fires at once
    ASSERT_TRUE(already);
    auto atOnce = watcher.next(5s);
    ASSERT_TRUE(atOnce);
    EXPECT_EQ(atOnce->attachRef, *already);
}

TEST_F(GatewaySystemTest, APublishedOutsideNameIsFoundByAProcessInside)
{
    GatewayClient client;
    ASSERT_TRUE(client.connect(m_node.socketPath(), "client"));
    auto echo = client.hunt("echo");
    ASSERT_TRUE(echo && *echo != 0);
    std::string name(64, '\0');
    std::memcpy(name.data(), "HBX_0", 5);
    ASSERT_TRUE(client.send(*echo, signalBytes(demo::DEMO_HUNT_REQ, name)));
    EXPECT_FALSE(client.next(100ms)) << "nobody carries the name yet";

    GatewayClient server;
    ASSERT_TRUE(server.connect(m_node.socketPath(), "link-server"));
    ASSERT_TRUE(server.publish("HBX_0"));
    auto cfm = client.next(5s);
    ASSERT_TRUE(cfm);
    EXPECT_EQ(cfm->sigNo(), demo::DEMO_HUNT_CFM);
    EXPECT_EQ(ose::loadBe32(cfm->bytes.data() + 4), server.pid());
}

TEST_F(GatewaySystemTest, VirtualTimeHeldFromOutsideFiresATimeoutAtTheRightInstant)
{
    GatewayClient client;
    ASSERT_TRUE(client.connect(m_node.socketPath(), "stepper", true));
    auto start = client.time();
    ASSERT_TRUE(start);
    EXPECT_EQ(start->clockMode, 1u);
    auto echo = client.hunt("echo");
    ASSERT_TRUE(echo && *echo != 0);
    ASSERT_TRUE(client.send(*echo, signalBytes(demo::DEMO_DELAY_REQ, be32(5000))));
    auto sentAt = client.time();
    ASSERT_TRUE(sentAt);

    auto first = client.advanceTo(sentAt->nowMs + 4999);
    ASSERT_TRUE(first);
    EXPECT_EQ(*first, sentAt->nowMs + 4999);
    EXPECT_FALSE(client.next(100ms)) << "the time-out is 1 ms away and the clock is held";

    ASSERT_TRUE(client.advanceTo(sentAt->nowMs + 6000));
    auto cfm = client.next(5s);
    ASSERT_TRUE(cfm);
    ASSERT_EQ(cfm->sigNo(), demo::DEMO_DELAY_CFM);
    ASSERT_EQ(cfm->bytes.size(), sizeof(demo::DEMO_DELAY_CFM_S));
    std::uint64_t firedAt = (std::uint64_t{ose::loadBe32(cfm->bytes.data() + 8)} << 32) |
                            ose::loadBe32(cfm->bytes.data() + 12);
    EXPECT_EQ(firedAt, sentAt->nowMs + 5000);
    auto end = client.time();
    ASSERT_TRUE(end);
    EXPECT_EQ(end->nowMs, sentAt->nowMs + 6000) << "time stops where the client allowed";
}

// A raw connection that says what it likes.
class RawConnection {
public:
    explicit RawConnection(const std::string& path)
    {
        m_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        connected = ::connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    ~RawConnection() { ::close(m_fd); }
    void write(const std::string& bytes) { (void)::send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL); }
    // True when the node closed the connection (after any answer it gave).
    bool closedByNode()
    {
        timeval limit{10, 0};
        setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        char buffer[4096];
        for (;;) {
            ssize_t n = recv(m_fd, buffer, sizeof buffer, 0);
            if (n == 0) return true;
            if (n < 0) return false;
        }
    }
    // The next frame from the node: type, requestId, payload (nullopt when
    // none came within 10 s).
    struct Frame {
        std::uint16_t type;
        std::uint16_t flags;
        std::uint32_t requestId;
        std::string payload;
    };
    std::optional<Frame> readFrame()
    {
        timeval limit{10, 0};
        setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        std::string head = readExactly(12);
        if (head.size() < 12) return std::nullopt;
        const std::uint32_t length = ose::loadBe32(head.data());
        if (length < 8 || length > 8 + 8 + 16u * 1024u * 1024u) return std::nullopt;
        const std::uint32_t typeAndFlags = ose::loadBe32(head.data() + 4);
        std::string payload = readExactly(length - 8);
        if (payload.size() < length - 8) return std::nullopt;
        return Frame{static_cast<std::uint16_t>(typeAndFlags >> 16), static_cast<std::uint16_t>(typeAndFlags),
                     ose::loadBe32(head.data() + 8), payload};
    }
    // The code and text of the next frame, which must be an ERROR.
    std::pair<std::uint32_t, std::string> error()
    {
        auto frame = readFrame();
        if (!frame || frame->type != 0x80FF || frame->payload.size() < 4) return {0, "no error frame"};
        return {ose::loadBe32(frame->payload.data()), frame->payload.substr(4)};
    }
    // Closes the client's side for writing: everything written is on its way.
    void close() { shutdown(m_fd, SHUT_WR); }
    bool connected = false;

private:
    std::string readExactly(std::size_t size)
    {
        std::string bytes(size, '\0');
        std::size_t done = 0;
        while (done < size) {
            const ssize_t n = recv(m_fd, bytes.data() + done, size - done, 0);
            if (n <= 0) break;
            done += static_cast<std::size_t>(n);
        }
        bytes.resize(done);
        return bytes;
    }
    int m_fd = -1;
};

std::string frame(std::uint16_t type, const std::string& payload, std::uint32_t requestId = 1,
                  std::uint16_t flags = 0)
{
    return be32(static_cast<std::uint32_t>(8 + payload.size())) + be32((std::uint32_t{type} << 16) | flags) +
           be32(requestId) + payload;
}

const std::string kRawHello = frame(0x0001, be32(1) + be32(0) + "raw");

TEST_F(GatewaySystemTest, BadFramesCloseOnlyTheirOwnConnection)
{
    GatewayClient good;
    ASSERT_TRUE(good.connect(m_node.socketPath(), "good"));
    auto echo = good.hunt("echo");
    ASSERT_TRUE(echo && *echo != 0);
    auto stillServes = [&] {
        EXPECT_TRUE(good.send(*echo, signalBytes(7)));
        auto back = good.next(5s);
        return back && back->sigNo() == 7u;
    };

    const std::string hello = frame(0x0001, be32(1) + be32(0) + "raw");
    const std::vector<std::pair<std::string, std::string>> attacks = {
        {"length 2^31", be32(0x80000000u) + std::string(8, 'x')},
        {"length below the header", be32(3) + "abc"},
        {"no hello first", frame(0x0002, be32(0) + "echo")},
        {"unknown type", hello + frame(0x7777, "")},
        {"hello of another version", frame(0x0001, be32(99) + be32(0) + "raw")},
        {"hello without a name", frame(0x0001, be32(1) + be32(0))},
        {"second hello", hello + hello},
    };
    for (const auto& [what, bytes] : attacks) {
        RawConnection raw(m_node.socketPath());
        ASSERT_TRUE(raw.connected);
        raw.write(bytes);
        EXPECT_TRUE(raw.closedByNode()) << what;
        EXPECT_TRUE(stillServes()) << "after: " << what;
    }
    {
        RawConnection shortSend(m_node.socketPath()); // refused, but the connection stays
        shortSend.write(hello + frame(0x0003, be32(1) + "ab"));
        EXPECT_TRUE(stillServes());
    }

    std::mt19937 random(20261123);
    for (int round = 0; round < 20; ++round) {
        RawConnection raw(m_node.socketPath());
        std::string junk(1 + random() % 4096, '\0');
        for (char& c : junk) c = static_cast<char>(random());
        raw.write(junk);
    } // and vanish, mostly in the middle of a frame
    {
        RawConnection raw(m_node.socketPath());
        raw.write(hello + be32(1000) + std::string(10, 'x')); // a frame cut short
    }
    EXPECT_TRUE(stillServes()) << "after random bytes and clients vanishing mid-frame";
}

TEST_F(GatewaySystemTest, AFrameTooShortOrTooLongForItsTypeIsMalformedAndClosesItsConnection)
{
    const std::vector<std::pair<std::string, std::string>> frames = {
        {"hello without its options", frame(0x0001, be32(1))},
        {"hunt without its time-out", kRawHello + frame(0x0002, "ab")},
        {"send without its pid", kRawHello + frame(0x0003, "ab")},
        {"attach without a whole pid", kRawHello + frame(0x0004, "abc")},
        {"attach with more than a pid", kRawHello + frame(0x0004, be32(1) + "x")},
        {"detach with more than a reference", kRawHello + frame(0x0005, be32(1) + be32(2))},
        {"time with a payload", kRawHello + frame(0x0007, "x")},
        {"advance with half a target", kRawHello + frame(0x0008, be32(1))},
        {"reserved flag in the hello", frame(0x0001, be32(1) + be32(0) + "raw", 1, 0x0001)},
    };
    for (const auto& [what, bytes] : frames) {
        RawConnection raw(m_node.socketPath());
        ASSERT_TRUE(raw.connected);
        raw.write(bytes);
        if (bytes.starts_with(kRawHello)) {
            ASSERT_TRUE(raw.readFrame()) << "welcome, " << what;
        }
        EXPECT_EQ(raw.error().first, 1u) << what;
        EXPECT_TRUE(raw.closedByNode()) << what;
    }
}

TEST_F(GatewaySystemTest, ASendIsAcknowledgedWhenAskedAndRefusalsNameTheirRequestInHexadecimal)
{
    GatewayClient client;
    ASSERT_TRUE(client.connect(m_node.socketPath(), "sender"));
    auto echo = client.hunt("echo");
    ASSERT_TRUE(echo && *echo != 0);
    EXPECT_TRUE(client.sendAcknowledged(*echo, signalBytes(0x1234)));
    auto back = client.next(5s);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->sigNo(), 0x1234u);
    EXPECT_FALSE(client.sendAcknowledged(*echo, "ab"));
    EXPECT_EQ(client.lastError(), "send needs a signal of 4 bytes or more");

    RawConnection raw(m_node.socketPath());
    raw.write(kRawHello);
    ASSERT_TRUE(raw.readFrame());
    raw.write(frame(0x0003, be32(*echo) + "ab", 41)); // refused without being asked to acknowledge
    auto refused = raw.readFrame();
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->type, 0x80FF);
    EXPECT_EQ(refused->requestId, 41u);
    raw.write(frame(0x0003, be32(*echo) + signalBytes(0x55), 42, 0x0003));
    auto flagged = raw.readFrame();
    ASSERT_TRUE(flagged);
    EXPECT_EQ(flagged->requestId, 42u);
    EXPECT_EQ(ose::loadBe32(flagged->payload.data()), 6u);
    EXPECT_EQ(flagged->payload.substr(4), "reserved flags 0x0002 set in a frame of type 0x0003");
    raw.write(frame(0x0007, "", 43, 0x0001));
    EXPECT_EQ(raw.error(), (std::pair<std::uint32_t, std::string>{6, "reserved flags 0x0001 set in a frame of type 0x0007"}));
    raw.write(frame(0x0003, be32(*echo) + signalBytes(0x56), 44, 0x0001));
    auto done = raw.readFrame();
    ASSERT_TRUE(done);
    EXPECT_EQ(done->type, 0x8006);
    EXPECT_EQ(done->requestId, 44u);
    auto echoed = raw.readFrame();
    ASSERT_TRUE(echoed) << "the flagged send was refused and did nothing; this one came back";
    EXPECT_EQ(echoed->type, 0x8003);
    EXPECT_EQ(ose::loadBe32(echoed->payload.data() + 8), 0x56u);
    raw.write(frame(0x7777, "", 45));
    EXPECT_EQ(raw.error(), (std::pair<std::uint32_t, std::string>{2, "unknown frame type 0x7777"}));
}

TEST_F(GatewaySystemTest, FramesSentJustBeforeAClientClosesAreStillHandled)
{
    GatewayClient receiver;
    ASSERT_TRUE(receiver.connect(m_node.socketPath(), "receiver"));
    for (std::uint32_t round = 0; round < 20; ++round) {
        RawConnection raw(m_node.socketPath());
        raw.write(kRawHello + frame(0x0003, be32(receiver.pid()) + signalBytes(0x4000 + round)));
        raw.close();
        auto event = receiver.next(5s);
        ASSERT_TRUE(event) << "round " << round;
        EXPECT_EQ(event->sigNo(), 0x4000 + round);
    }
}

TEST_F(GatewaySystemTest, ANameIsPublishedOnlyWhereNoLiveProcessHoldsIt)
{
    GatewayClient first;
    GatewayClient second;
    ASSERT_TRUE(first.connect(m_node.socketPath(), "first"));
    ASSERT_TRUE(second.connect(m_node.socketPath(), "second"));
    EXPECT_TRUE(first.publish("A4ciServer"));
    EXPECT_FALSE(first.publish("A4ciServer"));
    EXPECT_FALSE(second.publish("A4ciServer"));
    char holder[16];
    std::snprintf(holder, sizeof holder, "0x%08x", first.pid());
    EXPECT_EQ(second.lastError(), "the name A4ciServer is taken by process " + std::string(holder));
    EXPECT_FALSE(second.publish("echo"));
    // The name is free again once its holder is gone.
    ASSERT_TRUE(second.attach(first.pid()));
    first.close();
    auto died = second.next(5s);
    ASSERT_TRUE(died);
    EXPECT_EQ(died->kind, GatewayEvent::Kind::Died);
    EXPECT_TRUE(second.publish("A4ciServer")) << second.lastError();
    EXPECT_EQ(second.hunt("A4ciServer"), std::optional<ose::PROCESS>(second.pid()));
}

TEST(GatewayClockTest, AClientThatHoldsTheClockCanHuntWithATimeOutAndAdvanceBeyondTheLongestTimeOut)
{
    NodeProcess node({"--clock", "virtual"});
    GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "holder", true));
    auto start = client.time();
    ASSERT_TRUE(start);
    EXPECT_EQ(client.hunt("nobody", 500), std::optional<ose::PROCESS>(0)) << "the hunt let time pass to its end";
    auto after = client.time();
    ASSERT_TRUE(after);
    EXPECT_EQ(after->nowMs, start->nowMs + 500);

    const std::uint64_t far = after->nowMs + 0x100000000ull + 5;
    EXPECT_EQ(client.advanceTo(far), std::optional<std::uint64_t>(far));
}

TEST_F(GatewaySystemTest, EachErrorThatClosesAConnectionCarriesItsDocumentedCode)
{
    const std::vector<std::pair<std::uint32_t, std::string>> cases = {
        {1, kRawHello + kRawHello},                                         // a second hello
        {2, kRawHello + frame(0x7777, "")},                                 // unknown type
        {2, kRawHello + frame(0x7777, "", 1, 0x0004)},                      // unknown, whatever its flags
        {3, be32(8 + 8 + 16u * 1024u * 1024u + 1) + std::string(8, 'x')},  // above the limit
        {4, frame(0x0001, be32(2) + be32(0) + "raw")},                      // another version
        {5, frame(0x0007, "")},                                             // a frame before the hello
    };
    for (const auto& [code, bytes] : cases) {
        RawConnection raw(m_node.socketPath());
        raw.write(bytes);
        auto first = raw.readFrame();
        ASSERT_TRUE(first) << code;
        if (first->type == 0x8001) first = raw.readFrame(); // the welcome of a hello that went through
        ASSERT_TRUE(first) << code;
        EXPECT_EQ(first->type, 0x80FF) << code;
        EXPECT_EQ(ose::loadBe32(first->payload.data()), code);
        EXPECT_TRUE(raw.closedByNode()) << code;
    }
}

TEST_F(GatewaySystemTest, TheAnswersCarryTheirDocumentedFields)
{
    RawConnection raw(m_node.socketPath());
    raw.write(frame(0x0001, be32(1) + be32(0) + "fields", 7));
    auto welcome = raw.readFrame();
    ASSERT_TRUE(welcome);
    EXPECT_EQ(welcome->type, 0x8001);
    EXPECT_EQ(welcome->requestId, 7u);
    ASSERT_EQ(welcome->payload.size(), 20u);
    EXPECT_EQ(ose::loadBe32(welcome->payload.data()), 1u);     // version
    EXPECT_EQ(ose::loadBe32(welcome->payload.data() + 8), 1u); // virtual clock

    raw.write(frame(0x0007, "", 8));
    auto now = raw.readFrame();
    ASSERT_TRUE(now);
    ASSERT_EQ(now->payload.size(), 20u);
    const std::uint64_t world = (std::uint64_t{ose::loadBe32(now->payload.data())} << 32) |
                                ose::loadBe32(now->payload.data() + 4);
    const std::uint64_t calendar = (std::uint64_t{ose::loadBe32(now->payload.data() + 8)} << 32) |
                                   ose::loadBe32(now->payload.data() + 12);
    EXPECT_EQ(calendar, 1577836800000ull + world) << "the default start, 2020-01-01 00:00 UTC";
    EXPECT_EQ(ose::loadBe32(now->payload.data() + 16), 1u);

    raw.write(frame(0x0005, be32(12345), 9)); // an attach reference never given
    auto done = raw.readFrame();
    ASSERT_TRUE(done);
    EXPECT_EQ(done->type, 0x8006);
    EXPECT_EQ(done->requestId, 9u);

    raw.write(frame(0x0008, be32(0) + be32(0), 10)); // a target in the past
    auto advanced = raw.readFrame();
    ASSERT_TRUE(advanced);
    EXPECT_EQ(advanced->type, 0x8008);
    EXPECT_EQ(advanced->requestId, 10u);
}

TEST_F(GatewaySystemTest, AClientThatStopsReadingIsDisconnectedOnceItsOutputPassesTheLimit)
{
    RawConnection raw(m_node.socketPath());
    raw.write(kRawHello);
    auto welcome = raw.readFrame();
    ASSERT_TRUE(welcome);
    const std::uint32_t self = ose::loadBe32(welcome->payload.data() + 4);
    // Five signals of 16 MiB to itself, none of them read: 80 MiB wait.
    const std::string big = frame(0x0003, be32(self) + signalBytes(0x77, std::string(16u * 1024u * 1024u - 4, 'b')));
    for (int i = 0; i < 5; ++i)
        raw.write(big);
    EXPECT_TRUE(raw.closedByNode());

    GatewayClient other;
    EXPECT_TRUE(other.connect(m_node.socketPath(), "other")) << "the node goes on";
}

TEST_F(GatewaySystemTest, RequestsThatCannotBeDoneAreRefusedAndTheConnectionGoesOn)
{
    GatewayClient client;
    ASSERT_TRUE(client.connect(m_node.socketPath(), "client"));
    EXPECT_FALSE(client.publish("with/slash"));
    EXPECT_FALSE(client.trace("nonsense"));
    EXPECT_NE(client.lastError().find("GROUP:LEVELS"), std::string::npos);
    EXPECT_FALSE(client.hunt(std::string(2000, 'n')));
    EXPECT_TRUE(client.isConnected());
    EXPECT_TRUE(client.trace("demo:7"));
    auto echo = client.hunt("echo");
    EXPECT_TRUE(echo && *echo != 0);
}

TEST(GatewayNodeTest, StopsCleanlyOnSigtermAndRemovesItsSocket)
{
    NodeProcess node({"--clock", "real"});
    EXPECT_TRUE(node.isRunning());
    {
        GatewayClient client;
        ASSERT_TRUE(client.connect(node.socketPath(), "stepper"));
        EXPECT_FALSE(client.advanceBy(10)) << "a real clock cannot be stepped";
        EXPECT_EQ(client.lastError(), "the clock is real: time cannot be stepped");
    }
    std::string socket = node.socketPath();
    EXPECT_EQ(node.stop(), 0);
    EXPECT_NE(access(socket.c_str(), F_OK), 0);
}

} // namespace
} // namespace systemtest
