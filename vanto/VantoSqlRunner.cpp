#include "vanto/VantoSqlRunner.h"

#include "vanto/VantoTrace.h"

namespace {

// A connection that drops again at every try ends the commit with a
// failure rather than holding the server for ever.
constexpr int kMaxRounds = 3;

} // namespace

VantoSqlRunner::VantoSqlRunner(VantoDbConfig config)
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

VantoSqlRunner::Outcome VantoSqlRunner::runOnce(const std::vector<std::string>& statements, std::string& error)
{
    setAutocommit(false);
    bool lost = false;
    bool ok = true;
    for (const std::string& statement : statements) {
        if (!execute(statement, error, lost)) {
            ok = false;
            break;
        }
    }
    if (ok && !SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, m_handles.dbc, SQL_COMMIT))) {
        // Whether it took effect is unknown only if the connection broke; a
        // refused commit leaves the database as it was.
        VantoDb_getError(SQL_HANDLE_DBC, m_handles.dbc, error, lost);
        SQLEndTran(SQL_HANDLE_DBC, m_handles.dbc, SQL_ROLLBACK);
        setAutocommit(true);
        return Outcome::Failed;
    }
    if (!ok)
        SQLEndTran(SQL_HANDLE_DBC, m_handles.dbc, SQL_ROLLBACK);
    setAutocommit(true);
    if (ok)
        return Outcome::Committed;
    return lost ? Outcome::ConnectionLost : Outcome::Failed;
}

bool VantoSqlRunner::runAtomically(const std::vector<std::string>& statements, std::string& error)
{
    error.clear();
    if (statements.empty())
        return true;
    for (int round = 1; round <= kMaxRounds; ++round) {
        if (!ensureConnected(error))
            return false;
        switch (runOnce(statements, error)) {
        case Outcome::Committed:
            return true;
        case Outcome::Failed:
            return false;
        case Outcome::ConnectionLost:
            SSC_TRACE(vantoGroup(), 4, "Database connection lost during a commit, round %d", round);
            VantoDb_disconnect(m_handles);
            break;
        }
    }
    return false;
}
