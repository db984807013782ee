#pragma once
// The node platform's transaction server "VantoTransaction", our own. It
// hands out transaction ids, keeps the resources of each transaction and the
// statements handed over for it, and at commit runs the statements against
// the node's database in one database transaction; then it tells every
// resource the outcome (10014 or 10015) and answers the committer. A client
// that dies takes its open transactions with it: they roll back.

#include "platform/VantoDb.h"
#include "vanto/VantoServerTransaction.h"
#include "vanto/VantoSqlRunner.h"

#include "vanto/VantoSignalTable.h"

#include "ose/Signal.h"
#include "ose/World.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

class VantoTransactionServer {
public:
    explicit VantoTransactionServer(VantoDbConfig database);
    ~VantoTransactionServer();
    VantoTransactionServer(const VantoTransactionServer&) = delete;
    VantoTransactionServer& operator=(const VantoTransactionServer&) = delete;

    // The receive loop of the server process; never returns.
    [[noreturn]] void run();
    // One received signal; the caller frees it.
    void handleSignal(ose::Signal* signal);

    std::size_t openTransactions() const { return m_transactions.size(); }

private:
    using Entry = VantoSignalEntry<VantoTransactionServer>;
    static const Entry kTable[];

    void onCreate(ose::Signal* signal, ose::PROCESS from);
    void onRegister(ose::Signal* signal, ose::PROCESS from);
    void onCommit(ose::Signal* signal, ose::PROCESS from);
    void onRollback(ose::Signal* signal, ose::PROCESS from);
    void onConnect(ose::Signal* signal, ose::PROCESS from);
    void onClientDown(ose::Signal* signal, ose::PROCESS from);
    void onSqlPart(ose::Signal* signal, ose::PROCESS from);
    void onSql(ose::Signal* signal, ose::PROCESS from);

    VantoServerTransaction* find(std::int32_t id, const char* what);
    std::int32_t newId();
    // Tells every resource and forgets the transaction.
    void finish(std::int32_t id, bool committed, std::uint32_t reason);
    void answer(ose::SIGSELECT sigNo, std::uint32_t clientRef, std::int32_t id, std::uint32_t result,
                ose::PROCESS to);
    void supervise(ose::PROCESS pid);
    void releaseIfUnused(ose::PROCESS pid);

    VantoSqlRunner m_sql;
    std::map<std::int32_t, std::unique_ptr<VantoServerTransaction>> m_transactions;
    std::map<ose::PROCESS, ose::OSATTREF> m_supervised;
    std::int32_t m_nextId = 1;
};

// Creates and starts the server process in node, with the database it
// commits to. A config without a wait function waits with the kernel's delay.
ose::PROCESS createTransactionServer(ose::World& world, ose::Node& node, VantoDbConfig database);
