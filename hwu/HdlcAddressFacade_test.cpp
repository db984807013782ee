#include "hwu/HdlcAddressFacade.h"

#include "frame/ActiveFaultsRegister.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/testSupport/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace fault_id;
using ::testing::ElementsAre;

class EventLog : public HdlcAddressEventIf {
public:
    void raiseFaultyHubPosition(const FuncId_t& funcId) override { log("raise faulty", funcId); }
    void ceaseFaultyHubPosition(const FuncId_t& funcId) override { log("cease faulty", funcId); }
    void raiseConflictingHubPosition(const FuncId_t& funcId) override { log("raise conflicting", funcId); }
    void ceaseConflictingHubPosition(const FuncId_t& funcId) override { log("cease conflicting", funcId); }

    std::vector<std::string> m_events;

private:
    void log(const char* what, const FuncId_t& funcId)
    {
        m_events.push_back(std::string(what) + " " + std::to_string(funcId.FuncType) + "-" +
                           std::to_string(funcId.FuncInst));
    }
};

class HdlcAddressFacadeTest : public ::testing::Test {
protected:
    bool check(std::initializer_list<std::string_view> positions, FuncId_t funcId = kNode)
    {
        const std::vector<std::string_view> list(positions);
        return m_facade.checkHubPositions(list, funcId);
    }

    static constexpr FuncId_t kNode{func_type::kEquipSupFunc, 3};

    ActiveFaultsRegister m_faults;
    HdlcAddressFacade m_facade{m_faults};
    EventLog m_events;
};

TEST_F(HdlcAddressFacadeTest, OnePositionIsGoodWhenFoundAndAFaultWhenNot)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    m_facade.setEventHandler(&m_events);
    EXPECT_TRUE(check({"A0"}));
    EXPECT_FALSE(check({"Q7"}));
    EXPECT_TRUE(m_faults.isFaultActive(kFaultyHubPosition, kNode));
    EXPECT_TRUE(check({"B8"}));
    EXPECT_FALSE(m_faults.isFaultActive(kFaultyHubPosition, kNode));
    EXPECT_THAT(m_events.m_events, ElementsAre("raise faulty 20-3", "cease faulty 20-3"));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Faulty hub position: Q7"), 1U);
}

TEST_F(HdlcAddressFacadeTest, TwoPositionsOnOneAddressConflictButAreStillTaken)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    m_facade.setEventHandler(&m_events);
    // "A1" and "A" are the same socket for a node.
    EXPECT_TRUE(check({"A1", "A"}));
    EXPECT_TRUE(m_faults.isFaultActive(kConflictingHubPosition, kNode));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Conflicting hub position: A1"), 1U);
    // One good and one unknown: taken, and the conflict is over.
    EXPECT_TRUE(check({"Q", "A2"}));
    EXPECT_FALSE(m_faults.isFaultActive(kConflictingHubPosition, kNode));
    // Neither known: the first is named.
    EXPECT_FALSE(check({"Q", "R"}));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Faulty hub position: Q"), 1U);
    EXPECT_TRUE(check({"A2", "B2"}));
    EXPECT_THAT(m_events.m_events, ElementsAre("raise conflicting 20-3", "cease conflicting 20-3",
                                               "raise faulty 20-3", "cease faulty 20-3"));
}

TEST_F(HdlcAddressFacadeTest, NoPositionsOrTooManyAreRefusedWithoutTouchingTheFaults)
{
    m_facade.setEventHandler(&m_events);
    EXPECT_FALSE(check({"Q"}));
    EXPECT_FALSE(check({}));
    EXPECT_FALSE(check({"A0", "A2", "A4"}));
    EXPECT_TRUE(m_faults.isFaultActive(kFaultyHubPosition, kNode));
    EXPECT_THAT(m_events.m_events, ElementsAre("raise faulty 20-3"));
}

TEST_F(HdlcAddressFacadeTest, AUnitIsCheckedAgainstItsOwnTableAndOnlyItsOwnFunctionIsTouched)
{
    m_facade.setEventHandler(&m_events);
    const FuncId_t psu{func_type::kPsu, 1};
    EXPECT_TRUE(check({"B8"}, psu));
    EXPECT_FALSE(check({"NA"}, psu));
    EXPECT_TRUE(check({"NA"}, FuncId_t{func_type::kScu, 1}));
    HdlcAddress address;
    EXPECT_TRUE(m_facade.getHdlcAddress("B8", func_type::kPsu, &address));
    EXPECT_EQ(address.address, 63U);
    EXPECT_THAT(m_events.m_events, ElementsAre("raise faulty 1-1"));
}

TEST_F(HdlcAddressFacadeTest, FaultsOfOthersReachTheHandlerAndWithoutAHandlerAreTracedAndDropped)
{
    TraceCapture trace("supSysCtrlEquipment:1");
    const FuncId_t pdu{func_type::kPdu, 2};
    m_faults.raiseFault(kConflictingHubPosition, pdu);
    m_faults.ceaseFault(kConflictingHubPosition, pdu);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 1, "raiseFault: m_pEventHandler is not set"), 1U);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 1, "ceaseFault: m_pEventHandler is not set"), 1U);

    m_facade.setEventHandler(&m_events);
    m_faults.raiseFault(kHwuMissing, pdu);
    m_faults.raiseFault(kFaultyHubPosition, pdu);
    m_faults.ceaseFault(kFaultyHubPosition, pdu);
    EXPECT_THAT(m_events.m_events, ElementsAre("raise faulty 7-2", "cease faulty 7-2"));
}

TEST(HdlcAddressFacadeLife, TheFacadeListensOnlyWhileItLives)
{
    ActiveFaultsRegister faults;
    EventLog events;
    {
        HdlcAddressFacade facade(faults);
        facade.setEventHandler(&events);
        faults.raiseFault(kFaultyHubPosition, FuncId_t{1, 1});
    }
    faults.ceaseFault(kFaultyHubPosition, FuncId_t{1, 1});
    EXPECT_THAT(events.m_events, ElementsAre("raise faulty 1-1"));
}

} // namespace
