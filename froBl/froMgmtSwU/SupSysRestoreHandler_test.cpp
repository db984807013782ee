// The restore at start: objects stored through the object database in one
// run are made again in a fresh object table, as at the next start.

#include "froBl/froMgmtSwU/export/SupSysRestoreHandler.h"

#include "froBl/froMgmtSwU/export/SupSysFroCtrlIf.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/ldn.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/testSupport/dbTestFixture.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace fro_types;
using Strings = std::vector<std::string>;

constexpr std::uint32_t kRangeEnd = 0x704FFFF; // as the object process asks

// What a controller saw when its restore() ran.
struct RestoreCall {
    std::string ldn;
    int objectsInTable;
};

class RecordingController : public SupSysFroCtrlIf {
public:
    RecordingController(const froMgr& table, std::vector<RestoreCall>& calls) : m_table(table), m_calls(calls) {}

    void postCreate() override {}
    void preDelete() override {}
    void postSet() override {}
    bool performAction(const std::string&, const ActionLists&, std::string&, SupSysFroCallbackIf*) override
    {
        return false;
    }
    bool snapshotRequest(SupSysFroCallbackIf*) override { return false; }
    void restore() override
    {
        Strings all;
        m_calls.push_back({m_table.getLdn(getInternalId()), m_table.getAllLdns(all)});
    }

private:
    const froMgr& m_table;
    std::vector<RestoreCall>& m_calls;
};

// Its attribute reads fail for one object, as a row that changes between the
// listing and the read would.
class AttributeFailingDatabase : public DatabaseFacade {
public:
    AttributeFailingDatabase(VantoDbConfig config, VantoTransactionApi& transaction, std::int32_t failingId)
        : DatabaseFacade(std::move(config), transaction), m_failingId(failingId)
    {
    }
    bool retrieveFroAttributes(std::int32_t froId, std::uint32_t froType, Strings& names, Strings& values,
                               Strings& types) override
    {
        return froId != m_failingId && DatabaseFacade::retrieveFroAttributes(froId, froType, names, values, types);
    }

private:
    std::int32_t m_failingId;
};

struct FlowTraces {
    FlowTraces() { ose::Trace::configure("supSysFroMgmtSwU:all"); }
    ~FlowTraces() { ose::Trace::reset(); }
};

std::string hex(std::uint32_t froType)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", froType);
    return text;
}

// Objects stored in one run and made again in a fresh object table, as at
// the next start.
class SupSysRestoreHandlerTest : public dbTestFixture {
protected:
    // An object as the management handler stores it: its class defaults,
    // some values changed and maybe attributes of its own.
    struct Stored {
        std::string ldn;
        std::int32_t id;
        std::vector<std::tuple<std::string, std::string, std::string>> attributes = {}; // name, type, value
    };

    void SetUp() override
    {
        dbTestFixture::SetUp();
        // PowerSupply is left without a controller.
        for (const char* key : {"Cabinet", "FanGroup", "HwUnit", "ExternalNode", "EquipmentSupportFunction"})
            m_table.registerType(key, [this] { return std::make_unique<RecordingController>(m_table, m_calls); });
    }

    void store(const std::vector<Stored>& objects)
    {
        const std::int32_t tx = m_server->newTransaction();
        for (const Stored& object : objects) {
            const std::uint32_t type = froType(Ldn::moType(object.ldn));
            auto made = m_factory.createFro(object.ldn, type, object.id, true, true, false);
            ASSERT_NE(made, nullptr) << object.ldn;
            for (const auto& [name, attrType, value] : object.attributes)
                if (!made->setAttribute(name, value))
                    made->addAttribute(name, value, attrType);
            ASSERT_TRUE(m_db->saveFRO(tx, object.id, type, mimOf(object.ldn, *made))) << object.ldn;
        }
        ASSERT_TRUE(commit(tx)) << m_server->lastError();
    }

    void restore(DbiAPI& database)
    {
        SupSysRestoreHandler handler(database, m_table);
        handler.restore(kFirst, kRangeEnd);
    }
    void restore() { restore(*m_db); }

    Strings restoredLdns() const
    {
        Strings ldns;
        for (const RestoreCall& call : m_calls)
            ldns.push_back(call.ldn);
        return ldns;
    }

    int objectCount() const
    {
        Strings all;
        return m_table.getAllLdns(all);
    }

