#include "platform/VantoTransactionMgmtClient.h"

#include "platform/VantoTransactionTrace.h"

#include <atomic>
#include <cstring>

using namespace vanto_trans;

namespace {

// Client references only need to differ between requests that may be
// outstanding at one time; one counter for all clients does that.
std::uint32_t nextClientRef()
{
    static std::atomic<std::uint32_t> counter{1};
    return counter++;
}

} // namespace

TransResult VantoTransactionMgmtClient::create(std::int32_t& transactionId, std::uint32_t option)
{
    transactionId = 0;
    return exchange(VANTO_TRANS_CREATE_REQ, VANTO_TRANS_CREATE_CFM, kCreateTimeoutMs, transactionId, option);
}

TransResult VantoTransactionMgmtClient::commit(std::int32_t transactionId, std::uint32_t option)
{
    return exchange(VANTO_TRANS_COMMIT_REQ, VANTO_TRANS_COMMIT_CFM, kCommitTimeoutMs, transactionId, option);
}

TransResult VantoTransactionMgmtClient::rollback(std::int32_t transactionId, std::uint32_t option)
{
    return exchange(VANTO_TRANS_ROLLBACK_REQ, VANTO_TRANS_ROLLBACK_CFM, kRollbackTimeoutMs, transactionId, option);
}

TransResult VantoTransactionMgmtClient::exchange(ose::SIGSELECT requestNo, ose::SIGSELECT replyNo,
                                                 std::uint32_t timeoutMs, std::int32_t& transactionId,
                                                 std::uint32_t option)
{
    VANTO_TRANS_REQ_S request{};
    request.sigNo = requestNo;
    request.clientRef = nextClientRef();
    request.transactionId = transactionId;
    request.option = option;
    std::vector<std::uint8_t> bytes(sizeof request);
    std::memcpy(bytes.data(), &request, sizeof request);

    const std::vector<std::uint8_t> answer = m_port.request(bytes, replyNo, timeoutMs);
    if (answer.empty())
        return TransResult::NoServer;
    if (answer.size() < sizeof(VANTO_TRANS_CFM_S)) {
        SSC_TRACE(vtpGroup(), 1, "Answer 0x%x of %zu bytes is too short", replyNo, answer.size());
        return TransResult::BadRequest;
    }
    VANTO_TRANS_CFM_S cfm;
    std::memcpy(&cfm, answer.data(), sizeof cfm);
    if (requestNo == VANTO_TRANS_CREATE_REQ)
        transactionId = cfm.transactionId;
    return static_cast<TransResult>(static_cast<std::uint32_t>(cfm.result));
}

const char* VantoTransactionMgmtClient::resultText(TransResult result)
{
    switch (result) {
    case TransResult::Ok: return "VANTO_TRANSACTION_OK";
    case TransResult::UnknownTransaction: return "unknown transaction";
    case TransResult::RolledBack: return "rolled back";
    case TransResult::BadRequest: return "bad request";
    case TransResult::NoServer: return "Transaction Server not found";
    case TransResult::NoTransactionId: return "no free transaction id";
    case TransResult::OutcomeUnknown: return "outcome unknown";
    }
    return "unknown result";
}
