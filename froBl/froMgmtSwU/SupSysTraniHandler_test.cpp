// The object process's side of transactions against the real transaction
// server and a SQLite file: the management client's transaction, the
// object process's shadows and SQL, the commit and rollback indications.

#include "froBl/froMgmtSwU/export/SupSysTraniHandler.h"

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/commitLists.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/dummy_fRO.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/traniInterface.h"
#include "froBl/froMgmtSwU/export/transMgr.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/testSupport/shadowMimText.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"
#include "platform/VantoTransactionClient.h"
#include "platform/VantoTransactionMgmtClient.h"
#include "platform/VantoTransactionOsePort.h"
#include "platform/VantoTransactionSignals.h"
#include "vanto/VantoTransactionServer.h"
#include "vanto/testSupport/sqliteFile.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

namespace {

using namespace ose;
using namespace ose::testing;
using namespace fro_types;
using vanto_trans::TransResult;
using Names = std::vector<std::string>;

constexpr SIGSELECT kWork = 950; // test: run job number <word> in the object process
constexpr SIGSELECT kDone = 951;

// A controller as the commit sees it: notes its calls and what the commit
// lists said at that moment.
class FakeController : public dummy_fRO, public traniInterface {
public:
    explicit FakeController(std::vector<std::string>& log) : dummy_fRO("Cabinet"), m_log(log) {}
    std::string className() const override { return "SupSysFroCtrlIf"; }
    void postCreate() override { note("postCreate", commitLists::Created); }
    void preDelete() override { note("preDelete", commitLists::Deleted); }
    void postSet() override { note("postSet", commitLists::Set); }

private:
    void note(const std::string& what, commitLists::Kind kind)
    {
        const std::string ldn = m_ldn();
        m_log.push_back(what + (isCommitRunning() ? " running" : " idle") +
                        (isInCommit(kind, ldn) ? " listed" : " unlisted"));
    }
    std::string m_ldn() const { return "Cabinet=" + std::to_string(getExternalId() + 1); }
    std::vector<std::string>& m_log;
};

struct CallbackLog : TransMgrCallbackIf {
    void beforeCreate(const fRO& shadow) override { types.push_back(shadow.getFroType()); }
    std::vector<std::uint32_t> types;
};

class SupSysTraniHandlerTest : public TestWorld {
protected:
    void SetUp() override
    {
        TestWorld::SetUp();
        m_config = m_db.config();
        m_config.wait = [](std::chrono::milliseconds) {};
        m_server = createTransactionServer(world(), node(), m_config);
        m_objectProcess = spawn("support_system_control_thread", [this] { objectProcess(); });
        world().runUntilIdle();
        ASSERT_NE(m_handler, nullptr);
    }
    void TearDown() override
    {
        TestWorld::TearDown();
        m_handler.reset();
        m_database.reset();
    }

    void objectProcess()
    {
        m_database = std::make_unique<DatabaseFacade>(m_config, m_platform, &m_distributor);
        ASSERT_TRUE(m_database->init());
        m_handler = std::make_unique<SupSysTraniHandler>(m_distributor, m_transactions, m_table, m_platform,
                                                         m_database.get());
        m_handler->setCallback(&m_callback);
        m_handler->init();
        for (;;) {
            Signal* signal = receive(kAnySignal);
            if (signalNumber(signal) == kWork) {
                m_jobs.at(valueOf(signal))();
                Signal* done = word(kDone, 0);
                send(&done, sender(&signal));
            } else if (!m_distributor.distribute(signal)) {
                ++m_unknown;
            }
            free_buf(&signal);
        }
    }

    // From a client process: runs job in the object process and waits for it.
    void work(std::function<void()> job)
    {
        m_jobs.push_back(std::move(job));
        Signal* request = word(kWork, static_cast<std::uint32_t>(m_jobs.size() - 1));
        send(&request, m_objectProcess);
        const SIGSELECT done[] = {1, kDone};
        Signal* answer = receive(done);
        free_buf(&answer);
    }

