#pragma once
// The management client's part of a platform transaction: create, commit and
// roll back, each one request and its answer through a port. Used by the
// object process's platform calls, by tests and by the command-line client.

#include "platform/VantoTransactionPortIf.h"
#include "platform/VantoTransactionSignals.h"

#include <cstdint>

class VantoTransactionMgmtClient {
public:
    // How long each call waits for the server's answer.
    static constexpr std::uint32_t kCreateTimeoutMs = 10000;
    static constexpr std::uint32_t kCommitTimeoutMs = 10000;
    static constexpr std::uint32_t kRollbackTimeoutMs = 10000;

    explicit VantoTransactionMgmtClient(VantoTransactionPortIf& port) : m_port(port) {}

    vanto_trans::TransResult create(std::int32_t& transactionId, std::uint32_t option = 0);
    vanto_trans::TransResult commit(std::int32_t transactionId, std::uint32_t option = 0);
    vanto_trans::TransResult rollback(std::int32_t transactionId, std::uint32_t option = 0);

    static const char* resultText(vanto_trans::TransResult result);

private:
    vanto_trans::TransResult exchange(ose::SIGSELECT requestNo, ose::SIGSELECT replyNo, std::uint32_t timeoutMs,
                                      std::int32_t& transactionId, std::uint32_t option);

    VantoTransactionPortIf& m_port;
};
