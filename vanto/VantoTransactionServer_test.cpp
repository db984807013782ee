#include "vanto/VantoTransactionServer.h"

#include "platform/VantoTransaction.h"
#include "platform/VantoTransactionMgmtClient.h"
#include "platform/VantoTransactionOsePort.h"
#include "platform/VantoTransactionSignals.h"
#include "vanto/testSupport/sqliteFile.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <cstring>

namespace {

using namespace ose;
using namespace ose::testing;
using namespace vanto_trans;

constexpr SIGSELECT kJoin = 900;   // test: become a resource of the transaction in the word
constexpr SIGSELECT kJoined = 901; // test: the register result in the word

struct Indication {
    SIGSELECT sigNo;
    std::uint32_t reason;
    std::int32_t transactionId;
};

class VantoTransactionServerTest : public TestWorld {
protected:
    void SetUp() override
    {
        TestWorld::SetUp();
        m_db.query("create table t (id integer primary key, v varchar(0))");
        m_db.query("insert into t values (1, 'before')");
        m_server = createTransactionServer(world(), node(), m_db.config());
    }

    // A resource: registers on request and notes every indication it gets.
    PROCESS spawnResource(const std::string& name = "resource")
    {
        return spawn(name, [this] {
            for (;;) {
                Signal* signal = receive(kAnySignal);
                const SIGSELECT sigNo = signalNumber(signal);
                if (sigNo == kJoin) {
                    const auto id = static_cast<std::int32_t>(valueOf(signal));
                    EXPECT_EQ(VantoTransaction_registerResource_e(id, 0, 0), 0);
                    const SIGSELECT rsp[] = {1, VANTO_TRANS_REGISTER_RSP};
                    Signal* answer = receive_w_tmo(1000, rsp);
                    const auto* body = signal_cast<VANTO_TRANS_REGISTER_RSP_S>(answer);
                    EXPECT_NE(body, nullptr);
                    EXPECT_EQ(body ? std::int32_t(body->transactionId) : -1, id);
                    Signal* reply = word(kJoined, body ? std::uint32_t(body->result) : 99u);
                    send(&reply, sender(&signal));
                    if (answer)
                        free_buf(&answer);
                } else if (const auto* ind = signal_cast<VANTO_TRANS_IND_S>(signal)) {
                    m_seen.push_back({sigNo, ind->reason, ind->transactionId});
                }
                free_buf(&signal);
            }
        });
    }

    static std::uint32_t join(PROCESS resource, std::int32_t id)
    {
        Signal* request = word(kJoin, static_cast<std::uint32_t>(id));
        send(&request, resource);
        const SIGSELECT joined[] = {1, kJoined};
        Signal* answer = receive(joined);
        const std::uint32_t result = valueOf(answer);
        free_buf(&answer);
        return result;
    }

    static void sql(std::int32_t id, const std::string& statement)
    {
        VantoTransaction_databaseUpdateSQL(id, statement.c_str());
    }

    // Sends raw bytes to the server as a signal of exactly that size.
    void sendRaw(const std::vector<std::uint8_t>& bytes)
    {
        Signal* signal = alloc(static_cast<OSBUFSIZE>(bytes.size()), loadBe32(bytes.data()));
        std::memcpy(signal, bytes.data(), bytes.size());
        send(&signal, m_server);
    }

