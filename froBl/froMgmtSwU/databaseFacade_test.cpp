#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/testSupport/dbTestFixture.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"
#include "vanto/VantoTransactionServer.h"
#include "vanto/testSupport/sqliteFile.h"

#include "ose/TestWorld.h"

#include <cstdio>

namespace {

using namespace fro_types;
using DatabaseFacadeTest = dbTestFixture;

TEST_F(DatabaseFacadeTest, BulkRetrievalGivesEveryStoredObjectOfTheRange)
{
    std::vector<froRecord> records;
    ASSERT_TRUE(m_db->retrieveFros(kFirst, kEnd, records));
    EXPECT_TRUE(records.empty());

    const std::int32_t tx = m_server->newTransaction();
    std::vector<std::string> ldns{"Cabinet=1", "Cabinet=1,FanGroup=1", "Cabinet=1,FanGroup=2", "Cabinet=1,EFuse=4"};
    std::vector<std::unique_ptr<fRO>> objects;
    for (const std::string& ldn : ldns) {
        const std::string moType = ldn.substr(ldn.rfind(',') + 1, ldn.rfind('=') - ldn.rfind(',') - 1);
        std::uint32_t froType = 0;
        for (const auto& cls : kClasses)
            froType = cls.name == moType ? cls.froType : froType;
        objects.push_back(makeObject(ldn, froType));
        ASSERT_TRUE(m_db->saveFRO(tx, objects.back()->getInternalId(), froType, mimOf(ldn, *objects.back())));
    }
    ASSERT_TRUE(commit(tx));

    ASSERT_TRUE(m_db->retrieveFros(kFirst, kEnd, records));
    ASSERT_EQ(records.size(), 4u);
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(records[i].ldn, ldns[i]) << "in class order";
        EXPECT_EQ(records[i].froId, objects[i]->getInternalId());
        EXPECT_EQ(records[i].froType, objects[i]->getFroType());
    }

    records.clear();
    ASSERT_TRUE(m_db->retrieveFros(kFanGroup, kHwUnit, records));
    EXPECT_EQ(records.size(), 2u) << "the upper bound is excluded";
}

TEST_F(DatabaseFacadeTest, AnUnreadableStoredObjectIsLeftOutOfTheBulkRetrievalWithATrace)
{
    auto first = makeObject("Cabinet=1,FanGroup=1", kFanGroup);
    auto second = makeObject("Cabinet=1,FanGroup=2", kFanGroup);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, first->getInternalId(), kFanGroup, mimOf("Cabinet=1,FanGroup=1", *first)));
    ASSERT_TRUE(m_db->saveFRO(tx, second->getInternalId(), kFanGroup, mimOf("Cabinet=1,FanGroup=2", *second)));
    ASSERT_TRUE(commit(tx));
    // Written by something other than this system: a raw quote in the ldn.
    query("update apc_frodata_FanGroup_INITIAL set ldn = 'Cabinet=1,\"FanGroup=1' where froid = " +
          std::to_string(first->getInternalId()));

    traceCapture trace;
    std::vector<froRecord> records;
    ASSERT_TRUE(m_db->retrieveFros(kFirst, kEnd, records));
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].ldn, "Cabinet=1,FanGroup=2");
    EXPECT_EQ(records[0].froId, second->getInternalId());
    char words[96];
    std::snprintf(words, sizeof words, "object %d of froType 0x%08x cannot be read, left out", first->getInternalId(),
                  kFanGroup);
    EXPECT_TRUE(trace.contains(words));
}

TEST_F(DatabaseFacadeTest, AFailedListingFailsTheBulkRetrievalAndAddsNothing)
{
    auto object = makeObject("Cabinet=1", kCabinet);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kCabinet, mimOf("Cabinet=1", *object)));
    ASSERT_TRUE(commit(tx));

    // The ids of one class cannot be listed: its table name is no name.
    query("update apc_fro_versions set frodataTableName = 'no name' where frotype = " + std::to_string(kPowerSupply));
    std::vector<froRecord> records;
    EXPECT_FALSE(m_db->retrieveFros(kFirst, kEnd, records));
    EXPECT_TRUE(records.empty()) << "not the classes listed before the failure";
    EXPECT_TRUE(m_db->retrieveFros(kFirst, kPowerSupply, records)) << "the classes before it still list";
    EXPECT_EQ(records.size(), 1u);

    // The classes themselves cannot be listed.
    m_db->close();
    query("drop table apc_fro_versions");
    records.clear();
    EXPECT_FALSE(m_db->retrieveFros(kFirst, kEnd, records));
    EXPECT_TRUE(records.empty());
}

