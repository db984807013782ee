#include "froBl/froMgmtSwU/export/elibDbFroDatabase.h"

#include "froBl/froMgmtSwU/export/SignalDistributorAPI.h"

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/xmlEscape.h"
#include "froBl/froMgmtSwU/export/xmlGuard.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/froSqlStatements.h"
#include "froBl/froMgmtSwU/sqlText.h"
#include "platform/VantoTransactionApi.h"

#include "ose/Kernel.h"

#include <algorithm>
#include <cinttypes>

using namespace fro_trace;
using Sql = froSqlStatements;

namespace {

// Rounds of reconnect-and-repeat for one operation; each round is itself
// bounded by the connection attempts of the configuration. A link that drops
// again at every try ends the operation with a failure instead of a hang.
constexpr int kMaxRepeats = 5;

// What one text column may hold, with its NUL.
constexpr std::size_t kTextBufferBytes = 49152;

// Taken from the distributor: the server going down, and the answers to
// requests, which need nothing but must not count as unknown.
constexpr std::uint32_t kSubscribed[] = {ElibDbFroDatabase::kTransServerDownInd, ElibDbFroDatabase::kTransCreateCfm,
                                         ElibDbFroDatabase::kTransCommitCfm, ElibDbFroDatabase::kTransRollbackCfm};
static_assert(kTextBufferBytes == xmlGuard::kMaxValueBytes + 1);

constexpr const char* kGenericFetch = "ElibDbFroDatabase::sqlExecFetchGetColumns";

std::uint32_t readBigEndian32(const std::uint8_t* bytes)
{
    return (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) | (std::uint32_t{bytes[2]} << 8) |
           std::uint32_t{bytes[3]};
}

} // namespace

ElibDbFroDatabase::ElibDbFroDatabase(VantoDbConfig config, VantoTransactionApi& transaction,
                                     SignalDistributorAPI* distributor)
    : m_transaction(transaction), m_pDistributor(distributor), m_textBuffer(kTextBufferBytes)
{
    m_handles.config = std::move(config);
    if (m_pDistributor != nullptr) {
        for (std::uint32_t sigNo : kSubscribed) {
            const int result = m_pDistributor->subscribe(sigNo, this);
            SSC_TRACE(dbGroup(), kFlow, "RESULT = %d", result);
        }
    }
    const int result = m_transaction.serviceAttach_e();
    if (result != 0)
        SSC_TRACE(dbGroup(), kError, "VantoTransaction_serviceAttach_e() returned %d", result);
    SSC_TRACE(dbGroup(), kFlow, "attached to TRANS");
}

ElibDbFroDatabase::~ElibDbFroDatabase()
{
    if (m_pDistributor != nullptr)
        for (std::uint32_t sigNo : kSubscribed)
            m_pDistributor->unsubscribe(sigNo, this);
    VantoDb_disconnect(m_handles);
}

// ---- connection -------------------------------------------------------------

// Once a whole round of attempts has failed, each later use tries once
// until the database is back: a database that stays away must not hold every
// request of the process for a round of its own.
bool ElibDbFroDatabase::reconnect()
{
    if (m_unreachable) {
        VantoDb_disconnect(m_handles);
        if (VantoDb_initQuietly(m_handles) != 1) {
            SSC_TRACE(dbGroup(), kFlow, "The database %s is still not reachable",
                      VantoDb_databaseName(m_handles).c_str());
            return false;
        }
        SSC_TRACE(dbGroup(), kInfo, "The database %s is reachable again", VantoDb_databaseName(m_handles).c_str());
        m_unreachable = false;
        return true;
    }
    m_unreachable = VantoDb_reconnect(m_handles) != 1;
    return !m_unreachable;
}

// The first attempt is quiet: a failure is traced once, by the round of
// attempts that follows it.
bool ElibDbFroDatabase::ensureConnected()
{
    if (m_handles.connected)
        return true;
    SSC_TRACE(dbGroup(), kFlow, "Init: Connect to database");
    if (VantoDb_initQuietly(m_handles) == 1) {
        m_unreachable = false;
        return true;
    }
    return reconnect();
}

void ElibDbFroDatabase::getError(short handleType, void* handle, bool& lost)
{
    VantoDb_getError(handleType, handle, m_lastDbError, lost);
    SSC_TRACE(dbGroup(), kFlow, "NC::ElibDbFroDatabase::getError: Database error occurred: %s", m_lastDbError.c_str());
}

void ElibDbFroDatabase::closeCursor(const char* who)
{
    if (!SQL_SUCCEEDED(SQLCloseCursor(m_handles.stmt)))
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::%s: Error in SQLCloseCursor", who);
}

bool ElibDbFroDatabase::execOnce(const std::string& sql, bool& lost, SQLRETURN* code)
{
    lost = false;
    if (code)
        *code = SQL_ERROR;
    if (!ensureConnected())
        return false;
    SQLFreeStmt(m_handles.stmt, SQL_CLOSE);
    const std::string adapted = VantoDb_adaptSql(m_handles.dialect, sql);
    const SQLRETURN rc = SQLExecDirect(m_handles.stmt, reinterpret_cast<SQLCHAR*>(const_cast<char*>(adapted.c_str())),
                                       SQL_NTS);
    if (code)
        *code = rc;
    // An update or delete that touched no row gives SQL_NO_DATA: not a failure.
    if (SQL_SUCCEEDED(rc) || rc == SQL_NO_DATA)
        return true;
    getError(SQL_HANDLE_STMT, m_handles.stmt, lost);
    if (!lost) {
        if (rc == SQL_ERROR)
            SSC_TRACE(dbGroup(), kFlow, "SQLExecDirect Failed. The database does not exist at this moment");
        else
            SSC_TRACE(dbGroup(), kError,
                      "SQLExecDirect failed when trying to detect if the table exists in the database");
    }
    return false;
}

