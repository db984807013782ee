// The cabinet management interface from outside: the node made primary, its
// cabinet, climate and fan groups configured over CMI, its units over EMI,
// and the climate regulation then running against the default site's
// physics. Through the gateway only, on the virtual clock.

#include "adapters/CmiSignals.h"
#include "app/SscctlCommand.h"
#include "adapters/EmiSignals.h"
#include "climate/ApcClimateSignals.h"
#include "climate/CciSignals.h"
#include "ose/GatewayClient.h"
#include "sim/SimControlSignals.h"
#include "tests/system/EmiRequest.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/SignalBytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <vector>

namespace systemtest {
namespace {

using namespace cmi;

std::string cmiSignal(ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t objectId, const void* config = nullptr,
                      std::size_t size = 0)
{
    CMI_SET_CONFIG_REQ_S body{};
    body.header.sigNo = sigNo;
    body.header.clientRef = 3;
    body.header.objectId = objectId;
    body.header.objectType = objectType;
    if (config != nullptr) std::memcpy(body.config, config, size);
    const std::size_t length = sigNo == CMI_SET_CONFIG_REQ ? sizeof body : sizeof body.header;
    return std::string(reinterpret_cast<const char*>(&body), length);
}

// A primary node's equipment support function.
std::string primaryNode()
{
    CMI_EQUIPMENT_SUPPORT_FUNCTION_CONFIG_S config{};
    config.supportSystemControl = 1;
    std::strcpy(config.logicalName, "node-1");
    std::strcpy(config.productNameME, "RBS 6101");
    return cmiSignal(CMI_SET_CONFIG_REQ, kEquipmentSupportFunction, 1, &config, sizeof config);
}

// The outdoor cabinet's climate: two internal fan groups, at least 20 %.
std::string cabinet(std::uint32_t climateSystem = 0)
{
    CMI_CABINET_CONFIG_S config{};
    config.climateSystem = climateSystem;
    config.parameters[1] = 2;    // numberOfBlowers
    config.parameters[2] = 100;  // flowFactor
    config.parameters[3] = 70;   // nominalFanSpeed
    config.parameters[4] = 20;   // basicFanSpeed
    config.parameters[11] = 100; // placementFactorPSU
    config.parameters[16] = 1;   // fanGroup1Control
    config.parameters[17] = 1;   // fanGroup2Control
    config.parameters[23] = 5;   // heater1OnTemp
    config.parameters[24] = 10;  // heater1OffTemp
    config.parameters[28] = 35;  // intFanHiTemp, within the SCU's limits
    config.parameters[30] = 40;  // extFanHiUpTemp
    config.parameters[32] = 35;  // extFanHiDownTemp
    std::strcpy(config.serialNumber, "CAB00004711");
    std::strcpy(config.productName, "RBS 6101");
    return cmiSignal(CMI_SET_CONFIG_REQ, kCabinet, 0, &config, sizeof config);
}

std::string fanGroup(std::uint32_t objectId, std::uint16_t number)
{
    CMI_FAN_GROUP_CONFIG_S config{};
    config.fanGroupId = number;
    config.parentObjectId = 0;
    return cmiSignal(CMI_SET_CONFIG_REQ, kFanGroup, objectId, &config, sizeof config);
}

class CmiSystemTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_client.connect(m_node.socketPath(), "cmi_client", true)) << m_client.lastError();
        ASSERT_TRUE(m_client.advanceBy(10));
        auto cmi = m_client.hunt(kServerName, 0);
        auto emi = m_client.hunt(emi::kServerName, 0);
        auto bus = m_client.hunt("A4ciServer", 0);
        ASSERT_TRUE(cmi && *cmi != 0 && emi && *emi != 0 && bus && *bus != 0);
        m_cmi = *cmi;
        m_emi = *emi;
        m_bus = *bus;
    }
    // The answer's header, or a zero one when none came.
    CMI_HEADER_S ask(const std::string& request, std::uint32_t answer)
    {
        EXPECT_TRUE(m_client.send(m_cmi, request));
        EXPECT_TRUE(m_client.advanceBy(100));
        auto event = nextOf(m_client, answer);
        return event ? layoutOf<CMI_HEADER_S>(event->bytes) : CMI_HEADER_S{};
    }
    void configureUnits()
    {
        for (const auto& [type, id, position] : {std::tuple{emi::kScu, 1U, ""}, std::tuple{emi::kPsu, 1U, "A1"},
                                                 std::tuple{emi::kPsu, 2U, "B1"}, std::tuple{emi::kPsu, 3U, "A2"}}) {
            ASSERT_TRUE(m_client.send(m_emi, configure(type, id, position)));
            ASSERT_TRUE(m_client.advanceBy(100));
            ASSERT_TRUE(nextOf(m_client, emi::EMI_SET_CONFIG_CFM));
        }
    }
    std::int32_t scuValue(const char* name)
    {
        simctl::SIM_VALUE_REQ_S request{};
        request.sigNo = simctl::SIM_GET_VALUE_REQ;
        request.port = 1;
        request.address = 32;
        std::strncpy(request.name, name, sizeof request.name - 1);
        EXPECT_TRUE(m_client.send(m_bus, bytesOf(request)));
        auto answer = nextOf(m_client, simctl::SIM_GET_VALUE_CFM);
        return answer ? static_cast<std::int32_t>(layoutOf<simctl::SIM_VALUE_CFM_S>(answer->bytes).value) : -1;
    }

    NodeProcess m_node{{"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/default.xml"}};
    ose::GatewayClient m_client;
    ose::PROCESS m_cmi = 0;
    ose::PROCESS m_emi = 0;
    ose::PROCESS m_bus = 0;
};

