// The unit broker and the bus monitor on the virtual clock: configuration
// by hub position, the addresses in use, the subscribers, and the scans of
// the addresses nobody configured.

#include "hwu/testSupport/HwuNodeHarness.h"

#include "cabinet/CabinetObserverIf.h"
#include "frame/FaultIds.h"
#include "frame/testSupport/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using sim::UnitType;

constexpr FuncId_t kPsu1{func_type::kPsu, 1};
constexpr FuncId_t kPsu2{func_type::kPsu, 2};
constexpr std::uint32_t kMinute = 60 * 1000;

std::vector<std::string> faultsOf(const std::vector<std::string>& faults, const std::string& id)
{
    std::vector<std::string> found;
    for (const std::string& fault : faults)
        if (fault.find(" " + id + " ") != std::string::npos) found.push_back(fault);
    return found;
}

class HwuBrokerTest : public HwuNodeHarness {
protected:
    // Configured and told that the cabinet is: monitoring starts with a scan.
    void monitorAt(std::uint32_t timeMs, bool dualBox = false)
    {
        step(timeMs, [dualBox](HWU_Broker& broker) {
            broker.setDualBoxSupported(dualBox);
            broker.setConfigured(true);
            broker.update(CabinetObserverIf::kCabinetConfigured);
        });
    }
};

TEST_F(HwuBrokerTest, AStrayUnitIsReportedAfterItsDelayAndForgottenAfterTwoSilentScans)
{
    addUnit(UnitType::PSU, 1, 50);
    addUnit(UnitType::SCU, 2, 32); // a second box's SCU, without dual box support
    monitorAt(100);
    step(10 * kMinute, [this](HWU_Broker&) { m_cabinet.removeUnit(1, 50); });
    runNode(65 * kMinute);
    EXPECT_THAT(faultsOf(m_recorder.m_faults, "14006"),
                ElementsAre("raise 14006 PSU-2 \"A2\" @2s", "cease 14006 PSU-2 @3600s"));
    // Scans at 0, 30 and 60 minutes, each over every free address once.
    EXPECT_EQ(requestsTo(49).size(), 3u);
    EXPECT_THAT(requestsTo(32, 2), IsEmpty());
}

TEST_F(HwuBrokerTest, AConfiguredAddressIsNotScannedUntilItsUnitIsDeleted)
{
    TraceCapture trace("supSysCtrlEquipment:7");
    addUnit(UnitType::PSU, 1, 48);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    monitorAt(200);
    step(10 * kMinute, [](HWU_Broker& broker) { EXPECT_TRUE(broker.deleteHwu(kPsu1)); });
    runNode(35 * kMinute);
    // The unit that is still plugged in shows up as a stray at the next scan.
    EXPECT_THAT(faultsOf(m_recorder.m_faults, "14006"), ElementsAre("raise 14006 PSU-0 \"A1\" @1802s"));
    EXPECT_THAT(m_recorder.m_broker, ElementsAre("operational PSU-1 @4s", "removed PSU-1 @600s"));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 7,
                          "deleteHwu: Release of configured HWU, giving back control to BusMonitor"),
              1u);
}

TEST_F(HwuBrokerTest, ConfiguringAStrayAddressCeasesItsMismatch)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    addUnit(UnitType::PSU, 1, 50);
    monitorAt(100);
    step(5000, [](HWU_Broker& broker) { broker.configureHwu(kPsu2, "A2", 0, 0); });
    runNode(10000);
    EXPECT_THAT(faultsOf(m_recorder.m_faults, "14006"),
                ElementsAre("raise 14006 PSU-2 \"A2\" @2s", "cease 14006 PSU-2 @5s"));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5,
                          "Previously unconfigured hardware, PSU-2 Port: 1, HDLC address: 0x32, hubpos: \"A2\" has "
                          "now been configured"),
              1u);
}

TEST_F(HwuBrokerTest, ASecondUnitOnATakenAddressIsNamedAlreadyInUseAndStaysDead)
{
    addUnit(UnitType::PSU, 1, 48);
    bool firstStillHeld = false;
    step(100, [](HWU_Broker& broker) {
        broker.configureHwu(kPsu1, "A1", 0, 0);
        broker.configureHwu(kPsu2, "A0", 0, 0); // the same socket by another name
        broker.configureHwu(FuncId_t{func_type::kPsu, 3}, "AUX A1", 0, 0);
    });
    step(8000, [&](HWU_Broker& broker) {
        EXPECT_TRUE(broker.deleteHwu(kPsu2));
        firstStillHeld = !broker.isAddressFree(HdlcAddress(48, 1));
    });
    runNode(10000);
    ASSERT_EQ(m_factory.m_made.size(), 3u);
    EXPECT_EQ(unit(0)->getHubPosition(), "A1");
    EXPECT_EQ(unit(2)->getHubPosition(), "A1");
    EXPECT_EQ(unit(2)->getPort(), 2u);
    EXPECT_TRUE(firstStillHeld);
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 21504 PSU-2 @5s", "cease 21504 PSU-2 @8s"));
    EXPECT_THAT(m_recorder.m_broker, ElementsAre("operational PSU-1 @4s", "removed PSU-2 @8s"));
}