bool ElibDbFroDatabase::execDirect(const std::string& sql)
{
    SSC_TRACE(dbGroup(), kFlow, "Executing SQL: %s", sql.c_str());
    for (int round = 0; round <= kMaxRepeats; ++round) {
        bool lost = false;
        if (execOnce(sql, lost))
            return true;
        if (!lost)
            return false;
        SSC_TRACE(dbGroup(), kFlow, "SQLExecDirect Failed. DB Disconnected");
        if (!reconnect())
            return false;
    }
    return false;
}

// ---- reading ----------------------------------------------------------------

bool ElibDbFroDatabase::textColumnFits(SQLRETURN rc, SQLLEN indicator, std::size_t bufferBytes)
{
    // The driver may give SQL_SUCCESS with a length past the buffer: the
    // length alone decides, whatever the return code says.
    if (!SQL_SUCCEEDED(rc) || indicator == SQL_NULL_DATA)
        return true; // handled by the caller
    return indicator >= 0 && indicator < static_cast<SQLLEN>(bufferBytes);
}

ElibDbFroDatabase::FetchResult ElibDbFroDatabase::readRow(const char* who, const std::vector<Column>& columns,
                                                          Row& row)
{
    for (const Column& column : columns) {
        SQLLEN indicator = 0;
        SQLRETURN rc;
        std::string text;
        if (column.kind == ColumnKind::Text) {
            std::vector<char>& buffer = m_textBuffer;
            rc = SQLGetData(m_handles.stmt, column.number, SQL_C_CHAR, buffer.data(), buffer.size(), &indicator);
            // Truncated or of unknown length: longer than anything this
            // system writes. Refused rather than read back cut or past the end.
            if (!textColumnFits(rc, indicator, buffer.size())) {
                SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::%s: column %u holds more than %zu bytes", who,
                          column.number, kTextBufferBytes - 1);
                return DBI_OPERATION_FAIL;
            }
            if (SQL_SUCCEEDED(rc) && indicator != SQL_NULL_DATA)
                text.assign(buffer.data(), static_cast<std::size_t>(indicator));
        } else {
            SQLBIGINT number = 0;
            rc = SQLGetData(m_handles.stmt, column.number, SQL_C_SBIGINT, &number, sizeof number, &indicator);
            const std::int64_t low = column.kind == ColumnKind::Unsigned ? 0 : INT32_MIN;
            const std::int64_t high = column.kind == ColumnKind::Unsigned ? UINT32_MAX : INT32_MAX;
            if (SQL_SUCCEEDED(rc) && indicator != SQL_NULL_DATA && (number < low || number > high)) {
                SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::%s: column %u holds %" PRId64
                          ", out of range", who, column.number, static_cast<std::int64_t>(number));
                return DBI_OPERATION_FAIL;
            }
            text = std::to_string(number);
        }
        if (!SQL_SUCCEEDED(rc)) {
            bool lost = false;
            getError(SQL_HANDLE_STMT, m_handles.stmt, lost);
            SSC_TRACE(dbGroup(), kError, lost ? "ELIB::ElibDbFroDatabase::%s: DB Disconnected while SQLGetData"
                                              : "ELIB::ElibDbFroDatabase::%s: Failed to read client data from the database.",
                      who);
            return lost ? DBI_DISCONNECTED : DBI_OPERATION_FAIL;
        }
        if (indicator == SQL_NULL_DATA)
            row.emplace_back();
        else
            row.emplace_back(std::move(text));
    }
    return DBI_OPERATION_SUCCESS;
}

ElibDbFroDatabase::FetchResult ElibDbFroDatabase::fetchOnce(const char* who, const std::string& sql,
                                                            const std::vector<Column>& columns,
                                                            std::vector<Row>& rows)
{
    rows.clear();
    bool lost = false;
    if (!execOnce(sql, lost)) {
        SSC_TRACE(dbGroup(), lost ? kFlow : kError,
                  lost ? "ELIB::ElibDbFroDatabase::%s: SQLExecDirect Failed. DB disconnected"
                       : "ELIB::ElibDbFroDatabase::%s: Failed to send dataquery to the Vanto database.",
                  who);
        return lost ? DBI_DISCONNECTED : DBI_OPERATION_FAIL;
    }
    FetchResult result = DBI_OPERATION_SUCCESS;
    for (;;) {
        const SQLRETURN rc = SQLFetch(m_handles.stmt);
        if (rc == SQL_NO_DATA)
            break;
        if (!SQL_SUCCEEDED(rc)) {
            getError(SQL_HANDLE_STMT, m_handles.stmt, lost);
            SSC_TRACE(dbGroup(), kError, lost ? "ELIB::ElibDbFroDatabase::%s: DB disconnected while SQLFetch"
                                              : "ELIB::ElibDbFroDatabase::%s: SQLFetch failed",
                      who);
            result = lost ? DBI_DISCONNECTED : DBI_OPERATION_FAIL;
            break;
        }
        Row row;
        result = readRow(who, columns, row);
        if (result != DBI_OPERATION_SUCCESS)
            break;
        rows.push_back(std::move(row));
    }
    if (result != DBI_DISCONNECTED)
        closeCursor(who);
    if (result == DBI_OPERATION_SUCCESS)
        SSC_TRACE(dbGroup(), kFlow, "ELIB::ElibDbFroDatabase::%s: Fetched %zu data from the database", who,
                  rows.size());
    return result;
}

ElibDbFroDatabase::FetchResult ElibDbFroDatabase::fetch(const char* who, const std::string& sql,
                                                        const std::vector<Column>& columns, std::vector<Row>& rows)
{
    SSC_TRACE(dbGroup(), kFlow, "Executing SQL: %s", sql.c_str());
    return fetchRepeating(who, sql, columns, rows, {});
}

