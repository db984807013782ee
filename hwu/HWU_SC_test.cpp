// The SCU on the virtual clock through the simulated bus: what it reports to
// the climate, cabinet and alarm sides, the door and smoke detector faults,
// the fan group LEDs, the cabinet's product data, and its places in a dual
// box and a cascade.

#include "hwu/HwuUnitFactory.h"
#include "hwu/Scu.h"
#include "hwu/testSupport/UnitSideRecorder.h"
#include "sim/SimScu.h"

#include "frame/FaultIds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using sim::UnitType;

constexpr FuncId_t kScu1{func_type::kScu, 1};
constexpr std::uint32_t kCabinet = 1;

std::vector<std::string> callsStarting(const std::vector<std::string>& calls, const std::string& prefix)
{
    std::vector<std::string> found;
    for (const std::string& call : calls)
        if (call.rfind(prefix, 0) == 0) found.push_back(call);
    return found;
}

class HwuScuTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
    }
    sim::SimUnit& plugIn(std::uint16_t port = 1, std::uint8_t address = 32)
    {
        return addUnit(UnitType::SCU, port, address);
    }
    void configure(const std::string& position = "", std::uint32_t cascade = 0)
    {
        step(100, [position, cascade](HWU_Broker& broker) { broker.configureHwu(kScu1, position, cascade, kCabinet); });
    }
    ScuIf& scu() { return *dynamic_cast<ScuIf*>(m_pBroker->getHwu(kScu1)); }
    HWU_SC& unitOf() { return dynamic_cast<Scu&>(scu()).unit(); }

    UnitSideRecorder m_sides;
    HwuUnitFactory m_units{{&m_sides, &m_sides, &m_sides, &m_sides, &m_sides}};
};

TEST_F(HwuScuTest, AFoundScuReportsItsSensorPortsIdentifierAndFanGroups)
{
    plugIn();
    configure();
    runNode(6000);
    const auto& calls = m_sides.m_calls;
    EXPECT_THAT(callsStarting(calls, "addSensor"), ElementsAre("addSensor 5 -1 -1 -1 -> 7 @4s"));
    // Three inputs belong to the smoke detector.
    EXPECT_THAT(callsStarting(calls, "available"), ElementsAre("available SCU-1 248 0 @4s"));
    EXPECT_THAT(callsStarting(calls, "identifier"), ElementsAre("identifier 1 KDU 137 000/1_SIM00000001 @4s"));
    EXPECT_THAT(callsStarting(calls, "led"), Contains("led 1 1 2 5 @4s"));
    EXPECT_THAT(requestsTo(32), Contains("144 @4s"));
    EXPECT_THAT(requestsTo(32), Contains("153 @5s"));
    EXPECT_EQ(m_sides.m_lastTemperature, 25);
    EXPECT_EQ(scu().getTemperature(), 25);
    EXPECT_TRUE(scu().isAvailable());
    EXPECT_TRUE(scu().isOnPort1());
    EXPECT_EQ(scu().getCabinetFuncInst(), kCabinet);
}

