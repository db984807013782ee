#include "vanto/VantoTransactionServer.h"

#include "platform/VantoTransactionSignals.h"
#include "vanto/VantoTrace.h"

#include "ose/Kernel.h"

#include <climits>
#include <cstring>
#include <vector>

using namespace vanto_trans;

namespace {

constexpr unsigned kError = 1;
constexpr unsigned kInfo = 4;
constexpr unsigned kFlow = 7;

std::uint32_t code(TransResult result)
{
    return static_cast<std::uint32_t>(result);
}

std::uint32_t code(RollbackReason reason)
{
    return static_cast<std::uint32_t>(reason);
}

} // namespace

const VantoTransactionServer::Entry VantoTransactionServer::kTable[] = {
    {VANTO_TRANS_CREATE_REQ, "VANTO_TRANS_CREATE_REQ", &VantoTransactionServer::onCreate},
    {VANTO_TRANS_REGISTER_REQ, "VANTO_TRANS_REGISTER_REQ", &VantoTransactionServer::onRegister},
    {VANTO_TRANS_COMMIT_REQ, "VANTO_TRANS_COMMIT_REQ", &VantoTransactionServer::onCommit},
    {VANTO_TRANS_ROLLBACK_REQ, "VANTO_TRANS_ROLLBACK_REQ", &VantoTransactionServer::onRollback},
    {VANTO_TRANS_CONNECT_REQ, "VANTO_TRANS_CONNECT_REQ", &VantoTransactionServer::onConnect},
    {VANTO_TRANS_CLIENT_DOWN_IND, "VANTO_TRANS_CLIENT_DOWN_IND", &VantoTransactionServer::onClientDown},
    {VANTO_TRANS_SQL_PART_IND, "VANTO_TRANS_SQL_PART_IND", &VantoTransactionServer::onSqlPart},
    {VANTO_TRANS_SQL_IND, "VANTO_TRANS_SQL_IND", &VantoTransactionServer::onSql},
};

VantoTransactionServer::VantoTransactionServer(VantoDbConfig database) : m_sql(std::move(database)) {}

VantoTransactionServer::~VantoTransactionServer()
{
    for (auto& [pid, ref] : m_supervised)
        ose::detach(&ref);
}

void VantoTransactionServer::run()
{
    SSC_TRACE(vantoGroup(), kInfo, "Transaction server started");
    serveVantoSignals(*this);
}

void VantoTransactionServer::handleSignal(ose::Signal* signal)
{
    dispatchVantoSignal<VantoTransactionServer>(*this, kTable, signal, "Transaction server");
}

// ---- bookkeeping -------------------------------------------------------------

VantoServerTransaction* VantoTransactionServer::find(std::int32_t id, const char* what)
{
    const auto it = m_transactions.find(id);
    if (it != m_transactions.end())
        return it->second.get();
    SSC_TRACE(vantoGroup(), kError, "%s: unknown transaction %d", what, id);
    return nullptr;
}

std::int32_t VantoTransactionServer::newId()
{
    // Positive ids only: 0 means "no transaction" to the clients.
    for (std::size_t tries = 0; tries < m_transactions.size() + 1; ++tries) {
        const std::int32_t id = m_nextId;
        m_nextId = m_nextId == INT32_MAX ? 1 : m_nextId + 1;
        if (m_transactions.count(id) == 0)
            return id;
    }
    return 0;
}

void VantoTransactionServer::supervise(ose::PROCESS pid)
{
    if (m_supervised.count(pid) != 0)
        return;
    auto* down = ose::alloc_as<VANTO_TRANS_CLIENT_DOWN_IND_S>(VANTO_TRANS_CLIENT_DOWN_IND);
    down->client = pid;
    auto* signal = reinterpret_cast<ose::Signal*>(down);
    m_supervised[pid] = ose::attach(&signal, pid);
}

void VantoTransactionServer::releaseIfUnused(ose::PROCESS pid)
{
    for (const auto& [id, transaction] : m_transactions)
        if (transaction->involves(pid))
            return;
    const auto it = m_supervised.find(pid);
    if (it == m_supervised.end())
        return;
    ose::detach(&it->second);
    m_supervised.erase(it);
}

void VantoTransactionServer::answer(ose::SIGSELECT sigNo, std::uint32_t clientRef, std::int32_t id,
                                    std::uint32_t result, ose::PROCESS to)
{
    auto* cfm = ose::alloc_as<VANTO_TRANS_CFM_S>(sigNo);
    cfm->clientRef = clientRef;
    cfm->transactionId = id;
    cfm->result = result;
    auto* signal = reinterpret_cast<ose::Signal*>(cfm);
    ose::send(&signal, to);
}

