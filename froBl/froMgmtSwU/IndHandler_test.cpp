// Indications to a management client process: what waits while nobody
// listens, what a subscription brings, the client's death, bodies and sizes,
// and the trace of good and bad signals.

#include "froBl/froMgmtSwU/export/IndHandler.h"
#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "frame/testSupport/TraceCapture.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <cstring>
#include <functional>

namespace {

using namespace ose;
using namespace ose::testing;
using namespace maofro;

constexpr std::uint32_t kTypeA = 0x7040001, kTypeB = 0x7040002, kTypeC = 0x7040003;

using Wait = std::function<void(std::uint64_t)>; // until a time of the world
using Sends = std::vector<std::pair<std::uint64_t, std::function<Signal*()>>>;
using Got = std::vector<std::string>;             // signals as bytes

void receiveUntil(std::uint64_t end, const std::function<void(Signal*)>& handle)
{
    while (get_time_ms() < end) {
        Signal* signal = receive_w_tmo(static_cast<OSTIME>(end - get_time_ms()), kAnySignal);
        if (signal == nullptr) continue;
        handle(signal);
        free_buf(&signal);
    }
}

std::function<Signal*()> subscribe(std::uint32_t froType, OSBUFSIZE size = 16)
{
    return [=] {
        Signal* signal = alloc(size, MAOFRO_NOTIFY_SUBSCRIBE_REQ2);
        if (auto* request = size >= 16 ? reinterpret_cast<MAOFRO_NOTIFY_SUBSCRIBE_REQ2_S*>(signal) : nullptr)
            *request = {MAOFRO_NOTIFY_SUBSCRIBE_REQ2, 2, 7, froType};
        return signal;
    };
}

std::uint32_t word(const std::string& bytes, std::size_t at) { return loadBe32(bytes.data() + at); }
std::string text(const std::string& bytes) { return bytes.c_str() + bytes.find("<?xml"); }

// Kind, type/object, and the fault's description or the change's attribute a.
Got summaries(const Got& got)
{
    Got lines;
    for (const std::string& bytes : got) {
        const std::string body = text(bytes), name = word(bytes, 0) == MAO_FRO_FAULT_IND ? "faultDescription" : "a";
        const std::size_t at = body.find("value=\"", body.find("name=\"" + name + "\"")) + 7;
        lines.push_back(std::to_string(word(bytes, 0) - MAO_FRO_FAULT_IND) + " " +
                        std::to_string(word(bytes, 8) - 0x7040000) + "/" + std::to_string(word(bytes, 4)) + " " +
                        body.substr(at, body.find('"', at) - at));
    }
    return lines;
}

class IndHandlerTest : public TestWorld {
protected:
    // The object process: the script with the handler, which is behind its
    // distributor or, `direct`, given every signal.
    PROCESS objects(std::function<void(IndHandler&, const Wait&)> script, bool direct = false)
    {
        return spawn("objects", [script = std::move(script), direct] {
            SignalDistributor distributor;
            IndHandler handler(distributor);
            handler.init();
            const Wait wait = [&](std::uint64_t end) {
                receiveUntil(end, [&](Signal* signal) {
                    direct ? handler.handleSignal(signal) : void(distributor.distribute(signal));
                });
            };
            script(handler, wait);
            wait(2000);
        });
    }
    // A client: sends at the times given, keeps what arrives, ends at `end`.
    void client(const char* name, PROCESS to, Sends sends, std::uint64_t end, Got& got)
    {
        spawn(name, [=, &got] {
            const auto keep = [&](Signal* s) { got.emplace_back(reinterpret_cast<char*>(s), sigsize(&s)); };
            for (const auto& [at, make] : sends) {
                receiveUntil(at, keep);
                Signal* signal = make();
                send(&signal, to);
            }
            receiveUntil(end, keep);
        });
    }
};

TEST_F(IndHandlerTest, WhatWaitsArrivesWithTheFirstSubscriptionAndStoredFaultsWithEvery)
{
    const PROCESS handler = objects([](IndHandler& h, const Wait& wait) {
        wait(50);
        h.sendFault(1, kTypeA, "Unit=1", 10, "first", {}, 0, true);
        h.sendFault(1, kTypeA, "Unit=1", 10, "later", {}, 0, true);
        h.sendFault(1, kTypeB, "Other=1", 10, "other class", {}, 0, true);
        h.sendFault(2, kTypeA, "Unit=2", 11, "ceased", {}, 0, true);
        h.sendFaultCeased(2, kTypeA, "Unit=2", 11);
        h.sendFault(3, kTypeA, "Unit=3", 12, "unstored", {}, 0, false);
        h.sendParameterChange(1, kTypeA, "Unit=1", {{"a", "S32", "1"}});
        h.sendParameterChange(1, kTypeB, "Other=1", {{"a", "S32", "9"}});
        h.sendEvent(1, kTypeA, "Unit=1", 7, {{"a", "S32", "e"}});
        h.sendParameterChange(1, kTypeA, "Unit=1", {{"a", "S32", "2"}});
    });
    Got got;
    client("client", handler, {{100, subscribe(kTypeA)}, {200, subscribe(kTypeA)}, {300, subscribe(kTypeB)}}, 900, got);
    world().runFor(3000);
    // 4 a change, 2 an event, 0 a fault.
    EXPECT_EQ(summaries(got), (Got{"4 1/1 1", "4 1/1 2", "2 1/1 e", "0 1/1 later", "0 1/1 later", "4 2/1 9",
                                   "0 2/1 other class"}));
}

TEST_F(IndHandlerTest, OneClientAtATimeAndAfterItsDeathTheNextGetsEveryStoredFault)
{
    std::vector<bool> attached;
    const PROCESS handler = objects([&](IndHandler& h, const Wait& wait) {
        wait(50);
        h.sendFault(1, kTypeA, "Unit=1", 10, "before", {}, 0, true);
        wait(150);
        attached.push_back(h.isAttached());
        h.sendFault(2, kTypeA, "Unit=2", 11, "while attached", {}, 0, true);
        h.sendFault(3, kTypeB, "Other=3", 12, "type not subscribed", {}, 0, true);
        h.sendFault(5, kTypeC, "Third=5", 13, "to the first client", {}, 0, true);
        wait(250);
        attached.push_back(h.isAttached());
        h.sendFault(4, kTypeA, "Unit=4", 14, "after death", {}, 0, true);
        h.sendParameterChange(4, kTypeA, "Unit=4", {{"a", "S32", "3"}});
    });
    Got first, other, next;
    client("first", handler, {{100, subscribe(kTypeA)}}, 200, first);
    client("other", handler, {{120, subscribe(kTypeC)}}, 900, other);
    client("next", handler, {{300, subscribe(kTypeA)}, {310, subscribe(kTypeB)}}, 900, next);
    world().runFor(3000);
    EXPECT_EQ(attached, (std::vector<bool>{true, false}));
    EXPECT_EQ(summaries(first), (Got{"0 1/1 before", "0 1/2 while attached", "0 3/5 to the first client"}));
    EXPECT_TRUE(other.empty());
    EXPECT_EQ(summaries(next), (Got{"4 1/4 3", "0 1/1 before", "0 1/4 after death", "0 2/3 type not subscribed"}));
}

TEST_F(IndHandlerTest, BodiesAndSizesOfTheIndications)
{
    const PROCESS handler = objects([](IndHandler& h, const Wait& wait) {
        wait(150);
        h.sendFault(7, kTypeA, "Unit=7", 42, "Fan \"stuck\" & slow", {"one", "two"}, 9, true);
        h.sendFaultCeased(7, kTypeA, "Unit=7", 42);
        h.sendParameterChange(7, kTypeA, "Unit=7",
                              {{"x", "S32", "1"}, {"product", "struct", "BEGIN"}, {"name", "STRING", "PSU"},
                               {"product", "struct", "END"}, {"y", "U32", "2"}});
        h.sendEvent(7, kTypeA, "Unit=7", 5, {});
    });
    Got got;
    client("client", handler, {{100, subscribe(kTypeA)}}, 900, got);
    world().runFor(3000);
    ASSERT_EQ(got.size(), 4u);
    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<mim version=\"R1A\">\n"
                             " <class ldn=\"Unit=7\">\n";
    const std::string faultId = "<attr name=\"faultId\" type=\"S32\" value=\"42\" />\n";
    const std::string tail = " </class>\n</mim>\n";
    EXPECT_EQ(text(got[0]), head + "  <fault>\n   " + faultId +
                                "   <attr name=\"faultDescription\" type=\"STRING\" "
                                "value='Fan &quot;stuck&quot; &amp; slow' />\n" // the printer's quotes
                                "   <array name=\"additionalData\">\n"
                                "    <attr type=\"STRING\" value=\"one\" />\n"
                                "    <attr type=\"STRING\" value=\"two\" />\n"
                                "   </array>\n"
                                "   <attr name=\"eventId\" type=\"S32\" value=\"9\" />\n  </fault>\n" + tail);
    EXPECT_EQ(text(got[1]), head + "  <fault>\n   " + faultId + "  </fault>\n" + tail);
    EXPECT_EQ(text(got[2]), head + "  <attr name=\"x\" type=\"S32\" value=\"1\" />\n  <struct name=\"product\">\n"
                                   "   <attr name=\"name\" type=\"STRING\" value=\"PSU\" />\n  </struct>\n"
                                   "  <attr name=\"y\" type=\"U32\" value=\"2\" />\n" + tail);
    // Fault, cease, change, event: where the block starts, the bytes after
    // the text's room, and the word at 12 (problem, event, noOfAttributes).
    const std::uint32_t blockAt[] = {24, 20, 16, 20}, spare[] = {4, 4, 4, 0}, at12[] = {42, 42, 1, 5};
    for (std::size_t i = 0; i < got.size(); ++i) {
        const std::string& g = got[i];
        const std::uint32_t textSize = blockTextSize(text(g).size()), block = blockAt[i];
        EXPECT_EQ(g.size(), block + 12 + textSize + spare[i]) << i;
        // Object, word 12, noOfAttributes; block: type, one element and zero, length.
        EXPECT_EQ(std::vector<std::uint32_t>({word(g, 4), word(g, 8), word(g, 12), word(g, block - 4), word(g, block),
                                              word(g, block + 4), word(g, block + 8)}),
                  std::vector<std::uint32_t>({7, kTypeA, at12[i], 1, kXmlText, 0x10000, textSize})) << i;
    }
    EXPECT_EQ(word(got[0], 16), 0u); // primaryInd
}

TEST_F(IndHandlerTest, EverySignalIsTracedInFixedWordsAndBadOnesAreRefusedUnread)
{
    TraceCapture trace("supSysIndHandlerLU:7");
    std::vector<bool> attached;
    const PROCESS handler = objects([&](IndHandler& h, const Wait& wait) {
        wait(150);
        attached.push_back(h.isAttached());
        wait(250);
        attached.push_back(h.isAttached());
        h.sendFaultCeased(7, 5, "Unit=7", 42);
    }, true);
    const auto boundless = [] { // a text without NUL, its length pointing past the signal
        Signal* signal = alloc(sizeof(MAO_FRO_PARAMETER_CHD_IND_S) + 3, MAO_FRO_PARAMETER_CHD_IND);
        reinterpret_cast<MAO_FRO_PARAMETER_CHD_IND_S*>(signal)->block.length = 1000;
        std::memcpy(reinterpret_cast<char*>(signal) + sizeof(MAO_FRO_PARAMETER_CHD_IND_S), "abc", 3);
        return signal;
    };
    Got got;
    client("client", handler,
           {{100, subscribe(5, 8)}, {200, subscribe(5)}, {300, [] { return alloc(20, MAO_FRO_FAULT_IND); }},
            {300, boundless}, {300, [] { return alloc(4, 0x4711); }}},
           400, got);
    world().runFor(3000);
    EXPECT_EQ(attached, (std::vector<bool>{false, true}));
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(trace.texts("supSysIndHandlerLU", 7),
              (Got{"MAOFRO_NOTIFY_SUBSCRIBE_REQ2, sigNo=0xb0024, signalRevision=2, clientId=7, froType=5",
                   "MAO_FRO_FAULT_CEASED_IND, sigNo=0xb0071, froId=7, froType=5, specificProblem=42, noOfAttributes=1, "
                   "attributeArray[0].attribute=21, attributeArray[0].type=1, attributeArray[0].status=0, "
                   "attributeArray[0].value=" + std::to_string(word(got[0], 28)) + ", attributeArray[0].data=" +
                       text(got[0]),
                   "MAO_FRO_PARAMETER_CHD_IND, sigNo=0xb0074, froId=0, froType=0, noOfAttributes=0, "
                   "attributeArray[0].attribute=0, attributeArray[0].type=0, attributeArray[0].status=0, "
                   "attributeArray[0].value=1000, attributeArray[0].data=abc",
                   "NC_IND_HND_MAO_FRO_ATTACH_IND, sigNo=0x1705101"}));
    const Got errors = trace.texts("supSysIndHandlerLU", 1);
    ASSERT_EQ(errors.size(), 3u);
    EXPECT_EQ(errors[0], "MAOFRO_NOTIFY_SUBSCRIBE_REQ2, sigNo=0xb0024, too short (8 bytes, at least 16), ignored");
    EXPECT_EQ(errors[1], "MAO_FRO_FAULT_IND, sigNo=0xb0070, too short (20 bytes, at least 36), ignored");
    EXPECT_EQ(errors[2].rfind("Unknown signal (0x4711) received from 0x", 0), 0u);
}

} // namespace
