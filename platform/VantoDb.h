#pragma once
// Database client of the node platform over ODBC.
//
// One record of handles per user. The record carries its own configuration, so
// that several nodes in one process can each have a database of their own.
// All calls block the caller; every wait is bounded by the configuration.

#include <sql.h>
#include <sqlext.h>

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

enum class VantoDbDialect {
    Sqlite,   // the SQLite ODBC driver: the default, a file in the data directory
    Standard  // any other data source: information_schema as catalogue
};

struct VantoDbConfig {
    // A complete ODBC connection string ("DRIVER=...;Database=..." or "DSN=...").
    std::string connectionString;
    // Wait between two connection attempts. Tests inject a function that only
    // counts; the node injects the kernel's delay.
    std::function<void(std::chrono::milliseconds)> wait;
    std::chrono::milliseconds retryInterval{250};
    // Attempts of one reconnection before the caller is told that it failed.
    unsigned maxConnectAttempts = 120;
};

struct VantoDbHandles {
    SQLHENV env = SQL_NULL_HENV;
    SQLHDBC dbc = SQL_NULL_HDBC;
    SQLHSTMT stmt = SQL_NULL_HSTMT;
    bool connected = false;
    VantoDbDialect dialect = VantoDbDialect::Standard;
    VantoDbConfig config;
    // The driver's words for the last failed connection.
    std::string lastError;
};

// The SQLite ODBC driver shipped with the distribution.
inline constexpr const char* kVantoDbSqliteDriver =
    "/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so";

// Connection string of the default database: the file ssc.db in dataDirectory.
std::string VantoDb_defaultConnectionString(const std::string& dataDirectory);

// Allocates the handles and connects. 1 connected, 0 not (handles freed again).
int VantoDb_init(VantoDbHandles& handles);
// The same, with a failure traced at flow level only: for a first attempt
// whose failure the caller reports itself.
int VantoDb_initQuietly(VantoDbHandles& handles);
// The file or data source the configured connection string names, for
// traces (the rest of the string may hold a password).
std::string VantoDb_databaseName(const VantoDbHandles& handles);
// Frees everything; safe on a record that was never connected.
void VantoDb_disconnect(VantoDbHandles& handles);
// Disconnects, then tries VantoDb_init at the configured interval. 1 when
// connected again, 0 after maxConnectAttempts failures.
int VantoDb_reconnect(VantoDbHandles& handles);
// Diagnostic text of all records of the handle; lost is set when one of them
// has SQLSTATE 08S01 (communication link failure).
void VantoDb_getError(SQLSMALLINT handleType, SQLHANDLE handle, std::string& text, bool& lost);

// The statement as the connected data source takes it (see VantoDbDialect.cpp).
std::string VantoDb_adaptSql(VantoDbDialect dialect, std::string_view sql);
