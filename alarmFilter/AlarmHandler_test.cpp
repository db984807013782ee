// The alarm handler between the object table and a recording client. The
// leaky bucket's timers never run out here; their number tells how many
// faults the bucket holds.

#include "alarmFilter/AlarmHandler.h"
#include "alarmFilter/testSupport/CountingTimer.h"
#include "alarmFilter/testSupport/RecordingIndHandler.h"

#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"

#include "ose/Trace.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Lines = std::vector<std::string>;
using namespace fro_types;

const std::string kPort1 = "HwUnit=1,AlarmPort=1";
const std::string kPort2 = "HwUnit=1,AlarmPort=2";

template <typename Data>
Data& stored(Data* data)
{
    if (data == nullptr) throw std::runtime_error("not stored");
    return *data;
}

class AlarmHandlerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ose::Trace::configure("supSysAlarmFilterSwU:all");
        ose::Trace::setSink([this](const ose::TraceRecord& record) {
            if (record.group == "supSysAlarmFilterSwU")
                m_trace.push_back(std::to_string(record.level) + " " + std::string(record.text));
        });
    }
    void TearDown() override
    {
        ose::Trace::setSink({});
        ose::Trace::reset();
    }

    fRO& make(const std::string& ldn, std::uint32_t froType, std::int32_t id,
              const std::vector<std::pair<std::string, std::string>>& attributes = {})
    {
        fRO* fro = m_table.createMO(ldn, froType, id);
        for (const auto& [name, value] : attributes)
            if (!fro->setAttribute(name, value)) fro->addAttribute(name, value, "S32");
        m_handler.handleFroCreated(*fro);
        return *fro;
    }
    fRO& unit(const std::string& ldn, std::int32_t id, const char* state, const char* unitType = "SCU")
    {
        return make(ldn, kHwUnit, id, {{"administrativeState", state}, {"unitType", unitType}});
    }
    fRO& port(const std::string& ldn, std::int32_t id, const char* state, const char* active = "0")
    {
        return make(ldn, kAlarmPort, id,
                    {{"administrativeState", state}, {"normallyOpen", "0"}, {"activeExternalAlarm", active}});
    }
    void change(fRO& fro, const std::string& name, const std::string& value)
    {
        fro.setAttribute(name, value);
        m_handler.handleFroChanged(fro);
    }
    // As the port's hardware would report it: present and enabled.
    void installed(const std::string& ldn)
    {
        AlarmPortData& data = stored(m_handler.findAlarmPortData(ldn));
        data.clearStatus(AlarmPortData::kNotInstalled);
        data.operationalState = 1;
    }
    std::string attr(const std::string& ldn, const char* name) const { return m_table.getAttribute(ldn, name); }
    // operationalState/availabilityStatus
    std::string shown(const std::string& ldn) const
    {
        return attr(ldn, "operationalState") + "/" + attr(ldn, "availabilityStatus");
    }

    froIdHandler m_ids;
    fROFactory m_factory{m_ids};
    froMgr m_table{m_factory};
    RecordingIndHandler m_client;
    CountingTimer m_timer;
    AlarmHandler m_handler{m_client, m_timer, m_table};
    Lines m_trace;
};

// --- locking and unlocking --------------------------------------------------------

TEST_F(AlarmHandlerTest, LockingAUnitCeasesItsFaultsAndItsPortsAlarmsAndUnlockingReportsThemAgain)
{
    fRO& hw = unit("HwUnit=1", 1, "1");
    port(kPort1, 11, "1", "1");
    port(kPort2, 12, "1");
    port("HwUnit=1,AlarmPort=3", 13, "0", "1"); // locked itself: its alarm is not reported
    installed(kPort2);
    stored(m_handler.findHwUnitData("HwUnit=1")).faultIds = {4112, 4113};
    m_client.take();

    change(hw, "administrativeState", "0");
    EXPECT_EQ(m_client.take(), (Lines{"cease 4112 HwUnit=1 HwUnit/1", "cease 4113 HwUnit=1 HwUnit/1",
                                      "cease 4097 HwUnit=1,AlarmPort=1 AlarmPort/11"}));
    for (const std::string& ldn : {kPort1, kPort2, std::string("HwUnit=1,AlarmPort=3")})
        EXPECT_EQ(shown(ldn), "0/544") << ldn;
    change(hw, "administrativeState", "1");
    EXPECT_EQ(m_client.take(), (Lines{"fault 4112 HwUnit=1 HwUnit/1 ''", "fault 4113 HwUnit=1 HwUnit/1 ''",
                                      "fault 4097 HwUnit=1,AlarmPort=1 AlarmPort/11 ''"}));
    EXPECT_EQ(shown(kPort1), "0/128");
    EXPECT_EQ(shown(kPort2), "1/0") << "the hardware's state comes back";
}