TEST_F(HwuScuTest, ADoorOpenedTwiceHoldsItsAlarmUntilTheNextMinuteAndAFourthOpeningKeepsTheLevelAtThree)
{
    sim::SimUnit& unit = plugIn();
    configure();
    std::vector<std::int32_t> levels;
    for (std::uint32_t at : {5500U, 6500U, 7500U, 8500U}) // open, close, open, close
        step(at, [&unit, at](HWU_Broker&) { unit.set("doorSwitchOpen", at == 5500U || at == 7500U ? 1 : 0); });
    step(9500, [&](HWU_Broker&) { levels.push_back(unitOf().getDoorAlarmLevel()); });
    step(70000, [&](HWU_Broker&) { levels.push_back(unitOf().getDoorAlarmLevel()); });
    for (std::uint32_t at : {80500U, 81500U, 82500U, 83500U, 84500U, 85500U, 86500U, 87500U})
        step(at, [&unit, at](HWU_Broker&) { unit.set("doorSwitchOpen", (at / 1000) % 2 == 0 ? 1 : 0); });
    step(88000, [&](HWU_Broker&) { levels.push_back(unitOf().getDoorAlarmLevel()); });
    runNode(89000);
    EXPECT_EQ(levels, (std::vector<std::int32_t>{2, 1, 3}));
    const std::vector<std::string> door = callsStarting(m_recorder.m_faults, "raise 14002");
    ASSERT_FALSE(door.empty());
    EXPECT_EQ(door.front(), "raise 14002 Cabinet-1 @6s");
    // Closed at 7 s with level 1: ceased; closed at 9 s with level 2: held
    // until the timer, a minute after the first opening, brings it to 1.
    EXPECT_THAT(callsStarting(m_recorder.m_faults, "cease 14002"),
                ::testing::IsSupersetOf({"cease 14002 Cabinet-1 @7s", "cease 14002 Cabinet-1 @66s"}));
    EXPECT_THAT(callsStarting(m_recorder.m_faults, "cease 14002"), Not(Contains("cease 14002 Cabinet-1 @9s")));
}

TEST_F(HwuScuTest, AConfiguredSmokeDetectorThatIsNotConnectedRaisesItsFaultAndHidesItsAlarms)
{
    sim::SimUnit& unit = plugIn();
    m_sides.m_smokeConfigured = true;
    configure();
    step(5500, [&unit](HWU_Broker&) { unit.set("smokeDetectorConnected", 0); });
    step(7500, [&unit](HWU_Broker&) {
        unit.set("smokeDetectorConnected", 1);
        unit.set("smokeDetectorAlarm", 1);
    });
    runNode(9000);
    EXPECT_THAT(callsStarting(m_recorder.m_faults, "raise 1400"),
                ElementsAre("raise 14003 Cabinet-1 @6s", "raise 14004 Cabinet-1 @8s"));
    EXPECT_THAT(callsStarting(m_sides.m_calls, "smoke"), ElementsAre("smoke 1 @4s", "smoke 1 @6s", "smoke 1 @8s"));
    EXPECT_THAT(m_recorder.m_faults, Contains("cease 14003 Cabinet-1 @8s"));
}

TEST_F(HwuScuTest, AGeneralHwErrorTakesTheTemperatureButNotTheAlarmInputs)
{
    sim::SimUnit& unit = plugIn();
    configure();
    step(5500, [&unit](HWU_Broker&) {
        unit.set("generalHwError", 1);
        unit.set("externalInputAlarm", 0x10);
    });
    runNode(7000);
    EXPECT_FALSE(scu().isAvailable());
    EXPECT_EQ(scu().getTemperature(), static_cast<std::int8_t>(999));
    EXPECT_THAT(callsStarting(m_sides.m_calls, "ports"), Contains("ports SCU-1 16 0 @6s"));
    EXPECT_THAT(m_recorder.m_faults, Contains("raise 21501 SCU-1 @6s"));
}

TEST_F(HwuScuTest, AMissingFanBlinksItsGroupAndAFailedGroupIsSteadyOnTheUnitAndInTheClimateByte)
{
    sim::SimUnit& unit = plugIn();
    configure();
    step(5500, [&unit](HWU_Broker&) {
        unit.set("fansConnected", 0xFFFE); // fan 1 of group 1 gone
        unit.set("fanGroupFailure", 0x04); // group 3 failed
    });
    runNode(7000);
    EXPECT_EQ(unitOf().getFanGroupLed(1), Led::kSlowBlink);
    EXPECT_EQ(unitOf().getFanGroupLed(3), Led::kSteadyOn);
    // Group 1 is not configured in the cabinet: its LED stays off.
    EXPECT_EQ(*unit.get("set.faultLed1"), 1);
    EXPECT_EQ(*unit.get("set.faultLed3"), 2);
    // The climate side has group 1 in the top bit.
    EXPECT_THAT(callsStarting(m_sides.m_calls, "connected"), Contains("connected 1 112 5 @6s"));
    EXPECT_THAT(callsStarting(m_sides.m_calls, "failure"), Contains("failure 1 32 5 @6s"));
}