    sqliteFile m_db;
    PROCESS m_server = 0;
    std::vector<Indication> m_seen;
    VantoTransactionOsePort m_port;
    VantoTransactionMgmtClient m_client{m_port};
};

TEST_F(VantoTransactionServerTest, ACommitRunsTheStatementsAndTellsEveryResource)
{
    const PROCESS first = spawnResource("first");
    const PROCESS second = spawnResource("second");
    std::int32_t id = 0;
    TransResult committed = TransResult::BadRequest;
    spawn("client", [&] {
        ASSERT_EQ(m_client.create(id), TransResult::Ok);
        EXPECT_GT(id, 0);
        EXPECT_EQ(join(first, id), 0u);
        EXPECT_EQ(join(second, id), 0u);
        EXPECT_EQ(join(second, id), 0u) << "a second registration is harmless";
        sql(id, "insert into t values (2, 'two')");
        sql(id, "update t set v = 'changed' where id = 1");
        sql(id, "delete from t where id = 99"); // touches no row: not a failure
        EXPECT_EQ(m_db.scalar("select count(*) from t"), "1") << "nothing before the commit";
        committed = m_client.commit(id);
    });
    world().runUntilIdle();

    EXPECT_EQ(committed, TransResult::Ok);
    EXPECT_EQ(m_db.query("select id, v from t order by id"),
              (sqliteFile::Rows{{"1", "changed"}, {"2", "two"}}));
    ASSERT_EQ(m_seen.size(), 2u) << "each resource once";
    for (const Indication& seen : m_seen) {
        EXPECT_EQ(seen.sigNo, VANTO_TRANS_COMMIT_IND);
        EXPECT_EQ(seen.transactionId, id);
    }
}

TEST_F(VantoTransactionServerTest, ARollbackDropsTheStatementsAndEndsTheTransaction)
{
    const PROCESS resource = spawnResource();
    std::int32_t id = 0;
    TransResult rolledBack = TransResult::BadRequest, commitAfter = TransResult::Ok, again = TransResult::Ok;
    spawn("client", [&] {
        ASSERT_EQ(m_client.create(id), TransResult::Ok);
        EXPECT_EQ(join(resource, id), 0u);
        sql(id, "insert into t values (2, 'two')");
        rolledBack = m_client.rollback(id);
        commitAfter = m_client.commit(id);
        again = m_client.rollback(id);
    });
    world().runUntilIdle();

    EXPECT_EQ(rolledBack, TransResult::Ok);
    EXPECT_EQ(commitAfter, TransResult::UnknownTransaction);
    EXPECT_EQ(again, TransResult::UnknownTransaction);
    EXPECT_EQ(m_db.scalar("select count(*) from t"), "1");
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].sigNo, VANTO_TRANS_ROLLBACK_IND);
    EXPECT_EQ(m_seen[0].reason, static_cast<std::uint32_t>(RollbackReason::Requested));
    EXPECT_EQ(m_seen[0].transactionId, id);
}

TEST_F(VantoTransactionServerTest, StatementsLongerThanOnePieceArriveWhole)
{
    // Lengths around the piece size, with the statement's own text around the literal.
    const std::string head = "insert into t values (";
    std::vector<std::string> values;
    for (std::size_t total : {16000u, 16001u, 32000u, 40123u}) {
        const std::string prefix = head + std::to_string(10 + values.size()) + ", '";
        std::string value(total - prefix.size() - 2, 'x');
        for (std::size_t i = 0; i < value.size(); i += 997)
            value[i] = static_cast<char>('a' + (i / 997) % 26); // so that a lost or repeated piece shows
        values.push_back(value);
    }
    TransResult committed = TransResult::BadRequest;
    spawn("client", [&] {
        std::int32_t id = 0;
        ASSERT_EQ(m_client.create(id), TransResult::Ok);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::string statement = head + std::to_string(10 + i) + ", '" + values[i] + "')";
            sql(id, statement);
        }
        committed = m_client.commit(id);
    });
    world().runUntilIdle();

    ASSERT_EQ(committed, TransResult::Ok);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(m_db.scalar("select v from t where id = " + std::to_string(10 + i)), values[i]) << i;
}

TEST_F(VantoTransactionServerTest, AFailingStatementRollsBackTheWholeTransaction)
{
    const PROCESS resource = spawnResource();
    std::int32_t id = 0;
    TransResult committed = TransResult::Ok;
    traceCapture trace;
    spawn("client", [&] {
        ASSERT_EQ(m_client.create(id), TransResult::Ok);
        EXPECT_EQ(join(resource, id), 0u);
        sql(id, "insert into t values (2, 'two')");
        sql(id, "update t set v = 'changed' where id = 1");
        sql(id, "insert into t values (1, 'duplicate key')");
        sql(id, "insert into t values (3, 'three')");
        committed = m_client.commit(id);
    });
    world().runUntilIdle();

    EXPECT_EQ(committed, TransResult::RolledBack);
    EXPECT_EQ(m_db.query("select id, v from t order by id"), (sqliteFile::Rows{{"1", "before"}}));
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].sigNo, VANTO_TRANS_ROLLBACK_IND);
    EXPECT_EQ(m_seen[0].reason, static_cast<std::uint32_t>(RollbackReason::StatementFailed));
    EXPECT_TRUE(trace.contains("Commit of transaction")) << trace.text();

    // The connection is clean afterwards: the next transaction commits.
    spawn("next", [&] {
        std::int32_t next = 0;
        ASSERT_EQ(m_client.create(next), TransResult::Ok);
        sql(next, "insert into t values (2, 'two')");
        committed = m_client.commit(next);
    });
    world().runUntilIdle();
    EXPECT_EQ(committed, TransResult::Ok);
    EXPECT_EQ(m_db.scalar("select count(*) from t"), "2");
}

