// The core process of a running node, reached from outside through the
// gateway.

#include "ose/GatewayClient.h"
#include "tests/system/NodeProcess.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include <unistd.h>

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
    const std::string traceFile = ::testing::TempDir() + std::to_string(::getpid()) + "_core_system_trace.txt";
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

// Each server of the core is reachable by its name from outside as soon as
// the core has built it; the inter-node server has no phantom of its own.
TEST(CoreSystemTest, EveryServerOfTheCoreIsHuntableFromOutsideByItsName)
{
    NodeProcess node({"--clock", "virtual"});
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "tester", false)) << client.lastError();
    auto core = client.hunt("SSC_THREAD", 1000);
    ASSERT_TRUE(core && *core != 0);
    const char* const names[] = {"ApcInci_Client",
                                 "ssc_power_management_server",
                                 "ssc_equipment_management_server",
                                 "ALM_Server",
                                 "ssc_cabinet_management_server",
                                 "ssc_alarm_control_server",
                                 "ssc_climate_control_server",
                                 "ssc_power_control_server",
                                 "APC_INCI_Server"};
    std::set<ose::PROCESS> pids;
    for (const char* name : names) {
        auto pid = client.hunt(name, 1000);
        ASSERT_TRUE(pid) << name << ": " << client.lastError();
        EXPECT_NE(*pid, 0u) << name;
        EXPECT_NE(*pid, *core) << name;
        pids.insert(*pid);
    }
    EXPECT_EQ(pids.size(), std::size(names));
    EXPECT_FALSE(client.hunt("APC_INCI_SERVER_NOT_A_NAME", 0).value_or(0));
    client.close();
    EXPECT_EQ(node.stop(), 0);
}

} // namespace
} // namespace systemtest