    // The next start: an id handler, factory and object table of its own.
    froIdHandler m_startIds;
    fROFactory m_startFactory{m_startIds};
    froMgr m_table{m_startFactory};
    std::vector<RestoreCall> m_calls;
};

TEST_F(SupSysRestoreHandlerTest, StoredObjectsComeBackWithTheirIdsLdnsAndValues)
{
    const std::tuple<std::string, std::string, std::string> label{"label", "STRING", "left rack"};
    store({{"Cabinet=1", 4},
           {"Cabinet=1,FanGroup=1", 0, {{"fanGroupFaultIndicator", "S32", "0"}, label}},
           {"Cabinet=1,FanGroup=2", 7, {label}},
           {"Cabinet=1,PowerSupply=1", 2, {{"systemVoltage", "S32", "-480"}}}});

    restore();

    ASSERT_EQ(objectCount(), 4);
    const std::vector<std::tuple<std::string, std::uint32_t, std::int32_t>> expected{
        {"Cabinet=1", kCabinet, 4},
        {"Cabinet=1,FanGroup=1", kFanGroup, 0},
        {"Cabinet=1,FanGroup=2", kFanGroup, 7},
        {"Cabinet=1,PowerSupply=1", kPowerSupply, 2}};
    for (const auto& [ldn, type, id] : expected) {
        const fRO* fro = m_table.getFro(ldn);
        ASSERT_NE(fro, nullptr) << ldn;
        EXPECT_EQ(fro->getFroType(), type) << ldn;
        EXPECT_EQ(fro->getExternalId(), id) << ldn;
    }
    const fRO& fanGroup = *m_table.getFro("Cabinet=1,FanGroup=1");
    EXPECT_EQ(fanGroup.getAttribute("fanGroupFaultIndicator"), "0") << "the stored value, not the default";
    // Not among the class defaults: added with its stored type.
    EXPECT_EQ(fanGroup.getAttributeNames(), (Strings{"fanGroupFaultIndicator", "label"}));
    EXPECT_EQ(fanGroup.getAttributeType("label"), "STRING");
    EXPECT_EQ(fanGroup.getAttribute("label"), "left rack");
    EXPECT_EQ(m_table.getFro("Cabinet=1,FanGroup=2")->getAttribute("fanGroupFaultIndicator"), "1");
    EXPECT_EQ(m_table.getFro("Cabinet=1,PowerSupply=1")->getAttribute("systemVoltage"), "-480");
    EXPECT_EQ(m_calls.size(), 3u) << "controllers only; the power supply is a plain object";

    // The restored ids are taken: a new object gets the lowest free one and
    // none can be made with a stored one.
    fRO* fresh = m_table.createMO("Cabinet=1,FanGroup=3", kFanGroup, -1);
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(fresh->getExternalId(), 1);
    EXPECT_EQ(m_table.createMO("Cabinet=1,FanGroup=4", kFanGroup, 7), nullptr);

    // The restore closed the database; the same object serves what follows.
    EXPECT_FALSE(m_db->isConnected());
    store({{"Cabinet=1,FanGroup=3", fresh->getExternalId(), {label}}});
    std::vector<froRecord> records;
    ASSERT_TRUE(m_db->retrieveFros(kFirst, kEnd, records));
    EXPECT_EQ(records.size(), 5u);
}

TEST_F(SupSysRestoreHandlerTest, ObjectsAreMadeInRecreationOrderAndControllersRestoredAfterAllExist)
{
    // Stored in class and id order, as the database gives them back. Only the
    // first cabinet and equipment support function move.
    store({{"Cabinet=1", 0},
           {"Cabinet=2", 1},
           {"Cabinet=1,FanGroup=1", 0},
           {"Cabinet=1,HwUnit=SUP1", 0},
           {"Cabinet=1,HwUnit=SUP2", 1},
           {"Cabinet=1,HwUnit=3", 2},
           {"ExternalNode=1", 0},
           {"ExternalNode=2", 1},
           {"EquipmentSupportFunction=1", 0},
           {"EquipmentSupportFunction=2", 1}});
    traceCapture trace;
    FlowTraces flow;

    restore();

    const Strings order{"EquipmentSupportFunction=1", "Cabinet=1", "ExternalNode=2", "ExternalNode=1",
                        "Cabinet=1,HwUnit=SUP1", "Cabinet=1,HwUnit=3", "Cabinet=1,HwUnit=SUP2",
                        "Cabinet=2", "Cabinet=1,FanGroup=1", "EquipmentSupportFunction=2"};
    const std::string text = trace.text();
    std::size_t last = 0;
    for (const std::string& ldn : order) {
        const std::size_t at = text.find("ldn: " + ldn + " at startup");
        ASSERT_NE(at, std::string::npos) << ldn;
        EXPECT_GT(at, last) << ldn << " made out of order";
        last = at;
    }
    EXPECT_TRUE(trace.contains("found 10 fros to recreate at startup"));
    EXPECT_TRUE(
        trace.contains("recreated fro type: " + hex(kHwUnit) + ", id: 1, ldn: Cabinet=1,HwUnit=SUP2 at startup"));

    EXPECT_EQ(restoredLdns(), order);
    for (const RestoreCall& call : m_calls)
        EXPECT_EQ(call.objectsInTable, 10) << call.ldn;
}

