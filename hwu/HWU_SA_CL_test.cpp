// The station alarm unit and the climate unit on the virtual clock through
// the simulated bus.

#include "hwu/CluIf.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/SauIf.h"
#include "hwu/testSupport/UnitSideRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using sim::UnitType;

constexpr FuncId_t kSau1{func_type::kSau, 1};
constexpr FuncId_t kClu1{func_type::kClu, 1};

class HwuSmallUnitsTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
    }

    UnitSideRecorder m_sides;
    HwuUnitFactory m_units{{&m_sides, &m_sides, &m_sides, &m_sides, &m_sides}};
};

TEST_F(HwuSmallUnitsTest, AnSauPassesItsPortsOnAtEachPollAndGivesThemUpOnlyWhenMissing)
{
    sim::SimUnit& sau = addUnit(UnitType::SAU, 1, 33);
    bool availableWhenFound = false;
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kSau1, "", 0, 0); });
    step(4900, [&](HWU_Broker& broker) {
        availableWhenFound = broker.getHwu(kSau1)->isAvailable();
        EXPECT_EQ(dynamic_cast<SauIf*>(broker.getHwu(kSau1))->getAvailablePortsA(), 0x00FF);
    });
    step(6500, [&sau](HWU_Broker&) { sau.set("alarmPortsA", 5); });
    step(7500, [&sau](HWU_Broker&) { sau.faults().silent.arm(0); });
    runNode(40000);
    EXPECT_TRUE(availableWhenFound);
    // Ports stay with the alarm side through the first misses: gone only
    // with the unit, at the thirtieth.
    EXPECT_THAT(m_sides.m_calls, ElementsAre("available SAU-1 255 0 @4s", "ports SAU-1 0 0 @4s",
                                             "ports SAU-1 5 0 @7s", "removeUnit SAU-1 @37s"));
    EXPECT_THAT(m_recorder.m_broker, ElementsAre("operational SAU-1 @4s", "removed SAU-1 @37s"));
}

TEST_F(HwuSmallUnitsTest, ACluReportsItsFanGroupsAndEndsTheirAlarmsWhenLost)
{
    sim::SimUnit& clu = addUnit(UnitType::CLU, 1, 44);
    bool group2Alarm = false;
    step(100, [](HWU_Broker& broker) { broker.configureHwu(kClu1, "", 0, 0); });
    step(5500, [&clu](HWU_Broker&) { clu.set("fanAlarmGroup2", 1); });
    step(6500, [&](HWU_Broker& broker) {
        group2Alarm = dynamic_cast<CluIf*>(broker.getHwu(kClu1))->isFanAlarmGroup2();
        EXPECT_TRUE(dynamic_cast<CluIf*>(broker.getHwu(kClu1))->setFanSpeed(70));
    });
    step(7500, [&clu](HWU_Broker&) { clu.faults().silent.arm(0); });
    runNode(40000);
    EXPECT_TRUE(group2Alarm);
    EXPECT_EQ(*clu.get("set.fanSpeed"), 70);
    EXPECT_THAT(m_sides.m_calls,
                ElementsAre("cluPresent 1 @4s", "led 0 2 2 21 @4s", "led 0 4 2 21 @4s",
                            // the alarm of group 2: bit 6 of the failure byte
                            "failure 0 64 21 @6s", "led 0 2 3 21 @6s", "led 0 4 2 21 @6s",
                            // lost: the alarms end, the LEDs are unknown
                            "failure 0 0 21 @37s", "led 0 2 1 21 @37s", "led 0 4 1 21 @37s"));
}

} // namespace