TEST_F(HwuBrokerTest, ASecondConfigurationOfAUnitThatExistsLeavesItAsItIs)
{
    addUnit(UnitType::PSU, 1, 48);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    step(5000, [](HWU_Broker& broker) {
        EXPECT_TRUE(broker.configureHwu(kPsu1, "A1", 0, 0));
        EXPECT_EQ(broker.getPsuCount(), 1u);
    });
    runNode(12000);
    EXPECT_EQ(m_factory.m_made.size(), 1u);
    EXPECT_TRUE(m_pBroker->getHwu(kPsu1)->isAvailable() || m_pBroker->getHwu(kPsu1)->isCommunicating());
    EXPECT_THAT(m_recorder.m_faults, IsEmpty());
}

TEST_F(HwuBrokerTest, TheFirstScuAddressAndTheCascadeAreOnePlace)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    std::vector<std::string> positions;
    step(100, [&](HWU_Broker& broker) {
        broker.configureHwu(FuncId_t{func_type::kScu, 1}, "", 0, 0);
        broker.configureHwu(FuncId_t{func_type::kScu, 2}, "", 1, 0); // 96: taken with 32
        broker.configureHwu(FuncId_t{func_type::kScu, 3}, "", 2, 0); // 97: free
        broker.configureHwu(FuncId_t{func_type::kPsu, 4}, "A1", 3, 0); // no cascade for a PSU
        for (std::uint32_t inst = 1; inst <= 3; ++inst)
            positions.push_back(broker.getHwu(FuncId_t{func_type::kScu, inst})->getHubPosition());
        EXPECT_EQ(broker.getScuCount(), 3u);
        EXPECT_EQ(broker.getPsuCount(), 1u);
    });
    runNode(6000);
    EXPECT_EQ(positions, (std::vector<std::string>{"", "ALREADY_IN_USE", ""}));
    EXPECT_EQ(unit(2)->getHdlcAddress(), 97u);
    EXPECT_FALSE(unit(3)->getHdlcAddress() != HdlcAddress::kNoAddress);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5,
                          "HWU_Broker::configureHwu: Invalid funcType \"1\" supplied when cascading order is set to "
                          "\"3\" ."),
              1u);
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 21504 SCU-2 @5s", "raise 21503 PSU-4 @5s"));
}

TEST_F(HwuBrokerTest, ALateSubscriberHearsOfEveryUnitAtOnceInTheFixedOrder)
{
    HwuRecorder late;
    std::vector<bool> results;
    step(100, [&](HWU_Broker& broker) {
        broker.configureHwu(FuncId_t{func_type::kScu, 1}, "", 0, 0);
        broker.configureHwu(kPsu1, "A1", 0, 0);
        broker.configureHwu(FuncId_t{func_type::kBfu, 1}, "A1", 0, 0);
        broker.configureHwu(FuncId_t{func_type::kClu, 1}, "", 0, 0);
        EXPECT_FALSE(broker.configureHwu(FuncId_t{func_type::kFan, 1}, "A1", 0, 0));
        results = {broker.subscribeHWU(&late), broker.subscribeHWU(&late), broker.subscribeHWU(nullptr),
                   broker.unSubscribeHWU(&late), broker.unSubscribeHWU(&late), broker.unSubscribeHWU(nullptr)};
    });
    runNode(7000);
    // The refused FAN left no hub position fault behind.
    EXPECT_THAT(m_recorder.m_faults, IsEmpty());
    EXPECT_THAT(late.m_broker, ElementsAre("operational BFU-1 @0s", "operational PSU-1 @0s",
                                           "operational SCU-1 @0s", "operational CLU-1 @0s"));
    EXPECT_EQ(results, (std::vector<bool>{true, false, false, true, false, false}));
    EXPECT_EQ(m_factory.m_made.size(), 4u);
}

TEST_F(HwuBrokerTest, WithDualBoxSupportTheSecondBoxsScuIsScanned)
{
    addUnit(UnitType::SCU, 2, 32);
    monitorAt(100, true);
    runNode(5000);
    EXPECT_THAT(faultsOf(m_recorder.m_faults, "14006"), ElementsAre("raise 14006 SCU-256 \"A1\" @2s"));
}

TEST_F(HwuBrokerTest, AStrayCascadedScuKeepsTheFirstScuAddressFromBeingScanned)
{
    addUnit(UnitType::SCU, 1, 96);
    monitorAt(100);
    runNode(5000);
    EXPECT_THAT(faultsOf(m_recorder.m_faults, "14006"), ElementsAre("raise 14006 SCU-0 \"A1\" @2s"));
    EXPECT_THAT(requestsTo(32), IsEmpty());
}

TEST_F(HwuBrokerTest, AnUnconfiguredCabinetEndsItsUnitsAndItsMonitoring)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    addUnit(UnitType::PSU, 1, 50);
    step(100, [](HWU_Broker& broker) {
        broker.configureHwu(FuncId_t{func_type::kPdu, 1}, "A1", 0, 0);
        broker.configureHwu(kPsu1, "A1", 0, 0);
    });
    monitorAt(200);
    step(5000, [](HWU_Broker& broker) {
        broker.setConfigured(false);
        EXPECT_EQ(broker.getPsuCount() + broker.getPduCount(), 0u);
    });
    runNode(40 * kMinute);
    EXPECT_THAT(m_recorder.m_broker, ElementsAre("removed PDU-1 @5s", "removed PSU-1 @5s"));
    EXPECT_THAT(faultsOf(m_recorder.m_faults, "14006"),
                ElementsAre("raise 14006 PSU-2 \"A2\" @2s", "cease 14006 PSU-2 @5s"));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Ceasing mismatch alarm, PSU-2 Port: 1, HDLC address: 0x32"),
              1u);
    // No scan at 30 minutes.
    EXPECT_EQ(requestsTo(49).size(), 1u);
}

} // namespace