TEST_F(CmiSystemTest, ANodeMadePrimaryOverCmiRegulatesItsCabinetsFans)
{
    EXPECT_EQ(ask(primaryNode(), CMI_SET_CONFIG_CFM).sigNo, CMI_SET_CONFIG_CFM);
    EXPECT_EQ(ask(cabinet(), CMI_SET_CONFIG_CFM).sigNo, CMI_SET_CONFIG_CFM);
    EXPECT_EQ(ask(fanGroup(101, 1), CMI_SET_CONFIG_CFM).sigNo, CMI_SET_CONFIG_CFM);
    EXPECT_EQ(ask(fanGroup(102, 2), CMI_SET_CONFIG_CFM).sigNo, CMI_SET_CONFIG_CFM);
    // The primary's cabinet: climate system 99, the configured identity.
    ASSERT_TRUE(m_client.send(m_cmi, cmiSignal(CMI_SUBSCRIBE_RESOURCE_DATA_REQ, kCabinet, 0)));
    ASSERT_TRUE(m_client.advanceBy(100));
    auto update = nextOf(m_client, CMI_RESOURCE_DATA_UPDATE_IND);
    ASSERT_TRUE(update);
    CMI_CABINET_RESOURCE_S resource{};
    std::memcpy(&resource, update->bytes.data() + sizeof(CMI_HEADER_S), sizeof resource);
    EXPECT_EQ(resource.climateSystem, 99u);
    EXPECT_STREQ(resource.serialNumber, "CAB00004711");

    configureUnits();
    EXPECT_EQ(scuValue("set.fanSpeed1"), 50) << "the site's own command before regulation";
    // An hour later the regulation holds the fans near their 20 % floor on
    // a morning of 17 to 20 degrees.
    ASSERT_TRUE(m_client.advanceBy(3600 * 1000));
    const std::int32_t speed = scuValue("set.fanSpeed1");
    EXPECT_GE(speed, 20);
    EXPECT_LT(speed, 50);
    EXPECT_EQ(scuValue("set.fanSpeed2"), speed);
    EXPECT_EQ(scuValue("set.scuHeater1OnTemp"), 5) << "the SCU got the cabinet's climate configuration";

    // A failed fan group comes as the fan group's fault.
    simctl::SIM_FAULT_REQ_S fail{};
    fail.sigNo = simctl::SIM_FAULT_REQ;
    fail.kind = static_cast<std::uint16_t>(simctl::FaultKind::FanFailure);
    fail.value = 1;
    ASSERT_TRUE(m_client.send(m_bus, bytesOf(fail)));
    ASSERT_TRUE(m_client.advanceBy(5000));
    auto fault = nextOf(m_client, CMI_FAULT_IND);
    ASSERT_TRUE(fault);
    const auto faulted = layoutOf<CMI_HEADER_S>(fault->bytes);
    EXPECT_EQ(faulted.objectType, kFanGroup);
    EXPECT_EQ(faulted.objectId, 101u);
    EXPECT_EQ(faulted.word14, 5) << "a fan group's hardware fault";

    // The climate report, once: 21 words, the three PSUs' hot spots.
    CMI_ACTION_REQ_S action{};
    action.sigNo = CMI_ACTION_REQ;
    action.clientRef = 3;
    action.objectType = kCabinet;
    action.actionType = kStartClimateReport;
    ASSERT_TRUE(m_client.send(m_cmi, bytesOf(action)));
    ASSERT_TRUE(m_client.advanceBy(100));
    ASSERT_TRUE(nextOf(m_client, CMI_ACTION_CFM));
    auto report = nextOf(m_client, CMI_ACTION_IND);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->bytes.size(), kReportBaseSize + 3 * kReportRowSize);
    EXPECT_EQ(m_node.stop(), 0);
}

