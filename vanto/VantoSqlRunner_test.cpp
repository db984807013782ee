#include "vanto/VantoSqlRunner.h"

#include "froBl/froMgmtSwU/testSupport/traceCapture.h"
#include "platform/testSupport/odbcFaultInjection.h"
#include "vanto/testSupport/sqliteFile.h"

#include <gtest/gtest.h>

namespace {

using Result = VantoSqlRunner::Result;

class VantoSqlRunnerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        odbc_fault::reset();
        m_db.query("create table t (x integer primary key)");
        m_config = m_db.config();
        m_config.wait = [](std::chrono::milliseconds) {};
    }
    void TearDown() override
    {
        odbc_fault::reset();
        ose::Trace::reset();
    }

    std::string rows() { return m_db.scalar("select group_concat(x) from (select x from t order by x)"); }

    sqliteFile m_db;
    VantoDbConfig m_config;
};

// A commit whose answer is lost on the way may or may not have been stored:
// the runner asks the database before it answers, and never runs it twice.
TEST_F(VantoSqlRunnerTest, ALinkLostInsideTheCommitIsSettledByAskingTheDatabase)
{
    VantoSqlRunner runner(m_config);
    std::string error;
    odbc_fault::failNext(odbc_fault::Call::EndTranAfterCommit, 1);
    EXPECT_EQ(runner.runAtomically({"insert into t values (1)"}, error, 11), Result::Committed) << error;
    EXPECT_EQ(odbc_fault::injected(odbc_fault::Call::EndTranAfterCommit), 1);

    odbc_fault::failNext(odbc_fault::Call::EndTran, 1);
    EXPECT_EQ(runner.runAtomically({"insert into t values (2)"}, error, 12), Result::Committed) << error;
    EXPECT_EQ(odbc_fault::injected(odbc_fault::Call::EndTran), 1);
    EXPECT_EQ(rows(), "1,2") << "each stored once";
}

TEST_F(VantoSqlRunnerTest, AnOutcomeThatCannotBeLearntIsToldAsUnknownAndSettledAtTheNextConnection)
{
    VantoSqlRunner runner(m_config);
    std::string error;
    ASSERT_EQ(runner.runAtomically({"delete from t where x < 0"}, error), Result::Committed) << error; // connected
    ose::Trace::configure("*:1+4");
    for (const bool stored : {true, false}) {
        traceCapture trace;
        odbc_fault::failNext(stored ? odbc_fault::Call::EndTranAfterCommit : odbc_fault::Call::EndTran, 1);
        odbc_fault::failNext(odbc_fault::Call::Connect, 1000); // and the database stays away
        const std::string value = stored ? "3" : "4";
        EXPECT_EQ(runner.runAtomically({"insert into t values (" + value + ")"}, error, 21), Result::Unknown);
        EXPECT_EQ(error, "connection lost inside the commit; whether it was stored is not known");

        odbc_fault::failNext(odbc_fault::Call::Connect, 0);
        EXPECT_EQ(runner.runAtomically({"insert into t values (1" + value + ")"}, error, 22), Result::Committed)
            << error;
        EXPECT_TRUE(trace.contains(stored ? "The unclear commit of transaction 21 was stored"
                                          : "The unclear commit of transaction 21 was not stored"))
            << trace.text();
    }
    EXPECT_EQ(rows(), "3,13,14");
}

} // namespace
