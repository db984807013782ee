// The equipment management interface from outside: a node with its
// simulated cabinet, driven only through its gateway on the virtual clock.

#include "adapters/EmiSignals.h"
#include "ose/GatewayClient.h"
#include "sim/SimControlSignals.h"
#include "tests/system/EmiRequest.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/SignalBytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>

namespace systemtest {
namespace {

using namespace std::chrono_literals;
using namespace emi;

TEST(EmiSystemTest, ANodeThatConfiguresItsSiteHasEveryUnitOperationalWithinSeconds)
{
    const std::string trace = traceFile("emi_site_trace.txt");
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/static.xml",
                      "--configure-site", "--trace", "site:4", "--trace-file", trace});
    ose::GatewayClient tester;
    ASSERT_TRUE(tester.connect(node.socketPath(), "tester", true)) << tester.lastError();
    ASSERT_TRUE(tester.advanceBy(6000));
    EXPECT_EQ(node.stop(), 0);
    const std::string text = readFile(trace);
    for (const char* unit : {"SCU-1", "SAU-1", "CLU-1", "PSU-1", "BFU-1", "PDU-1"})
        EXPECT_NE(text.find(std::string(unit) + ": operational, operational LED SteadyOn, fault LED Off"),
                  std::string::npos)
            << unit << "\n"
            << text;
}

TEST(EmiSystemTest, AClientConfiguresAUnitSeesItComeUpAndSeesItsFaultComeAndGo)
{
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/static.xml"});
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "emi_client", true)) << client.lastError();
    ASSERT_TRUE(client.advanceBy(10));
    auto server = client.hunt(kServerName, 0);
    ASSERT_TRUE(server && *server != 0);
    auto bus = client.hunt("A4ciServer", 0);
    ASSERT_TRUE(bus && *bus != 0);

    ASSERT_TRUE(client.send(*server, configure(kPsu, 1, "A1")));
    auto cfm = nextOf(client, EMI_SET_CONFIG_CFM);
    ASSERT_TRUE(cfm);
    EXPECT_EQ(layoutOf<EMI_HEADER_S>(cfm->bytes).clientRef, kEmiClientRef);
    ASSERT_TRUE(client.send(*server, emiSignal(EMI_REQ_S{}, EMI_SUBSCRIBE_RESOURCE_DATA_REQ, kPsu, 1)));
    // The core polls the new unit at once and waits for the bus: a little
    // time must pass before it reads the next request.
    ASSERT_TRUE(client.advanceBy(100));
    ASSERT_TRUE(nextOf(client, EMI_SUBSCRIBE_RESOURCE_DATA_CFM));
    auto first = nextOf(client, EMI_RESOURCE_DATA_UPDATE_IND);
    ASSERT_TRUE(first);
    EXPECT_EQ(layoutOf<EMI_RESOURCE_DATA_S>(first->bytes).words[0], 0);

    ASSERT_TRUE(client.advanceBy(6000));
    bool operational = false;
    while (auto update = nextOf(client, EMI_RESOURCE_DATA_UPDATE_IND))
        if ((operational = layoutOf<EMI_RESOURCE_DATA_S>(update->bytes).words[0] == 1)) break;
    EXPECT_TRUE(operational);

    // Silenced on the bus: missing after thirty polls.
    simctl::SIM_FAULT_REQ_S silence{};
    silence.sigNo = simctl::SIM_FAULT_REQ;
    silence.port = 1;
    silence.address = 48;
    silence.kind = static_cast<std::uint16_t>(simctl::FaultKind::Silent);
    ASSERT_TRUE(client.send(*bus, bytesOf(silence)));
    ASSERT_TRUE(client.advanceBy(35000));
    auto fault = nextOf(client, EMI_FAULT_IND);
    ASSERT_TRUE(fault);
    EXPECT_EQ(layoutOf<EMI_FAULT_IND_S>(fault->bytes).faultType, 0);
    silence.kind = static_cast<std::uint16_t>(simctl::FaultKind::Clear);
    ASSERT_TRUE(client.send(*bus, bytesOf(silence)));
    ASSERT_TRUE(client.advanceBy(8000));
    auto cease = nextOf(client, EMI_FAULT_CEASE_IND);
    ASSERT_TRUE(cease);
    EXPECT_EQ(layoutOf<EMI_FAULT_IND_S>(cease->bytes).faultType, 0);
    EXPECT_EQ(node.stop(), 0);
}