TEST_F(CmiSystemTest, ASecondaryNodesDemandReachesThePrimarysRegulator)
{
    for (const std::string& request : {primaryNode(), cabinet(), fanGroup(101, 1), fanGroup(102, 2)})
        ASSERT_EQ(ask(request, CMI_SET_CONFIG_CFM).sigNo, CMI_SET_CONFIG_CFM);
    configureUnits();
    // A secondary node of the site, known to the primary as FuncInst 7.
    emi::EMI_SET_CONFIG_NODE_REQ_S node{};
    node.numberOfHubPositions = 1;
    std::strcpy(node.hubPositions[0], "B3");
    ASSERT_TRUE(m_client.send(m_emi, emiSignal(node, emi::EMI_SET_CONFIG_REQ, emi::kExternalNode, 7)));
    ASSERT_TRUE(m_client.advanceBy(100));
    ASSERT_TRUE(nextOf(m_client, emi::EMI_SET_CONFIG_CFM));
    ASSERT_TRUE(m_client.advanceBy(30 * 60 * 1000));
    EXPECT_LT(scuValue("set.fanSpeed1"), 40) << "a cool morning";

    const auto cfm = [this](std::int16_t demand, std::uint32_t answer) {
        apc::APC_AIRFLOW_S request{};
        request.sigNo = apc::APC_AIRFLOW_REQ;
        request.serverRef = 7;
        request.airflow = demand;
        EXPECT_TRUE(m_client.send(m_client.hunt("ssc_climate_control_server", 0).value_or(0), bytesOf(request)));
        EXPECT_TRUE(m_client.advanceBy(10));
        auto event = nextOf(m_client, answer);
        return event ? layoutOf<apc::APC_AIRFLOW_S>(event->bytes) : apc::APC_AIRFLOW_S{};
    };
    EXPECT_EQ(cfm(80, apc::APC_AIRFLOW_CFM).serverRef, 7u);
    const auto refused = cfm(401, apc::APC_AIRFLOW_REJ);
    EXPECT_EQ(refused.error, apc::kDemandOutOfRange);
    // The secondary's 80 becomes the cabinet's air flow within minutes.
    ASSERT_TRUE(m_client.advanceBy(10 * 60 * 1000));
    EXPECT_GE(scuValue("set.fanSpeed1"), 75);

    apc::APC_CLIMATE_SUBSCRIBE_S subscribe{};
    subscribe.sigNo = apc::APC_CLIMATE_SUBSCRIBE_REQ;
    subscribe.serverRef = 7;
    ASSERT_TRUE(m_client.send(m_client.hunt("ssc_climate_control_server", 0).value_or(0), bytesOf(subscribe)));
    ASSERT_TRUE(m_client.advanceBy(10));
    ASSERT_TRUE(nextOf(m_client, apc::APC_CLIMATE_SUBSCRIBE_CFM));
    auto system = nextOf(m_client, apc::APC_CLIMATE_SYSTEM_CONFIG_IND);
    ASSERT_TRUE(system);
    EXPECT_EQ(layoutOf<apc::APC_CLIMATE_SYSTEM_CONFIG_IND_S>(system->bytes).climateSystem, 0);
    EXPECT_EQ(m_node.stop(), 0);
}

TEST_F(CmiSystemTest, ASensorRegisteredOverCciAndFedHotRaisesTheFans)
{
    for (const std::string& request : {primaryNode(), cabinet(), fanGroup(101, 1), fanGroup(102, 2)})
        ASSERT_EQ(ask(request, CMI_SET_CONFIG_CFM).sigNo, CMI_SET_CONFIG_CFM);
    configureUnits();
    ASSERT_TRUE(m_client.advanceBy(10 * 60 * 1000));
    const std::int32_t before = scuValue("set.fanSpeed1");
    // A DU with one hot spot that should stay under 40 degrees, at 60.
    const auto cci = [](ose::SIGSELECT sigNo, std::vector<std::int16_t> words) {
        std::string bytes;
        for (const std::uint32_t word : {static_cast<std::uint32_t>(sigNo), 9U})
            for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(word >> shift));
        for (const std::int16_t word : words) {
            bytes.push_back(static_cast<char>(static_cast<std::uint16_t>(word) >> 8));
            bytes.push_back(static_cast<char>(word));
        }
        return bytes;
    };
    const auto server = m_client.hunt(cci::kServerName, 0);
    ASSERT_TRUE(server && *server != 0);
    ASSERT_TRUE(m_client.send(*server, cci(cci::CCI_REGISTER_TEMP_MEAS_REQ, {4, 1, 4000, -50, 600})));
    ASSERT_TRUE(m_client.advanceBy(10));
    auto registered = nextOf(m_client, cci::CCI_REGISTER_TEMP_MEAS_CFM);
    ASSERT_TRUE(registered);
    const auto group = static_cast<std::int16_t>(layoutOf<cci::CCI_REGISTER_TEMP_MEAS_CFM_S>(registered->bytes).groupId);
    for (int pass = 0; pass < 60; ++pass) {
        ASSERT_TRUE(m_client.send(*server, cci(cci::CCI_TEMP_MEAS_FWD, {group, 1, 6000})));
        ASSERT_TRUE(m_client.advanceBy(5000));
    }
    EXPECT_LT(before, 50);
    EXPECT_EQ(scuValue("set.fanSpeed1"), 100) << "20 degrees too warm: full air flow";
    EXPECT_EQ(m_node.stop(), 0);
}