std::vector<froRecord> recordsOf(const std::vector<std::pair<std::uint32_t, std::string>>& list)
{
    std::vector<froRecord> records;
    std::int32_t id = 0;
    for (const auto& [type, ldn] : list)
        records.push_back({id++, type, ldn});
    return records;
}

Strings ldnsOf(const std::vector<froRecord>& records)
{
    Strings ldns;
    for (const froRecord& record : records)
        ldns.push_back(record.ldn);
    return ldns;
}

TEST(SupSysRestoreOrderTest, Sup1ComesBeforeSup2InEitherDatabaseOrder)
{
    traceCapture trace;
    FlowTraces flow;
    auto sup1First = recordsOf({{kCabinet, "Cabinet=1"},
                                {kHwUnit, "Cabinet=1,HwUnit=SUP1"},
                                {kHwUnit, "Cabinet=1,HwUnit=A"},
                                {kHwUnit, "Cabinet=1,HwUnit=SUP2"},
                                {kPowerSupply, "Cabinet=1,PowerSupply=1"}});
    SupSysRestoreHandler::sortForRecreation(sup1First);
    EXPECT_EQ(ldnsOf(sup1First), (Strings{"Cabinet=1", "Cabinet=1,HwUnit=SUP1", "Cabinet=1,HwUnit=SUP2",
                                          "Cabinet=1,HwUnit=A", "Cabinet=1,PowerSupply=1"}));
    EXPECT_TRUE(trace.contains(
        "Cabinet=1,HwUnit=SUP1 was placed first in the recreation order as there are multiple SUP MOs"));

    traceCapture quiet;
    auto sup2First = recordsOf({{kHwUnit, "Cabinet=1,HwUnit=SUP2"},
                                {kHwUnit, "Cabinet=1,HwUnit=A"},
                                {kHwUnit, "Cabinet=1,HwUnit=SUP1"}});
    SupSysRestoreHandler::sortForRecreation(sup2First);
    EXPECT_EQ(ldnsOf(sup2First), (Strings{"Cabinet=1,HwUnit=SUP1", "Cabinet=1,HwUnit=A", "Cabinet=1,HwUnit=SUP2"}));
    EXPECT_FALSE(quiet.contains("was placed first")) << "already first";

    // Without a SUP2 nothing is moved: the units stay reversed.
    auto alone = recordsOf({{kHwUnit, "Cabinet=1,HwUnit=SUP1"}, {kHwUnit, "Cabinet=1,HwUnit=B"}});
    SupSysRestoreHandler::sortForRecreation(alone);
    EXPECT_EQ(ldnsOf(alone), (Strings{"Cabinet=1,HwUnit=B", "Cabinet=1,HwUnit=SUP1"}));
    EXPECT_FALSE(quiet.contains("was placed first"));
}

TEST_F(SupSysRestoreHandlerTest, AnEmptyOrUnlistableDatabaseRestoresNothingAndIsClosed)
{
    {
        traceCapture trace;
        FlowTraces flow;
        restore();
        EXPECT_TRUE(trace.contains("Checking the database for stored fros to recreate at startup"));
        EXPECT_TRUE(trace.contains("found 0 fros to recreate at startup"));
        EXPECT_FALSE(trace.contains("Couldn't get list"));
    }
    EXPECT_EQ(objectCount(), 0);
    EXPECT_FALSE(m_db->isConnected());

    store({{"Cabinet=1", 0}});
    m_db->close();
    query("drop table apc_fro_versions");
    traceCapture trace;
    FlowTraces flow;
    restore();
    EXPECT_TRUE(trace.contains("Couldn't get list of FROs from the database, maybe no fro's were stored"));
    EXPECT_FALSE(trace.contains("found 0 fros") || trace.contains("found 1 fros")) << "nothing sorted or made";
    EXPECT_EQ(objectCount(), 0);
    EXPECT_FALSE(m_db->isConnected());
}

