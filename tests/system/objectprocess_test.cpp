// The node's two processes and the platform beside them, seen from outside
// through the gateway: the object process takes its role, reaches the
// core's servers and runs its timers on the virtual clock; a restart on
// request brings both processes back and loses nothing from the database.

#include "app/GatewayTransactionPort.h"
#include "app/SscctlCommand.h"
#include "platform/VantoDb.h"
#include "platform/VantoTransactionMgmtClient.h"
#include "platform/testSupport/odbcQuery.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/Sscctl.h"
#include "tests/system/SignalBytes.h"

#include "ose/BigEndian.h"

#include <gtest/gtest.h>

#include <sstream>

namespace systemtest {
namespace {

// The object process's timer probe, as the gateway document gives it.
struct SUP_SYS_PROBE {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 delayMs;
};

bool contains(const Outcome& outcome, const std::string& words)
{
    return outcome.out.find(words) != std::string::npos;
}

// The RPU server's answer once it says `words`, asking up to 50 times.
Outcome statusOnce(const NodeProcess& node, const std::string& words)
{
    Outcome status{};
    for (int i = 0; i < 50; ++i) {
        status = sscctl(node, {"rpu", "status"});
        if (contains(status, words)) break;
    }
    return status;
}

std::string pidOf(const NodeProcess& node, const char* name)
{
    return sscctl(node, {"hunt", name}).out;
}

TEST(ObjectProcessSystemTest, TheObjectProcessTakesItsRoleReachesTheCoreAndItsTimersRunOnTheVirtualClock)
{
    const std::string trace = traceFile("objects.trace");
    NodeProcess node({"--clock", "virtual", "--trace-file", trace, "--trace",
                      "supSysEngineSwU:7,supSysCommunicationSwU:7"});
    const Outcome status = statusOnce(node, "registered");
    EXPECT_TRUE(contains(status, "RPU 1: active, load module registered")) << status.out;

    const Outcome minute = sscctl(node, {"objects", "timer", "60000"});
    EXPECT_EQ(minute.exitCode, app::kDone) << minute.out;
    EXPECT_TRUE(contains(minute, "ran out after 60000 ms")) << minute.out;

    const std::string text = readFile(trace);
    EXPECT_NE(text.find("APC Active RPU"), std::string::npos);
    for (const char* service : {"service = 0", "service = 1", "service = 2", "service = 3"})
        EXPECT_NE(text.find(std::string("registerService, ") + service), std::string::npos) << service;
    EXPECT_NE(text.find("Support system control is now ready to receive signals"), std::string::npos);
    EXPECT_NE(text.find("Support System Control received signal: 0x01705110"), std::string::npos);
}

TEST(ObjectProcessSystemTest, ARestartOnRequestBringsBothProcessesBackAndTheDatabaseKeepsWhatWasCommitted)
{
    NodeProcess node({"--clock", "virtual"});
    statusOnce(node, "registered");
    const Outcome made = sscctl(node, {"transaction", "--sql", "create table kept(x integer)", "--sql",
                                       "insert into kept values(1)"});
    ASSERT_EQ(made.exitCode, app::kDone) << made.out;

    // A management client's transaction stays open across the restart.
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "manager"));
    app::GatewayTransactionPort port(client);
    VantoTransactionMgmtClient transactions(port);
    std::int32_t open = 0;
    ASSERT_EQ(transactions.create(open), vanto_trans::TransResult::Ok);
    ASSERT_TRUE(port.sendStatement(open, "insert into kept values(2)"));

    const std::string coreBefore = pidOf(node, "SSC_THREAD");
    const std::string objectsBefore = pidOf(node, "support_system_control_thread");
    const Outcome shutdown = sscctl(node, {"rpu", "shutdown"});
    EXPECT_TRUE(contains(shutdown, "shutdown sent to the load module")) << shutdown.out;
    const Outcome after = statusOnce(node, "1 restart");
    EXPECT_TRUE(contains(after, "active, load module registered")) << after.out;
    EXPECT_NE(pidOf(node, "SSC_THREAD"), coreBefore);
    EXPECT_NE(pidOf(node, "support_system_control_thread"), objectsBefore);
    EXPECT_TRUE(contains(sscctl(node, {"objects", "timer", "1000"}), "ran out after 1000 ms"));

    // The platform's own restart request works the same way.
    EXPECT_TRUE(contains(sscctl(node, {"rpu", "restart"}), "restart of the load module requested"));
    EXPECT_TRUE(contains(statusOnce(node, "2 restarts"), "load module registered"));

    EXPECT_EQ(transactions.commit(open), vanto_trans::TransResult::Ok);
    client.close();
    VantoDbHandles probe;
    VantoDbConfig config;
    config.connectionString = VantoDb_defaultConnectionString(node.dataDir());
    const auto rows = odbc_query::run(probe, config, "select x from kept order by x");
    VantoDb_disconnect(probe);
    EXPECT_EQ(rows, (odbc_query::Rows{{"1"}, {"2"}}));
}

TEST(ObjectProcessSystemTest, APassiveNodeKeepsItsObjectLayerDownUntilItIsMadeActive)
{
    const std::string trace = traceFile("passive.trace");
    NodeProcess node({"--clock", "virtual", "--role", "passive", "--trace-file", trace, "--trace",
                      "supSysEngineSwU:4,supSysCommunicationSwU:7"});
    EXPECT_TRUE(contains(statusOnce(node, "registered"), "RPU 1: passive, load module registered"));

    // Nothing in a passive object process answers; its loop says so.
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "prober"));
    const auto objects = client.hunt("support_system_control_thread", 0);
    ASSERT_TRUE(objects && *objects != 0);
    ASSERT_TRUE(client.send(*objects, bytesOf(SUP_SYS_PROBE{0x1705110, 7, 10})));
    EXPECT_FALSE(client.next(std::chrono::milliseconds(500)).has_value());
    client.close();

    EXPECT_TRUE(contains(sscctl(node, {"rpu", "active"}), "role active"));
    EXPECT_TRUE(contains(statusOnce(node, "1 restart"), "active, load module registered"));
    EXPECT_TRUE(contains(sscctl(node, {"objects", "timer", "10"}), "ran out after 10 ms"));

    const std::string text = readFile(trace);
    EXPECT_NE(text.find("APC Passive RPU"), std::string::npos);
    EXPECT_NE(text.find("Received VANTO_CLI_ACTIVE_RPU, requesting a restart"), std::string::npos);
    EXPECT_LT(text.find("APC Passive RPU"), text.find("registerService"));
}

TEST(ObjectProcessSystemTest, ALoadModuleWithoutAnRpuWaitsUntilOneIsAdded)
{
    NodeProcess node({"--clock", "virtual", "--rpu-later"});
    EXPECT_TRUE(contains(sscctl(node, {"rpu", "status"}), "no RPU yet"));
    EXPECT_TRUE(contains(sscctl(node, {"rpu", "add"}), "RPU added"));
    EXPECT_TRUE(contains(statusOnce(node, "registered"), "RPU 1: active, load module registered"));
    const Outcome again = sscctl(node, {"rpu", "add"});
    EXPECT_EQ(again.exitCode, app::kNotFound);
    EXPECT_TRUE(contains(again, "known already"));
}

} // namespace
} // namespace systemtest