TEST_F(DatabaseFacadeTest, AttributesOfAnObjectComeAsThreeLists)
{
    auto unit = makeObject("Cabinet=1,HwUnit=1", kHwUnit);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, unit->getInternalId(), kHwUnit, mimOf("Cabinet=1,HwUnit=1", *unit)));
    ASSERT_TRUE(commit(tx));
    EXPECT_EQ(stored(unit->getInternalId(), kHwUnit), attributesOf(*unit));

    std::vector<std::string> names, values, types;
    EXPECT_FALSE(m_db->retrieveFroAttributes(12345, kHwUnit, names, values, types)) << "no such object";
    EXPECT_TRUE(m_db->retrieveFroAttributes(1, kBatteryBackup, names, values, types)) << "no table: nothing";
    EXPECT_TRUE(names.empty());
}

TEST_F(DatabaseFacadeTest, ALostConnectionDuringTheClassQueryIsTracedAndRepeated)
{
    auto object = makeObject("Cabinet=1", kCabinet);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kCabinet, mimOf("Cabinet=1", *object)));
    ASSERT_TRUE(commit(tx));

    traceCapture trace;
    ose::Trace::configure("supSysFroDbLU:all");
    odbc_fault::failNext(odbc_fault::Call::Fetch, 1);
    std::vector<froRecord> records;
    const bool ok = m_db->retrieveFros(kFirst, kEnd, records);
    ose::Trace::reset();
    ASSERT_TRUE(ok);
    ASSERT_EQ(records.size(), 1u) << "the repeat starts from an empty list";
    EXPECT_EQ(records[0].ldn, "Cabinet=1");
    const std::string sql = "select frotype from apc_fro_versions where frotype >= " + std::to_string(kFirst) +
                            " AND frotype < " + std::to_string(kEnd) + " order by frotype";
    EXPECT_TRUE(trace.contains("Executing SQL: " + sql + " " + std::to_string(sql.size())));
    EXPECT_TRUE(trace.contains("NC::DatabaseFacade DB Disconnected while executing " + sql));
}

// The object process's own database: made once, at first use, on the node's
// file, attached to the transaction server and subscribed at the process's
// distributor. It makes the process's singletons, so it needs a process of
// its own, as ctest gives every test.
class DatabaseFacadeInstanceTest : public ose::testing::TestWorld {};

TEST_F(DatabaseFacadeInstanceTest, TheProcessHasOneDatabaseMadeAtFirstUseWithItsConfiguration)
{
    sqliteFile file;
    VantoDbConfig config = file.config();
    config.wait = [](std::chrono::milliseconds) {};
    createTransactionServer(world(), node(), config);
    DatabaseFacade* first = nullptr;
    DatabaseFacade* second = nullptr;
    traceCapture trace;
    ose::Trace::configure("supSysFroDbLU:all");
    spawn("support_system_control_thread", [&] {
        ASSERT_TRUE(DatabaseFacade::configure(config));
        first = &DatabaseFacade::instance();
        EXPECT_TRUE(first->init());
        second = &DatabaseFacade::instance();
        VantoDbConfig other = config;
        other.connectionString = "DSN=elsewhere";
        EXPECT_FALSE(DatabaseFacade::configure(other));
    });
    world().runUntilIdle();
    ose::Trace::reset();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_TRUE(trace.contains("attached to TRANS"));
    EXPECT_TRUE(trace.contains("the database is in use already"));
    EXPECT_EQ(SignalDistributor::instance().count(), 4u);
    EXPECT_EQ(file.scalar("select count(*) from apc_fro_versions"), "12");
}

} // namespace
