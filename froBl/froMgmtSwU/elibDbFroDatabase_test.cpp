#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/xmlEscape.h"
#include "froBl/froMgmtSwU/export/xmlGuard.h"
#include "froBl/froMgmtSwU/testSupport/dbTestFixture.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"

namespace {

using namespace fro_types;
using ElibDbFroDatabaseTest = dbTestFixture;

TEST_F(ElibDbFroDatabaseTest, TheSchemaIsMadeFromScratchAndFoundAgain)
{
    const Rows versions = query("select frotype, froTypeName, frodataTableName from apc_fro_versions order by frotype");
    const Rows expected{
        {"117702656", "Cabinet", "apc_frodata_Cabinet_INITIAL"},
        {"117702657", "FanGroup", "apc_frodata_FanGroup_INITIAL"},
        {"117702658", "HwUnit", "apc_frodata_HwUnit_INITIAL"},
        {"117702659", "AlarmPort", "apc_frodata_AlarmPort_INITIAL"},
        {"117702660", "ControlPort", "apc_frodata_ControlPort_INITIAL"},
        {"117702661", "BatteryBackup", "apc_frodata_BatteryBackup_INITIAL"},
        {"117702662", "EcPort", "apc_frodata_EcPort_INITIAL"},
        {"117702663", "ExternalNode", "apc_frodata_ExternalNode_INITIAL"},
        {"117702664", "PowerDistribution", "apc_frodata_PowerDistribution_INITIAL"},
        {"117702665", "PowerSupply", "apc_frodata_PowerSupply_INITIAL"},
        {"117702666", "EquipmentSupportFunction", "apc_frodata_EquipmentSupportFunction_INITIAL"},
        {"117702667", "EFuse", "apc_frodata_EFuse_INITIAL"},
    };
    EXPECT_EQ(versions, expected);
    EXPECT_TRUE(dataTables().empty()) << "no class table before its first object";

    traceCapture trace;
    ose::Trace::configure("supSysFroDbLU:all");
    DatabaseFacade again(m_config, *m_server);
    EXPECT_TRUE(again.init());
    ose::Trace::reset();
    EXPECT_FALSE(trace.contains("scratch installation"));
    EXPECT_EQ(query("select count(*) from apc_fro_versions")[0][0], "12");
}

TEST_F(ElibDbFroDatabaseTest, AnOldDatabaseGetsOnlyItsMissingClassRows)
{
    query("delete from apc_fro_versions where frotype = " + std::to_string(kEFuse));
    query("insert into apc_fro_versions values (117706752, 'Other', 'apc_frodata_Other_INITIAL')");
    DatabaseFacade again(m_config, *m_server);
    ASSERT_TRUE(again.init());
    EXPECT_EQ(query("select count(*) from apc_fro_versions")[0][0], "13");
    EXPECT_EQ(query("select froTypeName from apc_fro_versions where frotype = " + std::to_string(kEFuse))[0][0], "EFuse");
}

TEST_F(ElibDbFroDatabaseTest, ObjectsOfEveryClassAreSavedReadBackAndDeleted)
{
    std::vector<std::unique_ptr<fRO>> objects;
    const std::int32_t tx = m_server->newTransaction();
    for (std::size_t i = 0; i < kPersistentCount; ++i) {
        const std::string ldn = "Cabinet=1," + std::string(kClasses[i].name) + "=" + std::to_string(i);
        objects.push_back(makeObject(ldn, kClasses[i].froType));
        objects.back()->addAttribute("userLabel", "label " + std::to_string(i), "STRING");
        objects.back()->setAttribute("parentObjectId", std::int32_t{3}); // EFuse only
        ASSERT_TRUE(m_db->saveFRO(tx, objects.back()->getInternalId(), kClasses[i].froType,
                                  mimOf(ldn, *objects.back())))
            << kClasses[i].name;
    }
    ASSERT_TRUE(commit(tx)) << m_server->lastError();
    EXPECT_EQ(dataTables().size(), kPersistentCount);

    for (const auto& object : objects) {
        EXPECT_EQ(stored(object->getInternalId(), object->getFroType()), attributesOf(*object));
        std::vector<std::int32_t> ids;
        ASSERT_TRUE(m_db->getFroIds(object->getFroType(), ids));
        EXPECT_EQ(ids, std::vector<std::int32_t>{object->getInternalId()});
    }

    const std::int32_t deletion = m_server->newTransaction();
    for (const auto& object : objects)
        ASSERT_TRUE(m_db->deleteFRO(deletion, object->getInternalId(), object->getFroType()));
    ASSERT_TRUE(commit(deletion));
    EXPECT_TRUE(dataTables().empty()) << "the sanity check drops emptied tables";
    EXPECT_EQ(query("select count(*) from apc_fro_attributes")[0][0], "0");
    std::string xml = "x";
    EXPECT_TRUE(m_db->retrieveFRO(objects[0]->getInternalId(), kCabinet, xml));
    EXPECT_EQ(xml, "");
}

TEST_F(ElibDbFroDatabaseTest, TheClassTableGrowsByItselfWithTheColumnsOfItsFirstObject)
{
    auto first = makeObject("Cabinet=1", kCabinet);
    first->addAttribute("parentRef", "Root=1", "STRING");
    auto second = makeObject("Cabinet=2", kCabinet);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, first->getInternalId(), kCabinet, mimOf("Cabinet=1", *first)));
    ASSERT_TRUE(m_db->saveFRO(tx, second->getInternalId(), kCabinet, mimOf("Cabinet=2", *second)));
    int attributeRows = 0;
    for (const std::string& statement : m_server->pending(tx))
        attributeRows += statement.starts_with("insert into apc_fro_attributes") ? 1 : 0;
    EXPECT_EQ(attributeRows, 2) << "written once per class and transaction, parentRef never";
    ASSERT_TRUE(commit(tx));
    EXPECT_EQ(query("select count(*) from apc_frodata_Cabinet_INITIAL")[0][0], "2");
    const Rows columns = query("select name from pragma_table_info('apc_frodata_Cabinet_INITIAL')");
    EXPECT_EQ(columns, (Rows{{"froid"}, {"ldn"}, {"cabinetIdentifier"}, {"smokeDetector"}}));

    auto third = makeObject("Cabinet=3", kCabinet);
    third->addAttribute("extra", "1", "S32");
    const std::int32_t later = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(later, third->getInternalId(), kCabinet, mimOf("Cabinet=3", *third)));
    EXPECT_FALSE(commit(later)) << "the platform refuses the insert; the table is not altered";
    EXPECT_EQ(query("select name from pragma_table_info('apc_frodata_Cabinet_INITIAL')"), columns);
    EXPECT_EQ(query("select count(*) from apc_frodata_Cabinet_INITIAL")[0][0], "2");
}