ElibDbFroDatabase::FetchResult ElibDbFroDatabase::fetchRepeating(const char* who, const std::string& sql,
                                                                 const std::vector<Column>& columns,
                                                                 std::vector<Row>& rows, const std::string& onLost)
{
    for (int round = 0; round <= kMaxRepeats; ++round) {
        const FetchResult result = fetchOnce(who, sql, columns, rows);
        if (result != DBI_DISCONNECTED)
            return result;
        if (!onLost.empty())
            SSC_TRACE(dbGroup(), kFlow, "%s", onLost.c_str());
        if (!reconnect())
            return DBI_OPERATION_FAIL;
    }
    return DBI_OPERATION_FAIL;
}

bool ElibDbFroDatabase::handleDisconnected(const std::string& statement)
{
    bool lost = false;
    getError(SQL_HANDLE_STMT, m_handles.stmt, lost);
    if (lost)
        SSC_TRACE(dbGroup(), kFlow, "NC::ElibDbFroDatabase::handleDisconnected DB Disconnected while executing %s",
                  statement.c_str());
    else
        SSC_TRACE(dbGroup(), kError, "NC::ElibDbFroDatabase::handleDisconnected Failed when trying to execute %s",
                  statement.c_str());
    return lost;
}

ElibDbFroDatabase::FetchResult ElibDbFroDatabase::fetchGenericRows(const std::string& statement,
                                                                   const std::vector<SqlColumn>& columns,
                                                                   std::vector<SqlRow>& rows)
{
    std::vector<Column> wanted;
    for (const SqlColumn& column : columns) {
        const bool number = sqlText::sqlTypeOf(column.type) == sqlText::SqlType::Integer ||
                            sqlText::lowerCase(column.type) == "integer";
        wanted.push_back({column.number, number ? ColumnKind::Unsigned : ColumnKind::Text});
    }
    for (;;) {
        const SQLRETURN rc = SQLFetch(m_handles.stmt);
        if (rc == SQL_NO_DATA)
            break;
        if (!SQL_SUCCEEDED(rc))
            return handleDisconnected(statement) ? DBI_DISCONNECTED : DBI_OPERATION_FAIL;
        Row row;
        const FetchResult result = readRow("sqlExecFetchGetColumns", wanted, row);
        if (result != DBI_OPERATION_SUCCESS)
            return result;
        if (std::find(row.begin(), row.end(), std::nullopt) != row.end()) {
            SSC_TRACE(dbGroup(), kError, "SQLGetData returned null");
            continue;
        }
        SqlRow taken;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (columns[i].number == 1)
                taken.number = static_cast<std::uint32_t>(std::stoul(*row[i]));
            else
                (columns[i].number == 2 ? taken.first : taken.second) = *row[i];
        }
        rows.push_back(std::move(taken));
    }
    return DBI_OPERATION_SUCCESS;
}

bool ElibDbFroDatabase::sqlExecFetchGetColumns(const std::string& statement, const std::vector<SqlColumn>& columns,
                                               std::vector<SqlRow>& rows)
{
    for (const SqlColumn& column : columns) {
        const bool number = sqlText::sqlTypeOf(column.type) == sqlText::SqlType::Integer ||
                            sqlText::lowerCase(column.type) == "integer";
        // A row has one number and two texts: column 1 is that number.
        if (column.number < 1 || column.number > 3 || (column.number == 1) != number) {
            SSC_TRACE(dbGroup(), kError, "%s: column %u of type %s has no place in a row", kGenericFetch,
                      column.number, column.type.c_str());
            return false;
        }
    }
    // Rows come whole or not at all: a part of a result is no ground to act on.
    FetchResult result = DBI_DISCONNECTED;
    for (int round = 0; round <= kMaxRepeats && result == DBI_DISCONNECTED; ++round) {
        rows.clear();
        if (!execDirect(statement))
            break;
        result = fetchGenericRows(statement, columns, rows);
        if (result == DBI_DISCONNECTED) {
            if (!reconnect())
                break;
            continue;
        }
        if (!SQL_SUCCEEDED(SQLCloseCursor(m_handles.stmt)))
            SSC_TRACE(dbGroup(), kError, "%s error in SQLCloseCursor", kGenericFetch);
    }
    if (result != DBI_OPERATION_SUCCESS) {
        rows.clear();
        return false;
    }
    SSC_TRACE(dbGroup(), kFlow, "%s fetched %zu data from the database", kGenericFetch, rows.size());
    return true;
}

// ---- schema -----------------------------------------------------------------

bool ElibDbFroDatabase::init()
{
    if (!ensureConnected())
        return false;
    if (!m_firstInit)
        return true;
    const bool result = setUpSchema();
    // A database that cannot hold the tables is named once per attempt, with
    // the driver's reason, and tried again at the next init: a file put right
    // meanwhile is then set up.
    if (!result)
        SSC_TRACE(dbGroup(), kError, "The object database %s cannot be used: %s",
                  VantoDb_databaseName(m_handles).c_str(), m_lastDbError.c_str());
    m_firstInit = !result;
    return result;
}

bool ElibDbFroDatabase::insertVersionRow(std::size_t classIndex)
{
    const auto& cls = fro_types::kClasses[classIndex];
    return execDirect(Sql::insertVersion(cls.froType, cls.name));
}

