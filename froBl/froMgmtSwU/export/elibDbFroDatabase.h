#pragma once
// The object database: one table per persistent class, made when its first
// object is saved, with the columns that this object has. Reads go straight
// to the database; writes of a management transaction are handed to the
// platform's transaction server, which runs them at commit.
//
// Every call blocks. A lost connection is repaired by reconnecting and
// repeating; how long that may take is bounded by the VantoDbConfig.

#include "froBl/froMgmtSwU/export/SignalSubscriber.h"
#include "platform/VantoDb.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class SignalDistributorAPI;
class VantoTransactionApi;
struct xmlDocumentRecord;

class ElibDbFroDatabase : public SignalSubscriber {
public:
    enum FetchResult : int { DBI_DISCONNECTED = 0, DBI_OPERATION_FAIL = 1, DBI_OPERATION_SUCCESS = 2 };
    enum TableStatus : int { TABLE_FOUND = 0, TABLE_NOT_FOUND = 1, TABLE_STATUS_ERROR = 2 };

    // Platform signals of the transaction service.
    static constexpr std::uint32_t kTransCreateCfm = 10002;
    static constexpr std::uint32_t kTransRegisterCfm = 10004;
    static constexpr std::uint32_t kTransCommitCfm = 10008;
    static constexpr std::uint32_t kTransRollbackCfm = 10010;
    static constexpr std::uint32_t kTransServerDownInd = 10011;
    static constexpr std::uint32_t kTransCommitInd = 10014;
    static constexpr std::uint32_t kTransRollbackInd = 10015;

    // With a distributor, the object takes the transaction service's signals
    // that concern it (server down and the answers) from there itself.
    ElibDbFroDatabase(VantoDbConfig config, VantoTransactionApi& transaction,
                      SignalDistributorAPI* distributor = nullptr);
    ~ElibDbFroDatabase() override;
    ElibDbFroDatabase(const ElibDbFroDatabase&) = delete;
    ElibDbFroDatabase& operator=(const ElibDbFroDatabase&) = delete;

    void handleSignal(ose::Signal* signal) override;
    // signal: the received buffer, its number big-endian in the first 4 bytes.
    void handleSignal(const std::uint8_t* signal, std::size_t size);

    bool init();
    void close();
    bool saveFRO(std::int32_t transactionId, std::int32_t froId, std::uint32_t froType, const std::string& xml);
    bool saveAttributes(std::int32_t transactionId, std::int32_t froId, std::uint32_t froType,
                        const std::string& xml, bool inTransaction);
    bool deleteFRO(std::int32_t transactionId, std::int32_t froId, std::uint32_t froType);
    // True with the object's mim text, or with an empty text when the class
    // has no table; false on failure.
    bool retrieveFRO(std::int32_t froId, std::uint32_t froType, std::string& xml);
    bool getFroIds(std::uint32_t froType, std::vector<std::int32_t>& froIds);
    void handleCommitInd(const std::uint8_t* signal, std::size_t size);
    void handleRollbackInd(const std::uint8_t* signal, std::size_t size);

    // True if a text column read into bufferBytes came back whole: a length
    // that is unknown or does not fit means the text was cut.
    static bool textColumnFits(SQLRETURN rc, SQLLEN indicator, std::size_t bufferBytes);

    bool isConnected() const { return m_handles.connected; }
    std::size_t registeredTransactionCount() const { return m_registeredTransactions.size(); }

protected:
    // A column of a generic query: its number and the type word it is read
    // as (a number for U32, S32 and integer, otherwise text).
    struct SqlColumn {
        unsigned short number;
        std::string type;
    };
    // Column 1 of a generic query goes to number, 2 to first, 3 to second.
    struct SqlRow {
        std::uint32_t number = 0;
        std::string first;
        std::string second;
    };
    // Runs a query and takes its rows, reconnecting and repeating from an
    // empty result when the connection is lost. A row with a NULL column is
    // left out.
    bool sqlExecFetchGetColumns(const std::string& statement, const std::vector<SqlColumn>& columns,
                                std::vector<SqlRow>& rows);

    enum class ColumnKind { Text, Integer, Unsigned };
    struct Column {
        unsigned short number;
        ColumnKind kind;
    };
    using Row = std::vector<std::optional<std::string>>; // empty optional: NULL