TEST_F(CmiSystemTest, WrongConfigurationsAreRefusedWithTheirCodesAndShortSignalsDropped)
{
    EXPECT_EQ(ask(fanGroup(105, 5), CMI_SET_CONFIG_REJ).word14, kFanGroupIdOutOfRange);
    EXPECT_EQ(ask(fanGroup(100, 0), CMI_SET_CONFIG_REJ).word14, kFanGroupIdOutOfRange);
    EXPECT_EQ(ask(cabinet(7), CMI_SET_CONFIG_REJ).word14, kClimateSystemUnknown);
    EXPECT_EQ(ask(cmiSignal(CMI_SUBSCRIBE_RESOURCE_DATA_REQ, kCabinet, 0), CMI_SUBSCRIBE_RESOURCE_DATA_REJ).word14,
              kNotConfigured);
    EXPECT_EQ(ask(cmiSignal(CMI_SET_CONFIG_REQ, 9, 1), CMI_SET_CONFIG_REJ).word14, kUnknownObjectType);
    EXPECT_EQ(ask(cmiSignal(CMI_GET_RESOURCE_DATA_REQ, kFanGroup, 105), CMI_GET_RESOURCE_DATA_REJ).word14, kNoLedRow);
    // A configuration shorter than its layout, and a header cut short: no answer.
    ASSERT_TRUE(m_client.send(m_cmi, cmiSignal(CMI_SET_CONFIG_REQ, kCabinet, 0).substr(0, 100)));
    ASSERT_TRUE(m_client.send(m_cmi, cmiSignal(CMI_DELETE_CONFIG_REQ, kCabinet, 0).substr(0, 10)));
    // The server goes on: a fan group configured twice is confirmed twice.
    EXPECT_EQ(ask(fanGroup(101, 1), CMI_SET_CONFIG_CFM).sigNo, CMI_SET_CONFIG_CFM);
    EXPECT_EQ(ask(fanGroup(101, 1), CMI_SET_CONFIG_CFM).sigNo, CMI_SET_CONFIG_CFM);
    EXPECT_EQ(ask(cmiSignal(CMI_GET_RESOURCE_DATA_REQ, kFanGroup, 101), CMI_GET_RESOURCE_DATA_CFM).sigNo,
              CMI_GET_RESOURCE_DATA_CFM);
    EXPECT_EQ(m_node.stop(), 0);
}

TEST(CmiSscctlTest, SscctlConfiguresTheNodeTheCabinetAndItsFanGroupsInOneConversation)
{
    NodeProcess node({"--clock", "virtual", "--site", SSC_SOURCE_DIR "/sim/sites/default.xml"});
    app::SscctlCommand command;
    std::string error;
    // A secondary node: as a primary it would start the bus monitor on the
    // site's units that nobody configured here.
    ASSERT_TRUE(app::parseSscctl({"--socket", node.socketPath(), "cmi", "secondary", "cabinet", "0", "fan-group", "101", "1",
                                  "0", "fan-group", "105", "5", "0", "subscribe", "cabinet", "0", "status", "fan-group",
                                  "101", "report", "0"},
                                 command, error))
        << error;
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(app::runSscctl(command, out, err), app::kDone) << err.str();
    const std::string text = out.str();
    for (const char* line : {"node: configured\n", "cabinet 0: configured\n", "fan group 101: configured\n",
                             "fan group 105: refused, error 1\n", "cabinet 0: subscribed\n",
                             "cabinet 0: climate system 0, identifier \"\", serial \"\", smoke detector 0\n",
                             "fan group 101: LED NotAvailable\n"})
        EXPECT_NE(text.find(line), std::string::npos) << line << "in\n" << text;
    EXPECT_NE(text.find("climate report: internal fans "), std::string::npos) << text;
    EXPECT_EQ(node.stop(), 0);
}

} // namespace
} // namespace systemtest