TEST_F(SupSysRestoreHandlerTest, ARecordWhoseObjectCannotBeMadeIsTracedAndTheRestRestored)
{
    store({{"Cabinet=1", 0},
           {"Cabinet=1,FanGroup=1", 1},
           {"Cabinet=1,FanGroup=2", 2},
           {"Cabinet=1,FanGroup=3", 3, {{"fanGroupFaultIndicator", "S32", "0"}}},
           {"Cabinet=1,FanGroup=4", 4}});
    // A row with an id that no object can have, and one whose ldn names
    // another class than its table.
    query("update apc_frodata_FanGroup_INITIAL set froid = -1 where froid = 2");
    query("update apc_frodata_FanGroup_INITIAL set ldn = 'Cabinet=1,Gadget=4' where froid = 4");
    // Something made this name already.
    fRO* before = m_table.createMO("Cabinet=1", kCabinet, 5);
    ASSERT_NE(before, nullptr);
    AttributeFailingDatabase database(m_config, *m_server, 3);
    traceCapture trace;
    FlowTraces flow;

    restore(database);

    EXPECT_TRUE(trace.contains("Failed to recreate the fro in the fro manager, type: " + hex(kCabinet) +
                               ", id: 0, ldn: Cabinet=1"));
    EXPECT_EQ(m_table.getFro("Cabinet=1"), before);
    EXPECT_EQ(before->getExternalId(), 5);
    EXPECT_TRUE(trace.contains("Failed to recreate the fro in the fro manager, type: " + hex(kFanGroup) +
                               ", id: -1, ldn: Cabinet=1,FanGroup=2"));
    EXPECT_FALSE(m_table.exists("Cabinet=1,FanGroup=2")) << "not made with a new id";
    EXPECT_TRUE(trace.contains("Failed to recreate the fro in the fro manager, type: " + hex(kFanGroup) +
                               ", id: 4, ldn: Cabinet=1,Gadget=4"));
    EXPECT_FALSE(m_table.exists("Cabinet=1,Gadget=4"));

    // Made, but with its class defaults only.
    EXPECT_TRUE(trace.contains("Couldnt recreate the attributes for type: " + hex(kFanGroup) +
                               ", id: 3, ldn: Cabinet=1,FanGroup=3"));
    ASSERT_TRUE(m_table.exists("Cabinet=1,FanGroup=3"));
    EXPECT_EQ(m_table.getAttribute("Cabinet=1,FanGroup=3", "fanGroupFaultIndicator"), "1");
    ASSERT_TRUE(m_table.exists("Cabinet=1,FanGroup=1"));
    EXPECT_EQ(m_table.getFro("Cabinet=1,FanGroup=1")->getExternalId(), 1);

    // The object that was there before is not restored: it was not made here.
    EXPECT_EQ(restoredLdns(), (Strings{"Cabinet=1,FanGroup=1", "Cabinet=1,FanGroup=3"}));
    EXPECT_FALSE(database.isConnected());
}

TEST_F(SupSysRestoreHandlerTest, AnUnreadableRowIsTracedAndSkippedAndTheOthersRestored)
{
    store({{"Cabinet=1,FanGroup=1", 0}, {"Cabinet=1,FanGroup=2", 1}, {"Cabinet=1,PowerSupply=1", 0}});
    // Written by something other than this system: a raw quote in the ldn.
    query("update apc_frodata_FanGroup_INITIAL set ldn = 'Cabinet=1,\"FanGroup=1' where froid = 0");
    traceCapture trace;
    FlowTraces flow;

    restore();

    EXPECT_TRUE(trace.contains("object 0 of froType " + hex(kFanGroup) + " cannot be read, left out"));
    EXPECT_TRUE(trace.contains("found 2 fros to recreate at startup"));
    EXPECT_EQ(objectCount(), 2);
    EXPECT_TRUE(m_table.exists("Cabinet=1,FanGroup=2"));
    EXPECT_TRUE(m_table.exists("Cabinet=1,PowerSupply=1"));
    EXPECT_EQ(restoredLdns(), Strings{"Cabinet=1,FanGroup=2"});
}

} // namespace
