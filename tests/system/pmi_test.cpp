// The power management interface from outside: the battery backup, power
// distribution and power supply configured over PMI on a primary node whose
// units come over EMI, their state read and subscribed, a mains loss at the
// simulated bus reaching the client as the power objects' faults, and bad
// requests dropped or refused while the server goes on. Through the gateway
// only, on the virtual clock.

#include "adapters/CmiSignals.h"
#include "adapters/EmiSignals.h"
#include "adapters/PmiSignals.h"
#include "app/CmiText.h"
#include "app/PmiText.h"
#include "app/SscctlCommand.h"
#include "ose/GatewayClient.h"
#include "sim/SimControlSignals.h"
#include "tests/system/EmiRequest.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/SignalBytes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <sstream>
#include <vector>

namespace systemtest {
namespace {

using namespace pmi;

constexpr std::uint32_t kRef = 9;

std::string configOf(std::uint16_t objectType)
{
    std::string bytes;
    std::string error;
    const bool made = objectType == kPowerSupply        ? pmi_text::supplyConfig({}, kRef, bytes, error)
                      : objectType == kPowerDistribution ? pmi_text::distributionConfig({}, kRef, bytes, error)
                                                         : pmi_text::batteryConfig({}, kRef, bytes, error);
    EXPECT_TRUE(made) << error;
    return bytes;
}

std::int32_t wordAt(const ose::GatewayEvent& event, std::size_t offset)
{
    return static_cast<std::int32_t>(ose::loadBe32(event.bytes.data() + offset));
}

class PmiSystemTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_client.connect(m_node.socketPath(), "pmi_client", true)) << m_client.lastError();
        ASSERT_TRUE(m_client.advanceBy(10));
        auto pmi = m_client.hunt(kServerName, 0);
        auto cmi = m_client.hunt(cmi::kServerName, 0);
        auto emi = m_client.hunt(emi::kServerName, 0);
        auto bus = m_client.hunt("A4ciServer", 0);
        ASSERT_TRUE(pmi && *pmi != 0 && cmi && *cmi != 0 && emi && *emi != 0 && bus && *bus != 0);
        m_pmi = *pmi;
        m_cmi = *cmi;
        m_emi = *emi;
        m_bus = *bus;
    }
    // The first PMI signal after the request, whatever it is: nothing may
    // come before the expected answer.
    ose::GatewayEvent ask(const std::string& request)
    {
        EXPECT_TRUE(m_client.send(m_pmi, request));
        EXPECT_TRUE(m_client.advanceBy(100));
        while (auto event = m_client.next(std::chrono::seconds(10)))
            if (event->kind == ose::GatewayEvent::Kind::Signal && (event->sigNo() >> 8) == (PMI_SET_CONFIG_REQ >> 8))
                return *event;
        ADD_FAILURE() << "no PMI answer";
        return {};
    }
    PMI_HEADER_S askHeader(const std::string& request) { return layoutOf<PMI_HEADER_S>(ask(request).bytes); }
    // Every PMI signal within `ms` of world time.
    std::vector<ose::GatewayEvent> during(std::uint64_t ms)
    {
        EXPECT_TRUE(m_client.advanceBy(ms));
        std::vector<ose::GatewayEvent> events;
        while (auto event = m_client.next(std::chrono::milliseconds(200)))
            if (event->kind == ose::GatewayEvent::Kind::Signal && (event->sigNo() >> 8) == (PMI_SET_CONFIG_REQ >> 8))
                events.push_back(*event);
        return events;
    }
    void makePrimaryWithUnits()
    {
        const cmi::CMI_CABINET_CONFIG_S cabinet = cmi_text::outdoorCabinet();
        for (const std::string& request : {cmi_text::nodeConfig(true, "node-1"),
                                           cmi_text::request(cmi::CMI_SET_CONFIG_REQ, cmi::kCabinet, 0, 3, &cabinet,
                                                             sizeof cabinet)}) {
            ASSERT_TRUE(m_client.send(m_cmi, request));
            ASSERT_TRUE(m_client.advanceBy(100));
            ASSERT_TRUE(nextOf(m_client, cmi::CMI_SET_CONFIG_CFM));
        }
        for (const auto& [type, id, position] : {std::tuple{emi::kPsu, 1U, "A1"}, std::tuple{emi::kPsu, 2U, "B1"},
                                                 std::tuple{emi::kBfu, 1U, "A1"}}) {
            ASSERT_TRUE(m_client.send(m_emi, configure(type, id, position)));
            ASSERT_TRUE(m_client.advanceBy(100));
            ASSERT_TRUE(nextOf(m_client, emi::EMI_SET_CONFIG_CFM));
        }
    }
    void plant(simctl::FaultKind kind)
    {
        simctl::SIM_FAULT_REQ_S request{};
        request.sigNo = simctl::SIM_FAULT_REQ;
        request.kind = static_cast<std::uint16_t>(kind);
        ASSERT_TRUE(m_client.send(m_bus, bytesOf(request)));
        ASSERT_TRUE(nextOf(m_client, simctl::SIM_FAULT_CFM));
    }

    NodeProcess m_node{{"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/default.xml"}};
    ose::GatewayClient m_client;
    ose::PROCESS m_pmi = 0;
    ose::PROCESS m_cmi = 0;
    ose::PROCESS m_emi = 0;
    ose::PROCESS m_bus = 0;
};

