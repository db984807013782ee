// Database client of the node platform, on unixODBC.

#include "platform/VantoDb.h"

#include "ose/Trace.h"

#include <array>
#include <cctype>
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

// The database a connection string names, for traces: the file or data
// source, never the rest (which may hold a password).
std::string databaseNameOf(const std::string& connectionString)
{
    std::string lower(connectionString);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (const char* key : {"database=", "dsn="}) {
        std::size_t at = lower.find(key);
        while (at != std::string::npos && at != 0 && lower[at - 1] != ';') at = lower.find(key, at + 1);
        if (at == std::string::npos) continue;
        const std::size_t from = at + std::strlen(key);
        return connectionString.substr(from, connectionString.find(';', from) - from);
    }
    return "(unnamed)";
}

// The level of a failed attempt's trace: an error when the caller is told
// at once, lower while the reconnection goes on trying.
bool connect(VantoDbHandles& h, unsigned failureLevel)
{
    const std::string& text = h.config.connectionString;
    const SQLRETURN rc = SQLDriverConnect(h.dbc, nullptr,
                                          reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.c_str())),
                                          SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!ok(rc)) {
        std::string error;
        bool lost = false;
        VantoDb_getError(SQL_HANDLE_DBC, h.dbc, error, lost);
        h.lastError = error;
        SSC_TRACE(dbTrace(), failureLevel, "VantoDb_init: cannot open the database %s: %s",
                  databaseNameOf(text).c_str(), error.c_str());
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

namespace {

int initWithLevel(VantoDbHandles& h, unsigned failureLevel)
{
    if (h.config.connectionString.empty()) {
        h.lastError = "no database name configured";
        SSC_TRACE(dbTrace(), failureLevel, "VantoDb_init: no database name configured");
        return 0;
    }
    if (!allocate(h) || !connect(h, failureLevel)) {
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

} // namespace

int VantoDb_init(VantoDbHandles& h)
{
    return initWithLevel(h, 1);
}

int VantoDb_initQuietly(VantoDbHandles& h)
{
    return initWithLevel(h, 7);
}

std::string VantoDb_databaseName(const VantoDbHandles& h)
{
    return databaseNameOf(h.config.connectionString);
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
    // Waiting cannot give a database that was never named.
    if (h.config.connectionString.empty()) {
        SSC_TRACE(dbTrace(), 1, "VantoDb_reconnect: no database name configured");
        return 0;
    }
    for (unsigned attempt = 1; attempt <= h.config.maxConnectAttempts; ++attempt) {
        if (initWithLevel(h, 7) == 1) {
            SSC_TRACE(dbTrace(), 4, "VantoDb_reconnect: connected after %u attempt(s)", attempt);
            return 1;
        }
        VantoDb_disconnect(h);
        wait(h.config.retryInterval);
    }
    SSC_TRACE(dbTrace(), 1, "VantoDb_reconnect: the database %s is not reachable after %u attempts: %s",
              VantoDb_databaseName(h).c_str(), h.config.maxConnectAttempts, h.lastError.c_str());
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
