// Publication of service names at the platform's name server, and the name
// server's own rules: one owner per name, freed when the owner dies, and
// requests whose name field cannot be trusted refused.

#include "froBl/froMgmtSwU/export/NameServerFacade.h"
#include "frame/testSupport/TraceCapture.h"
#include "platform/NameServerSignals.h"
#include "vanto/VantoNameServer.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace ose;
using namespace ose::testing;
using namespace name_server;

struct Reply {
    std::uint32_t result;
    std::uint32_t pid;
};

// Sends a request to ose_ns and waits for its reply.
Reply ask(Signal* request, SIGSELECT replyNo)
{
    PROCESS server = 0;
    EXPECT_TRUE(hunt(kServerName, 0, &server, nullptr));
    send(&request, server);
    const SIGSELECT selector[] = {1, replyNo};
    Signal* reply = receive_w_tmo(1000, selector);
    if (reply == nullptr) return {0xffffffffu, 0};
    const auto* layout = signal_cast<NS_SERVICE_REPLY_S>(reply);
    Reply result{layout->result, layout->pid};
    free_buf(&reply);
    return result;
}

Reply find(const std::string& name)
{
    return ask(makeServiceSignal(NS_FIND_SERVICE, name), NS_FIND_SERVICE_REPLY);
}

using NameServerFacadeTest = TestWorld;

TEST_F(NameServerFacadeTest, APublishedNameBelongsToItsProcessUntilThatProcessEnds)
{
    TraceCapture trace("supSysNsiSwU:7,vanto:4");
    createNameServer(world(), node());
    std::optional<Reply> second, afterOwnerEnded, found;
    bool published = false;
    const PROCESS owner = spawn("objects", [&] {
        NameServerFacade facade;
        facade.init();
        published = facade.publish("ZORV_SUP_SYS_CTRL_MGMT_SERVICE");
        const SIGSELECT selector[] = {1, NS_ADD_SERVICE_REPLY};
        Signal* reply = receive_w_tmo(1000, selector);
        ASSERT_NE(reply, nullptr);
        facade.handleSignal(reply);
        free_buf(&reply);
        delay(1000);
    });
    spawn("other", [&] {
        delay(500);
        found = find("ZORV_SUP_SYS_CTRL_MGMT_SERVICE");
        second = ask(makeServiceSignal(NS_ADD_SERVICE, "ZORV_SUP_SYS_CTRL_MGMT_SERVICE"), NS_ADD_SERVICE_REPLY);
        delay(1000);
        afterOwnerEnded = find("ZORV_SUP_SYS_CTRL_MGMT_SERVICE");
    });
    world().runFor(5000);
    EXPECT_TRUE(published);
    ASSERT_TRUE(found && second && afterOwnerEnded);
    EXPECT_EQ(found->result, static_cast<std::uint32_t>(NsResult::Done));
    EXPECT_EQ(found->pid, owner);
    EXPECT_EQ(second->result, static_cast<std::uint32_t>(NsResult::Taken));
    EXPECT_EQ(afterOwnerEnded->result, static_cast<std::uint32_t>(NsResult::NotFound));
    const std::string text = trace.text();
    EXPECT_NE(text.find("NC: nameServerFacade::init "), std::string::npos);
    EXPECT_NE(text.find("NC:Hunt for name server successful"), std::string::npos);
    EXPECT_NE(text.find("NS_ADD_SERVICE_REPLY"), std::string::npos);
    EXPECT_NE(text.find("withdrawn"), std::string::npos);
}

TEST_F(NameServerFacadeTest, WithoutANameServerThePublicationGivesUpAfterASecond)
{
    TraceCapture trace("supSysNsiSwU:7");
    std::optional<bool> published;
    std::uint64_t gaveUpAt = 0;
    spawn("objects", [&] {
        NameServerFacade facade;
        published = facade.publish("ZORV_SUP_SYS_CTRL_MGMT_SERVICE");
        gaveUpAt = get_time_ms();
        Signal* stray = word(0x4711, 0);
        facade.handleSignal(stray);
        free_buf(&stray);
    });
    world().runFor(3000);
    EXPECT_EQ(published, false);
    EXPECT_EQ(gaveUpAt, 1000u);
    EXPECT_NE(trace.text().find("Hunt for name server failed"), std::string::npos);
    EXPECT_NE(trace.text().find("Unknown signal(0x4711) received from"), std::string::npos);
}

// A request whose size word points past the signal, or whose field has no
// terminator, is refused without reading beyond the buffer.
TEST_F(NameServerFacadeTest, NameFieldsThatCannotBeTrustedAreRefusedAndTheServerGoesOn)
{
    createNameServer(world(), node());
    std::vector<std::uint32_t> results;
    spawn("hostile", [&] {
        auto withField = [](std::uint32_t declared, const std::string& bytes) {
            Signal* signal = alloc(static_cast<OSBUFSIZE>(8 + bytes.size()), NS_ADD_SERVICE);
            reinterpret_cast<NS_SERVICE_S*>(signal)->fieldSize = declared;
            std::memcpy(reinterpret_cast<char*>(signal) + 8, bytes.data(), bytes.size());
            return signal;
        };
        const std::string longName(kMaxNameLength + 1, 'n');
        std::vector<Signal*> requests = {
            alloc(4, NS_ADD_SERVICE),                          // no size word
            withField(400, std::string("ABC\0", 4)),           // field beyond the signal
            withField(4, "ABCD"),                              // no terminator
            withField(0, ""),                                  // empty field
            withField(4, std::string("\0\0\0\0", 4)),          // empty name
            makeServiceSignal(NS_ADD_SERVICE, longName),       // too long
            makeServiceSignal(NS_ADD_SERVICE, "GOOD"),         // and the server still works
        };
        for (Signal* request : requests) results.push_back(ask(request, NS_ADD_SERVICE_REPLY).result);
        results.push_back(find("GOOD").result);
    });
    world().runFor(3000);
    const auto bad = static_cast<std::uint32_t>(NsResult::BadRequest);
    EXPECT_EQ(results, (std::vector<std::uint32_t>{bad, bad, bad, bad, bad, bad, 0, 0}));
}

} // namespace