TEST(EmiSystemTest, ABadHubPositionFaultsTheUnitAndAReplacedUnitComesBackAsAnotherOne)
{
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/static.xml"});
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "emi_client", true)) << client.lastError();
    ASSERT_TRUE(client.advanceBy(10));
    auto server = client.hunt(kServerName, 0);
    auto bus = client.hunt("A4ciServer", 0);
    ASSERT_TRUE(server && *server != 0 && bus && *bus != 0);

    // No such socket: configured all the same, with its fault after 5 s.
    ASSERT_TRUE(client.send(*server, configure(kBfu, 2, "Z9")));
    ASSERT_TRUE(nextOf(client, EMI_SET_CONFIG_CFM));
    ASSERT_TRUE(client.advanceBy(5100));
    auto faulty = nextOf(client, EMI_FAULT_IND);
    ASSERT_TRUE(faulty);
    const auto fault = layoutOf<EMI_FAULT_IND_S>(faulty->bytes);
    EXPECT_EQ(fault.faultType, 10);
    EXPECT_EQ(fault.header.objectType, kBfu);
    EXPECT_EQ(fault.header.objectId, 2u);

    // Another PSU in the place of the first: gone and found in one poll.
    ASSERT_TRUE(client.send(*server, configure(kPsu, 1, "A1")));
    ASSERT_TRUE(nextOf(client, EMI_SET_CONFIG_CFM));
    ASSERT_TRUE(client.advanceBy(6000));
    simctl::SIM_FAULT_REQ_S replace{};
    replace.sigNo = simctl::SIM_FAULT_REQ;
    replace.port = 1;
    replace.address = 48;
    replace.kind = static_cast<std::uint16_t>(simctl::FaultKind::Replace);
    replace.value = 42;
    ASSERT_TRUE(client.send(*bus, bytesOf(replace)));
    // It boots past one poll, then settles for four before it is looked at.
    ASSERT_TRUE(client.advanceBy(7000));
    auto missing = nextOf(client, EMI_FAULT_IND);
    ASSERT_TRUE(missing);
    EXPECT_EQ(layoutOf<EMI_FAULT_IND_S>(missing->bytes).faultType, 0);
    auto back = nextOf(client, EMI_FAULT_CEASE_IND);
    ASSERT_TRUE(back);
    ASSERT_TRUE(client.send(*server, emiSignal(EMI_REQ_S{}, EMI_GET_UNIT_PRODUCT_DATA_REQ, kPsu, 1)));
    ASSERT_TRUE(client.advanceBy(100));
    auto product = nextOf(client, EMI_GET_UNIT_PRODUCT_DATA_CFM);
    ASSERT_TRUE(product);
    const auto data = layoutOf<EMI_GET_UNIT_PRODUCT_DATA_CFM_S>(product->bytes);
    EXPECT_EQ(std::string(data.serialNumber, strnlen(data.serialNumber, sizeof data.serialNumber)), "SIM00000042");
    EXPECT_EQ(node.stop(), 0);
}

TEST(EmiSystemTest, MalformedAndUnknownRequestsAreRefusedOrDroppedAndTheServerGoesOn)
{
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/static.xml"});
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "emi_client", true)) << client.lastError();
    ASSERT_TRUE(client.advanceBy(10));
    auto server = client.hunt(kServerName, 0);
    ASSERT_TRUE(server && *server != 0);

    // Short: dropped. Header only: refused. Over-long: read as far as needed.
    std::string shortSignal(8, '\0');
    shortSignal[2] = 0x45;
    shortSignal[3] = 0x01;
    shortSignal[1] = 0x70;
    shortSignal[0] = 0x01;
    ASSERT_TRUE(client.send(*server, shortSignal));
    ASSERT_TRUE(client.send(*server, emiSignal(EMI_REQ_S{}, EMI_SET_CONFIG_REQ, kPsu, 3)));
    auto refused = nextOf(client, EMI_SET_CONFIG_REJ);
    ASSERT_TRUE(refused);
    EXPECT_EQ(layoutOf<EMI_REJ_S>(refused->bytes).errorCode, 0);
    std::string longSignal = configure(kPsu, 4, "A2") + std::string(4000, 'x');
    ASSERT_TRUE(client.send(*server, longSignal));
    ASSERT_TRUE(nextOf(client, EMI_SET_CONFIG_CFM));
    ASSERT_TRUE(client.advanceBy(100));

    // Never configured: errorCode 1 everywhere.
    for (std::uint32_t sigNo : {EMI_GET_RESOURCE_DATA_REQ, EMI_SUBSCRIBE_RESOURCE_DATA_REQ, EMI_GET_UNIT_PRODUCT_DATA_REQ,
                                EMI_GET_UNIT_MEASUREMENT_DATA_REQ})
        ASSERT_TRUE(client.send(*server, emiSignal(EMI_REQ_S{}, sigNo, kBfu, 9)));
    ASSERT_TRUE(client.advanceBy(100));
    for (std::uint32_t sigNo : {EMI_GET_RESOURCE_DATA_REJ, EMI_SUBSCRIBE_RESOURCE_DATA_REJ,
                                EMI_GET_UNIT_PRODUCT_DATA_REJ, EMI_GET_UNIT_MEASUREMENT_DATA_REJ}) {
        auto rej = nextOf(client, sigNo);
        ASSERT_TRUE(rej) << std::hex << sigNo;
        EXPECT_EQ(layoutOf<EMI_REJ_S>(rej->bytes).errorCode, 1);
    }
    ASSERT_TRUE(client.send(*server, emiSignal(EMI_REQ_S{}, EMI_DELETE_CONFIG_REQ, kBfu, 9)));
    EXPECT_TRUE(nextOf(client, EMI_DELETE_CONFIG_CFM));
    EXPECT_EQ(node.stop(), 0);
}

} // namespace
} // namespace systemtest