TEST_F(AlarmHandlerTest, LockIsTracedAndTheClientIsToldWhetherToStore)
{
    fRO& hw = unit("HwUnit=1", 1, "1");
    stored(m_handler.findHwUnitData("HwUnit=1")).faultIds = {4112};
    m_trace.clear();
    change(hw, "administrativeState", "0");
    m_handler.sendFaultInd(5, kCabinet, "Cabinet=1", 4105, "door", {}, 0, false);
    EXPECT_EQ(m_trace, (Lines{"7 handleFroChanged called", "4 HwUnit (HwUnit=1) was LOCKED",
                              "4 FaultCeaseInd is sent with faultId (0x1010) for ldn (HwUnit=1).",
                              "4 FaultInd is sent with faultId (0x1009) for ldn (Cabinet=1)."}));
    EXPECT_EQ(m_client.lines.back(), "fault 4105 Cabinet=1 Cabinet/5 'door' unstored");
}

TEST_F(AlarmHandlerTest, LockingAPortWithAnActiveAlarmCeasesItAndUnlockingReportsItAgain)
{
    unit("HwUnit=1", 1, "1");
    fRO& p = port(kPort1, 11, "1", "1");
    m_handler.leakyBucketRaise(p, 4097, "", kPort1);
    m_handler.leakyBucketRaise(p, 4097, "", kPort1); // a cease now would be held
    m_client.take();
    change(p, "administrativeState", "0");
    EXPECT_EQ(m_client.take(), Lines{"cease 4097 HwUnit=1,AlarmPort=1 AlarmPort/11"});
    EXPECT_EQ(m_timer.size(), 0u);
    change(p, "administrativeState", "1");
    EXPECT_EQ(m_client.take(), Lines{"fault 4097 HwUnit=1,AlarmPort=1 AlarmPort/11 ''"});
    p.setAttribute("activeExternalAlarm", "0");
    change(p, "administrativeState", "0");
    EXPECT_TRUE(m_client.lines.empty());
}

TEST_F(AlarmHandlerTest, NormallyOpenFlipsTheActiveAlarmOnlyOnceAnInputIsKnownAndReportsNothing)
{
    unit("HwUnit=1", 1, "1");
    fRO& p = port(kPort1, 11, "0", "1");
    m_client.take();
    change(p, "normallyOpen", "1");
    EXPECT_EQ(attr(kPort1, "activeExternalAlarm"), "1") << "no input seen yet";
    stored(m_handler.findAlarmPortData(kPort1)).lastInputValue = 1;
    change(p, "normallyOpen", "0");
    change(p, "normallyOpen", "0");
    EXPECT_EQ(attr(kPort1, "activeExternalAlarm"), "0") << "flipped once: the new value was stored";
    change(p, "normallyOpen", "1");
    EXPECT_EQ(attr(kPort1, "activeExternalAlarm"), "1");
    EXPECT_TRUE(m_client.lines.empty());
}

// --- creating and deleting --------------------------------------------------------

TEST_F(AlarmHandlerTest, NewPortIsNotInstalledAndUnderALockedUnitAlsoDependencyLocked)
{
    unit("HwUnit=1", 1, "1");
    unit("HwUnit=2", 2, "0");
    make(kPort1, kAlarmPort, 11, {{"operationalState", "1"}});
    fRO& locked = make("HwUnit=2,AlarmPort=1", kAlarmPort, 21, {{"operationalState", "1"}});
    make("HwUnit=1,ControlPort=1", kControlPort, 31, {{"operationalState", "1"}});
    make("AlarmPort=9", kAlarmPort, 9);
    EXPECT_EQ(shown(kPort1), "0/128");
    EXPECT_EQ(shown("HwUnit=2,AlarmPort=1"), "0/544");
    EXPECT_EQ(shown("HwUnit=1,ControlPort=1"), "0/128");
    EXPECT_EQ(m_trace.back(), "1 No parent HwUnit found for AlarmPort with ldn (AlarmPort=9).");

    // Told of again, as when its unit registers: the hardware's state stands
    // unless the unit is locked.
    installed(kPort1);
    installed("HwUnit=2,AlarmPort=1");
    m_handler.handleFroCreated(*m_table.getFro(kPort1));
    m_handler.handleFroCreated(locked);
    EXPECT_EQ(shown(kPort1), "1/0");
    EXPECT_EQ(shown("HwUnit=2,AlarmPort=1"), "0/544");
}

TEST_F(AlarmHandlerTest, PortsAreTypedByTheirCarrier)
{
    unit("HwUnit=1", 1, "1", "SUP");
    unit("HwUnit=2", 2, "1", "SAU");
    make("DeviceGroup=7", kDeviceGroup, 3);
    port("HwUnit=1,AlarmPort=4", 11, "1");
    port("HwUnit=2,AlarmPort=17", 12, "1");
    port("DeviceGroup=7,AlarmPort=2", 13, "1");
    const auto typed = [this](const std::string& ldn) {
        const AlarmPortData& data = stored(m_handler.findAlarmPortData(ldn));
        return data.hwType + " " + data.portId;
    };
    EXPECT_EQ(typed("HwUnit=1,AlarmPort=4"), "SCU 4");
    EXPECT_EQ(typed("HwUnit=2,AlarmPort=17"), "SAU 17");
    EXPECT_EQ(typed("DeviceGroup=7,AlarmPort=2"), "RRU 2");
}

