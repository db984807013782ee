#include "froBl/froMgmtSwU/testSupport/localTransactionServer.h"

localTransactionServer::localTransactionServer(VantoDbConfig config)
{
    m_handles.config = std::move(config);
}

localTransactionServer::~localTransactionServer()
{
    VantoDb_disconnect(m_handles);
}

int localTransactionServer::serviceAttach_e()
{
    ++m_attachCount;
    return 0;
}

int localTransactionServer::create_e(int, std::int32_t& transactionId, int)
{
    transactionId = newTransaction();
    return 0;
}

int localTransactionServer::registerResource_e(std::int32_t, int, int)
{
    ++m_registerCount;
    return 0;
}

int localTransactionServer::awaitRegisterRsp(std::int32_t, std::uint32_t& result)
{
    result = 0;
    return 0;
}

std::int32_t localTransactionServer::newTransaction()
{
    m_pending[m_nextId];
    return m_nextId++;
}

void localTransactionServer::databaseUpdateSQL(std::int32_t transactionId, const std::string& statement)
{
    m_pending[transactionId].push_back(statement);
}

int localTransactionServer::rollBack_e(std::int32_t transactionId, int)
{
    m_pending.erase(transactionId);
    return 0;
}

int localTransactionServer::commit_e(std::int32_t transactionId, int)
{
    const auto it = m_pending.find(transactionId);
    if (it == m_pending.end())
        return 1;
    const bool ok = runAll(it->second);
    m_pending.erase(it);
    return ok ? 0 : 1;
}

bool localTransactionServer::runAll(const std::vector<std::string>& statements)
{
    if (!m_handles.connected && VantoDb_init(m_handles) != 1) {
        m_lastError = "not connected";
        return false;
    }
    SQLSetConnectAttr(m_handles.dbc, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
    bool ok = true;
    for (const std::string& statement : statements) {
        const std::string sql = VantoDb_adaptSql(m_handles.dialect, statement);
        const SQLRETURN rc =
            SQLExecDirect(m_handles.stmt, reinterpret_cast<SQLCHAR*>(const_cast<char*>(sql.c_str())), SQL_NTS);
        if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) {
            bool lost = false;
            VantoDb_getError(SQL_HANDLE_STMT, m_handles.stmt, m_lastError, lost);
            m_lastError = "return code " + std::to_string(rc) + " " + m_lastError + " in: " + statement.substr(0, 200);
            ok = false;
        }
        SQLFreeStmt(m_handles.stmt, SQL_CLOSE);
        if (!ok)
            break;
    }
    SQLEndTran(SQL_HANDLE_DBC, m_handles.dbc, ok ? SQL_COMMIT : SQL_ROLLBACK);
    SQLSetConnectAttr(m_handles.dbc, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
    return ok;
}

std::array<std::uint8_t, 12> localTransactionServer::indication(std::uint32_t sigNo, std::int32_t transactionId)
{
    const auto id = static_cast<std::uint32_t>(transactionId);
    return {static_cast<std::uint8_t>(sigNo >> 24), static_cast<std::uint8_t>(sigNo >> 16),
            static_cast<std::uint8_t>(sigNo >> 8),  static_cast<std::uint8_t>(sigNo),
            0, 0, 0, 0,
            static_cast<std::uint8_t>(id >> 24),    static_cast<std::uint8_t>(id >> 16),
            static_cast<std::uint8_t>(id >> 8),     static_cast<std::uint8_t>(id)};
}