void VantoTransactionServer::finish(std::int32_t id, bool committed, std::uint32_t reason)
{
    const auto it = m_transactions.find(id);
    if (it == m_transactions.end())
        return;
    std::unique_ptr<VantoServerTransaction> transaction = std::move(it->second);
    m_transactions.erase(it);
    for (ose::PROCESS resource : transaction->resources()) {
        auto* ind = ose::alloc_as<VANTO_TRANS_IND_S>(committed ? VANTO_TRANS_COMMIT_IND : VANTO_TRANS_ROLLBACK_IND);
        ind->reason = committed ? 0 : reason;
        ind->transactionId = id;
        auto* signal = reinterpret_cast<ose::Signal*>(ind);
        ose::send(&signal, resource);
    }
    SSC_TRACE(vantoGroup(), kFlow, "Transaction %d %s, %zu resource(s) told", id,
              committed ? "committed" : "rolled back", transaction->resources().size());
    releaseIfUnused(transaction->creator());
    for (ose::PROCESS resource : transaction->resources())
        releaseIfUnused(resource);
}

// ---- requests ----------------------------------------------------------------

void VantoTransactionServer::onConnect(ose::Signal* signal, ose::PROCESS from)
{
    const auto* request = ose::signal_cast<VANTO_TRANS_CONNECT_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(vantoGroup(), kError, "VANTO_TRANS_CONNECT_REQ from 0x%x is too short", from);
        return;
    }
    auto* cfm = ose::alloc_as<VANTO_TRANS_CONNECT_CFM_S>(VANTO_TRANS_CONNECT_CFM);
    cfm->clientRef = request->clientRef;
    cfm->result = code(TransResult::Ok);
    auto* reply = reinterpret_cast<ose::Signal*>(cfm);
    ose::send(&reply, from);
}

void VantoTransactionServer::onCreate(ose::Signal* signal, ose::PROCESS from)
{
    const auto* request = ose::signal_cast<VANTO_TRANS_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(vantoGroup(), kError, "VANTO_TRANS_CREATE_REQ from 0x%x is too short", from);
        return;
    }
    const std::int32_t id = newId();
    if (id == 0) {
        answer(VANTO_TRANS_CREATE_CFM, request->clientRef, 0, code(TransResult::NoTransactionId), from);
        return;
    }
    m_transactions.emplace(id, std::make_unique<VantoServerTransaction>(id, from));
    supervise(from);
    SSC_TRACE(vantoGroup(), kFlow, "Transaction %d created by 0x%x", id, from);
    answer(VANTO_TRANS_CREATE_CFM, request->clientRef, id, code(TransResult::Ok), from);
}

void VantoTransactionServer::onRegister(ose::Signal* signal, ose::PROCESS from)
{
    const auto* request = ose::signal_cast<VANTO_TRANS_REGISTER_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(vantoGroup(), kError, "VANTO_TRANS_REGISTER_REQ from 0x%x is too short", from);
        return;
    }
    const std::int32_t id = request->transactionId;
    VantoServerTransaction* transaction = find(id, "VANTO_TRANS_REGISTER_REQ");
    TransResult result = TransResult::UnknownTransaction;
    if (transaction != nullptr) {
        transaction->addResource(from);
        supervise(from);
        result = TransResult::Ok;
        SSC_TRACE(vantoGroup(), kFlow, "0x%x is a resource of transaction %d", from, id);
    }
    auto* rsp = ose::alloc_as<VANTO_TRANS_REGISTER_RSP_S>(VANTO_TRANS_REGISTER_RSP);
    rsp->transactionId = id;
    rsp->result = code(result);
    auto* reply = reinterpret_cast<ose::Signal*>(rsp);
    ose::send(&reply, from);
}

void VantoTransactionServer::onCommit(ose::Signal* signal, ose::PROCESS from)
{
    const auto* request = ose::signal_cast<VANTO_TRANS_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(vantoGroup(), kError, "VANTO_TRANS_COMMIT_REQ from 0x%x is too short", from);
        return;
    }
    const std::int32_t id = request->transactionId;
    VantoServerTransaction* transaction = find(id, "VANTO_TRANS_COMMIT_REQ");
    if (transaction == nullptr) {
        answer(VANTO_TRANS_COMMIT_CFM, request->clientRef, id, code(TransResult::UnknownTransaction), from);
        return;
    }
    const std::string why = transaction->whyNotCommittable();
    if (!why.empty()) {
        SSC_TRACE(vantoGroup(), kError, "Transaction %d cannot commit (%s), rolled back", id, why.c_str());
        finish(id, false, code(RollbackReason::BadStatement));
        answer(VANTO_TRANS_COMMIT_CFM, request->clientRef, id, code(TransResult::RolledBack), from);
        return;
    }
    std::string error;
    switch (m_sql.runAtomically(transaction->statements(), error, id)) {
    case VantoSqlRunner::Result::Committed:
        finish(id, true, 0);
        answer(VANTO_TRANS_COMMIT_CFM, request->clientRef, id, code(TransResult::Ok), from);
        return;
    case VantoSqlRunner::Result::Failed:
        SSC_TRACE(vantoGroup(), kError, "Commit of transaction %d failed, rolled back: %s", id, error.c_str());
        finish(id, false, code(RollbackReason::StatementFailed));
        answer(VANTO_TRANS_COMMIT_CFM, request->clientRef, id, code(TransResult::RolledBack), from);
        return;
    case VantoSqlRunner::Result::Unknown:
        // Neither outcome may be claimed: the caller hears what is known.
        SSC_TRACE(vantoGroup(), kError, "Commit of transaction %d: %s", id, error.c_str());
        finish(id, false, code(RollbackReason::OutcomeUnknown));
        answer(VANTO_TRANS_COMMIT_CFM, request->clientRef, id, code(TransResult::OutcomeUnknown), from);
        return;
    }
}