    // What the management handler does for each request, inside the object process.
    bool createInTx(std::int32_t tx, const std::string& ldn, std::uint32_t froType, const Names& names = {},
                    const Names& values = {}, const Names& types = {})
    {
        std::int32_t externalId = -1;
        if (m_transactions.createMO(tx, ldn, names, values, types, froType, externalId) != 1)
            return false;
        const fRO* shadow = m_transactions.getFro(tx, ldn);
        std::string xml;
        return shadowMimText(*shadow, ldn, xml) && m_database->saveFRO(tx, shadow->getInternalId(), froType, xml);
    }
    bool setInTx(std::int32_t tx, const std::string& ldn, const std::string& name, const std::string& value)
    {
        const fRO* real = m_table.getFro(ldn);
        std::string xml;
        return real != nullptr && m_transactions.setMoAttribute(tx, ldn, name, value) == 1 &&
               xmlHandler::instance().build(ldn, "1.0", {name}, {real->getAttributeType(name)}, {value}, xml) &&
               m_database->saveAttributes(tx, real->getInternalId(), real->getFroType(), xml, true);
    }
    bool deleteInTx(std::int32_t tx, const std::string& ldn)
    {
        const fRO* real = m_table.getFro(ldn);
        return real != nullptr && m_database->deleteFRO(tx, real->getInternalId(), real->getFroType()) &&
               m_transactions.deleteMO(tx, ldn) == 1;
    }

    // A whole transaction from a client: create, the steps, then commit or rollback.
    TransResult transaction(std::function<bool(std::int32_t)> steps, bool commit = true)
    {
        TransResult result = TransResult::BadRequest;
        spawn("client", [&, steps] {
            VantoTransactionOsePort port;
            VantoTransactionMgmtClient client(port);
            std::int32_t tx = 0;
            ASSERT_EQ(client.create(tx), TransResult::Ok);
            bool ok = false;
            work([&] { ok = steps(tx); });
            EXPECT_TRUE(ok) << "a step failed in transaction " << tx;
            result = commit ? client.commit(tx) : client.rollback(tx);
        });
        world().runUntilIdle();
        return result;
    }

    std::string column(const std::string& table, const std::string& name, const std::string& ldn)
    {
        return m_db.scalar("select " + name + " from " + table + " where ldn = '" + ldn + "'");
    }
    int tables(const std::string& like)
    {
        return std::stoi(m_db.scalar("select count(*) from sqlite_master where name like '" + like + "'"));
    }