// The faults that arrived, as "objectType/faultType" and "... ceased".
std::vector<std::string> faultsOf(const std::vector<ose::GatewayEvent>& events)
{
    std::vector<std::string> faults;
    for (const ose::GatewayEvent& event : events) {
        if (event.sigNo() != PMI_FAULT_IND && event.sigNo() != PMI_FAULT_CEASE_IND) continue;
        const auto header = layoutOf<PMI_HEADER_S>(event.bytes);
        faults.push_back(std::to_string(header.objectType) + "/" + std::to_string(header.word14) +
                         (event.sigNo() == PMI_FAULT_CEASE_IND ? " ceased" : ""));
    }
    return faults;
}

TEST_F(PmiSystemTest, ConfiguredPowerObjectsReportTheirStateAndAMainsLossAsTheirFaults)
{
    for (std::uint16_t objectType : {kBatteryBackup, kPowerDistribution, kPowerSupply}) {
        const auto refused = askHeader(pmi_text::request(PMI_SUBSCRIBE_RESOURCE_DATA_REQ, objectType, kRef));
        EXPECT_EQ(refused.sigNo, PMI_SUBSCRIBE_RESOURCE_DATA_REJ);
        EXPECT_EQ(refused.word14, kNotConfigured);
        EXPECT_EQ(refused.clientRef, kRef);
        EXPECT_EQ(askHeader(pmi_text::request(PMI_GET_RESOURCE_DATA_REQ, objectType, kRef)).word14, kNotConfigured);
    }
    makePrimaryWithUnits();
    for (std::uint16_t objectType : {kPowerSupply, kPowerDistribution, kBatteryBackup})
        EXPECT_EQ(askHeader(configOf(objectType)).sigNo, PMI_SET_CONFIG_CFM) << objectType;

    const auto subscribed = ask(pmi_text::request(PMI_SUBSCRIBE_RESOURCE_DATA_REQ, kPowerSupply, kRef));
    EXPECT_EQ(subscribed.sigNo(), PMI_SUBSCRIBE_RESOURCE_DATA_CFM);
    auto first = nextOf(m_client, PMI_RESOURCE_DATA_UPDATE_IND);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->bytes.size(), 48u);
    // The regulation reads the bus every 6 s and each reading comes as an update.
    const auto settled = during(20'000);
    ASSERT_FALSE(settled.empty());
    EXPECT_EQ(settled.back().sigNo(), PMI_RESOURCE_DATA_UPDATE_IND);
    EXPECT_NEAR(wordAt(settled.back(), 16), -545, 5) << "tenths of a volt";
    EXPECT_TRUE(faultsOf(settled).empty());

    const auto battery = ask(pmi_text::request(PMI_GET_RESOURCE_DATA_REQ, kBatteryBackup, kRef));
    ASSERT_EQ(battery.sigNo(), PMI_GET_RESOURCE_DATA_CFM);
    EXPECT_GE(wordAt(battery, 16), 0) << "a floating battery";
    EXPECT_NEAR(wordAt(battery, 24), -545, 15);

    plant(simctl::FaultKind::MainsLoss);
    const auto lost = faultsOf(during(60'000));
    EXPECT_NE(std::find(lost.begin(), lost.end(), "2/10"), lost.end()) << "no PSU usable: " << ::testing::PrintToString(lost);
    EXPECT_NE(std::find(lost.begin(), lost.end(), "0/5"), lost.end()) << "running on batteries";
    const auto discharging = ask(pmi_text::request(PMI_GET_RESOURCE_DATA_REQ, kBatteryBackup, kRef));
    EXPECT_LT(wordAt(discharging, 16), -10) << "the battery carries the load";

    plant(simctl::FaultKind::MainsReturn);
    const auto back = faultsOf(during(60'000));
    EXPECT_NE(std::find(back.begin(), back.end(), "2/10 ceased"), back.end()) << ::testing::PrintToString(back);
    EXPECT_NE(std::find(back.begin(), back.end(), "0/5 ceased"), back.end());
    EXPECT_EQ(m_node.stop(), 0);
}

TEST_F(PmiSystemTest, BadRequestsAreDroppedUnconfiguredOnesRefusedAndTheServerGoesOn)
{
    std::string header = pmi_text::request(PMI_SUBSCRIBE_RESOURCE_DATA_REQ, kPowerSupply, kRef);
    ASSERT_TRUE(m_client.send(m_pmi, header.substr(0, 10)));
    ASSERT_TRUE(m_client.send(m_pmi, configOf(kBatteryBackup).substr(0, 100)));
    ASSERT_TRUE(m_client.send(m_pmi, configOf(kPowerSupply).substr(0, 30)));
    ASSERT_TRUE(m_client.send(m_pmi, pmi_text::request(PMI_SET_CONFIG_REQ, 4, kRef, 0, std::string(216, '\0').data(), 216)));
    ASSERT_TRUE(m_client.send(m_pmi, pmi_text::request(PMI_ACTION_REQ, kBatteryBackup, kRef, kStopEqualizeCharging)));
    // The first answer is to the first good request.
    EXPECT_EQ(askHeader(pmi_text::request(PMI_DELETE_CONFIG_REQ, kPowerSupply, kRef)).sigNo, PMI_DELETE_CONFIG_CFM);

    // A configuration longer than its record is taken.
    EXPECT_EQ(askHeader(configOf(kPowerSupply) + std::string(4000, 'x')).sigNo, PMI_SET_CONFIG_CFM);
    EXPECT_EQ(askHeader(pmi_text::request(PMI_GET_RESOURCE_DATA_REQ, kPowerSupply, kRef)).sigNo, PMI_GET_RESOURCE_DATA_CFM);
    // Not this node's primary: no battery test can be had, and none runs.
    const auto status = ask(pmi_text::request(PMI_ACTION_REQ, kBatteryBackup, kRef, kReadBatteryTestStatus,
                                              std::string(4, '\0').data(), 4));
    EXPECT_EQ(status.sigNo(), PMI_ACTION_REJ);
    EXPECT_EQ(layoutOf<PMI_ACTION_REJ_S>(status.bytes).errorCode, kActionErrorTestNotRunning);
    EXPECT_EQ(m_node.stop(), 0);
}

TEST(PmiSscctlTest, SscctlConfiguresReadsAndActsOnThePowerObjectsInOneConversation)
{
    NodeProcess node({"--clock", "virtual", "--site", SSC_SOURCE_DIR "/sim/sites/default.xml"});
    app::SscctlCommand command;
    std::string error;
    ASSERT_TRUE(app::parseSscctl({"--socket", node.socketPath(), "pmi", "subscribe", "supply", "supply", "nominal=-53.5",
                                  "under=-44", "subscribe", "supply", "distribution", "main=-43.2", "battery",
                                  "charging=-54.0", "status", "battery", "status", "distribution", "test-status",
                                  "start-test", "delete", "supply", "status", "supply"},
                                 command, error))
        << error;
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(app::runSscctl(command, out, err), app::kDone) << err.str();
    const std::string text = out.str();
    for (const char* line :
         {"power supply: not configured by this client, error 1\n", "power supply: configured\n",
          "power supply: subscribed\n", "power supply: system voltage not measured\n",
          "power distribution: configured\n", "battery backup: configured\n",
          "battery backup: current not measured, temperature not measured, voltage not measured, reference capacity "
          "not measured, next test \"\", test running no\n",
          "power distribution: no values\n", "test status: refused, error 10\n", "start test: done\n",
          "battery test started, initiation 4\n", "power supply: deleted\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "in\n" << text;
    EXPECT_EQ(text.rfind("power supply: not configured by this client, error 1\n"),
              text.size() - std::strlen("power supply: not configured by this client, error 1\n"))
        << "deleted, the supply is unknown again:\n" << text;

    app::SscctlCommand wrong;
    EXPECT_FALSE(app::parseSscctl({"--socket", node.socketPath(), "pmi", "supply", "nominal=high"}, wrong, error));
    EXPECT_NE(error.find("nominal"), std::string::npos) << error;
    EXPECT_EQ(node.stop(), 0);
}

} // namespace
} // namespace systemtest
