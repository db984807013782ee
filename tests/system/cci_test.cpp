// The climate control interface from outside: software on the node
// registers its temperature sensors with the core and sends their
// measurements, through the gateway only, on the virtual clock.

#include "app/SscctlCommand.h"
#include "climate/CciSignals.h"
#include "ose/GatewayClient.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/SignalBytes.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace systemtest {
namespace {

using namespace cci;

// A CCI signal: the number, client reference 9, then the fields as
// big-endian 16-bit words.
std::string cciSignal(ose::SIGSELECT sigNo, const std::vector<std::int32_t>& words)
{
    std::string bytes;
    for (const std::uint32_t word : {static_cast<std::uint32_t>(sigNo), 9U})
        for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(word >> shift));
    for (const std::int32_t word : words) {
        bytes.push_back(static_cast<char>(static_cast<std::uint16_t>(word) >> 8));
        bytes.push_back(static_cast<char>(word));
    }
    return bytes;
}

class CciSystemTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_client.connect(m_node.socketPath(), "cci_client", true)) << m_client.lastError();
        ASSERT_TRUE(m_client.advanceBy(10));
        auto server = m_client.hunt(kServerName, 0);
        ASSERT_TRUE(server && *server != 0);
        m_server = *server;
    }
    // The answer's number. A request that gets no answer is followed by a
    // probe that always gets one: signals between two processes keep their
    // order, so the probe's answer coming first shows that nothing else
    // came; 0 then.
    std::uint32_t ask(ose::SIGSELECT sigNo, const std::vector<std::int32_t>& words, std::string* bytes = nullptr)
    {
        const bool capability = sigNo == CCI_CAPABILITY_REQ;
        const ose::SIGSELECT probe = capability ? CCI_CONN_ESTABLISH_REQ : CCI_CAPABILITY_REQ;
        const ose::SIGSELECT probeAnswer = capability ? CCI_CONN_ESTABLISH_CFM : CCI_CAPABILITY_CFM;
        EXPECT_TRUE(m_client.send(m_server, cciSignal(sigNo, words)));
        EXPECT_TRUE(m_client.send(m_server, cciSignal(probe, capability ? std::vector<std::int32_t>{1, 1}
                                                                        : std::vector<std::int32_t>{0})));
        EXPECT_TRUE(m_client.advanceBy(10));
        auto event = m_client.next(std::chrono::seconds(10));
        if (!event || event->kind != ose::GatewayEvent::Kind::Signal) return 0;
        if (event->sigNo() == probeAnswer) return 0;
        if (bytes != nullptr) *bytes = event->bytes;
        auto after = m_client.next(std::chrono::seconds(10));
        EXPECT_TRUE(after && after->sigNo() == probeAnswer);
        return event->sigNo();
    }

    const std::string m_trace = traceFile("cci_trace.txt");
    NodeProcess m_node{{"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/default.xml",
                        "--trace", "supSysCtrlClimate:4", "--trace-file", m_trace}};
    ose::GatewayClient m_client;
    ose::PROCESS m_server = 0;
};

TEST_F(CciSystemTest, AClientAgreesOnRevisionOneAndHasItsCapabilitiesWeighed)
{
    std::string bytes;
    EXPECT_EQ(ask(CCI_CONN_ESTABLISH_REQ, {3, 2, 1, 4}, &bytes), CCI_CONN_ESTABLISH_CFM);
    EXPECT_EQ(layoutOf<CCI_CONN_ESTABLISH_CFM_S>(bytes).revision, 1);
    EXPECT_EQ(layoutOf<CCI_CONN_ESTABLISH_CFM_S>(bytes).header.clientRef, 9u);
    // Only the first five revisions are looked at.
    EXPECT_EQ(ask(CCI_CONN_ESTABLISH_REQ, {6, 2, 3, 4, 5, 6, 1}, &bytes), CCI_CONN_ESTABLISH_REJ);
    EXPECT_EQ(layoutOf<CCI_REJ_S>(bytes).reason, 1u);
    // 10 + (30 + 2) x 2 bytes fit in 512; (250 + 2) x 2 more do not.
    EXPECT_EQ(ask(CCI_CAPABILITY_REQ, {2, 0, 30, 0, 0, 30, 0}), CCI_CAPABILITY_CFM);
    EXPECT_EQ(ask(CCI_CAPABILITY_REQ, {2, 0, 250, 0, 0, 250, 0}, &bytes), CCI_CAPABILITY_REJ);
    EXPECT_EQ(layoutOf<CCI_REJ_S>(bytes).reason, 3u);
    // Rows it announces but does not hold weigh nothing.
    EXPECT_EQ(ask(CCI_CAPABILITY_REQ, {1000}), CCI_CAPABILITY_CFM);
}

