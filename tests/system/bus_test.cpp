// The EC bus server from outside the node: a test that plays "A4ciServer"
// itself, the embedded simulator controlled through the gateway, and the
// simulator as its own program.

#include "hwu/A4ciSignals.h"
#include "ose/GatewayClient.h"
#include "sim/SimControlSignals.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/SignalBytes.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace systemtest {
namespace {

using namespace std::chrono_literals;

std::string dataRequest(std::uint8_t address, std::initializer_list<std::uint8_t> frame)
{
    a4ci::A4CI_DATA_REQ_S request{};
    request.sigNo = a4ci::A4CI_DATA_REQ;
    request.port = 1;
    request.address = address;
    request.length = static_cast<std::uint16_t>(frame.size());
    std::copy(frame.begin(), frame.end(), request.data);
    return bytesOf(request);
}

// The answer frame of a data confirm.
std::string answerFrame(const ose::GatewayEvent& event)
{
    const auto head = layoutOf<a4ci::A4CI_DATA_CFM_S>(event.bytes);
    return event.bytes.substr(a4ci::kDataCfmHeadSize, head.length);
}

std::string valueRequest(std::uint32_t sigNo, std::uint8_t address, const char* name, std::int32_t value)
{
    simctl::SIM_VALUE_REQ_S request{};
    request.sigNo = sigNo;
    request.port = 1;
    request.address = address;
    request.value = value;
    std::strncpy(request.name, name, sizeof request.name - 1);
    return bytesOf(request);
}

TEST(BusSystemTest, AnOutsideProgramPlaysTheBusServerForTheCore)
{
    const std::string trace = traceFile("bus_outside_trace.txt");
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--trace", "supSysCtrlA4ci:7", "--trace-file", trace});
    ose::GatewayClient bus;
    ASSERT_TRUE(bus.connect(node.socketPath(), "bus", true)) << bus.lastError();
    ASSERT_TRUE(bus.publish(a4ci::kServerName));
    // The core's hunt from its start finds us; its connection request follows.
    auto request = nextOf(bus, a4ci::A4CI_CONN_ESTABLISH_REQ);
    ASSERT_TRUE(request);
    EXPECT_EQ(layoutOf<a4ci::A4CI_CONN_ESTABLISH_REQ_S>(request->bytes).protocolVersion, 1);
    a4ci::A4CI_CONN_ESTABLISH_CFM_S confirm{};
    confirm.sigNo = a4ci::A4CI_CONN_ESTABLISH_CFM;
    ASSERT_TRUE(bus.sendAcknowledged(request->sender, bytesOf(confirm)));
    ASSERT_TRUE(bus.advanceBy(2000));
    EXPECT_EQ(node.stop(), 0);
    const std::string text = readFile(trace);
    EXPECT_NE(text.find("Hunt response received from A4ciServer"), std::string::npos) << text;
    EXPECT_NE(text.find("Connection established with A4ciServer"), std::string::npos) << text;
}

TEST(BusSystemTest, TheEmbeddedSimulatorAnswersAndIsControlledThroughTheGateway)
{
    const std::string trace = traceFile("bus_embedded_trace.txt");
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/static.xml",
                      "--trace", "supSysCtrlA4ci:7", "--trace-file", trace});
    ose::GatewayClient tester;
    ASSERT_TRUE(tester.connect(node.socketPath(), "tester", true)) << tester.lastError();
    auto server = tester.hunt(a4ci::kServerName, 0);
    ASSERT_TRUE(server && *server != 0);

    ASSERT_TRUE(tester.send(*server, valueRequest(simctl::SIM_SET_VALUE_REQ, 48, "outputVoltage", -5000)));
    auto set = nextOf(tester, simctl::SIM_SET_VALUE_CFM);
    ASSERT_TRUE(set);
    EXPECT_EQ(layoutOf<simctl::SIM_VALUE_CFM_S>(set->bytes).value, -5000);
    ASSERT_TRUE(tester.send(*server, valueRequest(simctl::SIM_GET_VALUE_REQ, 48, "noSuchValue", 0)));
    auto refused = nextOf(tester, simctl::SIM_GET_VALUE_REJ);
    ASSERT_TRUE(refused);
    EXPECT_STREQ(layoutOf<simctl::SIM_REJ_S>(refused->bytes).reason, "no value named noSuchValue");

    ASSERT_TRUE(tester.send(*server, dataRequest(48, {72, 9})));
    auto answer = nextOf(tester, a4ci::A4CI_DATA_CFM);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answerFrame(*answer).substr(0, 4), std::string("\x49\x09\xEC\x78", 4));

    simctl::SIM_FAULT_REQ_S fault{};
    fault.sigNo = simctl::SIM_FAULT_REQ;
    fault.port = 1;
    fault.address = 48;
    fault.kind = static_cast<std::uint16_t>(simctl::FaultKind::A4ciReject);
    fault.count = 1;
    fault.value = 6;
    ASSERT_TRUE(tester.send(*server, bytesOf(fault)));
    ASSERT_TRUE(nextOf(tester, simctl::SIM_FAULT_CFM));
    ASSERT_TRUE(tester.send(*server, dataRequest(48, {72, 10})));
    auto rejected = nextOf(tester, a4ci::A4CI_DATA_REJ);
    ASSERT_TRUE(rejected);
    EXPECT_EQ(layoutOf<a4ci::A4CI_DATA_REJ_S>(rejected->bytes).errorCode, 6);

    simctl::SIM_RAW_ANSWER_REQ_S raw{};
    raw.sigNo = simctl::SIM_RAW_ANSWER_REQ;
    raw.port = 1;
    raw.address = 32;
    raw.length = 4;
    const std::uint8_t malformed[] = {145, 1, 200, 1}; // a list count far beyond its frame
    std::copy(std::begin(malformed), std::end(malformed), raw.frame);
    ASSERT_TRUE(tester.send(*server, bytesOf(raw)));
    ASSERT_TRUE(nextOf(tester, simctl::SIM_RAW_ANSWER_CFM));
    ASSERT_TRUE(tester.send(*server, dataRequest(32, {144, 11})));
    auto garbage = nextOf(tester, a4ci::A4CI_DATA_CFM);
    ASSERT_TRUE(garbage);
    EXPECT_EQ(answerFrame(*garbage), std::string("\x91\x01\xC8\x01", 4));

    ASSERT_TRUE(tester.advanceBy(100));
    EXPECT_EQ(node.stop(), 0);
    EXPECT_NE(readFile(trace).find("Connection established with A4ciServer"), std::string::npos);
}

