#include "vanto/VantoSqlRunner.h"

#include "vanto/VantoTrace.h"

#include <random>

namespace {

// A connection that drops again at every try ends the commit with a
// failure rather than holding the server for ever.
constexpr int kMaxRounds = 3;

} // namespace

// Marks of runs of this server start at a random point, so that a marker
// left by an earlier server is never taken for one of its own.
VantoSqlRunner::VantoSqlRunner(VantoDbConfig config)
    : m_nextMark(std::uint64_t{std::random_device{}()} << 20 | 1)
{
    m_handles.config = std::move(config);
}

VantoSqlRunner::~VantoSqlRunner()
{
    VantoDb_disconnect(m_handles);
}

bool VantoSqlRunner::ensureConnected(std::string& error)
{
    if (m_handles.connected || VantoDb_init(m_handles) == 1 || VantoDb_reconnect(m_handles) == 1)
        return true;
    error = "database not reachable";
    return false;
}

void VantoSqlRunner::setAutocommit(bool on)
{
    const auto value = on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
    SQLSetConnectAttr(m_handles.dbc, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(value), 0);
}

bool VantoSqlRunner::execute(const std::string& statement, std::string& error, bool& lost)
{
    const std::string sql = VantoDb_adaptSql(m_handles.dialect, statement);
    const SQLRETURN rc =
        SQLExecDirect(m_handles.stmt, reinterpret_cast<SQLCHAR*>(const_cast<char*>(sql.c_str())), SQL_NTS);
    // An update or delete that touched no row is not a failure.
    const bool ok = SQL_SUCCEEDED(rc) || rc == SQL_NO_DATA;
    if (!ok) {
        VantoDb_getError(SQL_HANDLE_STMT, m_handles.stmt, error, lost);
        error += " in: " + statement.substr(0, 200);
    }
    SQLFreeStmt(m_handles.stmt, SQL_CLOSE);
    return ok;
}

VantoSqlRunner::Outcome VantoSqlRunner::runOnce(const std::vector<std::string>& statements, std::uint64_t mark,
                                                std::string& error)
{
    bool lost = false;
    if (!m_markTableMade) {
        if (!execute(std::string("create table if not exists ") + kMarkTable + " (mark integer)", error, lost))
            return lost ? Outcome::ConnectionLost : Outcome::Failed;
        m_markTableMade = true;
    }
    setAutocommit(false);
    bool ok = execute(std::string("delete from ") + kMarkTable, error, lost) &&
              execute(std::string("insert into ") + kMarkTable + " (mark) values (" + std::to_string(mark) + ")",
                      error, lost);
    for (std::size_t i = 0; ok && i < statements.size(); ++i)
        ok = execute(statements[i], error, lost);
    if (ok && !SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, m_handles.dbc, SQL_COMMIT))) {
        // A refused commit leaves the database as it was; a broken
        // connection leaves it unknown whether the commit took effect.
        VantoDb_getError(SQL_HANDLE_DBC, m_handles.dbc, error, lost);
        SQLEndTran(SQL_HANDLE_DBC, m_handles.dbc, SQL_ROLLBACK);
        setAutocommit(true);
        return lost ? Outcome::CommitUnclear : Outcome::Failed;
    }
    if (!ok) {
        SQLEndTran(SQL_HANDLE_DBC, m_handles.dbc, SQL_ROLLBACK);
        m_markTableMade = false; // perhaps the table went: made again next time
    }
    setAutocommit(true);
    if (ok)
        return Outcome::Committed;
    return lost ? Outcome::ConnectionLost : Outcome::Failed;
}

VantoSqlRunner::Stored VantoSqlRunner::wasStored(std::uint64_t mark)
{
    VantoDb_disconnect(m_handles);
    std::string error;
    if (!ensureConnected(error))
        return Stored::CannotTell;
    const std::string sql =
        std::string("select count(*) from ") + kMarkTable + " where mark = " + std::to_string(mark);
    SQLRETURN rc = SQLExecDirect(m_handles.stmt, reinterpret_cast<SQLCHAR*>(const_cast<char*>(sql.c_str())), SQL_NTS);
    SQLBIGINT count = -1;
    SQLLEN indicator = 0;
    if (SQL_SUCCEEDED(rc))
        rc = SQLFetch(m_handles.stmt);
    if (SQL_SUCCEEDED(rc))
        rc = SQLGetData(m_handles.stmt, 1, SQL_C_SBIGINT, &count, 0, &indicator);
    SQLFreeStmt(m_handles.stmt, SQL_CLOSE);
    if (!SQL_SUCCEEDED(rc) || indicator == SQL_NULL_DATA || count < 0) {
        VantoDb_disconnect(m_handles);
        return Stored::CannotTell;
    }
    return count > 0 ? Stored::Yes : Stored::No;
}

bool VantoSqlRunner::settleUnclearRun(std::string& error)
{
    if (m_unclearMark == 0)
        return true;
    switch (wasStored(m_unclearMark)) {
    case Stored::Yes:
        SSC_TRACE(vantoGroup(), 4, "The unclear commit of transaction %d was stored", m_unclearLabel);
        break;
    case Stored::No:
        SSC_TRACE(vantoGroup(), 4, "The unclear commit of transaction %d was not stored", m_unclearLabel);
        break;
    case Stored::CannotTell:
        error = "database not reachable";
        return false;
    }
    m_unclearMark = 0;
    return true;
}

VantoSqlRunner::Result VantoSqlRunner::runAtomically(const std::vector<std::string>& statements,
                                                     std::string& error, std::int32_t label)
{
    error.clear();
    if (statements.empty())
        return Result::Committed;
    // The next run deletes the marker of the unclear one: learn first.
    if (!ensureConnected(error) || !settleUnclearRun(error))
        return Result::Failed;
    for (int round = 1; round <= kMaxRounds; ++round) {
        if (!ensureConnected(error))
            return Result::Failed;
        const std::uint64_t mark = m_nextMark++;
        switch (runOnce(statements, mark, error)) {
        case Outcome::Committed:
            return Result::Committed;
        case Outcome::Failed:
            return Result::Failed;
        case Outcome::ConnectionLost:
            SSC_TRACE(vantoGroup(), 4, "Database connection lost during a commit, round %d", round);
            VantoDb_disconnect(m_handles);
            break;
        case Outcome::CommitUnclear:
            SSC_TRACE(vantoGroup(), 4, "Database connection lost inside the commit of transaction %d, round %d",
                      label, round);
            switch (wasStored(mark)) {
            case Stored::Yes:
                return Result::Committed;
            case Stored::No:
                break; // nothing of it is stored: run it again
            case Stored::CannotTell:
                m_unclearMark = mark;
                m_unclearLabel = label;
                error = "connection lost inside the commit; whether it was stored is not known";
                return Result::Unknown;
            }
            break;
        }
    }
    return Result::Failed;
}