TEST_F(AlarmHandlerTest, DeletingAnyObjectForgetsItAndItsFaultsInTheBucketWithoutACease)
{
    fRO& hw = unit("HwUnit=1", 1, "1");
    fRO& p = port(kPort1, 11, "1", "1");
    fRO& cabinet = make("Cabinet=1", kCabinet, 5);
    m_handler.leakyBucketRaise(hw, 4111, "", "HwUnit=1");
    m_handler.leakyBucketRaise(p, 4097, "", kPort1);
    m_handler.leakyBucketRaise(cabinet, 4105, "door", "Cabinet=1");
    m_client.take();
    m_handler.handleFroDeleted(cabinet);
    EXPECT_EQ(m_timer.size(), 2u);
    m_handler.handleFroDeleted(p);
    m_handler.handleFroDeleted(hw);
    EXPECT_EQ(m_timer.size(), 0u);
    EXPECT_EQ(m_handler.findAlarmPortData(kPort1), nullptr);
    EXPECT_EQ(m_handler.findHwUnitData("HwUnit=1"), nullptr);
    EXPECT_TRUE(m_client.lines.empty());
}

// --- a unit missing or starting over ----------------------------------------------

TEST_F(AlarmHandlerTest, ClearingAlarmPortsCeasesReportedAlarmsAndForgetsTheHardware)
{
    unit("HwUnit=1", 1, "1");
    fRO& p1 = port(kPort1, 11, "1", "1");
    port(kPort2, 12, "0", "1");
    installed(kPort1);
    installed(kPort2);
    m_handler.leakyBucketRaise(p1, 4097, "", kPort1);
    m_handler.leakyBucketRaise(p1, 4097, "", kPort1);
    m_client.take();
    m_handler.clearAlarmPorts("HwUnit=1");
    EXPECT_EQ(m_client.take(), Lines{"cease 4097 HwUnit=1,AlarmPort=1 AlarmPort/11"});
    EXPECT_EQ(m_timer.size(), 0u) << "no held cease follows";
    for (const std::string& ldn : {kPort1, kPort2})
        EXPECT_EQ(shown(ldn) + " " + attr(ldn, "activeExternalAlarm"), "0/0 0") << ldn;
}

TEST_F(AlarmHandlerTest, CeaseFaultCeasesAllOfTheUnitAndLeavesItsPortsLockedAndInactive)
{
    fRO& hw = unit("HwUnit=1", 1, "1");
    fRO& p1 = port(kPort1, 11, "1", "1");
    fRO& p2 = port(kPort2, 12, "1");
    installed(kPort2);
    make("HwUnit=1,EcPort=1", kEcPort, 21);
    stored(m_handler.findHwUnitData("HwUnit=1")).faultIds = {4111};
    m_handler.ecPortFaults().push_back({4126, "HwUnit=1,EcPort=1"});
    m_handler.leakyBucketRaise(hw, 4111, "", "HwUnit=1");
    m_handler.leakyBucketRaise(p1, 4097, "", kPort1);
    m_client.take();

    m_handler.ceaseFault(hw);
    EXPECT_EQ(m_client.take(), (Lines{"cease 4111 HwUnit=1 HwUnit/1", "cease 4097 HwUnit=1,AlarmPort=1 AlarmPort/11",
                                      "cease 4126 HwUnit=1,EcPort=1 EcPort/21"}));
    EXPECT_EQ(m_timer.size(), 0u);
    EXPECT_TRUE(m_handler.ecPortFaults().empty());
    EXPECT_EQ(shown(kPort1), "0/128") << "not installed stays";
    EXPECT_EQ(shown(kPort2), "0/0");
    for (const std::string& ldn : {kPort1, kPort2})
        EXPECT_EQ(attr(ldn, "administrativeState") + attr(ldn, "activeExternalAlarm"), "00") << ldn;

    // The lock is remembered: an alarm that came meanwhile is reported at the unlock.
    p2.setAttribute("activeExternalAlarm", "1");
    change(p2, "administrativeState", "1");
    EXPECT_EQ(m_client.take(), Lines{"fault 4097 HwUnit=1,AlarmPort=2 AlarmPort/12 ''"});
    EXPECT_TRUE(stored(m_handler.findHwUnitData("HwUnit=1")).faultIds.empty());
}

TEST_F(AlarmHandlerTest, CeaseFaultOnALockedUnitForgetsItsFaultsSilently)
{
    fRO& hw = unit("HwUnit=1", 1, "0");
    stored(m_handler.findHwUnitData("HwUnit=1")).faultIds = {4112};
    m_handler.ceaseFault(hw);
    change(hw, "administrativeState", "1");
    EXPECT_TRUE(m_client.lines.empty());
}

} // namespace