TEST_F(VantoTransactionServerTest, AClientThatDiesTakesItsTransactionsWithIt)
{
    const PROCESS resource = spawnResource();
    std::int32_t id = 0;
    const PROCESS doomed = spawn("doomed", [&] {
        ASSERT_EQ(m_client.create(id), TransResult::Ok);
        EXPECT_EQ(join(resource, id), 0u);
        sql(id, "insert into t values (2, 'two')");
        // Half a statement: its end never comes.
        auto* piece = alloc_as<VANTO_TRANS_SQL_PART_IND_S>(VANTO_TRANS_SQL_PART_IND);
        piece->transactionId = id;
        std::memset(piece->text, 'x', sizeof piece->text);
        Signal* signal = reinterpret_cast<Signal*>(piece);
        send(&signal, m_server);
        delay(1000000);
    });
    world().runFor(100);
    ASSERT_GT(id, 0);
    world().kill(doomed);
    world().runUntilIdle();

    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].sigNo, VANTO_TRANS_ROLLBACK_IND);
    EXPECT_EQ(m_seen[0].reason, static_cast<std::uint32_t>(RollbackReason::ClientDown));
    TransResult late = TransResult::Ok, fresh = TransResult::BadRequest;
    spawn("other", [&] {
        late = m_client.commit(id);
        std::int32_t next = 0;
        ASSERT_EQ(m_client.create(next), TransResult::Ok);
        EXPECT_NE(next, id);
        sql(next, "insert into t values (3, 'three')");
        fresh = m_client.commit(next);
    });
    world().runUntilIdle();
    EXPECT_EQ(late, TransResult::UnknownTransaction);
    EXPECT_EQ(fresh, TransResult::Ok);
    EXPECT_EQ(m_db.query("select id from t order by id"), (sqliteFile::Rows{{"1"}, {"3"}}));
}

TEST_F(VantoTransactionServerTest, ADeadResourceRollsItsTransactionBackAndTheOthersAreTold)
{
    const PROCESS survivor = spawnResource("survivor");
    const PROCESS victim = spawnResource("victim");
    std::int32_t id = 0;
    spawn("client", [&] {
        ASSERT_EQ(m_client.create(id), TransResult::Ok);
        EXPECT_EQ(join(survivor, id), 0u);
        EXPECT_EQ(join(victim, id), 0u);
        sql(id, "insert into t values (2, 'two')");
        delay(1000000); // the creator stays
    });
    world().runFor(100);
    world().kill(victim);
    TransResult committed = TransResult::Ok;
    spawn("committer", [&] { committed = m_client.commit(id); });
    world().runFor(100);

    EXPECT_EQ(committed, TransResult::UnknownTransaction);
    ASSERT_EQ(m_seen.size(), 1u) << "only the survivor is told";
    EXPECT_EQ(m_seen[0].reason, static_cast<std::uint32_t>(RollbackReason::ClientDown));
    EXPECT_EQ(m_db.scalar("select count(*) from t"), "1");
}