TEST_F(ElibDbFroDatabaseTest, ARolledBackFirstObjectLeavesNoTableBehind)
{
    auto object = makeObject("FanGroup=1", kFanGroup);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kFanGroup, mimOf("FanGroup=1", *object)));
    EXPECT_EQ(dataTables(), std::vector<std::string>{"apc_frodata_FanGroup_INITIAL"});
    m_server->rollBack_e(tx, 1);
    const auto signal = localTransactionServer::indication(10015, tx);
    m_db->handleSignal(signal.data(), signal.size());
    EXPECT_TRUE(dataTables().empty());
    EXPECT_EQ(m_db->registeredTransactionCount(), 0u);

    // The dropped table is known to be gone: the next first object makes it again.
    const std::int32_t again = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(again, object->getInternalId(), kFanGroup, mimOf("FanGroup=1", *object)));
    ASSERT_TRUE(commit(again)) << m_server->lastError();
    EXPECT_EQ(stored(object->getInternalId(), kFanGroup), attributesOf(*object));

    // A table dropped behind the database's back fails that commit; after
    // the failure the table is looked for again and made anew.
    auto second = makeObject("FanGroup=2", kFanGroup);
    query("drop table apc_frodata_FanGroup_INITIAL");
    const std::int32_t blind = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(blind, second->getInternalId(), kFanGroup, mimOf("FanGroup=2", *second)));
    EXPECT_FALSE(commit(blind));
    const std::int32_t seeing = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(seeing, second->getInternalId(), kFanGroup, mimOf("FanGroup=2", *second)));
    ASSERT_TRUE(commit(seeing)) << m_server->lastError();
    EXPECT_EQ(stored(second->getInternalId(), kFanGroup), attributesOf(*second));
}

// The first objects of a class in two transactions open at once: each
// transaction carries the class's attribute rows itself.
TEST_F(ElibDbFroDatabaseTest, ATransactionsObjectsDoNotDependOnAnotherTransactionsOutcome)
{
    auto lost = makeObject("Cabinet=1", kCabinet);
    auto kept = makeObject("Cabinet=2", kCabinet);
    const std::int32_t rolledBack = m_server->newTransaction();
    const std::int32_t committed = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(rolledBack, lost->getInternalId(), kCabinet, mimOf("Cabinet=1", *lost)));
    ASSERT_TRUE(m_db->saveFRO(committed, kept->getInternalId(), kCabinet, mimOf("Cabinet=2", *kept)));
    m_server->rollBack_e(rolledBack, 1);
    const auto rollback = localTransactionServer::indication(10015, rolledBack);
    m_db->handleSignal(rollback.data(), rollback.size());
    ASSERT_TRUE(commit(committed)) << m_server->lastError();

    // A restarted node reads the object back whole.
    m_db.reset();
    m_server = std::make_unique<localTransactionServer>(m_config);
    m_db = std::make_unique<DatabaseFacade>(m_config, *m_server);
    ASSERT_TRUE(m_db->init());
    std::vector<froRecord> records;
    ASSERT_TRUE(m_db->retrieveFros(kCabinet, kCabinet + 1, records));
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].ldn, "Cabinet=2");
    EXPECT_EQ(stored(kept->getInternalId(), kCabinet), attributesOf(*kept));

    // Both commit: the second would store the class's rows twice and is
    // refused whole, so its caller learns of it; stored again, it is whole.
    auto one = makeObject("PowerSupply=1", kPowerSupply);
    auto two = makeObject("PowerSupply=2", kPowerSupply);
    const std::int32_t first = m_server->newTransaction();
    const std::int32_t second = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(first, one->getInternalId(), kPowerSupply, mimOf("PowerSupply=1", *one)));
    ASSERT_TRUE(m_db->saveFRO(second, two->getInternalId(), kPowerSupply, mimOf("PowerSupply=2", *two)));
    ASSERT_TRUE(commit(first));
    EXPECT_FALSE(commit(second));
    const std::int32_t again = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(again, two->getInternalId(), kPowerSupply, mimOf("PowerSupply=2", *two)));
    ASSERT_TRUE(commit(again)) << m_server->lastError();
    EXPECT_EQ(stored(one->getInternalId(), kPowerSupply), attributesOf(*one));
    EXPECT_EQ(stored(two->getInternalId(), kPowerSupply), attributesOf(*two));
}