bool ElibDbFroDatabase::setUpSchema()
{
    // Only a table that is surely missing is made; after an unclear status the
    // rows are read, so that a class missing from an old table is still added.
    const TableStatus status = tableStatus(Sql::kVersionsTable);
    std::vector<std::uint32_t> known;
    if (status == TABLE_NOT_FOUND) {
        SSC_TRACE(dbGroup(), kInfo, "scratch installation");
        if (!createTable(Sql::kVersionsTable, Sql::kVersionsColumns))
            return false;
    } else {
        std::vector<Row> rows;
        if (fetch("fetchFroVersions", "select frotype from apc_fro_versions order by frotype asc ",
                  {{1, ColumnKind::Unsigned}}, rows) != DBI_OPERATION_SUCCESS)
            return false;
        for (const Row& row : rows)
            if (row[0])
                known.push_back(static_cast<std::uint32_t>(std::stoul(*row[0])));
    }
    bool result = true;
    for (std::size_t i = 0; i < fro_types::kPersistentCount; ++i)
        if (std::find(known.begin(), known.end(), fro_types::kClasses[i].froType) == known.end())
            result = insertVersionRow(i) && result;
    return dropTransStateColumns() && result;
}

// Tables made while a shadow's transaction state was stored with its object
// carry a NOT NULL column for it, which every insert of an object without it
// would break: the column and its attribute row go.
bool ElibDbFroDatabase::dropTransStateColumns()
{
    bool result = true;
    for (std::size_t i = 0; i < fro_types::kPersistentCount; ++i) {
        std::string table;
        bool lost = false;
        // Asked straight, so that no table status is remembered before the
        // table's first real use.
        if (!getFrodataTableName(fro_types::kClasses[i].froType, table) ||
            !execOnce("select TransState from " + table + " where 1 = 0", lost))
            continue;
        SSC_TRACE(dbGroup(), kInfo, "Dropping the column TransState of %s", table.c_str());
        result = execDirect("alter table " + table + " drop column TransState") &&
                 execDirect("delete from " + std::string(Sql::kAttributesTable) + " where frotype = " +
                            std::to_string(fro_types::kClasses[i].froType) + " and attrname = 'TransState'") &&
                 result;
    }
    // Names are taken from the database at their first real use, as before.
    m_tableNames.clear();
    return result;
}

ElibDbFroDatabase::TableStatus ElibDbFroDatabase::tableStatusOnce(const std::string& sql, bool& lost)
{
    if (!execOnce(sql, lost))
        return TABLE_STATUS_ERROR;
    TableStatus status = TABLE_STATUS_ERROR;
    const SQLRETURN rc = SQLFetch(m_handles.stmt);
    if (SQL_SUCCEEDED(rc)) {
        SSC_TRACE(dbGroup(), kFlow, "Table exists");
        status = TABLE_FOUND;
    } else if (rc == SQL_NO_DATA) {
        SSC_TRACE(dbGroup(), kFlow, "When trying to fetch data from the database the return is SQL_NO_DATA");
        status = TABLE_NOT_FOUND;
    } else {
        getError(SQL_HANDLE_STMT, m_handles.stmt, lost);
        if (lost)
            SSC_TRACE(dbGroup(), kFlow, "SQLFetch Failed. DB Disconnected");
    }
    if (!SQL_SUCCEEDED(SQLCloseCursor(m_handles.stmt)))
        SSC_TRACE(dbGroup(), kError, "Error during SQLCloseCursor");
    return status;
}

ElibDbFroDatabase::TableStatus ElibDbFroDatabase::tableStatus(std::string name)
{
    name = sqlText::lowerCase(name);
    // Tables this object has seen or made stay until it drops them or a
    // transaction fails: asking again for each object would cost a query.
    if (m_knownTables.count(name) != 0)
        return TABLE_FOUND;
    if (m_absentTables.count(name) != 0)
        return TABLE_NOT_FOUND;
    const std::string sql = "select name from tables where name = " + sqlText::quote(name);
    SSC_TRACE(dbGroup(), kFlow, "Executing SQL: %s", sql.c_str());
    for (int round = 0; round <= kMaxRepeats; ++round) {
        bool lost = false;
        const TableStatus status = tableStatusOnce(sql, lost);
        if (status == TABLE_FOUND)
            m_knownTables.insert(name);
        else if (status == TABLE_NOT_FOUND)
            m_absentTables.insert(name);
        if (!lost)
            return status;
        if (!reconnect())
            break;
    }
    return TABLE_STATUS_ERROR;
}

bool ElibDbFroDatabase::createTable(const std::string& name, const std::string& columns)
{
    const std::string sql = Sql::createTable(name, columns);
    m_absentTables.erase(sqlText::lowerCase(name)); // made now, or in doubt
    SSC_TRACE(dbGroup(), kFlow, "ELIB::ElibDbFroDatabase::createTable: SQL Create Table String = %s", sql.c_str());
    SQLRETURN rc = SQL_ERROR;
    for (int round = 0; round <= kMaxRepeats; ++round) {
        bool lost = false;
        if (execOnce(sql, lost, &rc)) {
            SSC_TRACE(dbGroup(), kFlow, "ELIB::ElibDbFroDatabase::createTable: Table Created");
            m_knownTables.insert(sqlText::lowerCase(name));
            return true;
        }
        if (!lost)
            break;
        SSC_TRACE(dbGroup(), kFlow, "ELIB::ElibDbFroDatabase::createTable: DB Disconnected");
        if (!reconnect())
            break;
    }
    SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::createTable: Failed to allocate the table in the database");
    if (rc == SQL_ERROR)
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::createTable: SQL_ERROR");
    else if (rc == SQL_NEED_DATA)
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::createTable: SQL_NEED_DATA");
    else if (rc == SQL_STILL_EXECUTING)
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::createTable: SQL_STILL_EXECUTING");
    return false;
}

