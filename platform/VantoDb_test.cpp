#include "platform/VantoDb.h"

#include "platform/testSupport/odbcFaultInjection.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace {

class VantoDbTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        odbc_fault::reset();
        char pattern[] = "/tmp/vantodb_test_XXXXXX";
        m_dir = mkdtemp(pattern);
        m_handles.config.connectionString = VantoDb_defaultConnectionString(m_dir);
        m_handles.config.wait = [this](std::chrono::milliseconds ms) { m_waits.push_back(ms); };
        m_handles.config.maxConnectAttempts = 4;
    }
    void TearDown() override
    {
        VantoDb_disconnect(m_handles);
        odbc_fault::reset();
        std::filesystem::remove_all(m_dir);
    }

    std::string m_dir;
    VantoDbHandles m_handles;
    std::vector<std::chrono::milliseconds> m_waits;
};

TEST_F(VantoDbTest, ConnectsToTheDefaultFileAndKnowsItsDialect)
{
    ASSERT_EQ(VantoDb_init(m_handles), 1);
    EXPECT_TRUE(m_handles.connected);
    EXPECT_EQ(m_handles.dialect, VantoDbDialect::Sqlite);
    EXPECT_TRUE(std::filesystem::exists(m_dir + "/ssc.db"));
    VantoDb_disconnect(m_handles);
    EXPECT_FALSE(m_handles.connected);
    EXPECT_EQ(m_handles.stmt, nullptr);
}

TEST_F(VantoDbTest, WithoutADatabaseNameNothingConnects)
{
    m_handles.config.connectionString.clear();
    EXPECT_EQ(VantoDb_init(m_handles), 0);
    EXPECT_FALSE(m_handles.connected);
}

TEST_F(VantoDbTest, ReconnectWaitsTheIntervalBetweenAttempts)
{
    odbc_fault::failNext(odbc_fault::Call::Connect, 2);
    ASSERT_EQ(VantoDb_reconnect(m_handles), 1);
    EXPECT_TRUE(m_handles.connected);
    EXPECT_EQ(m_waits, (std::vector<std::chrono::milliseconds>{std::chrono::milliseconds(250),
                                                               std::chrono::milliseconds(250)}));
}

TEST_F(VantoDbTest, ReconnectGivesUpAfterTheConfiguredAttempts)
{
    odbc_fault::failNext(odbc_fault::Call::Connect, 1000);
    EXPECT_EQ(VantoDb_reconnect(m_handles), 0);
    EXPECT_EQ(odbc_fault::injected(odbc_fault::Call::Connect), 4);
    EXPECT_EQ(m_waits.size(), 4u);
    EXPECT_FALSE(m_handles.connected);
}

TEST_F(VantoDbTest, GetErrorReportsALostLinkOnlyForItsState)
{
    ASSERT_EQ(VantoDb_init(m_handles), 1);
    std::string text;
    bool lost = true;
    ASSERT_EQ(SQLExecDirect(m_handles.stmt, (SQLCHAR*)"select x from nowhere", SQL_NTS), SQL_ERROR);
    VantoDb_getError(SQL_HANDLE_STMT, m_handles.stmt, text, lost);
    EXPECT_FALSE(lost);
    // The state, then the driver's own words.
    EXPECT_TRUE(text.starts_with("HY000 ")) << text;
    EXPECT_NE(text.find("no such table: nowhere"), std::string::npos) << text;

    odbc_fault::failNext(odbc_fault::Call::ExecDirect, 1);
    ASSERT_EQ(SQLExecDirect(m_handles.stmt, (SQLCHAR*)"select 1", SQL_NTS), SQL_ERROR);
    VantoDb_getError(SQL_HANDLE_STMT, m_handles.stmt, text, lost);
    EXPECT_TRUE(lost);
    EXPECT_EQ(text, "08S01 communication link failure (simulated)");
    // A later error of the same handle is not taken for a lost link.
    ASSERT_EQ(SQLExecDirect(m_handles.stmt, (SQLCHAR*)"select x from nowhere", SQL_NTS), SQL_ERROR);
    VantoDb_getError(SQL_HANDLE_STMT, m_handles.stmt, text, lost);
    EXPECT_FALSE(lost) << text;
}

TEST(VantoDbDialectTest, PlatformSqlIsAdaptedForSqliteAndOtherSources)
{
    EXPECT_EQ(VantoDb_adaptSql(VantoDbDialect::Sqlite, "create table t (persistent, a integer, primary key(a))"),
              "create table t (a integer, primary key(a))");
    EXPECT_EQ(VantoDb_adaptSql(VantoDbDialect::Sqlite, "select name from tables where name = 'apc_x'"),
              "select lower(name) from sqlite_master where type = 'table' and lower(name) = 'apc_x'");
    EXPECT_EQ(VantoDb_adaptSql(VantoDbDialect::Standard, "select name from tables where name = 'apc_x'"),
              "select lower(table_name) from information_schema.tables where lower(table_name) = 'apc_x'");
    // Only the statement forms of the platform are touched, never a value.
    const std::string insert = "insert into t (a) values ('(persistent, select name from tables where name = ')";
    EXPECT_EQ(VantoDb_adaptSql(VantoDbDialect::Sqlite, insert), insert);
}

} // namespace