TEST_F(ElibDbFroDatabaseTest, AnyTextValueIsStoredAndReadBackUnchanged)
{
    const std::vector<std::string> hostile{
        "it's",
        "a;b; drop table apc_fro_versions; --",
        "'); delete from apc_fro_versions; --",
        "<b>bold</b> & \"quoted\"",
        "Grüße ☺ 日本語",
        "  leading and trailing  ",
        "back\\slash\\",
        "",
    };
    auto object = makeObject("ExternalNode=1", kExternalNode);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kExternalNode,
                              mimOf("ExternalNode=1", {"logicalName", "fullDistinguishedName"}, {"STRING", "STRING"},
                                    {xmlEscape::encode(hostile[0]), xmlEscape::encode(hostile[1])})));
    ASSERT_TRUE(commit(tx)) << m_server->lastError();

    for (const std::string& raw : hostile) {
        for (bool inTransaction : {false, true}) {
            const std::int32_t update = m_server->newTransaction();
            const std::string body = mimOf("ExternalNode=1", {"logicalName"}, {"STRING"}, {xmlEscape::encode(raw)});
            ASSERT_TRUE(m_db->saveAttributes(update, object->getInternalId(), kExternalNode, body, inTransaction));
            if (inTransaction) {
                ASSERT_TRUE(commit(update)) << m_server->lastError();
            }
            const auto attributes = stored(object->getInternalId(), kExternalNode);
            const auto name = attributes.find("logicalName");
            ASSERT_NE(name, attributes.end()) << raw;
            EXPECT_EQ(name->second, std::make_pair(std::string("STRING"), xmlEscape::encode(raw))) << raw;
        }
    }
    EXPECT_EQ(query("select count(*) from apc_fro_versions")[0][0], "12");
    EXPECT_EQ(query("select fullDistinguishedName from apc_frodata_ExternalNode_INITIAL")[0][0],
              xmlEscape::encode(hostile[1]));
}

TEST_F(ElibDbFroDatabaseTest, NumbersAreCheckedBeforeTheyReachAStatement)
{
    auto object = makeObject("EFuse=1", kEFuse); // parentObjectId: S32 with an empty default
    object->addAttribute("mask", "4294967295", "U32");
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kEFuse, mimOf("EFuse=1", *object)));
    ASSERT_TRUE(commit(tx)) << m_server->lastError();
    auto values = stored(object->getInternalId(), kEFuse);
    EXPECT_EQ(values["mask"].second, "4294967295");
    EXPECT_EQ(values["parentObjectId"].second, "0");

    traceCapture trace;
    const std::int32_t bad = m_server->newTransaction();
    EXPECT_FALSE(m_db->saveAttributes(bad, object->getInternalId(), kEFuse,
                                      mimOf("EFuse=1", {"eFuseIndicator"}, {"S32"}, {"1; drop table x"}), true));
    EXPECT_FALSE(m_db->saveFRO(bad, 99, kEFuse, mimOf("EFuse=2", {"eFuseIndicator"}, {"S32"}, {"1, 2"})));
    EXPECT_FALSE(m_db->saveFRO(bad, 99, kEFuse, mimOf("EFuse=2", {"bad name"}, {"S32"}, {"1"})));
    EXPECT_TRUE(m_server->pending(bad).empty());
    EXPECT_TRUE(trace.contains("is not a number of type S32"));
}

TEST_F(ElibDbFroDatabaseTest, ALostConnectionIsRepairedWithoutLosingAWrite)
{
    auto object = makeObject("PowerSupply=1", kPowerSupply);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kPowerSupply, mimOf("PowerSupply=1", *object)));
    ASSERT_TRUE(commit(tx));
    const auto update = [&](const char* value) {
        return m_db->saveAttributes(0, object->getInternalId(), kPowerSupply,
                                    mimOf("PowerSupply=1", {"systemVoltage"}, {"S32"}, {value}), false);
    };

    odbc_fault::failNext(odbc_fault::Call::ExecDirect, 1);
    ASSERT_TRUE(update("-53"));
    EXPECT_EQ(odbc_fault::injected(odbc_fault::Call::ExecDirect), 1);
    EXPECT_EQ(query("select systemVoltage from apc_frodata_PowerSupply_INITIAL")[0][0], "-53");

    odbc_fault::failNext(odbc_fault::Call::Fetch, 1);
    EXPECT_EQ(stored(object->getInternalId(), kPowerSupply)["systemVoltage"].second, "-53");
    EXPECT_EQ(odbc_fault::injected(odbc_fault::Call::Fetch), 1);

    // The data source stays away for two attempts: two waits, no sleep.
    odbc_fault::failNext(odbc_fault::Call::ExecDirect, 1);
    odbc_fault::failNext(odbc_fault::Call::Connect, 2);
    ASSERT_TRUE(update("-54"));
    EXPECT_EQ(m_waits, 2);
    EXPECT_EQ(query("select systemVoltage from apc_frodata_PowerSupply_INITIAL")[0][0], "-54");
    EXPECT_TRUE(m_db->isConnected());
}