bool ElibDbFroDatabase::getFrodataTableName(std::uint32_t froType, std::string& name)
{
    // A class keeps its table name for good: the rows are written once, at
    // set-up, and never changed.
    if (const auto known = m_tableNames.find(froType); known != m_tableNames.end()) {
        name = known->second;
        return true;
    }
    const TableStatus status = tableStatus(Sql::kVersionsTable);
    if (status == TABLE_NOT_FOUND)
        SSC_TRACE(dbGroup(), kError, "No FRO versions table was found.");
    if (status != TABLE_FOUND)
        return false;
    std::vector<Row> rows;
    const std::string sql = std::string("select * from ") + Sql::kVersionsTable + " where frotype = " +
                            std::to_string(froType);
    if (fetch("fetchFrodataTableName", sql, {{3, ColumnKind::Text}}, rows) != DBI_OPERATION_SUCCESS ||
        rows.empty() || !rows[0][0])
        return false;
    // The name comes back into statements: it must be a plain name.
    if (!sqlText::isIdentifier(*rows[0][0])) {
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::fetchFrodataTableName: %s is not a table name",
                  rows[0][0]->c_str());
        return false;
    }
    name = *rows[0][0];
    SSC_TRACE(dbGroup(), kFlow, "ELIB::ElibDbFroDatabase::fetchFrodataTableName: returns %s from the database",
              name.c_str());
    m_tableNames.emplace(froType, name);
    return true;
}

// ---- writing ----------------------------------------------------------------

void ElibDbFroDatabase::sendInTransaction(std::int32_t transactionId, const std::string& statement)
{
    SSC_TRACE(dbGroup(), kFlow, "Executing VantoTransaction_databaseUpdateSQL(%d, %s)", transactionId,
              statement.c_str());
    m_transaction.databaseUpdateSQL(transactionId, statement);
}

bool ElibDbFroDatabase::fetchAttributes(std::uint32_t froType, std::vector<std::string>& names,
                                        std::vector<std::string>& types)
{
    // Stored attribute rows of a class do not change until the class's last
    // object goes (removeAttributeRows): read them once.
    if (const auto known = m_storedAttributes.find(froType); known != m_storedAttributes.end()) {
        names = known->second.names;
        types = known->second.types;
        return true;
    }
    std::vector<Row> rows;
    const std::string sql = std::string("select * from ") + Sql::kAttributesTable + " where frotype = " +
                            std::to_string(froType);
    if (fetch("fetchAttributes", sql, {{2, ColumnKind::Text}, {3, ColumnKind::Text}}, rows) != DBI_OPERATION_SUCCESS)
        return false;
    names.clear();
    types.clear();
    for (const Row& row : rows) {
        if (!row[0] || !row[1]) {
            SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::fetchAttributes: Failed when trying to read value "
                                         "from the database, no value returned");
            return false;
        }
        names.push_back(*row[0]);
        types.push_back(*row[1]);
    }
    if (!names.empty())
        m_storedAttributes[froType] = BufferedType{froType, 0, names, types};
    return true;
}

bool ElibDbFroDatabase::saveFroAttributeTypes(std::uint32_t froType, const std::vector<std::string>& names,
                                              const std::vector<std::string>& types, std::int32_t transactionId)
{
    if (const BufferedType* buffered = bufferedType(froType, transactionId)) {
        SSC_TRACE(dbGroup(), kFlow, "froType %u is already buffered", froType);
        return typesAgree("saveFroAttributeTypes", froType, buffered->names, buffered->types, names, types);
    }
    const TableStatus status = tableStatus(Sql::kAttributesTable);
    if (status == TABLE_NOT_FOUND) {
        SSC_TRACE(dbGroup(), kFlow, "No FRO attribute table was found.");
        if (!createTable(Sql::kAttributesTable, Sql::kAttributesColumns))
            return false;
    } else if (status == TABLE_STATUS_ERROR) {
        return false;
    }
    std::vector<std::string> storedNames;
    std::vector<std::string> storedTypes;
    if (!fetchAttributes(froType, storedNames, storedTypes))
        return false;
    if (!storedNames.empty())
        return typesAgree("saveFroAttributeTypes", froType, storedNames, storedTypes, names, types);
    if (names.size() != types.size()) {
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::saveFroAttributeTypes: Vector sizes doesn't match : # "
                                     "of attributes=%zu, # of types=%zu", names.size(), types.size());
        return false;
    }
    // Rows that another open transaction writes are not stored yet: that one
    // may roll back. This transaction writes its own, so that its objects
    // never depend on another's outcome.
    if (const BufferedType* other = bufferedType(froType, kAnyTransaction)) {
        SSC_TRACE(dbGroup(), kInfo, "froType %u is also written by open transaction %d", froType,
                  other->transactionId);
        if (!typesAgree("saveFroAttributeTypes", froType, other->names, other->types, names, types))
            return false;
    }
    BufferedType written{froType, transactionId, {}, {}};
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (Sql::isParentRef(names[i])) {
            SSC_TRACE(dbGroup(), kFlow, "%s is skipped", names[i].c_str());
        } else if (std::find(written.names.begin(), written.names.end(), names[i]) != written.names.end()) {
            SSC_TRACE(dbGroup(), kFlow, "Duplicate key in fro attributes with key %u + %s", froType, names[i].c_str());
        } else {
            sendInTransaction(transactionId, Sql::insertAttributeType(froType, names[i], types[i]));
            written.names.push_back(names[i]);
            written.types.push_back(types[i]);
        }
    }
    m_bufferedTypes.push_back(std::move(written));
    SSC_TRACE(dbGroup(), kFlow, "froType %u is now buffered", froType);
    return true;
}

const ElibDbFroDatabase::BufferedType* ElibDbFroDatabase::bufferedType(std::uint32_t froType,
                                                                       std::int32_t transactionId) const
{
    for (const BufferedType& known : m_bufferedTypes)
        if (known.froType == froType && (transactionId == kAnyTransaction || known.transactionId == transactionId))
            return &known;
    return nullptr;
}

