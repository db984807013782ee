// The object controllers, on a table of their own: what each tells the
// configuration flow and the alarm filter at a create, set, restore and
// delete, the device groups of the alarm units, the fixed battery
// parameters, and the callbacks of actions and snapshot reads.

#include "froBl/froMgmtSwU/export/FroCtrlApi.h"

#include "adaption/ConfigIfApi.h"
#include "alarmFilter/AlarmHandlerApi.h"
#include "froBl/froMgmtSwU/export/SupSysGenericFroCtrl.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Writes every call of the configuration flow and the alarm filter into one
// log, so that the order across both shows.
class RecordingServices : public ConfigIfApi, public AlarmHandlerApi {
public:
    explicit RecordingServices(froMgr& table) : m_table(table) {}

    void handleSetConfig(fRO* fro) override
    {
        note("config set", *fro);
        chargingVoltageSent = fro->getAttribute("chargingVoltage");
    }
    void handleRestoreConfig(fRO* fro) override { note("config restore", *fro); }
    void handleDeleteConfig(fRO* fro, bool releaseId) override
    {
        note(releaseId ? "config delete" : "config delete, id kept", *fro);
    }

    void handleFroChanged(fRO& fro) override { note("alarms changed", fro); }
    void handleFroCreated(fRO& fro) override { note("alarms created", fro); }
    void handleFroDeleted(const fRO& fro) override { note("alarms deleted", fro); }

    void init() override {}
    void sendFaultInd(std::uint32_t, std::uint32_t, const std::string&, std::int32_t, const std::string&,
                      const std::vector<std::string>&, std::int32_t) override {}
    void sendFaultInd(std::uint32_t, std::uint32_t, const std::string&, std::int32_t, const std::string&,
                      const std::vector<std::string>&, std::int32_t, bool) override {}
    void sendFaultCeaseInd(std::uint32_t, std::uint32_t, const std::string&, std::int32_t) override {}
    void leakyBucketRaise(const fRO&, std::int32_t, const std::string&, const std::string&) override {}
    void leakyBucketRemove(const fRO&, std::int32_t) override {}
    void leakyBucketCease(const fRO&, std::int32_t, const std::string&) override {}
    void leakyBucketCeaseAndRemove(const fRO&, std::int32_t, const std::string&) override {}
    void clearAlarmPorts(const std::string&) override {}
    void ceaseFault(fRO&) override {}

    std::vector<std::string> log;
    std::string chargingVoltageSent;

private:
    void note(const std::string& what, const fRO& fro) { log.push_back(what + " " + m_table.getLdn(fro.getInternalId())); }

    froMgr& m_table;
};

// The controllers' trace, on for a test and back to the default after it.
struct ControllerTraces {
    ControllerTraces() { ose::Trace::configure("supSysFroCtrlSwU:all"); }
    ~ControllerTraces() { ose::Trace::reset(); }
};

class FakeActions : public ActionIfApi, public SnapshotParamIfApi {
public:
    bool perform(fRO*, const std::string& actionName, const SupSysFroCtrlIf::ActionLists& lists,
                 ActionFroCallbackIf* callback) override
    {
        performed.push_back(actionName + "(" + (lists.names.empty() ? "" : lists.names[0]) + ")");
        pAction = callback;
        return accept;
    }
    bool update(fRO*, SnapshotParamCallbackIf* callback) override
    {
        pSnapshot = callback;
        return accept;
    }

    bool accept = true;
    std::vector<std::string> performed;
    ActionFroCallbackIf* pAction = nullptr;
    SnapshotParamCallbackIf* pSnapshot = nullptr;
};

class RecordingClient : public SupSysFroCallbackIf {
public:
    explicit RecordingClient(std::string name) : m_name(std::move(name)) {}
    void snapshotDone(fRO*) override { calls.push_back(m_name + " snapshot"); }
    void actionDone(fRO*, const ActionResult& result) override
    {
        calls.push_back(m_name + " " + result.actionName + (result.success ? " done" : " failed"));
    }
    std::vector<std::string> calls;

private:
    std::string m_name;
};

class FroCtrlTest : public ::testing::Test {
protected:
    FroCtrlTest()
    {
        FroCtrlServices services;
        services.pTable = &m_table;
        services.pAlarms = &m_services;
        services.pConfig = &m_services;
        services.pActions = &m_actions;
        services.pSnapshots = &m_actions;
        FroCtrlApi(services).registerAll(m_table);
    }

