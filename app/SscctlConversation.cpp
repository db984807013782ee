#include "app/SscctlConversation.h"

#include "app/SscctlCommand.h"

#include <chrono>
#include <ostream>

namespace app {

namespace {
constexpr std::uint64_t kAnswerWorldMs = 100;
constexpr std::uint64_t kAnswerWallMs = 500;
constexpr std::uint64_t kQuietOnVirtualMs = 200;
constexpr int kVirtualClock = 1;
} // namespace

SscctlConversation::SscctlConversation(ose::GatewayClient& client, std::ostream& out, std::ostream& err,
                                       Describe describe)
    : m_client(client), m_out(out), m_err(err), m_describe(std::move(describe))
{
}

int SscctlConversation::open(const char* serverName)
{
    auto server = m_client.hunt(serverName, 0);
    if (!server || *server == 0) {
        m_err << "sscctl: the node has no " << serverName << "\n";
        return m_client.isConnected() ? kNotFound : kNoNode;
    }
    m_server = *server;
    return kDone;
}

bool SscctlConversation::step(const std::string& request, std::uint64_t watchMs)
{
    const bool watch = request.empty();
    const bool sent = watch || m_client.send(m_server, request);
    if (sent && printArrivals(watch ? watchMs : kAnswerWorldMs, watch ? watchMs : kAnswerWallMs)) return true;
    m_err << "sscctl: " << m_client.lastError() << "\n";
    return false;
}

// Until `wallMs` pass without anything; on a virtual clock the world is
// moved on by `worldMs` first and a short quiet is enough.
bool SscctlConversation::printArrivals(std::uint64_t worldMs, std::uint64_t wallMs)
{
    const bool virtualClock = m_client.clockMode() == kVirtualClock;
    if (virtualClock && worldMs > 0 && !m_client.advanceBy(worldMs)) return false;
    const std::uint64_t quiet = virtualClock ? kQuietOnVirtualMs : wallMs;
    while (auto event = m_client.next(std::chrono::milliseconds(quiet))) {
        if (event->kind != ose::GatewayEvent::Kind::Signal) continue;
        const std::string line = m_describe(event->bytes);
        if (!line.empty()) m_out << line << "\n";
    }
    return m_client.isConnected();
}

} // namespace app