TEST(BusSystemTest, TheSimulatorAsItsOwnProgramServesANodeWithoutASite)
{
    const std::string trace = traceFile("bus_sscsim_trace.txt");
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--trace", "supSysCtrlA4ci:7", "--trace-file", trace});
    const pid_t simPid = fork();
    ASSERT_GE(simPid, 0);
    if (simPid == 0) {
        const std::string socket = node.socketPath();
        execl(SSC_SIM_BINARY, SSC_SIM_BINARY, "--site", SSC_SOURCE_DIR "/sim/sites/static.xml", "--socket",
              socket.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    ose::GatewayClient tester;
    ASSERT_TRUE(tester.connect(node.socketPath(), "tester", true)) << tester.lastError();
    auto server = tester.hunt(a4ci::kServerName, ose::gateway::kWaitForever);
    ASSERT_TRUE(server && *server != 0);
    ASSERT_TRUE(tester.send(*server, dataRequest(32, {204, 3})));
    auto answer = nextOf(tester, a4ci::A4CI_DATA_CFM);
    ASSERT_TRUE(answer);
    // Connected fans 0x0F, no failures, no external alarms, start flag and smoke detector connected.
    EXPECT_EQ(answerFrame(*answer), std::string("\xCD\x03\x0F\x00\x00\x00\x00\x06", 8));
    ASSERT_TRUE(tester.advanceBy(2000));
    EXPECT_EQ(node.stop(), 0);
    int status = 0;
    EXPECT_EQ(waitpid(simPid, &status, 0), simPid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_NE(readFile(trace).find("Connection established with A4ciServer"), std::string::npos);
}

} // namespace
} // namespace systemtest