    SupSysFroCtrlIf* make(const std::string& ldn, std::uint32_t froType,
                          const std::vector<std::pair<std::string, std::string>>& attributes = {})
    {
        fRO* fro = m_table.createMO(ldn, froType, -1);
        if (fro == nullptr) return nullptr;
        for (const auto& [name, value] : attributes)
            if (!fro->setAttribute(name, value)) fro->addAttribute(name, value, "STRING");
        return dynamic_cast<SupSysFroCtrlIf*>(fro);
    }

    std::vector<std::string> groupsOf(const std::string& unitLdn)
    {
        std::vector<std::string> groups;
        m_table.getChildren(unitLdn, groups, 1, "DeviceGroup");
        return groups;
    }

    froIdHandler m_ids;
    fROFactory m_factory{m_ids};
    froMgr m_table{m_factory};
    RecordingServices m_services{m_table};
    FakeActions m_actions;
};

TEST_F(FroCtrlTest, EveryStoredClassIsAControllerThatTellsItsChangesInOrder)
{
    // Each class by its own allocation callback, which names itself.
    const std::vector<std::tuple<std::string, std::uint32_t, const char*>> classes{
        {"Cabinet=1", fro_types::kCabinet, "allocCallback()"},
        {"Cabinet=1,FanGroup=1", fro_types::kFanGroup, "allocCallback()"},
        {"Cabinet=1,HwUnit=PSU1", fro_types::kHwUnit, "allocBatteryHwUnit()"},
        {"BatteryBackup=1", fro_types::kBatteryBackup, "allocBatteryBackupCallback()"},
        {"ExternalNode=1", fro_types::kExternalNode, "externalNodeCallback()"},
        {"PowerDistribution=1", fro_types::kPowerDistribution, "allocCallback()"},
        {"PowerSupply=1", fro_types::kPowerSupply, "allocCallback()"},
        {"Cabinet=1,AlarmPort=1", fro_types::kAlarmPort, "allocAlarmPortCallback()"},
        {"Cabinet=1,EcPort=1", fro_types::kEcPort, "allocEcPortCallback()"},
        {"EquipmentSupportFunction=1", fro_types::kEquipmentSupportFunction, "allocCallback()"},
        {"Cabinet=1,ControlPort=1", fro_types::kControlPort, "allocCallback()"},
        {"PowerDistribution=1,EFuse=1", fro_types::kEFuse, "allocBatteryBackupCallback()"}};
    ControllerTraces traces;
    for (const auto& [ldn, type, callback] : classes) {
        traceCapture trace;
        ASSERT_NE(make(ldn, type), nullptr) << ldn;
        EXPECT_TRUE(trace.contains(std::string(callback) + " in FroCtrlApi")) << ldn;
    }
    EXPECT_EQ(dynamic_cast<SupSysFroCtrlIf*>(
                  m_table.createMO("Cabinet=1,HwUnit=SAU1,DeviceGroup=0", fro_types::kDeviceGroup, -1)),
              nullptr);

    SupSysFroCtrlIf* port = dynamic_cast<SupSysFroCtrlIf*>(m_table.getFro("Cabinet=1,AlarmPort=1"));
    port->postCreate();
    port->postSet();
    port->restore();
    port->preDelete();
    EXPECT_THAT(m_services.log,
                ElementsAre("config set Cabinet=1,AlarmPort=1", "alarms created Cabinet=1,AlarmPort=1",
                            "config set Cabinet=1,AlarmPort=1", "alarms changed Cabinet=1,AlarmPort=1",
                            "config restore Cabinet=1,AlarmPort=1", "alarms created Cabinet=1,AlarmPort=1",
                            "config delete Cabinet=1,AlarmPort=1", "alarms deleted Cabinet=1,AlarmPort=1"));
}

TEST_F(FroCtrlTest, AnEfuseChangeIsToldToTheAlarmFilterAsANewObject)
{
    SupSysFroCtrlIf* fuse = make("PowerDistribution=1,EFuse=3", fro_types::kEFuse);
    ASSERT_NE(fuse, nullptr);
    fuse->postSet();
    EXPECT_THAT(m_services.log, ElementsAre("config set PowerDistribution=1,EFuse=3",
                                            "alarms created PowerDistribution=1,EFuse=3"));
}