    // Runs a query and reads all rows, reconnecting and repeating when the
    // connection is lost.
    FetchResult fetch(const char* who, const std::string& sql, const std::vector<Column>& columns,
                      std::vector<Row>& rows);
    // The same without tracing the statement; onLost, when not empty, is
    // traced at every lost connection before the repeat.
    FetchResult fetchRepeating(const char* who, const std::string& sql, const std::vector<Column>& columns,
                               std::vector<Row>& rows, const std::string& onLost);

private:
    // The attribute rows of a class that an open transaction writes: they
    // are stored with its commit and gone with its rollback.
    struct BufferedType {
        std::uint32_t froType;
        std::int32_t transactionId;
        std::vector<std::string> names;
        std::vector<std::string> types;
    };

    FetchResult fetchGenericRows(const std::string& statement, const std::vector<SqlColumn>& columns,
                                 std::vector<SqlRow>& rows);
    // True when the failure of the last call was a lost connection.
    bool handleDisconnected(const std::string& statement);
    FetchResult fetchOnce(const char* who, const std::string& sql, const std::vector<Column>& columns,
                          std::vector<Row>& rows);
    FetchResult readRow(const char* who, const std::vector<Column>& columns, Row& row);
    bool execOnce(const std::string& sql, bool& lost, SQLRETURN* code = nullptr);
    TableStatus tableStatusOnce(const std::string& sql, bool& lost);
    bool execDirect(const std::string& sql);
    bool ensureConnected();
    bool reconnect();
    void getError(short handleType, void* handle, bool& lost);
    void closeCursor(const char* who);

    bool setUpSchema();

    bool dropTransStateColumns();
    bool insertVersionRow(std::size_t classIndex);
    TableStatus tableStatus(std::string name);
    bool createTable(const std::string& name, const std::string& columns);
    bool getFrodataTableName(std::uint32_t froType, std::string& name);
    bool fetchAttributes(std::uint32_t froType, std::vector<std::string>& names, std::vector<std::string>& types);
    static bool readableBack(const xmlDocumentRecord& record);
    bool saveFroAttributeTypes(std::uint32_t froType, const std::vector<std::string>& names,
                               const std::vector<std::string>& types, std::int32_t transactionId);
    // The rows of the class written in that transaction; with
    // kAnyTransaction, in any open one.
    static constexpr std::int32_t kAnyTransaction = -1;
    const BufferedType* bufferedType(std::uint32_t froType, std::int32_t transactionId) const;
    void forgetBufferedTypes(std::int32_t transactionId);
    // The type words of a later object against those its class was made with.
    bool attributeTypesKept(std::uint32_t froType, const std::vector<std::string>& names,
                            const std::vector<std::string>& types, std::int32_t transactionId);
    static bool typesAgree(const char* who, std::uint32_t froType, const std::vector<std::string>& knownNames,
                           const std::vector<std::string>& knownTypes, const std::vector<std::string>& names,
                           const std::vector<std::string>& types);
    bool fetchFRO(std::int32_t froId, const std::string& table, const std::vector<std::string>& names,
                  const std::vector<std::string>& types, std::string& ldn, std::vector<std::string>& values);
    void sendInTransaction(std::int32_t transactionId, const std::string& statement);
    void registerTransaction(std::int32_t transactionId);
    bool deregisterTransaction(std::int32_t transactionId);
    void sanityCheck(std::int32_t transactionId);
    void removeAttributeRows(const std::vector<std::uint32_t>& froTypes);
    static bool transactionIdOf(const std::uint8_t* signal, std::size_t size, std::int32_t& transactionId);

    VantoDbHandles m_handles;
    VantoTransactionApi& m_transaction;
    SignalDistributorAPI* m_pDistributor; // not owned; may be null
    bool m_firstInit = true;
    // A whole round of connection attempts failed and none has worked since.
    bool m_unreachable = false;
    // The driver's words for the last failed statement.
    std::string m_lastDbError;
    std::vector<BufferedType> m_bufferedTypes;
    std::unordered_set<std::string> m_knownTables;               // lower case
    std::unordered_set<std::string> m_absentTables;              // lower case
    std::unordered_map<std::uint32_t, std::string> m_tableNames; // class -> its data table
    std::unordered_map<std::uint32_t, BufferedType> m_storedAttributes; // class -> its stored rows
    std::vector<std::int32_t> m_registeredTransactions;
    std::vector<char> m_textBuffer; // one text column as read
};