void ElibDbFroDatabase::forgetBufferedTypes(std::int32_t transactionId)
{
    std::erase_if(m_bufferedTypes, [transactionId](const BufferedType& known) {
        return known.transactionId == transactionId;
    });
}

bool ElibDbFroDatabase::attributeTypesKept(std::uint32_t froType, const std::vector<std::string>& names,
                                           const std::vector<std::string>& types, std::int32_t transactionId)
{
    if (const BufferedType* buffered = bufferedType(froType, transactionId))
        return typesAgree("saveAttributes", froType, buffered->names, buffered->types, names, types);
    std::vector<std::string> storedNames;
    std::vector<std::string> storedTypes;
    return fetchAttributes(froType, storedNames, storedTypes) &&
           typesAgree("saveAttributes", froType, storedNames, storedTypes, names, types);
}

bool ElibDbFroDatabase::typesAgree(const char* who, std::uint32_t froType, const std::vector<std::string>& knownNames,
                                   const std::vector<std::string>& knownTypes, const std::vector<std::string>& names,
                                   const std::vector<std::string>& types)
{
    // An object is read back with the types of the class's first object: a
    // value of another type would come back as something else, or not at all.
    for (std::size_t i = 0; i < names.size() && i < types.size(); ++i) {
        const auto known = std::find(knownNames.begin(), knownNames.end(), names[i]);
        if (known == knownNames.end())
            continue; // no column: the insert fails at the platform
        const std::string& knownType = knownTypes[static_cast<std::size_t>(known - knownNames.begin())];
        if (knownType != types[i]) {
            SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::%s: attribute %s of froType %u has type %s, the "
                                         "class stores it as %s",
                      who, names[i].c_str(), froType, types[i].c_str(), knownType.c_str());
            return false;
        }
    }
    return true;
}

bool ElibDbFroDatabase::readableBack(const xmlDocumentRecord& record)
{
    if (record.ldn.size() > xmlGuard::kMaxValueBytes) {
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::saveFRO: ldn of %zu bytes, more than %zu",
                  record.ldn.size(), xmlGuard::kMaxValueBytes);
        return false;
    }
    // The document that retrieveFRO will make of the row must parse again,
    // or the restore could never read this object. It is built from the
    // same texts: escaped names and values, the ldn, and complex values that
    // the parser itself wrote as one element each. So each text must be one
    // that building accepts, and the whole must stay within the guard's size.
    bool readable = xmlEscape::isEncoded(record.ldn);
    std::size_t size = record.ldn.size() + 128;
    for (std::size_t i = 0; readable && i < record.names.size(); ++i) {
        if (Sql::isParentRef(record.names[i]))
            continue;
        const std::string& type = record.types[i];
        const bool primitive = type.empty() || xmlHandler::isPrimitiveType(type);
        readable = primitive ? xmlEscape::isEncoded(record.names[i]) && xmlEscape::isEncoded(record.values[i])
                             : xmlHandler::isDerivedType(type);
        size += record.names[i].size() + type.size() + record.values[i].size() + 40;
    }
    if (readable && size <= xmlGuard::kMaxDocumentBytes)
        return true;
    SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::saveFRO: object %s could not be read back",
              record.ldn.c_str());
    return false;
}

bool ElibDbFroDatabase::saveFRO(std::int32_t transactionId, std::int32_t froId, std::uint32_t froType,
                                const std::string& xml)
{
    std::string table;
    xmlDocumentRecord record;
    if (!getFrodataTableName(froType, table) || !xmlHandler::instance().parse(xml, record))
        return false;
    if (record.names.size() != record.types.size() || record.names.size() != record.values.size()) {
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::saveFRO: Vector sizes doesn't match : # of "
                                     "attributes=%zu, # of values=%zu, # of types=%zu",
                  record.names.size(), record.values.size(), record.types.size());
        return false;
    }
    std::string statement;
    // Everything is checked first, so that an object that could not be
    // written or read back leaves nothing behind. The names must be fit for
    // the columns of a new table even when the table exists.
    if (!Sql::checkColumnNames("createTable", record.names) ||
        !Sql::insertObject(table, froId, record.ldn, record.names, record.types, record.values, statement) ||
        !readableBack(record))
        return false;
    // The table before its attribute rows: rows that name columns of a table
    // that could not be made would describe nothing.
    const TableStatus status = tableStatus(table);
    if (status == TABLE_STATUS_ERROR)
        return false;
    std::string columns;
    if (status == TABLE_NOT_FOUND &&
        (!Sql::dataColumns(record.names, record.types, columns) || !createTable(table, columns)))
        return false;
    // Registered before anything can fail: the check at commit or rollback
    // then drops a table made here that never got its object.
    registerTransaction(transactionId);
    if (!saveFroAttributeTypes(froType, record.names, record.types, transactionId))
        return false;
    sendInTransaction(transactionId, statement);
    return true;
}

bool ElibDbFroDatabase::saveAttributes(std::int32_t transactionId, std::int32_t froId, std::uint32_t froType,
                                       const std::string& xml, bool inTransaction)
{
    std::string table;
    if (!getFrodataTableName(froType, table))
        return false;
    const TableStatus status = tableStatus(table);
    if (status == TABLE_NOT_FOUND)
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::saveAttributes: Table %s not created, so appl should "
                                     "not call saveAttributes", table.c_str());
    xmlDocumentRecord record;
    if (status != TABLE_FOUND || !xmlHandler::instance().parse(xml, record))
        return false;
    std::string statement;
    if (!Sql::updateObject(table, froId, record.names, record.types, record.values, statement) ||
        (!statement.empty() && !attributeTypesKept(froType, record.names, record.types, transactionId)))
        return false;
    if (statement.empty())
        return true;
    if (!inTransaction)
        return execDirect(statement);
    sendInTransaction(transactionId, statement);
    return true;
}

