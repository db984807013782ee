#pragma once
// The way to the transaction server for a program outside the node: requests
// go through the gateway to "VantoTransaction" and its answers come back as
// signals to the client's process.

#include "ose/GatewayClient.h"
#include "platform/VantoTransactionPortIf.h"

#include <string>

namespace app {

class GatewayTransactionPort : public VantoTransactionPortIf {
public:
    explicit GatewayTransactionPort(ose::GatewayClient& client) : m_client(client) {}

    std::vector<std::uint8_t> request(const std::vector<std::uint8_t>& signal, std::uint32_t replyNo,
                                      std::uint32_t timeoutMs) override;
    // Hands one statement to a transaction: 16000-byte pieces, then the rest
    // with its NUL. False when the server is not there.
    bool sendStatement(std::int32_t transactionId, const std::string& statement);

private:
    ose::PROCESS server();

    ose::GatewayClient& m_client;
    ose::PROCESS m_server = 0;
};

} // namespace app
