// Database client of the node platform, on unixODBC.

#include "platform/VantoDb.h"

#include "ose/Trace.h"

#include <array>
#include <cstring>
#include <thread>

namespace {

ose::TraceGroupId dbTrace() { return ose::traceGroup<"supSysVtpIf">(); }

// A connection attempt must not hang the process on a data source that does
// not answer.
constexpr SQLULEN kLoginTimeoutSeconds = 5;

bool ok(SQLRETURN rc)
{
    return SQL_SUCCEEDED(rc);
}

void defaultWait(std::chrono::milliseconds interval)
{
    std::this_thread::sleep_for(interval);
}

VantoDbDialect dialectOf(SQLHDBC dbc)
{
    std::array<char, 64> name{};
    SQLSMALLINT length = 0;
    if (!ok(SQLGetInfo(dbc, SQL_DBMS_NAME, name.data(), static_cast<SQLSMALLINT>(name.size()), &length)))
        return VantoDbDialect::Standard;
    return std::strncmp(name.data(), "SQLite", 6) == 0 ? VantoDbDialect::Sqlite : VantoDbDialect::Standard;
}

bool allocate(VantoDbHandles& h)
{
    if (!ok(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &h.env)))
        return false;
    if (!ok(SQLSetEnvAttr(h.env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0)))
        return false;
    if (!ok(SQLAllocHandle(SQL_HANDLE_DBC, h.env, &h.dbc)))
        return false;
    SQLSetConnectAttr(h.dbc, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(kLoginTimeoutSeconds), 0);
    return true;
}

bool connect(VantoDbHandles& h)
{
    const std::string& text = h.config.connectionString;
    const SQLRETURN rc = SQLDriverConnect(h.dbc, nullptr,
                                          reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str())),
                                          SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!ok(rc)) {
        std::string error;
        bool lost = false;
        VantoDb_getError(SQL_HANDLE_DBC, h.dbc, error, lost);
        SSC_TRACE(dbTrace(), 1, "VantoDb_init: connection failed: %s", error.c_str());
        SQLFreeHandle(SQL_HANDLE_DBC, h.dbc); // never connected: no SQLDisconnect
        h.dbc = SQL_NULL_HDBC;
        return false;
    }
    return true;
}

} // namespace

std::string VantoDb_defaultConnectionString(const std::string& dataDirectory)
{
    // Timeout: how long the driver waits for a lock held by another connection.
    return std::string("DRIVER=") + kVantoDbSqliteDriver + ";Database=" + dataDirectory + "/ssc.db;Timeout=5000";
}

int VantoDb_init(VantoDbHandles& h)
{
    if (h.config.connectionString.empty()) {
        SSC_TRACE(dbTrace(), 1, "VantoDb_init: no database name configured");
        return 0;
    }
    if (!allocate(h) || !connect(h)) {
        VantoDb_disconnect(h);
        return 0;
    }
    h.dialect = dialectOf(h.dbc);
    if (!ok(SQLAllocHandle(SQL_HANDLE_STMT, h.dbc, &h.stmt))) {
        h.stmt = SQL_NULL_HSTMT;
        h.connected = true; // so that disconnect tears the connection down
        VantoDb_disconnect(h);
        return 0;
    }
    h.connected = true;
    SSC_TRACE(dbTrace(), 7, "VantoDb_init: connected");
    return 1;
}

void VantoDb_disconnect(VantoDbHandles& h)
{
    if (h.stmt != SQL_NULL_HSTMT)
        SQLFreeHandle(SQL_HANDLE_STMT, h.stmt);
    if (h.dbc != SQL_NULL_HDBC) {
        if (h.connected)
            SQLDisconnect(h.dbc);
        SQLFreeHandle(SQL_HANDLE_DBC, h.dbc);
    }
    if (h.env != SQL_NULL_HENV)
        SQLFreeHandle(SQL_HANDLE_ENV, h.env);
    h.stmt = SQL_NULL_HSTMT;
    h.dbc = SQL_NULL_HDBC;
    h.env = SQL_NULL_HENV;
    h.connected = false;
}

int VantoDb_reconnect(VantoDbHandles& h)
{
    const auto wait = h.config.wait ? h.config.wait : defaultWait;
    VantoDb_disconnect(h);
    for (unsigned attempt = 1; attempt <= h.config.maxConnectAttempts; ++attempt) {
        if (VantoDb_init(h) == 1) {
            SSC_TRACE(dbTrace(), 4, "VantoDb_reconnect: connected after %u attempt(s)", attempt);
            return 1;
        }
        VantoDb_disconnect(h);
        wait(h.config.retryInterval);
    }
    SSC_TRACE(dbTrace(), 1, "VantoDb_reconnect: database not reachable after %u attempts",
              h.config.maxConnectAttempts);
    return 0;
}

void VantoDb_getError(SQLSMALLINT handleType, SQLHANDLE handle, std::string& text, bool& lost)
{
    text.clear();
    lost = false;
    for (SQLSMALLINT record = 1;; ++record) {
        SQLCHAR state[6] = {};
        SQLINTEGER native = 0;
        std::array<SQLCHAR, 512> message{};
        SQLSMALLINT length = 0;
        const SQLRETURN rc = SQLGetDiagRec(handleType, handle, record, state, &native, message.data(),
                                           static_cast<SQLSMALLINT>(message.size()), &length);
        if (!ok(rc))
            break;
        if (std::memcmp(state, "08S01", 5) == 0)
            lost = true;
        if (!text.empty())
            text += "; ";
        text += reinterpret_cast<const char*>(state);
        text += ' ';
        text += reinterpret_cast<const char*>(message.data());
    }
}