bool ElibDbFroDatabase::deleteFRO(std::int32_t transactionId, std::int32_t froId, std::uint32_t froType)
{
    std::string table;
    if (!getFrodataTableName(froType, table))
        return false;
    const TableStatus status = tableStatus(table);
    if (status != TABLE_FOUND)
        return status == TABLE_NOT_FOUND;
    registerTransaction(transactionId);
    sendInTransaction(transactionId, "delete from " + table + " where froid = " + std::to_string(froId));
    return true;
}

// ---- reading objects --------------------------------------------------------

bool ElibDbFroDatabase::getFroIds(std::uint32_t froType, std::vector<std::int32_t>& froIds)
{
    std::string table;
    if (!getFrodataTableName(froType, table)) {
        SSC_TRACE(dbGroup(), kFlow, "getFrodataTableName(froType %u, frodataTableName) returns false", froType);
        return false;
    }
    const TableStatus status = tableStatus(table);
    if (status == TABLE_NOT_FOUND) {
        SSC_TRACE(dbGroup(), kFlow, "tableStatus(frodataTableName %s) returns TABLE_NOT_FOUND for froType %u. "
                                    "Returning empty FRO id vector", table.c_str(), froType);
        return true;
    }
    if (status == TABLE_STATUS_ERROR) {
        SSC_TRACE(dbGroup(), kError, "tableStatus(frodataTableName %s) returns TABLE_STATUS_ERROR for froType %u",
                  table.c_str(), froType);
        return false;
    }
    std::vector<Row> rows;
    const std::string sql = "select * from " + table;
    SSC_TRACE(dbGroup(), kFlow, "Executing SQL: %s", sql.c_str());
    // A repeat after a lost connection starts from an empty list.
    if (fetchRepeating("fetchFROs", sql, {{1, ColumnKind::Integer}}, rows, "DB disconnected") !=
        DBI_OPERATION_SUCCESS) {
        SSC_TRACE(dbGroup(), kError, "fetchFROs(froIds, frodataTableName %s) returns DBI_OPERATION_FAIL for froType %u",
                  table.c_str(), froType);
        return false;
    }
    for (const Row& row : rows) {
        if (!row[0]) {
            SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::fetchFROs: Failed when trying to read value from "
                                         "the database, no value returned");
            return false;
        }
        froIds.push_back(static_cast<std::int32_t>(std::stol(*row[0])));
    }
    return true;
}

bool ElibDbFroDatabase::fetchFRO(std::int32_t froId, const std::string& table, const std::vector<std::string>& names,
                                 const std::vector<std::string>& types, std::string& ldn,
                                 std::vector<std::string>& values)
{
    std::string sql;
    if (!Sql::selectObject(table, froId, names, sql))
        return false;
    std::vector<Column> columns{{1, ColumnKind::Integer}, {2, ColumnKind::Text}};
    for (std::size_t i = 0; i < types.size(); ++i) {
        const bool integer = sqlText::sqlTypeOf(types[i]) == sqlText::SqlType::Integer;
        const bool unsignedType = sqlText::lowerCase(types[i]) == "u32";
        columns.push_back({static_cast<unsigned short>(i + 3),
                           integer ? (unsignedType ? ColumnKind::Unsigned : ColumnKind::Integer) : ColumnKind::Text});
    }
    std::vector<Row> rows;
    if (fetch("fetchFRO", sql, columns, rows) != DBI_OPERATION_SUCCESS)
        return false;
    if (rows.empty()) {
        SSC_TRACE(dbGroup(), kFlow, "ELIB::ElibDbFroDatabase::fetchFRO: no data for froid %d in %s", froId,
                  table.c_str());
        return false;
    }
    const Row& row = rows.front();
    ldn = row[1].value_or("");
    values.clear();
    for (std::size_t i = 2; i < row.size(); ++i)
        values.push_back(row[i].value_or(""));
    SSC_TRACE(dbGroup(), kFlow, "ELIB::ElibDbFroDatabase::fetchFRO: Fetched data for froid %d LDN %s from the "
                                "database", froId, ldn.c_str());
    return true;
}

bool ElibDbFroDatabase::retrieveFRO(std::int32_t froId, std::uint32_t froType, std::string& xml)
{
    xml.clear();
    std::string table;
    if (!getFrodataTableName(froType, table))
        return false;
    const TableStatus status = tableStatus(table);
    if (status != TABLE_FOUND)
        return status == TABLE_NOT_FOUND;
    std::vector<std::string> names;
    std::vector<std::string> types;
    std::vector<std::string> values;
    std::string ldn;
    if (!fetchAttributes(froType, names, types) || !fetchFRO(froId, table, names, types, ldn, values))
        return false;
    return xmlHandler::instance().build(ldn, "1.0", names, types, values, xml);
}

// ---- transactions -----------------------------------------------------------

void ElibDbFroDatabase::registerTransaction(std::int32_t transactionId)
{
    if (std::find(m_registeredTransactions.begin(), m_registeredTransactions.end(), transactionId) !=
        m_registeredTransactions.end()) {
        SSC_TRACE(dbGroup(), kFlow, "tansaction %d is already registered", transactionId);
        return;
    }
    m_registeredTransactions.push_back(transactionId);
    SSC_TRACE(dbGroup(), kFlow, "Transaction %d is registered", transactionId);
}

bool ElibDbFroDatabase::deregisterTransaction(std::int32_t transactionId)
{
    const auto it = std::find(m_registeredTransactions.begin(), m_registeredTransactions.end(), transactionId);
    if (it == m_registeredTransactions.end()) {
        SSC_TRACE(dbGroup(), kFlow, "tansaction %d cannot be deregistered", transactionId);
        return false;
    }
    m_registeredTransactions.erase(it);
    return true;
}