TEST_F(ElibDbFroDatabaseTest, ADatabaseThatStaysAwayFailsTheOperationInBoundedTime)
{
    auto object = makeObject("PowerSupply=1", kPowerSupply);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kPowerSupply, mimOf("PowerSupply=1", *object)));
    ASSERT_TRUE(commit(tx));

    odbc_fault::failNext(odbc_fault::Call::ExecDirect, 1);
    odbc_fault::failNext(odbc_fault::Call::Connect, 1000);
    const std::string body = mimOf("PowerSupply=1", {"systemVoltage"}, {"S32"}, {"-50"});
    EXPECT_FALSE(m_db->saveAttributes(0, object->getInternalId(), kPowerSupply, body, false));
    EXPECT_EQ(m_waits, 3);
    EXPECT_FALSE(m_db->isConnected());
    // While it stays away, each later use tries once and is refused at once.
    EXPECT_FALSE(m_db->saveAttributes(0, object->getInternalId(), kPowerSupply, body, false));
    EXPECT_EQ(m_waits, 3);

    odbc_fault::reset();
    EXPECT_TRUE(m_db->saveAttributes(0, object->getInternalId(), kPowerSupply, body, false));
    EXPECT_EQ(query("select systemVoltage from apc_frodata_PowerSupply_INITIAL")[0][0], "-50");
}

TEST_F(ElibDbFroDatabaseTest, GarbageFromTheDatabaseIsRefusedWithATrace)
{
    auto object = makeObject("Cabinet=1", kCabinet);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kCabinet, mimOf("Cabinet=1", *object)));
    ASSERT_TRUE(commit(tx));
    std::string xml;
    traceCapture trace;

    query("update apc_frodata_Cabinet_INITIAL set cabinetIdentifier = '" + std::string(60000, 'x') + "'");
    EXPECT_FALSE(m_db->retrieveFRO(object->getInternalId(), kCabinet, xml));
    EXPECT_TRUE(trace.contains("holds more than 49151 bytes"));

    query("update apc_frodata_Cabinet_INITIAL set cabinetIdentifier = 'a\" injected=\"1'");
    EXPECT_FALSE(m_db->retrieveFRO(object->getInternalId(), kCabinet, xml));

    query("update apc_frodata_Cabinet_INITIAL set cabinetIdentifier = 'ok', smokeDetector = 99999999999");
    EXPECT_FALSE(m_db->retrieveFRO(object->getInternalId(), kCabinet, xml));
    EXPECT_TRUE(trace.contains("out of range"));

    query("update apc_fro_versions set frodataTableName = 'x; drop table apc_fro_versions' where frotype = " +
          std::to_string(kFanGroup));
    auto fan = makeObject("FanGroup=1", kFanGroup);
    EXPECT_FALSE(m_db->saveFRO(tx, fan->getInternalId(), kFanGroup, mimOf("FanGroup=1", *fan)));
    EXPECT_TRUE(trace.contains("is not a table name"));
}

TEST_F(ElibDbFroDatabaseTest, TransactionBookkeepingFollowsThePlatformSignals)
{
    auto object = makeObject("Cabinet=1", kCabinet);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kCabinet, mimOf("Cabinet=1", *object)));
    EXPECT_EQ(m_db->registeredTransactionCount(), 1u);
    m_db->close();
    EXPECT_TRUE(m_db->isConnected()) << "kept while a transaction has pending SQL";

    const std::uint8_t tooShort[] = {0, 0, 0x27};
    m_db->handleSignal(tooShort, sizeof tooShort);
    const auto commitWithoutId = localTransactionServer::indication(10014, tx);
    m_db->handleSignal(commitWithoutId.data(), 8);
    EXPECT_EQ(m_db->registeredTransactionCount(), 1u);

    const auto down = localTransactionServer::indication(10011, 0);
    m_db->handleSignal(down.data(), down.size());
    EXPECT_EQ(m_db->registeredTransactionCount(), 0u);
    m_db->close();
    EXPECT_FALSE(m_db->isConnected());
    EXPECT_TRUE(m_db->init()) << "connects again on demand";
}