    sqliteFile m_db;
    VantoDbConfig m_config;
    PROCESS m_server = 0;
    PROCESS m_objectProcess = 0;
    froIdHandler m_ids;
    fROFactory m_factory{m_ids};
    froMgr m_table{m_factory};
    SignalDistributor m_distributor;
    VantoTransactionClient m_platform;
    transMgr m_transactions{m_table, m_factory, m_platform};
    CallbackLog m_callback;
    std::unique_ptr<DatabaseFacade> m_database;
    std::unique_ptr<SupSysTraniHandler> m_handler;
    std::vector<std::function<void()>> m_jobs;
    int m_unknown = 0;
};

const std::string kCabinets = "apc_frodata_Cabinet_INITIAL";

TEST_F(SupSysTraniHandlerTest, CreateChangeAndDeleteOfOneObjectAreCommittedIntoObjectsAndTables)
{
    ASSERT_EQ(transaction([&](std::int32_t tx) {
                  return createInTx(tx, "Cabinet=1", kCabinet, {"cabinetIdentifier"}, {"north"}, {"STRING"});
              }),
              TransResult::Ok);
    ASSERT_TRUE(m_table.exists("Cabinet=1"));
    EXPECT_EQ(m_table.getAttribute("Cabinet=1", "cabinetIdentifier"), "north");
    EXPECT_EQ(column(kCabinets, "cabinetIdentifier", "Cabinet=1"), "north");
    EXPECT_EQ(column(kCabinets, "froid", "Cabinet=1"), std::to_string(m_table.getFro("Cabinet=1")->getInternalId()));
    EXPECT_EQ(m_callback.types, std::vector<std::uint32_t>{kCabinet});

    ASSERT_EQ(transaction([&](std::int32_t tx) { return setInTx(tx, "Cabinet=1", "cabinetIdentifier", "south"); }),
              TransResult::Ok);
    EXPECT_EQ(m_table.getAttribute("Cabinet=1", "cabinetIdentifier"), "south");
    EXPECT_EQ(column(kCabinets, "cabinetIdentifier", "Cabinet=1"), "south");

    ASSERT_EQ(transaction([&](std::int32_t tx) { return deleteInTx(tx, "Cabinet=1"); }), TransResult::Ok);
    EXPECT_FALSE(m_table.exists("Cabinet=1"));
    EXPECT_EQ(tables(kCabinets), 0) << "the last object's table is dropped";
    EXPECT_EQ(m_transactions.transactionCount(), 0u);
    EXPECT_EQ(m_unknown, 0);
}

TEST_F(SupSysTraniHandlerTest, ARolledBackTransactionLeavesNeitherObjectsNorRows)
{
    ASSERT_EQ(transaction([&](std::int32_t tx) {
                  return createInTx(tx, "Cabinet=1", kCabinet) && createInTx(tx, "Cabinet=1,FanGroup=1", kFanGroup);
              }),
              TransResult::Ok);
    ASSERT_EQ(transaction([&](std::int32_t tx) {
                  return createInTx(tx, "Cabinet=2", kCabinet) &&
                         setInTx(tx, "Cabinet=1", "cabinetIdentifier", "changed") &&
                         deleteInTx(tx, "Cabinet=1,FanGroup=1");
              },
                          false),
              TransResult::Ok);

    Names ldns;
    m_table.getAllLdns(ldns);
    EXPECT_EQ(ldns, (Names{"Cabinet=1", "Cabinet=1,FanGroup=1"}));
    EXPECT_EQ(m_table.getAttribute("Cabinet=1", "cabinetIdentifier"), "");
    EXPECT_EQ(m_db.query("select ldn, cabinetIdentifier from " + kCabinets), (sqliteFile::Rows{{"Cabinet=1", ""}}));
    EXPECT_EQ(m_db.scalar("select count(*) from apc_frodata_FanGroup_INITIAL"), "1");
    EXPECT_EQ(m_transactions.transactionCount(), 0u);
    EXPECT_EQ(m_ids.findLowestFreeFroId(kCabinet), 1) << "the id reserved for Cabinet=2 is free again";
}

TEST_F(SupSysTraniHandlerTest, AStatementThatFailsAtCommitRollsTheWholeTransactionBack)
{
    ASSERT_EQ(transaction([&](std::int32_t tx) { return createInTx(tx, "Cabinet=1", kCabinet); }), TransResult::Ok);
    // The class's columns were fixed by its first object: an attribute beyond
    // them makes the insert fail at the server.
    EXPECT_EQ(transaction([&](std::int32_t tx) {
                  return setInTx(tx, "Cabinet=1", "cabinetIdentifier", "changed") &&
                         createInTx(tx, "Cabinet=2", kCabinet, {"userLabel"}, {"extra"}, {"STRING"});
              }),
              TransResult::RolledBack);

    EXPECT_FALSE(m_table.exists("Cabinet=2"));
    EXPECT_EQ(m_table.getAttribute("Cabinet=1", "cabinetIdentifier"), "");
    EXPECT_EQ(m_db.query("select ldn, cabinetIdentifier from " + kCabinets), (sqliteFile::Rows{{"Cabinet=1", ""}}));
    EXPECT_EQ(m_transactions.transactionCount(), 0u);
}

TEST_F(SupSysTraniHandlerTest, AClientThatDiesMidTransactionLeavesItsObjectsFreeForTheNext)
{
    std::int32_t lost = 0;
    const PROCESS doomed = spawn("doomed", [&] {
        VantoTransactionOsePort port;
        VantoTransactionMgmtClient client(port);
        ASSERT_EQ(client.create(lost), TransResult::Ok);
        work([&] { EXPECT_TRUE(createInTx(lost, "Cabinet=1", kCabinet)); });
        delay(1000000);
    });
    world().runFor(100);
    ASSERT_TRUE(m_transactions.hasTransaction(lost));
    world().kill(doomed);
    world().runFor(100);
    EXPECT_FALSE(m_transactions.hasTransaction(lost));
    EXPECT_FALSE(m_table.exists("Cabinet=1"));

    ASSERT_EQ(transaction([&](std::int32_t tx) {
                  return createInTx(tx, "Cabinet=1", kCabinet, {"cabinetIdentifier"}, {"second"}, {"STRING"});
              }),
              TransResult::Ok);
    EXPECT_EQ(column(kCabinets, "cabinetIdentifier", "Cabinet=1"), "second");
    EXPECT_EQ(m_db.scalar("select count(*) from " + kCabinets), "1");
}

TEST_F(SupSysTraniHandlerTest, ControllersAreCalledAroundTheCommitWhileItsListsStand)
{
    std::vector<std::string> log;
    m_factory.registerType("Cabinet", [&log] { return std::make_unique<FakeController>(log); });
    ASSERT_EQ(transaction([&](std::int32_t tx) { return createInTx(tx, "Cabinet=1", kCabinet); }), TransResult::Ok);
    ASSERT_EQ(transaction([&](std::int32_t tx) { return setInTx(tx, "Cabinet=1", "smokeDetector", "1"); }),
              TransResult::Ok);
    ASSERT_EQ(transaction([&](std::int32_t tx) { return deleteInTx(tx, "Cabinet=1"); }), TransResult::Ok);
    EXPECT_EQ(log, (std::vector<std::string>{"postCreate running listed", "postSet running listed",
                                             "preDelete running listed"}));
    // Deleted and made again in one transaction: the old object is told it
    // goes before the new one is told it came.
    ASSERT_EQ(transaction([&](std::int32_t tx) { return createInTx(tx, "Cabinet=1", kCabinet); }), TransResult::Ok);
    log.clear();
    ASSERT_EQ(transaction([&](std::int32_t tx) {
                  return deleteInTx(tx, "Cabinet=1") && createInTx(tx, "Cabinet=1", kCabinet);
              }),
              TransResult::Ok);
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].rfind("preDelete running", 0), 0u) << log[0];
    EXPECT_EQ(log[1].rfind("postCreate running", 0), 0u) << log[1];
    EXPECT_FALSE(isCommitRunning());
    EXPECT_FALSE(isInCommit(commitLists::Deleted, "Cabinet=1"));
}