TEST_F(HwuScuTest, ASecondaryScuReadsNoTemperatureAndDrivesOnlyItsOwnFanGroup)
{
    sim::SimUnit& unit = plugIn(2, 32);
    step(50, [](HWU_Broker& broker) { broker.setDualBoxSupported(true); });
    configure("AUX A1");
    step(5500, [&](HWU_Broker&) { EXPECT_TRUE(scu().setFanSpeed(40, 50, 60, 70)); });
    runNode(7000);
    EXPECT_THAT(requestsTo(32, 2), Not(Contains("201 @5s")));
    EXPECT_TRUE(scu().isAvailable());
    // Its capabilities keep no additional procedures, so the plain message
    // goes out, with the speed of the cabinet's group 2 in the first place.
    EXPECT_EQ(*unit.get("set.fanSpeed1"), 50);
    EXPECT_EQ(*unit.get("set.fanSpeed2"), 0);
    EXPECT_THAT(callsStarting(m_sides.m_calls, "removeUnit"), IsEmpty());
}

TEST_F(HwuScuTest, ACascadedScuAnswersFromNinetySixOn)
{
    plugIn(1, 97);
    configure("", 2);
    runNode(6000);
    EXPECT_EQ(scu().getHdlcAddress(), 97u);
    EXPECT_THAT(m_recorder.m_broker, Contains("operational SCU-1 @4s"));
}

TEST_F(HwuScuTest, ThePrimaryScuOfACabinetIsTheOneOnPortOneOfThatCabinet)
{
    std::vector<std::uint32_t> found;
    step(100, [&](HWU_Broker& broker) {
        broker.configureHwu(FuncId_t{func_type::kScu, 1}, "", 0, 1);
        broker.configureHwu(FuncId_t{func_type::kScu, 2}, "", 1, 2);
        broker.configureHwu(FuncId_t{func_type::kScu, 3}, "AUX A1", 0, 3);
        const auto instOf = [](ScuIf* scu) { return scu != nullptr ? scu->getFuncId().FuncInst : 0U; };
        found = {instOf(broker.getPrimaryScu(1)), instOf(broker.getPrimaryScu(2)), instOf(broker.getPrimaryScu(3)),
                 instOf(broker.getPrimaryScu(9))};
        broker.setDualBoxSupported(true);
        found.push_back(instOf(broker.getPrimaryScu(9)));
    });
    runNode(1000);
    // Newest first: for a cabinet without an SCU of its own on port 1, the
    // last one looked at, the oldest.
    EXPECT_EQ(found, (std::vector<std::uint32_t>{1, 2, 1, 1, 2}));
}

TEST_F(HwuScuTest, TheCabinetsProductDataAreWrittenAndReadBackAndARefusalMakesTheMemoryFaulty)
{
    sim::SimUnit& unit = plugIn();
    configure();
    HwuProductRecord written{};
    std::strcpy(written.productNumber.data(), "BFB 123 45/1");
    std::strcpy(written.serialNumber.data(), "C0FFEE");
    HwuProductRecord read{};
    bool refused = true;
    step(5500, [&](HWU_Broker&) {
        EXPECT_TRUE(scu().writeCabinetPid(written));
        EXPECT_TRUE(scu().readCabinetPid(&read));
        unit.faults().ppReject.arm(1, 4);
        refused = !scu().writeCabinetPid(written);
    });
    runNode(6000);
    EXPECT_STREQ(read.productNumber.data(), "BFB 123 45/1");
    EXPECT_STREQ(read.serialNumber.data(), "C0FFEE");
    EXPECT_TRUE(refused);
    EXPECT_THAT(m_recorder.m_faults, Contains("raise 21501 SCU-0 @5s"));
}

} // namespace