TEST_F(FroCtrlTest, AlarmAndControlUnitsCarryTheirDeviceGroups)
{
    ASSERT_NE(make("Cabinet=1,HwUnit=SAU1", fro_types::kHwUnit, {{"unitType", "SAU"}}), nullptr);
    ASSERT_NE(make("Cabinet=1,HwUnit=SCU1", fro_types::kHwUnit, {{"unitType", "SCU"}}), nullptr);
    ASSERT_NE(make("Cabinet=1,HwUnit=PSU1", fro_types::kHwUnit, {{"unitType", "PSU"}}), nullptr);
    for (const char* unit : {"Cabinet=1,HwUnit=SAU1", "Cabinet=1,HwUnit=SCU1", "Cabinet=1,HwUnit=PSU1"})
        dynamic_cast<SupSysFroCtrlIf*>(m_table.getFro(unit))->postCreate();

    EXPECT_THAT(groupsOf("Cabinet=1,HwUnit=SAU1"),
                ElementsAre("Cabinet=1,HwUnit=SAU1,DeviceGroup=0", "Cabinet=1,HwUnit=SAU1,DeviceGroup=1"));
    EXPECT_THAT(groupsOf("Cabinet=1,HwUnit=SCU1"), ElementsAre("Cabinet=1,HwUnit=SCU1,DeviceGroup=0"));
    EXPECT_THAT(groupsOf("Cabinet=1,HwUnit=PSU1"), IsEmpty());
    const fRO* second = m_table.getFro("Cabinet=1,HwUnit=SAU1,DeviceGroup=1");
    EXPECT_EQ(second->getAttribute("typeOfUnit"), "1");
    EXPECT_EQ(second->getAttribute("groupOfPort"), "1");
    EXPECT_EQ(second->getAttribute("parentObjectType"), "SAU");
    const fRO* scuGroup = m_table.getFro("Cabinet=1,HwUnit=SCU1,DeviceGroup=0");
    EXPECT_EQ(scuGroup->getAttribute("typeOfUnit"), "0");
    EXPECT_EQ(scuGroup->getAttribute("parentObjectType"), "SCU");
}

TEST_F(FroCtrlTest, ARestoredUnitTakesTheCreatePathAndKeepsGroupsThatExist)
{
    SupSysFroCtrlIf* unit = make("Cabinet=1,HwUnit=SAU1", fro_types::kHwUnit, {{"unitType", "SAU"}});
    unit->postCreate();
    const std::int32_t firstId = m_table.getFro("Cabinet=1,HwUnit=SAU1,DeviceGroup=0")->getInternalId();
    m_services.log.clear();

    unit->restore();
    EXPECT_THAT(m_services.log,
                ElementsAre("config set Cabinet=1,HwUnit=SAU1", "alarms created Cabinet=1,HwUnit=SAU1"));
    EXPECT_EQ(m_table.getFro("Cabinet=1,HwUnit=SAU1,DeviceGroup=0")->getInternalId(), firstId);
    EXPECT_EQ(groupsOf("Cabinet=1,HwUnit=SAU1").size(), 2u);
}

TEST_F(FroCtrlTest, DeletingAUnitTakesItsGroupsFirst)
{
    SupSysFroCtrlIf* unit = make("Cabinet=1,HwUnit=SAU1", fro_types::kHwUnit, {{"unitType", "SAU"}});
    unit->postCreate();
    m_services.log.clear();

    unit->preDelete();
    EXPECT_THAT(m_services.log,
                ElementsAre("config delete Cabinet=1,HwUnit=SAU1,DeviceGroup=0",
                            "config delete Cabinet=1,HwUnit=SAU1,DeviceGroup=1",
                            "config delete Cabinet=1,HwUnit=SAU1", "alarms deleted Cabinet=1,HwUnit=SAU1"));
    EXPECT_THAT(groupsOf("Cabinet=1,HwUnit=SAU1"), IsEmpty());
    EXPECT_TRUE(m_table.exists("Cabinet=1,HwUnit=SAU1"));
}