TEST_F(ElibDbFroDatabaseTest, AClosedDatabaseConnectsAgainAtItsNextUse)
{
    // The restore at start closes the database; the management transactions
    // that follow use the same object without opening it first.
    auto cabinet = makeObject("Cabinet=1", kCabinet);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, cabinet->getInternalId(), kCabinet, mimOf("Cabinet=1", *cabinet)));
    ASSERT_TRUE(commit(tx));

    m_db->close();
    ASSERT_FALSE(m_db->isConnected());
    EXPECT_EQ(stored(cabinet->getInternalId(), kCabinet), attributesOf(*cabinet));
    EXPECT_TRUE(m_db->isConnected());

    m_db->close();
    std::vector<std::int32_t> ids;
    EXPECT_TRUE(m_db->getFroIds(kCabinet, ids));
    EXPECT_EQ(ids, std::vector<std::int32_t>{cabinet->getInternalId()});

    m_db->close();
    auto fanGroup = makeObject("Cabinet=1,FanGroup=1", kFanGroup);
    const std::int32_t save = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(save, fanGroup->getInternalId(), kFanGroup, mimOf("Cabinet=1,FanGroup=1", *fanGroup)));
    ASSERT_TRUE(commit(save)) << m_server->lastError();
    EXPECT_EQ(stored(fanGroup->getInternalId(), kFanGroup), attributesOf(*fanGroup));

    m_db->close();
    const std::int32_t deletion = m_server->newTransaction();
    ASSERT_TRUE(m_db->deleteFRO(deletion, cabinet->getInternalId(), kCabinet));
    ASSERT_TRUE(commit(deletion));
    m_db->close();
    ids.clear();
    EXPECT_TRUE(m_db->getFroIds(kCabinet, ids));
    EXPECT_TRUE(ids.empty());
}

// A body written by hand: the builder itself refuses some of these types.
std::string handMade(const std::string& ldn, const std::string& attributes)
{
    return "<mim version=\"1.0\"><class ldn=\"" + ldn + "\">" + attributes + "</class></mim>";
}

TEST_F(ElibDbFroDatabaseTest, ATableThatStoredTheTransactionStateLosesThatColumnAtTheNextStart)
{
    // As an earlier version stored it: with the shadow's transaction state.
    auto old = makeObject("Cabinet=1", kCabinet);
    old->addAttribute("TransState", "CREATE", "STRING");
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, old->getInternalId(), kCabinet, mimOf("Cabinet=1", *old)));
    ASSERT_TRUE(commit(tx));

    DatabaseFacade next(m_config, *m_server);
    ASSERT_TRUE(next.init());
    auto cabinet = makeObject("Cabinet=2", kCabinet);
    const std::int32_t save = m_server->newTransaction();
    ASSERT_TRUE(next.saveFRO(save, cabinet->getInternalId(), kCabinet, mimOf("Cabinet=2", *cabinet)));
    ASSERT_TRUE(commit(save)) << m_server->lastError();
    std::vector<std::string> names, values, types;
    ASSERT_TRUE(next.retrieveFroAttributes(old->getInternalId(), kCabinet, names, values, types));
    EXPECT_EQ(std::count(names.begin(), names.end(), "TransState"), 0);
    EXPECT_EQ(names.size(), cabinet->attributes().size());
}

TEST_F(ElibDbFroDatabaseTest, AnObjectThatCouldNotBeReadBackIsNotSaved)
{
    traceCapture trace;
    const std::int32_t tx = m_server->newTransaction();
    for (const char* type : {"bool", "float", "s32"})
        EXPECT_FALSE(m_db->saveFRO(tx, 1, kFanGroup,
                                   handMade("FanGroup=1", "<attr name=\"a\" type=\"" + std::string(type) +
                                                              "\" value=\"1\"/>")))
            << type;
    EXPECT_TRUE(trace.contains("Received attribute has an unknown type: bool"));
    const std::string longLdn(xmlGuard::kMaxValueBytes + 1, 'x');
    EXPECT_FALSE(m_db->saveFRO(tx, 1, kFanGroup, handMade(longLdn, "<attr name=\"a\" type=\"S32\" value=\"1\"/>")));
    EXPECT_TRUE(trace.contains("ldn of 49152 bytes"));
    EXPECT_TRUE(m_server->pending(tx).empty());
    EXPECT_TRUE(dataTables().empty());
    EXPECT_EQ(m_db->registeredTransactionCount(), 0u);

    // The class is still free for a readable first object.
    ASSERT_TRUE(m_db->saveFRO(tx, 2, kFanGroup, handMade("FanGroup=2", "<attr name=\"a\" type=\"S32\" value=\"7\"/>")));
    ASSERT_TRUE(commit(tx)) << m_server->lastError();
    EXPECT_EQ(stored(2, kFanGroup)["a"], (std::pair<std::string, std::string>{"S32", "7"}));
}

TEST_F(ElibDbFroDatabaseTest, ColumnNamesAreCheckedBeforeAnythingIsSent)
{
    traceCapture trace;
    const std::int32_t tx = m_server->newTransaction();
    const std::vector<std::vector<std::string>> badNames{
        {"a", "a"}, {"froid"}, {"LDN"}, {"level", "LEVEL"}, {"select"}, {"Order"}, {"parentRef", "table"}};
    for (const auto& names : badNames) {
        std::string attributes;
        for (const std::string& name : names)
            attributes += "<attr name=\"" + name + "\" type=\"STRING\" value=\"v\"/>";
        EXPECT_FALSE(m_db->saveFRO(tx, 1, kFanGroup, handMade("FanGroup=1", attributes))) << names.back();
    }
    EXPECT_TRUE(trace.contains("cannot be a column name"));
    EXPECT_TRUE(m_server->pending(tx).empty());
    EXPECT_TRUE(dataTables().empty());

    // Nothing was marked as written: a good first object writes its rows.
    ASSERT_TRUE(m_db->saveFRO(tx, 2, kFanGroup, handMade("FanGroup=2", "<attr name=\"level\" type=\"S32\" value=\"3\"/>")));
    ASSERT_EQ(m_server->pending(tx).size(), 2u);
    EXPECT_TRUE(m_server->pending(tx)[0].starts_with("insert into apc_fro_attributes"));
    ASSERT_TRUE(commit(tx)) << m_server->lastError();
    EXPECT_EQ(stored(2, kFanGroup)["level"].second, "3");
}