void VantoTransactionServer::onRollback(ose::Signal* signal, ose::PROCESS from)
{
    const auto* request = ose::signal_cast<VANTO_TRANS_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(vantoGroup(), kError, "VANTO_TRANS_ROLLBACK_REQ from 0x%x is too short", from);
        return;
    }
    const std::int32_t id = request->transactionId;
    const bool known = find(id, "VANTO_TRANS_ROLLBACK_REQ") != nullptr;
    finish(id, false, code(RollbackReason::Requested));
    answer(VANTO_TRANS_ROLLBACK_CFM, request->clientRef, id,
           code(known ? TransResult::Ok : TransResult::UnknownTransaction), from);
}

void VantoTransactionServer::onClientDown(ose::Signal* signal, ose::PROCESS from)
{
    const auto* down = ose::signal_cast<VANTO_TRANS_CLIENT_DOWN_IND_S>(signal);
    // Only the kernel sends this, from the dead process itself.
    if (down == nullptr || down->client != from || m_supervised.count(from) == 0) {
        SSC_TRACE(vantoGroup(), kError, "VANTO_TRANS_CLIENT_DOWN_IND from 0x%x ignored", from);
        return;
    }
    m_supervised.erase(from);
    std::vector<std::int32_t> lost;
    for (auto& [id, transaction] : m_transactions) {
        if (transaction->involves(from)) {
            transaction->removeResource(from); // it cannot be told any more
            lost.push_back(id);
        }
        else
            transaction->dropChainOf(from);
    }
    SSC_TRACE(vantoGroup(), kInfo, "Client 0x%x died, %zu transaction(s) rolled back", from, lost.size());
    for (std::int32_t id : lost)
        finish(id, false, code(RollbackReason::ClientDown));
}

// ---- statements --------------------------------------------------------------

void VantoTransactionServer::onSqlPart(ose::Signal* signal, ose::PROCESS from)
{
    const auto* piece = ose::signal_cast<VANTO_TRANS_SQL_PART_IND_S>(signal);
    const auto* head = ose::signal_cast<VANTO_TRANS_SQL_IND_S>(signal);
    VantoServerTransaction* transaction =
        head == nullptr ? nullptr : find(head->transactionId, "VANTO_TRANS_SQL_PART_IND");
    if (transaction == nullptr)
        return;
    if (piece == nullptr || ose::sigsize(&signal) != sizeof(VANTO_TRANS_SQL_PART_IND_S) ||
        std::memchr(piece->text, '\0', kSqlPieceBytes) != nullptr) {
        SSC_TRACE(vantoGroup(), kError, "VANTO_TRANS_SQL_PART_IND of %u bytes for transaction %d is malformed",
                  ose::sigsize(&signal), transaction->id());
        transaction->markBroken("a malformed piece of a statement");
        return;
    }
    transaction->appendPiece(from, piece->text, kSqlPieceBytes);
}

void VantoTransactionServer::onSql(ose::Signal* signal, ose::PROCESS from)
{
    const auto* head = ose::signal_cast<VANTO_TRANS_SQL_IND_S>(signal);
    VantoServerTransaction* transaction = head == nullptr ? nullptr : find(head->transactionId, "VANTO_TRANS_SQL_IND");
    if (transaction == nullptr)
        return;
    const std::size_t room = ose::sigsize(&signal) - sizeof(VANTO_TRANS_SQL_IND_S);
    const char* text = reinterpret_cast<const char*>(signal) + sizeof(VANTO_TRANS_SQL_IND_S);
    const void* nul = std::memchr(text, '\0', room);
    if (nul == nullptr) {
        SSC_TRACE(vantoGroup(), kError, "VANTO_TRANS_SQL_IND of %u bytes for transaction %d has no end",
                  ose::sigsize(&signal), transaction->id());
        transaction->markBroken("a statement without its NUL");
        return;
    }
    transaction->finishStatement(from, text, static_cast<std::size_t>(static_cast<const char*>(nul) - text));
}

// ---- the process -------------------------------------------------------------

ose::PROCESS createTransactionServer(ose::World& world, ose::Node& node, VantoDbConfig database)
{
    if (!database.wait)
        database.wait = [](std::chrono::milliseconds interval) { ose::delay(static_cast<ose::OSTIME>(interval.count())); };
    ose::ProcessSpec definition;
    definition.name = kServerName;
    definition.priority = 16;
    definition.entry = [database]() {
        VantoTransactionServer server(database);
        server.run();
    };
    const ose::PROCESS pid = world.createProcess(node, definition);
    world.start(pid);
    return pid;
}
