// The unit base on the virtual clock, through the real PP handler and the
// simulated bus: what goes out on the bus in one poll and in what order, and
// what the broker, the equipment manager and the faults register hear.

#include "hwu/testSupport/HwuNodeHarness.h"

#include "frame/FaultIds.h"
#include "frame/testSupport/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using ::testing::ElementsAre;
using sim::UnitType;

constexpr FuncId_t kPsu1{func_type::kPsu, 1};
constexpr std::uint8_t kA1 = 48;

std::vector<std::string> only(const std::vector<std::string>& requests, const std::string& message)
{
    std::vector<std::string> found;
    for (const std::string& request : requests)
        if (request.rfind(message + " @", 0) == 0) found.push_back(request);
    return found;
}

using HwuUnitTest = HwuNodeHarness;

TEST_F(HwuUnitTest, AUnitAnsweringFromTheStartIsFoundAtItsFifthPollAfterItsStartSequence)
{
    addUnit(UnitType::PSU, 1, kA1);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    runNode(6000);
    // Four status polls only counted, then on the fifth: the start flag
    // cleared, product data, capabilities, operational LED on and fault LED
    // off, the measurements; then each second status and measurements.
    EXPECT_THAT(requestsTo(kA1), ElementsAre("76 @0s", "76 @1s", "76 @2s", "76 @3s", "76 @4s", "4 @4s",
                                             "8 @4s", "64 @4s", "12 @4s", "12 @4s", "72 @4s", "76 @5s",
                                             "72 @5s"));
    EXPECT_EQ(m_cabinet.unit(1, kA1)->lastIndication(), 48);
    EXPECT_THAT(m_recorder.m_broker, ElementsAre("operational PSU-1 @4s"));
    EXPECT_THAT(m_recorder.m_status,
                ElementsAre("PSU-1 avail 0 comm 1 op 1 fault 1 @0s", "PSU-1 avail 1 comm 1 op 3 fault 2 @4s"));
    TestUnit* psu = unit(0);
    ASSERT_NE(psu, nullptr);
    EXPECT_TRUE(psu->isAvailable());
    EXPECT_EQ(psu->m_capabilityReads, 1u);
    // The first status reports its clear fault flag as a change.
    EXPECT_THAT(psu->m_faultReports, ElementsAre(false));
    EXPECT_FALSE(m_cabinet.unit(1, kA1)->startFlag());
}

TEST_F(HwuUnitTest, ASilentUnitIsResetEveryTenthMissAndReportedMissingOnceAtTheThirtieth)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, kA1);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    // Four answers, then silence: it never gets past counting.
    step(3500, [&psu](HWU_Broker&) { psu.faults().silent.arm(0); });
    runNode(45000);
    const std::vector<std::string> requests = requestsTo(kA1);
    EXPECT_TRUE(only(requests, "8").empty());
    EXPECT_TRUE(only(requests, "64").empty());
    EXPECT_THAT(only(requests, "3"), ElementsAre("3 @13s", "3 @23s", "3 @33s", "3 @43s"));
    EXPECT_THAT(m_recorder.m_broker, ElementsAre("removed PSU-1 @33s"));
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 21502 PSU-1 @33s"));
    EXPECT_THAT(m_recorder.m_status,
                ElementsAre("PSU-1 avail 0 comm 1 op 1 fault 1 @0s", "PSU-1 avail 0 comm 0 op 1 fault 1 @4s"));
}

TEST_F(HwuUnitTest, AMissingUnitThatAnswersAgainSettlesAndIsFoundAgain)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, kA1);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    step(10000, [&psu](HWU_Broker&) { psu.faults().silent.arm(0); });
    step(45500, [&psu](HWU_Broker&) { psu.faults().clear(); });
    runNode(52000);
    // Missing at the thirtieth miss (10100 .. 39100); the reset at 39100 left
    // the unit with its start flag, so the fifth answer runs the start
    // sequence and finds it again.
    EXPECT_THAT(m_recorder.m_broker,
                ElementsAre("operational PSU-1 @4s", "removed PSU-1 @39s", "operational PSU-1 @49s"));
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 21502 PSU-1 @39s", "cease 21502 PSU-1 @49s"));
    EXPECT_THAT(only(requestsTo(kA1), "8"), ElementsAre("8 @4s", "8 @49s"));
}