TEST_F(ElibDbFroDatabaseTest, AnUpdateOfAnyTypeWordIsWrittenOrRefusedNeverSkipped)
{
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, 1, kFanGroup,
                              handMade("FanGroup=1", "<attr name=\"a\" type=\"STRING\" value=\"old\"/>")));
    ASSERT_TRUE(commit(tx)) << m_server->lastError();

    traceCapture trace;
    const std::int32_t update = m_server->newTransaction();
    EXPECT_FALSE(m_db->saveAttributes(update, 1, kFanGroup,
                                      handMade("FanGroup=1", "<attr name=\"a\" type=\"float\" value=\"new\"/>"), true));
    EXPECT_TRUE(trace.contains("Received attribute a has an unknown type: float"));
    EXPECT_TRUE(m_server->pending(update).empty());
    EXPECT_EQ(stored(1, kFanGroup)["a"].second, "old");
}

TEST_F(ElibDbFroDatabaseTest, ATextColumnIsTakenOnlyWhenItFitsTheBuffer)
{
    for (SQLRETURN rc : {SQL_SUCCESS, SQL_SUCCESS_WITH_INFO}) {
        EXPECT_TRUE(ElibDbFroDatabase::textColumnFits(rc, 0, 49152));
        EXPECT_TRUE(ElibDbFroDatabase::textColumnFits(rc, 49151, 49152));
        EXPECT_FALSE(ElibDbFroDatabase::textColumnFits(rc, 49152, 49152)) << rc;
        EXPECT_FALSE(ElibDbFroDatabase::textColumnFits(rc, 1 << 20, 49152)) << rc;
        EXPECT_FALSE(ElibDbFroDatabase::textColumnFits(rc, SQL_NO_TOTAL, 49152)) << rc;
    }
}

TEST_F(ElibDbFroDatabaseTest, AnUnclearVersionsTableStatusStillAddsMissingClassRows)
{
    query("delete from apc_fro_versions where frotype = " + std::to_string(kEFuse));
    traceCapture trace;
    ose::Trace::configure("supSysFroDbLU:all");
    DatabaseFacade again(m_config, *m_server);
    // Every try of the status query loses the connection: the status stays unclear.
    odbc_fault::failNext(odbc_fault::Call::Fetch, 6);
    EXPECT_TRUE(again.init());
    ose::Trace::reset();
    EXPECT_EQ(odbc_fault::injected(odbc_fault::Call::Fetch), 6);
    EXPECT_TRUE(trace.contains("SQLFetch Failed. DB Disconnected"));
    EXPECT_FALSE(trace.contains("scratch installation"));
    EXPECT_EQ(query("select count(*) from apc_fro_versions")[0][0], "12");
}

TEST_F(ElibDbFroDatabaseTest, FailuresOfTableMakingAndReadingAreTracedInTheSystemWords)
{
    traceCapture trace;
    // A name already taken by an index: the table cannot be made.
    query("create index apc_frodata_cabinet_initial on apc_fro_versions (frotype)");
    auto cabinet = makeObject("Cabinet=1", kCabinet);
    EXPECT_FALSE(m_db->saveFRO(m_server->newTransaction(), cabinet->getInternalId(), kCabinet,
                               mimOf("Cabinet=1", *cabinet)));
    EXPECT_TRUE(trace.contains("ELIB::ElibDbFroDatabase::createTable: Failed to allocate the table in the database"));
    EXPECT_TRUE(trace.contains("ELIB::ElibDbFroDatabase::createTable: SQL_ERROR"));

    query("create table apc_frodata_FanGroup_INITIAL (froid integer, ldn varchar(0))");
    query("insert into apc_frodata_FanGroup_INITIAL values (NULL, 'FanGroup=1')");
    std::vector<std::int32_t> ids;
    EXPECT_FALSE(m_db->getFroIds(kFanGroup, ids));
    EXPECT_TRUE(trace.contains("ELIB::ElibDbFroDatabase::fetchFROs: Failed when trying to read value from the "
                               "database, no value returned"));
}