TEST_F(CciSystemTest, SensorsAreRegisteredFedAndDeregisteredAndWrongRequestsAreRefused)
{
    std::string bytes;
    // Two sensors of a DU (hwType 4): 50 and 60 degrees, gain -0.5, tau 10 s.
    ASSERT_EQ(ask(CCI_REGISTER_TEMP_MEAS_REQ, {4, 2, 5000, -50, 100, 6000, -50, 100}, &bytes),
              CCI_REGISTER_TEMP_MEAS_CFM);
    const auto cfm = layoutOf<CCI_REGISTER_TEMP_MEAS_CFM_S>(bytes);
    EXPECT_EQ(cfm.sampleTime, 5);
    const std::int32_t group = cfm.groupId;
    EXPECT_EQ(ask(CCI_REGISTER_TEMP_MEAS_REQ, {5, 1, 5000, -50, 100}, &bytes), CCI_REGISTER_TEMP_MEAS_REJ);
    EXPECT_EQ(layoutOf<CCI_REJ_S>(bytes).reason, 2u);
    std::vector<std::int32_t> eleven{0, 11};
    for (int sensor = 0; sensor < 11; ++sensor) eleven.insert(eleven.end(), {5000, -50, 100});
    EXPECT_EQ(ask(CCI_REGISTER_TEMP_MEAS_REQ, eleven, &bytes), CCI_REGISTER_TEMP_MEAS_REJ);
    EXPECT_EQ(layoutOf<CCI_REJ_S>(bytes).reason, 3u);

    // A measurement that matches the registration is taken without a word;
    // one with too few temperatures, or for a group nobody has, is refused.
    EXPECT_EQ(ask(CCI_TEMP_MEAS_FWD, {group, 2, 5512, 4999}), 0u);
    EXPECT_EQ(ask(CCI_TEMP_MEAS_FWD, {group, 1, 5512}, &bytes), CCI_TEMP_MEAS_REJ);
    EXPECT_EQ(layoutOf<CCI_GROUP_S>(bytes).groupId, group);
    EXPECT_EQ(ask(CCI_TEMP_MEAS_FWD, {group + 50, 1, 5512}), CCI_TEMP_MEAS_REJ);
    // Announcing more than the signal holds is refused too.
    EXPECT_EQ(ask(CCI_TEMP_MEAS_FWD, {group, 2, 5512}), CCI_TEMP_MEAS_REJ);

    EXPECT_EQ(ask(CCI_DEREGISTER_TEMP_MEAS_REQ, {group}, &bytes), CCI_DEREGISTER_TEMP_MEAS_CFM);
    EXPECT_EQ(layoutOf<CCI_GROUP_S>(bytes).groupId, group);
    EXPECT_EQ(ask(CCI_TEMP_MEAS_FWD, {group, 2, 5512, 4999}), CCI_TEMP_MEAS_REJ);
    EXPECT_EQ(m_node.stop(), 0);

    const std::string text = readFile(m_trace);
    EXPECT_NE(text.find("TempSensor on DU with ID"), std::string::npos) << text;
    EXPECT_NE(text.find("max temp desired = 50.00[C]."), std::string::npos) << text;
    EXPECT_NE(text.find("max temp desired = 60.00[C]."), std::string::npos) << text;
    EXPECT_NE(text.find("removed."), std::string::npos) << text;
}

TEST_F(CciSystemTest, ShortSignalsAreDroppedAndTheServerGoesOn)
{
    for (const ose::SIGSELECT sigNo : {CCI_CONN_ESTABLISH_REQ, CCI_CAPABILITY_REQ, CCI_REGISTER_TEMP_MEAS_REQ,
                                       CCI_DEREGISTER_TEMP_MEAS_REQ, CCI_TEMP_MEAS_FWD})
        EXPECT_EQ(ask(sigNo, {}), 0u) << sigNo;
    // A registration announcing more sensors than it holds is dropped whole.
    EXPECT_EQ(ask(CCI_REGISTER_TEMP_MEAS_REQ, {4, 3, 5000, -50, 100}), 0u);
    EXPECT_EQ(ask(CCI_CONN_ESTABLISH_REQ, {1, 1}), CCI_CONN_ESTABLISH_CFM);
}

TEST(CciSscctlTest, SscctlRegistersFeedsAndDeregistersSensorsInOneConversation)
{
    NodeProcess node({"--clock", "virtual", "--site", SSC_SOURCE_DIR "/sim/sites/default.xml"});
    app::SscctlCommand command;
    std::string error;
    ASSERT_TRUE(app::parseSscctl({"--socket", node.socketPath(), "cci", "connect", "register", "du", "50,60.5", "temps",
                                  "-", "55.12,49.99", "temps", "-", "55", "deregister", "-", "register", "ru",
                                  "1,2,3,4,5,6,7,8,9,10"},
                                 command, error))
        << error;
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(app::runSscctl(command, out, err), app::kDone) << err.str();
    std::istringstream lines(out.str());
    std::vector<std::string> seen;
    for (std::string line; std::getline(lines, line);) seen.push_back(line);
    ASSERT_EQ(seen.size(), 5u) << out.str();
    EXPECT_EQ(seen[0], "connected: revision 1");
    EXPECT_EQ(seen[1].rfind("registered: group ", 0), 0u);
    EXPECT_NE(seen[1].find(", sample time 5 s"), std::string::npos);
    const std::string group = seen[1].substr(18, seen[1].find(',') - 18);
    EXPECT_EQ(seen[2], "measurement refused: group " + group + " (not registered, or not one temperature per sensor)");
    EXPECT_EQ(seen[3], "deregistered: group " + group);
    EXPECT_EQ(seen[4].rfind("registered: group ", 0), 0u);
    EXPECT_EQ(node.stop(), 0);
}

} // namespace
} // namespace systemtest
