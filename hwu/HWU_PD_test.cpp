// The PDU on the virtual clock through the simulated bus: the system
// voltage, the flags, and the e-fuses in their six sets.

#include "hwu/HwuUnitFactory.h"
#include "hwu/Pdu.h"
#include "hwu/testSupport/UnitSideRecorder.h"

#include "frame/testSupport/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using sim::UnitType;

constexpr FuncId_t kPdu1{func_type::kPdu, 1};

std::vector<std::string> efuseCalls(const std::vector<std::string>& calls)
{
    std::vector<std::string> found;
    for (const std::string& call : calls)
        if (call.rfind("efuse ", 0) == 0) found.push_back(call);
    return found;
}

std::vector<std::string> efuses(std::initializer_list<std::uint32_t> states, const std::string& when)
{
    std::vector<std::string> lines;
    std::uint32_t number = 0;
    for (std::uint32_t state : states)
        lines.push_back("efuse PDU-1 " + std::to_string(++number) + " " + std::to_string(state) + " @" + when);
    return lines;
}

struct Counter : Observer {
    void update(std::uint32_t id) override { m_ids.push_back(id); }
    std::vector<std::uint32_t> m_ids;
};

class HwuPduTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
    }
    sim::SimUnit& plugIn()
    {
        sim::SimUnit& pdu = addUnit(UnitType::PDU, 1, 80);
        step(100, [](HWU_Broker& broker) { broker.configureHwu(kPdu1, "A1", 0, 0); });
        return pdu;
    }
    PduIf& pdu() { return *dynamic_cast<PduIf*>(m_pBroker->getHwu(kPdu1)); }

    UnitSideRecorder m_sides;
    HwuUnitFactory m_units{{&m_sides, &m_sides, &m_sides, &m_sides, &m_sides}};
};

TEST_F(HwuPduTest, AFoundPduReportsEachOfItsSixteenEfusesAndTheSystemVoltage)
{
    plugIn();
    runNode(6000);
    // Eight e-fuses, all on; the other eight do not exist. The first status
    // is compared with none and reports the eight that are on once more.
    std::vector<std::string> expected = efuses({3, 3, 3, 3, 3, 3, 3, 3, 0, 0, 0, 0, 0, 0, 0, 0}, "4s");
    const std::vector<std::string> again = efuses({3, 3, 3, 3, 3, 3, 3, 3}, "4s");
    expected.insert(expected.end(), again.begin(), again.end());
    EXPECT_EQ(efuseCalls(m_sides.m_calls), expected);
    EXPECT_FLOAT_EQ(pdu().getSystemVoltage(), -54.5F);
    EXPECT_EQ(pdu().getOvervoltageRaiseMax(), -6000);
    EXPECT_EQ(pdu().getUndervoltageCeaseMin(), -4100);
    EXPECT_EQ(pdu().getPowerDistrFaultIndicator(), Led::kOff);
    EXPECT_TRUE(pdu().isAvailable());
}

TEST_F(HwuPduTest, EfusesOpenFromTheLastControllableOneAndCloseAgainAfterARestart)
{
    sim::SimUnit& unit = plugIn();
    unit.set("cap.controllable", 0x003F); // e-fuses 7 and 8 may not be opened
    std::vector<std::int32_t> requested;
    step(5500, [&](HWU_Broker&) {
        EXPECT_TRUE(pdu().openEfuse());
        requested.push_back(*unit.get("set.efuses"));
        EXPECT_TRUE(pdu().openEfuse());
        requested.push_back(*unit.get("set.efuses"));
        EXPECT_EQ(pdu().getEfuseIndicator(6), Led::kOff);
    });
    step(6500, [&unit](HWU_Broker&) { unit.restart(ose::get_time_ms()); });
    step(8500, [&](HWU_Broker&) { requested.push_back(*unit.get("set.efuses")); });
    runNode(9000);
    EXPECT_EQ(requested, (std::vector<std::int32_t>{0xDF, 0xCF, 0xFF}));
    EXPECT_EQ(*unit.get("efuseOn"), 0xFF);
}

