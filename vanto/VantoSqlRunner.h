#pragma once
// Runs the statements of one committed transaction against the node's
// database as one database transaction: all take effect or none does.
//
// A connection lost inside the commit itself leaves the outcome unknown. Each
// run therefore also writes its own marker row (and deletes the previous
// one) in the same database transaction: after reconnecting, the marker tells
// whether the run was stored. A run whose outcome could not be learnt is
// looked up at the next connection, before anything else runs.

#include "platform/VantoDb.h"

#include <cstdint>
#include <string>
#include <vector>

class VantoSqlRunner {
public:
    explicit VantoSqlRunner(VantoDbConfig config);
    ~VantoSqlRunner();
    VantoSqlRunner(const VantoSqlRunner&) = delete;
    VantoSqlRunner& operator=(const VantoSqlRunner&) = delete;

    enum class Result {
        Committed, // every statement ran and the database transaction committed
        Failed,    // the database is as it was; error tells why
        Unknown,   // the commit was sent and the database could not be asked since
    };
    // Label names the run in traces (the transaction id).
    Result runAtomically(const std::vector<std::string>& statements, std::string& error, std::int32_t label = 0);

    static constexpr const char* kMarkTable = "vanto_commit_marks";

private:
    enum class Outcome { Committed, Failed, ConnectionLost, CommitUnclear };
    enum class Stored { Yes, No, CannotTell };

    bool ensureConnected(std::string& error);
    Outcome runOnce(const std::vector<std::string>& statements, std::uint64_t mark, std::string& error);
    // Whether the run that wrote mark was stored, asked on a new connection.
    Stored wasStored(std::uint64_t mark);
    // Learns the outcome of an earlier unclear run, if one is open.
    bool settleUnclearRun(std::string& error);
    bool execute(const std::string& statement, std::string& error, bool& lost);
    void setAutocommit(bool on);

    VantoDbHandles m_handles;
    std::uint64_t m_nextMark;
    bool m_markTableMade = false;
    std::uint64_t m_unclearMark = 0; // 0: none
    std::int32_t m_unclearLabel = 0;
};