TEST_F(SupSysTraniHandlerTest, TheServerGoingDownDropsEveryOpenTransaction)
{
    std::int32_t open = 0;
    spawn("client", [&] {
        VantoTransactionOsePort port;
        VantoTransactionMgmtClient client(port);
        ASSERT_EQ(client.create(open), TransResult::Ok);
        work([&] { EXPECT_TRUE(createInTx(open, "Cabinet=1", kCabinet)); });
        delay(1000000);
    });
    world().runFor(100);
    ASSERT_EQ(m_transactions.transactionCount(), 1u);
    world().kill(m_server);
    world().runFor(1000);
    EXPECT_EQ(m_transactions.transactionCount(), 0u);
    EXPECT_EQ(m_database->registeredTransactionCount(), 0u);

    // The handler attaches again as soon as there is a server.
    m_server = createTransactionServer(world(), node(), m_config);
    world().runFor(1000);
    EXPECT_EQ(transaction([&](std::int32_t tx) { return createInTx(tx, "Cabinet=1", kCabinet); }), TransResult::Ok);
    EXPECT_TRUE(m_table.exists("Cabinet=1"));
}

TEST_F(SupSysTraniHandlerTest, MalformedAndUnknownIndicationsAreTracedAndChangeNothing)
{
    traceCapture trace;
    spawn("stranger", [&] {
        Signal* shortCommit = alloc(8, vanto_trans::VANTO_TRANS_COMMIT_IND);
        send(&shortCommit, m_objectProcess);
        auto* unknown = alloc_as<vanto_trans::VANTO_TRANS_IND_S>(vanto_trans::VANTO_TRANS_COMMIT_IND);
        unknown->transactionId = 77;
        Signal* signal = reinterpret_cast<Signal*>(unknown);
        send(&signal, m_objectProcess);
        auto* rollback = alloc_as<vanto_trans::VANTO_TRANS_IND_S>(vanto_trans::VANTO_TRANS_ROLLBACK_IND);
        rollback->transactionId = 78;
        signal = reinterpret_cast<Signal*>(rollback);
        send(&signal, m_objectProcess);
    });
    world().runUntilIdle();
    spawn("direct", [&] {
        Signal* other = word(0x1234, 0); // a number it never subscribed
        m_handler->handleSignal(other);
        free_buf(&other);
    });
    world().runUntilIdle();
    EXPECT_TRUE(trace.contains("Transaction indication 0x271e of 8 bytes is too short"));
    EXPECT_TRUE(trace.contains("Commit of transaction 77 failed, transMgr failed to update froMgr"));
    EXPECT_TRUE(trace.contains("Unknown signal number: 0x1234"));
    EXPECT_EQ(m_transactions.transactionCount(), 0u);
    EXPECT_EQ(m_unknown, 0);
}

} // namespace
