// The core process of a running node, reached from outside through the
// gateway.

#include "ose/GatewayClient.h"
#include "tests/system/NodeProcess.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace systemtest {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t SSC_TEST_TRIGGER_TIMER_REQ = 0x1705011;
constexpr std::uint32_t SSC_TEST_TRIGGER_TIMER_CFM = 0x1705012;
constexpr std::uint32_t SSC_TEST_TRIGGER_TIMER_REJ = 0x1705013;

std::string be32(std::uint32_t value)
{
    std::string bytes(4, '\0');
    ose::storeBe32(bytes.data(), value);
    return bytes;
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(CoreSystemTest, TestTriggerIsRejectedWithoutTimerAndUnknownSignalsAreTracedAndDropped)
{
    std::string traceFile = ::testing::TempDir() + "core_system_trace.txt";
    std::remove(traceFile.c_str());
    NodeProcess node({"--clock", "virtual", "--trace", "supSysCtrlSWU:7", "--trace-file", traceFile});
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "tester", true)) << client.lastError();
    auto core = client.hunt("SSC_THREAD", 1000);
    ASSERT_TRUE(core && *core != 0);

    // Nothing of the core runs a timer of type 2 yet.
    ASSERT_TRUE(client.send(*core, be32(SSC_TEST_TRIGGER_TIMER_REQ) + be32(2)));
    auto answer = client.next(10s);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->sigNo(), SSC_TEST_TRIGGER_TIMER_REJ);
    EXPECT_EQ(answer->sender, *core);
    EXPECT_EQ(answer->bytes.size(), 4u);

    // A number nobody subscribed: traced and dropped, and the core goes on.
    ASSERT_TRUE(client.send(*core, be32(0x4711) + be32(0)));
    ASSERT_TRUE(client.send(*core, be32(SSC_TEST_TRIGGER_TIMER_REQ) + be32(107)));
    auto second = client.next(10s);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->sigNo(), SSC_TEST_TRIGGER_TIMER_REJ);
    EXPECT_NE(second->sigNo(), SSC_TEST_TRIGGER_TIMER_CFM);

    client.close();
    EXPECT_EQ(node.stop(), 0);
    std::string trace = readFile(traceFile);
    EXPECT_NE(trace.find("Starting SSC_THREAD"), std::string::npos);
    EXPECT_NE(trace.find("No receiver for signal:18193 with OODB_Ref:0"), std::string::npos) << trace;
    EXPECT_NE(trace.find("Sending SSC_TEST_TRIGGER_TIMER_REJ"), std::string::npos);
    std::remove(traceFile.c_str());
}

} // namespace
} // namespace systemtest