TEST_F(VantoTransactionServerTest, BadSignalsAreTracedAndRefusedAndTheServerGoesOn)
{
    const PROCESS resource = spawnResource();
    traceCapture trace;
    std::int32_t chained = 0, malformed = 0, good = 0;
    TransResult chainedResult = TransResult::Ok, malformedResult = TransResult::Ok, goodResult = TransResult::BadRequest;
    std::uint32_t unknownRegister = 0;
    spawn("client", [&] {
        sendRaw({0, 0, 0x27, 0x11});                          // a create without its fields
        sendRaw({0, 0, 0x27, 0x13, 0, 0, 0, 1});              // a register without its fields
        sendRaw({0, 0, 0x27, 0x17, 0, 0, 0, 1});              // a commit without its fields
        sendRaw({0, 0, 0x27, 0x22});                          // a piece without a transaction id
        sendRaw({0, 0, 0x27, 0x21, 0x7f, 0, 0, 0, 'x', 0});   // a statement for an unknown transaction
        sendRaw({0, 0, 0x27, 0x1C});                          // a connect without its reference
        sendRaw({0, 0, 0x27, 0x20, 0, 0, 0, 1, 0, 0, 0, 1});  // client down, not from the kernel
        sendRaw({0, 0, 0x12, 0x34});                          // a number the server does not know
        unknownRegister = join(resource, 4711);

        // A piece chain without its end, then the commit.
        ASSERT_EQ(m_client.create(chained), TransResult::Ok);
        sql(chained, "insert into t values (5, 'five')");
        std::vector<std::uint8_t> piece(sizeof(VANTO_TRANS_SQL_PART_IND_S), 'y');
        storeBe32(piece.data(), VANTO_TRANS_SQL_PART_IND);
        storeBe32(piece.data() + 4, static_cast<std::uint32_t>(chained));
        sendRaw(piece);
        chainedResult = m_client.commit(chained);

        // A piece of the wrong length, and a last piece without its NUL.
        ASSERT_EQ(m_client.create(malformed), TransResult::Ok);
        std::vector<std::uint8_t> shortPiece(piece.begin(), piece.end() - 4);
        storeBe32(shortPiece.data() + 4, static_cast<std::uint32_t>(malformed));
        sendRaw(shortPiece);
        sendRaw({0, 0, 0x27, 0x21, 0, 0, 0, static_cast<std::uint8_t>(malformed), 's', 'e', 'l'});
        sql(malformed, "insert into t values (6, 'six')");
        malformedResult = m_client.commit(malformed);

        ASSERT_EQ(m_client.create(good), TransResult::Ok);
        sql(good, "insert into t values (7, 'seven')");
        goodResult = m_client.commit(good);
    });
    world().runUntilIdle();

    EXPECT_EQ(unknownRegister, static_cast<std::uint32_t>(TransResult::UnknownTransaction));
    EXPECT_EQ(chainedResult, TransResult::RolledBack);
    EXPECT_EQ(malformedResult, TransResult::RolledBack);
    EXPECT_EQ(goodResult, TransResult::Ok);
    EXPECT_EQ(m_db.query("select id from t order by id"), (sqliteFile::Rows{{"1"}, {"7"}}));
    for (const char* words : {"VANTO_TRANS_CREATE_REQ from", "VANTO_TRANS_REGISTER_REQ from",
                              "VANTO_TRANS_COMMIT_REQ from", "VANTO_TRANS_SQL_IND: unknown transaction 2130706432",
                              "VANTO_TRANS_CONNECT_REQ from", "VANTO_TRANS_CLIENT_DOWN_IND from",
                              "Transaction server: unknown signal 0x1234", "a statement without its last piece",
                              "VANTO_TRANS_SQL_PART_IND of 16008 bytes", "has no end"})
        EXPECT_TRUE(trace.contains(words)) << words;
}

TEST_F(VantoTransactionServerTest, AnAttachedClientHearsThatTheServerWentDown)
{
    int attached = -1;
    SIGSELECT heard = 0;
    spawn("client", [&] {
        attached = VantoTransaction_serviceAttach_e();
        const SIGSELECT down[] = {1, VANTO_TRANS_SERVER_DOWN_IND};
        Signal* signal = receive(down);
        heard = signalNumber(signal);
        free_buf(&signal);
    });
    world().runFor(10);
    EXPECT_EQ(attached, 0);
    world().kill(m_server);
    world().runUntilIdle();
    EXPECT_EQ(heard, VANTO_TRANS_SERVER_DOWN_IND);

    // Without a server every call fails at once and says why.
    traceCapture trace;
    TransResult created = TransResult::Ok;
    int tries = 0;
    spawn("late", [&] {
        std::int32_t id = 0;
        created = m_client.create(id);
        tries = VantoTransaction_serviceAttach_e(3);
    });
    world().runUntilIdle();
    EXPECT_EQ(created, TransResult::NoServer);
    EXPECT_NE(tries, 0);
    EXPECT_TRUE(trace.contains("Transaction Server not found"));
}

} // namespace
