#include "platform/VantoTransaction.h"

#include "platform/VantoTransactionMgmtClient.h"
#include "platform/VantoTransactionOsePort.h"
#include "platform/VantoTransactionSignals.h"
#include "platform/VantoTransactionTrace.h"

#include "ose/Kernel.h"

#include <cstring>

using namespace vanto_trans;

namespace {

constexpr ose::OSTIME kAttachRetryMs = 100;
constexpr ose::OSTIME kRegisterTimeoutMs = 10000;

ose::PROCESS findServer()
{
    ose::PROCESS server = 0;
    if (!ose::hunt(kServerName, 0, &server, nullptr) || server == 0) {
        SSC_TRACE(vtpGroup(), 1, "Transaction Server not found");
        return 0;
    }
    return server;
}

bool connectTo(ose::PROCESS server)
{
    static std::uint32_t clientRef = 0;
    VantoTransactionOsePort port;
    VANTO_TRANS_CONNECT_REQ_S request{};
    request.sigNo = VANTO_TRANS_CONNECT_REQ;
    request.clientRef = ++clientRef;
    std::vector<std::uint8_t> bytes(sizeof request);
    std::memcpy(bytes.data(), &request, sizeof request);
    const std::vector<std::uint8_t> answer = port.request(bytes, VANTO_TRANS_CONNECT_CFM, kAttachRetryMs);
    if (answer.size() < sizeof(VANTO_TRANS_CONNECT_CFM_S))
        return false;
    auto* down = ose::alloc_as<VANTO_TRANS_SERVER_DOWN_IND_S>(VANTO_TRANS_SERVER_DOWN_IND);
    auto* signal = reinterpret_cast<ose::Signal*>(down);
    ose::attach(&signal, server);
    return true;
}

int resultOf(TransResult result)
{
    return static_cast<int>(result);
}

} // namespace

int VantoTransaction_serviceAttach_e(unsigned maxAttempts)
{
    for (unsigned attempt = 1; maxAttempts == 0 || attempt <= maxAttempts; ++attempt) {
        const ose::PROCESS server = findServer();
        if (server != 0 && connectTo(server)) {
            SSC_TRACE(vtpGroup(), 7, "Attached to the transaction server 0x%x", server);
            return VANTO_TRANSACTION_OK;
        }
        ose::delay(kAttachRetryMs);
    }
    return resultOf(TransResult::NoServer);
}

int VantoTransaction_create_e(int a, std::int32_t& transactionId, int /*b*/)
{
    VantoTransactionOsePort port;
    return resultOf(VantoTransactionMgmtClient(port).create(transactionId, static_cast<std::uint32_t>(a)));
}

int VantoTransaction_commit_e(std::int32_t transactionId, int b)
{
    VantoTransactionOsePort port;
    return resultOf(VantoTransactionMgmtClient(port).commit(transactionId, static_cast<std::uint32_t>(b)));
}

int VantoTransaction_rollBack_e(std::int32_t transactionId, int b)
{
    VantoTransactionOsePort port;
    return resultOf(VantoTransactionMgmtClient(port).rollback(transactionId, static_cast<std::uint32_t>(b)));
}

int VantoTransaction_registerResource_e(std::int32_t transactionId, int a, int b)
{
    const ose::PROCESS server = findServer();
    if (server == 0)
        return resultOf(TransResult::NoServer);
    auto* request = ose::alloc_as<VANTO_TRANS_REGISTER_REQ_S>(VANTO_TRANS_REGISTER_REQ);
    request->transactionId = transactionId;
    request->a = static_cast<std::uint16_t>(a);
    request->b = static_cast<std::uint16_t>(b);
    auto* signal = reinterpret_cast<ose::Signal*>(request);
    ose::send(&signal, server);
    return VANTO_TRANSACTION_OK;
}

int VantoTransaction_awaitRegisterRsp(std::int32_t transactionId, std::uint32_t& result)
{
    const std::uint64_t deadline = ose::get_time_ms() + kRegisterTimeoutMs;
    const ose::SIGSELECT selector[] = {1, VANTO_TRANS_REGISTER_RSP};
    for (std::uint64_t now = ose::get_time_ms(); now < deadline; now = ose::get_time_ms()) {
        ose::Signal* answer = ose::receive_w_tmo(static_cast<ose::OSTIME>(deadline - now), selector);
        if (answer == nullptr)
            break;
        const auto* rsp = ose::signal_cast<VANTO_TRANS_REGISTER_RSP_S>(answer);
        const bool mine = rsp != nullptr && rsp->transactionId == transactionId;
        if (mine)
            result = rsp->result;
        else
            SSC_TRACE(vtpGroup(), 5, "VANTO_TRANS_REGISTER_RSP of %u bytes for another transaction dropped",
                      ose::sigsize(&answer));
        ose::free_buf(&answer);
        if (mine)
            return VANTO_TRANSACTION_OK;
    }
    return resultOf(TransResult::NoServer);
}

void VantoTransaction_databaseUpdateSQL(std::int32_t transactionId, const char* statement)
{
    const ose::PROCESS server = findServer();
    if (server == 0 || statement == nullptr)
        return;
    std::size_t left = std::strlen(statement);
    for (; left > kSqlPieceBytes; left -= kSqlPieceBytes, statement += kSqlPieceBytes) {
        auto* piece = ose::alloc_as<VANTO_TRANS_SQL_PART_IND_S>(VANTO_TRANS_SQL_PART_IND);
        piece->transactionId = transactionId;
        std::memcpy(piece->text, statement, kSqlPieceBytes);
        auto* signal = reinterpret_cast<ose::Signal*>(piece);
        ose::send(&signal, server);
    }
    const auto size = static_cast<ose::OSBUFSIZE>(sizeof(VANTO_TRANS_SQL_IND_S) + left + 1);
    ose::Signal* last = ose::alloc(size, VANTO_TRANS_SQL_IND);
    if (last == nullptr) {
        SSC_TRACE(vtpGroup(), 1, "No buffer for the last piece of a statement of transaction %d", transactionId);
        return;
    }
    reinterpret_cast<VANTO_TRANS_SQL_IND_S*>(last)->transactionId = transactionId;
    std::memcpy(reinterpret_cast<char*>(last) + sizeof(VANTO_TRANS_SQL_IND_S), statement, left); // NUL: alloc zeroes
    ose::send(&last, server);
}