TEST_F(FroCtrlTest, StandardBatteriesInNormalChargingGetTheirFixedParameters)
{
    // As a client creates them: with the charging parameters it chose.
    const auto battery = [&](const std::string& ldn, const char* type, const char* mode) {
        return make(ldn, fro_types::kBatteryBackup,
                    {{"batteryType", type}, {"chargingMode", mode}, {"chargingVoltage", "-500"},
                     {"increasedChargeVoltage", "-500"}, {"boostChargeTime", "1"}, {"tempCompMinVoltage", "-500"}});
    };
    SupSysFroCtrlIf* first = battery("BatteryBackup=1", "1", "0");
    SupSysFroCtrlIf* second = battery("BatteryBackup=2", "2", "0");
    SupSysFroCtrlIf* own = battery("BatteryBackup=3", "1", "1");
    first->postCreate();
    // The parameters are in place before the configuration is sent.
    EXPECT_EQ(m_services.chargingVoltageSent, "-545");
    second->postSet();
    own->postCreate();

    EXPECT_EQ(first->getAttribute("chargingVoltage"), "-545");
    EXPECT_EQ(first->getAttribute("increasedChargeVoltage"), "-564");
    EXPECT_EQ(second->getAttribute("chargingVoltage"), "-538");
    EXPECT_EQ(second->getAttribute("boostChargeTime"), "8");
    EXPECT_EQ(second->getAttribute("tempCompMinVoltage"), "-528");
    EXPECT_EQ(own->getAttribute("chargingVoltage"), "-500");

    first->setAttribute("chargingVoltage", std::string("-500"));
    first->restore();
    EXPECT_EQ(first->getAttribute("chargingVoltage"), "-545");
}

TEST_F(FroCtrlTest, AnActionAnswersTheClientThatAskedLast)
{
    SupSysFroCtrlIf* battery = make("BatteryBackup=1", fro_types::kBatteryBackup);
    RecordingClient client("client");
    std::string errorText;
    SupSysFroCtrlIf::ActionLists lists{{"duration"}, {"10"}, {"S32"}};
    ASSERT_TRUE(battery->performAction("startBatteryTest", lists, errorText, &client));
    EXPECT_THAT(m_actions.performed, ElementsAre("startBatteryTest(duration)"));

    SupSysFroCallbackIf::ActionResult result;
    result.success = true;
    result.actionName = "startBatteryTest";
    m_actions.pAction->actionDone(result);
    EXPECT_THAT(client.calls, ElementsAre("client startBatteryTest done"));

    m_actions.accept = false;
    errorText.clear();
    EXPECT_FALSE(battery->performAction("stopBatteryTest", {}, errorText, &client));
    EXPECT_EQ(errorText, "action was not performed");
}

TEST_F(FroCtrlTest, ASecondSnapshotReadReplacesTheFirstCallback)
{
    SupSysFroCtrlIf* supply = make("PowerSupply=1", fro_types::kPowerSupply);
    RecordingClient first("first");
    RecordingClient second("second");
    ASSERT_TRUE(supply->snapshotRequest(&first));
    ASSERT_TRUE(supply->snapshotRequest(&second));
    m_actions.pSnapshot->snapshotDone();
    EXPECT_THAT(first.calls, IsEmpty());
    EXPECT_THAT(second.calls, ElementsAre("second snapshot"));
}

TEST_F(FroCtrlTest, AnswersWithoutAnyoneWaitingAreOnlyTraced)
{
    ControllerTraces traces;
    traceCapture trace;
    auto* supply = dynamic_cast<SupSysGenericFroCtrl*>(make("PowerSupply=1", fro_types::kPowerSupply));
    supply->snapshotDone();
    supply->actionDone({});
    EXPECT_TRUE(trace.contains("supSysFroCallbackIf pointer not saved, equals zero when attempting to make callback"));
    EXPECT_TRUE(trace.contains("actionFroCallbackIf pointer not saved, equals zero when attempting to make callback"));
}

TEST(FroCtrlWithoutAdaptionTest, ObjectsAreFilteredButNothingIsConfiguredOrActedOn)
{
    froIdHandler ids;
    fROFactory factory{ids};
    froMgr table{factory};
    RecordingServices alarms{table};
    FroCtrlServices services;
    services.pTable = &table;
    services.pAlarms = &alarms;
    FroCtrlApi(services).registerAll(table);

    auto* cabinet = dynamic_cast<SupSysFroCtrlIf*>(table.createMO("Cabinet=1", fro_types::kCabinet, -1));
    ASSERT_NE(cabinet, nullptr);
    cabinet->postCreate();
    EXPECT_THAT(alarms.log, ElementsAre("alarms created Cabinet=1"));
    std::string errorText;
    RecordingClient client("client");
    EXPECT_FALSE(cabinet->performAction("notYetAvailable", {}, errorText, &client));
    EXPECT_EQ(errorText, "action was not performed");
    EXPECT_FALSE(cabinet->snapshotRequest(&client));
}

} // namespace
