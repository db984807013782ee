#include "app/GatewayTransactionPort.h"

#include "platform/VantoTransactionSignals.h"

#include <chrono>

namespace app {

namespace {
constexpr std::uint32_t kHuntTimeoutMs = 1000; // world time for the server to appear
}

ose::PROCESS GatewayTransactionPort::server()
{
    if (m_server == 0) m_server = m_client.hunt(vanto_trans::kServerName, kHuntTimeoutMs).value_or(0);
    return m_server;
}

std::vector<std::uint8_t> GatewayTransactionPort::request(const std::vector<std::uint8_t>& signal,
                                                          std::uint32_t replyNo, std::uint32_t timeoutMs)
{
    ose::PROCESS to = server();
    if (to == 0 || signal.size() < 8 || !m_client.send(to, std::string(signal.begin(), signal.end()))) return {};
    std::uint32_t clientRef = ose::loadBe32(signal.data() + 4);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return {};
        auto event = m_client.next(left);
        if (!event) return {};
        // Anything else, or a late answer to an earlier request, is not this answer.
        if (event->kind != ose::GatewayEvent::Kind::Signal || event->sigNo() != replyNo || event->bytes.size() < 8 ||
            ose::loadBe32(event->bytes.data() + 4) != clientRef)
            continue;
        return {event->bytes.begin(), event->bytes.end()};
    }
}

bool GatewayTransactionPort::sendStatement(std::int32_t transactionId, const std::string& statement)
{
    using namespace vanto_trans;
    ose::PROCESS to = server();
    if (to == 0) return false;
    std::string head(8, '\0');
    ose::storeBe32(head.data() + 4, static_cast<std::uint32_t>(transactionId));
    std::size_t offset = 0;
    for (; statement.size() - offset > kSqlPieceBytes; offset += kSqlPieceBytes) {
        ose::storeBe32(head.data(), VANTO_TRANS_SQL_PART_IND);
        if (!m_client.send(to, head + statement.substr(offset, kSqlPieceBytes) + std::string(4, '\0'))) return false;
    }
    ose::storeBe32(head.data(), VANTO_TRANS_SQL_IND);
    return m_client.send(to, head + statement.substr(offset) + std::string(1, '\0'));
}

} // namespace app