TEST_F(HwuUnitTest, ARestartIsToldAsSuchButANewSerialNumberIsAnotherUnit)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, kA1);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    step(10500, [this, &psu](HWU_Broker&) { psu.restart(ose::get_time_ms()); });
    step(20500, [this, &psu](HWU_Broker&) { psu.replace("NEW0001", ose::get_time_ms()); });
    runNode(22000);
    EXPECT_THAT(m_recorder.m_broker,
                ElementsAre("operational PSU-1 @4s",
                            // the restart: the equipment manager first, then
                            // the observers in their fixed order
                            "restartDone PSU-1 @11s", "removed PSU-1 @11s", "operational PSU-1 @11s",
                            "restarted PSU-1 @11s",
                            // the replacement: gone and found in one pass
                            "removed PSU-1 @21s", "operational PSU-1 @21s"));
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 21502 PSU-1 @21s", "cease 21502 PSU-1 @21s"));
    EXPECT_STREQ(unit(0)->serialNumber(), "NEW0001");
}

TEST_F(HwuUnitTest, AResetLeavesBothLedsUnknownWithoutAMessageAndTheNextStatusReportsEveryFlag)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, kA1);
    std::vector<std::uint32_t> ledsAfterReset;
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    step(5500, [&](HWU_Broker& broker) {
        broker.getHwu(kPsu1)->reset();
        ledsAfterReset = {unit(0)->getOperationalLedState(), unit(0)->getFaultLedState()};
    });
    runNode(8000);
    EXPECT_EQ(ledsAfterReset, (std::vector<std::uint32_t>{Led::kNotAvailable, Led::kNotAvailable}));
    const std::vector<std::string> requests = requestsTo(kA1);
    // The reset goes out alone; the LEDs are lit again only by the start
    // sequence after the unit came back with its start flag.
    EXPECT_THAT(only(requests, "3"), ElementsAre("3 @5s"));
    EXPECT_THAT(only(requests, "12"), ElementsAre("12 @4s", "12 @4s", "12 @6s", "12 @6s"));
    EXPECT_THAT(unit(0)->m_faultReports, ElementsAre(false, false));
    EXPECT_THAT(m_recorder.m_broker, ElementsAre("operational PSU-1 @4s", "restartDone PSU-1 @6s",
                                                 "removed PSU-1 @6s", "operational PSU-1 @6s",
                                                 "restarted PSU-1 @6s"));
    EXPECT_EQ(psu.lastIndication(), 48);
}

TEST_F(HwuUnitTest, AUnitThatRefusesItsProductDataStaysSettlingAndTriesAgainEachPoll)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, kA1);
    psu.faults().noProductData.arm(3, 1);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    runNode(9000);
    EXPECT_THAT(only(requestsTo(kA1), "8"), ElementsAre("8 @4s", "8 @5s", "8 @6s", "8 @7s"));
    // The start flag was cleared on the first try and is not asked again.
    EXPECT_THAT(only(requestsTo(kA1), "4"), ElementsAre("4 @4s"));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Failed to get product data for PSU-1!"), 3u);
    EXPECT_THAT(m_recorder.m_broker, ElementsAre("operational PSU-1 @7s"));
}

TEST_F(HwuUnitTest, AFaultFlagLightsTheFaultLedAndRaisesTheUnitsFault)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, kA1);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    step(6500, [&psu](HWU_Broker&) { psu.set("fault", 1); });
    step(8500, [&psu](HWU_Broker&) { psu.set("fault", 0); });
    runNode(10000);
    EXPECT_THAT(unit(0)->m_faultReports, ElementsAre(false, true, false));
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 21501 PSU-1 @7s", "cease 21501 PSU-1 @9s"));
    EXPECT_THAT(m_recorder.m_status,
                ElementsAre("PSU-1 avail 0 comm 1 op 1 fault 1 @0s", "PSU-1 avail 1 comm 1 op 3 fault 2 @4s",
                            "PSU-1 avail 0 comm 1 op 3 fault 3 @7s", "PSU-1 avail 1 comm 1 op 3 fault 2 @9s"));
}