TEST_F(HwuPduTest, ATrippedEfuseBlinksAndShowsInThePowerDistributionIndicator)
{
    sim::SimUnit& unit = plugIn();
    step(5500, [&unit](HWU_Broker&) { unit.set("efuseFault", 0x0004); });
    runNode(7000);
    const std::vector<std::string> calls = efuseCalls(m_sides.m_calls);
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.back(), "efuse PDU-1 3 4 @6s");
    EXPECT_EQ(pdu().getPowerDistrFaultIndicator(), Led::kSlowBlink);
    EXPECT_THAT(m_recorder.m_status, ::testing::Contains("PDU-1 avail 1 comm 1 op 3 fault 2 @6s"));
}

TEST_F(HwuPduTest, ACountOfEfusesOutOfRangeMeansNoneAndAShortAnswerMeansSeven)
{
    TraceCapture trace("supSysCtrlEquipment:1");
    sim::SimUnit& seventeen = addUnit(UnitType::PDU, 1, 80);
    seventeen.set("cap.numberOfEfuses", 17);
    sim::SimUnit& shortAnswer = addUnit(UnitType::PDU, 1, 81);
    shortAnswer.set("cap.longAnswer", 0);
    step(100, [](HWU_Broker& broker) {
        broker.configureHwu(kPdu1, "A1", 0, 0);
        broker.configureHwu(FuncId_t{func_type::kPdu, 2}, "B1", 0, 0);
    });
    runNode(6000);
    for (std::uint32_t number = 1; number <= 16; ++number) EXPECT_EQ(pdu().getEfuseIndicator(number), Led::kNotApplicable);
    EXPECT_EQ(pdu().getPowerDistrFaultIndicator(), Led::kNotAvailable);
    auto& seven = *dynamic_cast<PduIf*>(m_pBroker->getHwu(FuncId_t{func_type::kPdu, 2}));
    EXPECT_EQ(seven.getEfuseIndicator(7), Led::kSteadyOn);
    EXPECT_EQ(seven.getEfuseIndicator(8), Led::kNotApplicable);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 1,
                          "Invalid number of E-fuses received from PDU: 17, setting number of E-fuses to 0"),
              1u);
}

TEST_F(HwuPduTest, FlagsRaiseTheTemperatureFaultAndTellTheSubscribers)
{
    sim::SimUnit& unit = plugIn();
    Counter counter;
    step(200, [&](HWU_Broker&) { EXPECT_TRUE(pdu().subscribeStatus(HwuSubscriptions::kPduStatusChange, &counter)); });
    step(5500, [&unit](HWU_Broker&) {
        unit.set("mainTemperatureHigh", 1);
        unit.set("systemVoltageLow", 1);
    });
    step(6500, [&unit](HWU_Broker&) { unit.set("mainTemperatureHigh", 0); });
    bool low = false;
    step(6700, [&](HWU_Broker&) { low = pdu().isVoltageLow(); });
    runNode(8000);
    EXPECT_THAT(m_recorder.m_faults, ElementsAre("raise 18700 PDU-1 @6s", "cease 18700 PDU-1 @7s"));
    EXPECT_TRUE(low);
    // At subscription; when found, the first status's fault, priority
    // temperature and both voltage flags; the voltage going low.
    EXPECT_EQ(counter.m_ids.size(), 7u);
}

TEST_F(HwuPduTest, AMissingPdusEfusesAreReportedNotAvailable)
{
    sim::SimUnit& unit = plugIn();
    step(5500, [&unit](HWU_Broker&) { unit.faults().silent.arm(0); });
    std::uint32_t queried = 0;
    step(40000, [&](HWU_Broker&) { queried = pdu().getEfuseIndicator(1); });
    runNode(41000);
    const std::vector<std::string> calls = efuseCalls(m_sides.m_calls);
    ASSERT_EQ(calls.size(), 32u);
    EXPECT_EQ(std::vector<std::string>(calls.begin() + 24, calls.end()), efuses({1, 1, 1, 1, 1, 1, 1, 1}, "35s"));
    // A direct query reads what was stored last.
    EXPECT_EQ(queried, Led::kOff);
}

} // namespace
