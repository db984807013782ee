#pragma once
// Runs the statements of one committed transaction against the node's
// database as one database transaction: all take effect or none does.

#include "platform/VantoDb.h"

#include <string>
#include <vector>

class VantoSqlRunner {
public:
    explicit VantoSqlRunner(VantoDbConfig config);
    ~VantoSqlRunner();
    VantoSqlRunner(const VantoSqlRunner&) = delete;
    VantoSqlRunner& operator=(const VantoSqlRunner&) = delete;

    // True when every statement ran and the database transaction committed.
    // On false the database is as it was and error tells why.
    bool runAtomically(const std::vector<std::string>& statements, std::string& error);

private:
    enum class Outcome { Committed, Failed, ConnectionLost };

    bool ensureConnected(std::string& error);
    Outcome runOnce(const std::vector<std::string>& statements, std::string& error);
    bool execute(const std::string& statement, std::string& error, bool& lost);
    void setAutocommit(bool on);

    VantoDbHandles m_handles;
};