TEST_F(HwuUnitTest, LedRulesRefuseWhatALedCannotShow)
{
    TraceCapture trace("supSysCtrlEquipment:7");
    addUnit(UnitType::PSU, 1, kA1);
    std::vector<std::uint32_t> states;
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    step(5500, [&](HWU_Broker&) {
        TestUnit& psu = *unit(0);
        psu.setLed(Led::kOperational, Led::kOff);  // no off for the operational LED
        psu.setLed(Led::kFault, Led::kSlowBlink);  // no blinking for the fault LED
        psu.setLed(Led::kOperational, Led::kSlowBlink);
        psu.setLed(7, Led::kOff);
        states = {psu.getOperationalLedState(), psu.getFaultLedState(), psu.getLedState(9)};
    });
    runNode(6000);
    EXPECT_EQ(states, (std::vector<std::uint32_t>{Led::kSlowBlink, Led::kOff, Led::kNotAvailable}));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Unsupported LED state 2 for LED type 1"), 1u);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Unsupported LED state 4 for LED type 0"), 1u);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Unsupported LED type 7"), 1u);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Unknown led type received"), 1u);
    EXPECT_THAT(only(requestsTo(kA1), "12"), ElementsAre("12 @4s", "12 @4s", "12 @5s"));
    Led fault(Led::kFault);
    fault.setLedState(Led::kSlowBlink);
    EXPECT_EQ(fault.getLedState(), Led::kNotAvailable);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 7,
                          "Led::setLedState: Trying to set Fault LED to LedState Flash. No action taken."),
              1u);
    EXPECT_STREQ(Led::text(Led::kSlowBlink), "LedState_SlowBlink");
    EXPECT_STREQ(Led::text(5), "LedState without readable string");
}

TEST_F(HwuUnitTest, ProductDataOutsideTheirCharacterClassesAreReplacedByDefaults)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, kA1);
    psu.product() = {"ROA 128 1234/1", "R1a", "psu name", "2026-11", "A1B2C3   "};
    HwuProductRecord asked{};
    bool answered = false;
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "A1", 0, 0); });
    step(5500, [&](HWU_Broker& broker) {
        m_cabinet.unit(1, kA1)->product().serialNumber = "X_1";
        answered = broker.getHwu(kPsu1)->getProductData(&asked);
    });
    runNode(6000);
    TestUnit& unit0 = *unit(0);
    EXPECT_STREQ(unit0.productNumber(), "ROA 128 1234/1");
    EXPECT_STREQ(unit0.revState(), "PSU"); // lower case is not of its class
    EXPECT_STREQ(unit0.productName(), "PSU");
    EXPECT_STREQ(unit0.productionDate(), "2026-11");
    EXPECT_STREQ(unit0.serialNumber(), "A1B2C3"); // trailing blanks dropped
    // Once at the start sequence, once when asked for.
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Product name invalid: psu name. Using default for PSU-1"), 2u);
    // Asked for on demand: checked the same way, and the unit's own data
    // stay as they were.
    EXPECT_TRUE(answered);
    EXPECT_STREQ(asked.serialNumber.data(), "PSU1");
    EXPECT_STREQ(asked.productNumber.data(), "ROA 128 1234/1");
    EXPECT_STREQ(unit0.serialNumber(), "A1B2C3");
}

TEST_F(HwuUnitTest, AHubPositionWithoutAnAddressNeverPolls)
{
    addUnit(UnitType::PSU, 1, kA1);
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kPsu1, "Q9", 0, 0); });
    runNode(40000);
    EXPECT_TRUE(requestsTo(kA1).empty());
    EXPECT_FALSE(unit(0)->isAvailable());
    EXPECT_TRUE(m_recorder.m_broker.empty());
    // The configuration fault comes after its delay and is the only one.
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 21503 PSU-1 @5s"));
}

} // namespace