bool ElibDbFroDatabase::transactionIdOf(const std::uint8_t* signal, std::size_t size, std::int32_t& transactionId)
{
    if (!signal || size < 12) {
        SSC_TRACE(dbGroup(), kError, "transaction indication of %zu bytes is too short", size);
        return false;
    }
    transactionId = static_cast<std::int32_t>(readBigEndian32(signal + 8));
    return true;
}

void ElibDbFroDatabase::handleCommitInd(const std::uint8_t* signal, std::size_t size)
{
    SSC_TRACE(dbGroup(), kFlow, "COMMIT_IND received");
    std::int32_t transactionId = 0;
    if (transactionIdOf(signal, size, transactionId))
        sanityCheck(transactionId);
}

void ElibDbFroDatabase::handleRollbackInd(const std::uint8_t* signal, std::size_t size)
{
    SSC_TRACE(dbGroup(), kFlow, "ROLLBACK_IND received");
    m_knownTables.clear(); // a statement may have failed on a table that went
    m_absentTables.clear();
    m_storedAttributes.clear();
    std::int32_t transactionId = 0;
    if (transactionIdOf(signal, size, transactionId))
        sanityCheck(transactionId);
}

void ElibDbFroDatabase::sanityCheck(std::int32_t transactionId)
{
    SSC_TRACE(dbGroup(), kFlow, "Entering sanity check with txId %d", transactionId);
    forgetBufferedTypes(transactionId);
    if (!deregisterTransaction(transactionId))
        return;
    // A table that another open transaction has just made is still empty
    // until that transaction commits: dropping it would fail that commit.
    // Emptied tables wait for a check with no other transaction open.
    if (!m_registeredTransactions.empty()) {
        SSC_TRACE(dbGroup(), kFlow, "Exiting sanity check with txId %d and result %d", transactionId,
                  DBI_OPERATION_SUCCESS);
        return;
    }
    std::vector<SqlRow> versions;
    const bool read = sqlExecFetchGetColumns("select * from apc_fro_versions order by frotype asc ",
                                             {{1, "U32"}, {2, "STRING"}, {3, "STRING"}}, versions);
    std::vector<std::uint32_t> emptied;
    for (const SqlRow& version : versions) {
        const std::string& table = version.second;
        if (!sqlText::isIdentifier(table) || tableStatus(table) != TABLE_FOUND)
            continue;
        std::vector<Row> ids;
        if (fetch("sanityCheck", "select froid from " + table + " order by froid asc ", {{1, ColumnKind::Integer}},
                  ids) == DBI_OPERATION_SUCCESS &&
            ids.empty() && execDirect("drop table " + table)) {
            m_knownTables.erase(sqlText::lowerCase(table));
            m_absentTables.insert(sqlText::lowerCase(table));
            emptied.push_back(version.number);
        }
    }
    const FetchResult result = read ? DBI_OPERATION_SUCCESS : DBI_OPERATION_FAIL;
    if (!emptied.empty())
        removeAttributeRows(emptied);
    SSC_TRACE(dbGroup(), kFlow, "Exiting sanity check with txId %d and result %d", transactionId, result);
}

void ElibDbFroDatabase::removeAttributeRows(const std::vector<std::uint32_t>& froTypes)
{
    std::int32_t transactionId = 0;
    if (m_transaction.create_e(1, transactionId, 1) != 0) {
        SSC_TRACE(dbGroup(), kError, "unable to create a transaction!");
        return;
    }
    for (std::uint32_t froType : froTypes) {
        m_storedAttributes.erase(froType);
        const std::string sql = std::string("delete from ") + Sql::kAttributesTable + " where frotype = " +
                                std::to_string(froType);
        SSC_TRACE(dbGroup(), kFlow, "Executing SQL query %s", sql.c_str());
        m_transaction.databaseUpdateSQL(transactionId, sql);
    }
    if (m_transaction.commit_e(transactionId, 1) != 0) {
        SSC_TRACE(dbGroup(), kError, "unable to commit transaction %d", transactionId);
        if (m_transaction.rollBack_e(transactionId, 1) != 0)
            SSC_TRACE(dbGroup(), kError, "unable to rollback transaction %d", transactionId);
    }
}

void ElibDbFroDatabase::close()
{
    if (!m_registeredTransactions.empty() || !m_handles.connected)
        return;
    SSC_TRACE(dbGroup(), kFlow, "CLose: Disconnect from database %d", 0);
    VantoDb_disconnect(m_handles);
}

void ElibDbFroDatabase::handleSignal(ose::Signal* signal)
{
    if (signal == nullptr)
        return;
    handleSignal(reinterpret_cast<const std::uint8_t*>(signal), ose::sigsize(&signal));
}

void ElibDbFroDatabase::handleSignal(const std::uint8_t* signal, std::size_t size)
{
    if (!signal || size < 4) {
        SSC_TRACE(dbGroup(), kError, "signal of %zu bytes is too short", size);
        return;
    }
    const std::uint32_t sigNo = readBigEndian32(signal);
    SSC_TRACE(dbGroup(), kFlow, "handleSignal RECEIVED message 0x%08x", sigNo);
    switch (sigNo) {
    case kTransCreateCfm:
    case kTransRegisterCfm:
    case kTransCommitCfm:
    case kTransRollbackCfm:
        break;
    case kTransServerDownInd:
        m_knownTables.clear();
        m_absentTables.clear();
        m_storedAttributes.clear();
        m_bufferedTypes.clear();
        m_registeredTransactions.clear();
        break;
    case kTransCommitInd:
        handleCommitInd(signal, size);
        break;
    case kTransRollbackInd:
        handleRollbackInd(signal, size);
        break;
    default:
        SSC_TRACE(dbGroup(), kError, "unexpected message 0x%08x received in elibDbFroDatabase", sigNo);
        break;
    }
}