TEST_F(ElibDbFroDatabaseTest, AnotherOpenTransactionKeepsItsNewEmptyTable)
{
    auto cabinet = makeObject("Cabinet=1", kCabinet);
    auto supply = makeObject("PowerSupply=1", kPowerSupply);
    const std::int32_t first = m_server->newTransaction();
    const std::int32_t second = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(first, cabinet->getInternalId(), kCabinet, mimOf("Cabinet=1", *cabinet)));
    ASSERT_TRUE(m_db->saveFRO(second, supply->getInternalId(), kPowerSupply, mimOf("PowerSupply=1", *supply)));
    ASSERT_TRUE(commit(second));
    // The first transaction's table is still empty, and still there.
    EXPECT_EQ(dataTables(),
              (std::vector<std::string>{"apc_frodata_Cabinet_INITIAL", "apc_frodata_PowerSupply_INITIAL"}));
    EXPECT_EQ(query("select count(*) from apc_frodata_Cabinet_INITIAL")[0][0], "0");
    ASSERT_TRUE(commit(first)) << m_server->lastError();
    EXPECT_EQ(stored(cabinet->getInternalId(), kCabinet), attributesOf(*cabinet));
    EXPECT_EQ(stored(supply->getInternalId(), kPowerSupply), attributesOf(*supply));

    // With no other transaction open, emptied tables go as before.
    const std::int32_t deletion = m_server->newTransaction();
    ASSERT_TRUE(m_db->deleteFRO(deletion, cabinet->getInternalId(), kCabinet));
    ASSERT_TRUE(m_db->deleteFRO(deletion, supply->getInternalId(), kPowerSupply));
    ASSERT_TRUE(commit(deletion));
    EXPECT_TRUE(dataTables().empty());

    // The class starts afresh: its first object now brings other attributes.
    auto reborn = makeObject("Cabinet=9", kCabinet);
    reborn->addAttribute("extra", "1", "S32");
    const std::int32_t rebirth = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(rebirth, reborn->getInternalId(), kCabinet, mimOf("Cabinet=9", *reborn)));
    ASSERT_TRUE(commit(rebirth)) << m_server->lastError();
    EXPECT_EQ(stored(reborn->getInternalId(), kCabinet), attributesOf(*reborn));
}

TEST_F(ElibDbFroDatabaseTest, ALaterObjectMustKeepTheAttributeTypesOfItsClass)
{
    const std::int32_t tx = m_server->newTransaction();
    const auto cabinet = [](const char* ldn, const char* type, const char* value) {
        return mimOf(ldn, {"userLabel", "smokeDetector"}, {type, "S32"}, {value, "0"});
    };
    traceCapture trace;
    ASSERT_TRUE(m_db->saveFRO(tx, 1, kCabinet, cabinet("Cabinet=1", "STRING", "12")));
    // In the same commit cycle the class is known from the buffer...
    EXPECT_FALSE(m_db->saveFRO(tx, 2, kCabinet, cabinet("Cabinet=2", "S32", "12")));
    EXPECT_TRUE(trace.contains("attribute userLabel of froType 117702656 has type S32, the class stores it as STRING"));
    EXPECT_TRUE(m_db->saveFRO(tx, 3, kCabinet, cabinet("Cabinet=3", "STRING", "13")));
    ASSERT_TRUE(commit(tx)) << m_server->lastError();

    // ...later from its rows in the database.
    const std::int32_t later = m_server->newTransaction();
    EXPECT_FALSE(m_db->saveFRO(later, 4, kCabinet, cabinet("Cabinet=4", "U32", "14")));
    EXPECT_FALSE(m_db->saveAttributes(later, 1, kCabinet, mimOf("Cabinet=1", {"userLabel"}, {"S32"}, {"5"}), true));
    EXPECT_FALSE(m_db->saveAttributes(0, 1, kCabinet, mimOf("Cabinet=1", {"smokeDetector"}, {"STRING"}, {"x"}), false));
    EXPECT_TRUE(m_db->saveAttributes(later, 1, kCabinet, mimOf("Cabinet=1", {"userLabel"}, {"STRING"}, {"15"}), true));
    EXPECT_EQ(m_server->pending(later).size(), 1u);
    EXPECT_EQ(stored(1, kCabinet)["userLabel"], (std::pair<std::string, std::string>{"STRING", "12"}));
    EXPECT_EQ(stored(1, kCabinet)["smokeDetector"], (std::pair<std::string, std::string>{"S32", "0"}));
    EXPECT_EQ(query("select count(*) from apc_frodata_Cabinet_INITIAL")[0][0], "2");
}

TEST_F(ElibDbFroDatabaseTest, FaultsWhileReadingAreTracedAndRepeatedWhereTheLinkWasLost)
{
    auto object = makeObject("FanGroup=1", kFanGroup);
    auto other = makeObject("FanGroup=2", kFanGroup);
    const std::int32_t tx = m_server->newTransaction();
    ASSERT_TRUE(m_db->saveFRO(tx, object->getInternalId(), kFanGroup, mimOf("FanGroup=1", *object)));
    ASSERT_TRUE(m_db->saveFRO(tx, other->getInternalId(), kFanGroup, mimOf("FanGroup=2", *other)));
    ASSERT_TRUE(commit(tx));
    traceCapture trace;
    ose::Trace::configure("supSysFroDbLU:all");

    // The link drops after the first id was read.
    odbc_fault::failNext(odbc_fault::Call::Fetch, 1, "select * from apc_frodata_FanGroup_INITIAL", {}, 1);
    std::vector<std::int32_t> ids;
    EXPECT_TRUE(m_db->getFroIds(kFanGroup, ids));
    EXPECT_EQ(ids, (std::vector<std::int32_t>{object->getInternalId(), other->getInternalId()}))
        << "the repeat starts from an empty list";
    EXPECT_EQ(odbc_fault::injected(odbc_fault::Call::Fetch), 1);
    EXPECT_TRUE(trace.contains("DB disconnected"));

    // A cursor that will not close is traced; the answer stands. (A database
    // object started anew asks whether the table is there.)
    m_db = std::make_unique<DatabaseFacade>(m_config, *m_server);
    ASSERT_TRUE(m_db->init());
    odbc_fault::failNext(odbc_fault::Call::CloseCursor, 1, "'apc_frodata_fangroup_initial'");
    ids.clear();
    EXPECT_TRUE(m_db->getFroIds(kFanGroup, ids));
    EXPECT_EQ(ids.size(), 2u);
    EXPECT_TRUE(trace.contains("Error during SQLCloseCursor"));
    ose::Trace::reset();
}

TEST_F(ElibDbFroDatabaseTest, TheSanityCheckReadsTheClassesThroughFaultsAndSkipsBrokenRows)
{
    // A class row without a table name, as an older or damaged database may hold.
    query("insert into apc_fro_versions values (117706752, 'Other', NULL)");
    const auto emptyTheClass = [&](std::int32_t froId) {
        auto object = makeObject("PowerSupply=1", kPowerSupply);
        const std::int32_t tx = m_server->newTransaction();
        EXPECT_TRUE(m_db->saveFRO(tx, froId, kPowerSupply, mimOf("PowerSupply=1", *object)));
        EXPECT_TRUE(commit(tx));
        const std::int32_t removal = m_server->newTransaction();
        EXPECT_TRUE(m_db->deleteFRO(removal, froId, kPowerSupply));
        return removal;
    };
    const std::string versions = "select * from apc_fro_versions order by frotype asc ";

    // The link drops while the class rows are read: all of it is read again.
    std::int32_t removal = emptyTheClass(1);
    traceCapture trace;
    ose::Trace::configure("supSysFroDbLU:all");
    odbc_fault::failNext(odbc_fault::Call::Fetch, 1, versions, {}, 5);
    odbc_fault::failNext(odbc_fault::Call::CloseCursor, 1, versions);
    ASSERT_TRUE(commit(removal));
    EXPECT_TRUE(trace.contains("NC::ElibDbFroDatabase::handleDisconnected DB Disconnected while executing " + versions));
    EXPECT_TRUE(trace.contains("ElibDbFroDatabase::sqlExecFetchGetColumns error in SQLCloseCursor"));
    EXPECT_TRUE(trace.contains("SQLGetData returned null"));
    EXPECT_TRUE(trace.contains("ElibDbFroDatabase::sqlExecFetchGetColumns fetched 12 data from the database"));
    EXPECT_TRUE(dataTables().empty());
    EXPECT_EQ(query("select count(*) from apc_fro_attributes")[0][0], "0");

    // Any other failure leaves every table as it is.
    removal = emptyTheClass(2);
    odbc_fault::failNext(odbc_fault::Call::Fetch, 1, versions, "HY000");
    ASSERT_TRUE(commit(removal));
    ose::Trace::reset();
    EXPECT_TRUE(trace.contains("NC::ElibDbFroDatabase::handleDisconnected Failed when trying to execute " + versions));
    EXPECT_EQ(dataTables(), std::vector<std::string>{"apc_frodata_PowerSupply_INITIAL"});
}

// The generic query of the object database, opened for the test.
class GenericQuery : public DatabaseFacade {
public:
    using DatabaseFacade::DatabaseFacade;
    using ElibDbFroDatabase::sqlExecFetchGetColumns;
    using ElibDbFroDatabase::SqlRow;
};

TEST_F(ElibDbFroDatabaseTest, AGenericQueryPutsColumnsByNumberAndTakesWholeResultsOnly)
{
    GenericQuery db(m_config, *m_server);
    const std::string efuse = "select * from apc_fro_versions where frotype = 117702667";
    std::vector<GenericQuery::SqlRow> rows;
    ASSERT_TRUE(db.sqlExecFetchGetColumns(efuse, {{3, "STRING"}, {1, "U32"}, {2, "STRING"}}, rows));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].number, 117702667u);
    EXPECT_EQ(rows[0].first, "EFuse");
    EXPECT_EQ(rows[0].second, "apc_frodata_EFuse_INITIAL");

    // Column 1 is the number of a row; there are no more than three.
    EXPECT_FALSE(db.sqlExecFetchGetColumns(efuse, {{1, "STRING"}}, rows));
    EXPECT_FALSE(db.sqlExecFetchGetColumns(efuse, {{2, "U32"}}, rows));
    EXPECT_FALSE(db.sqlExecFetchGetColumns(efuse, {{4, "STRING"}}, rows));

    // A number that is no U32 fails the whole read: no rows at all.
    query("insert into apc_fro_versions values (-1, 'Broken', 'apc_frodata_Broken_INITIAL')");
    EXPECT_FALSE(db.sqlExecFetchGetColumns("select * from apc_fro_versions order by frotype desc ",
                                           {{1, "U32"}, {3, "STRING"}}, rows));
    EXPECT_TRUE(rows.empty());
}

} // namespace
