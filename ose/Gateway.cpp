#include "ose/Gateway.h"

#include "ose/GatewayConnection.h"
#include "ose/SignalPool.h"
#include "ose/Trace.h"
#include "ose/World.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace ose {
namespace {

TraceGroupId group()
{
    static const TraceGroupId id = Trace::registerGroup("gateway");
    return id;
}

// A socket file left by a node that is gone answers no connect.
bool isStaleSocket(const std::string& path)
{
    int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (probe < 0) return false;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    bool refused = connect(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 && errno == ECONNREFUSED;
    ::close(probe);
    return refused;
}

} // namespace

Gateway::Gateway(World& world, Node& node, std::string socketPath)
    : m_world(world), m_node(node), m_socketPath(std::move(socketPath))
{
}

Gateway::~Gateway()
{
    for (auto& [fd, connection] : m_connections) connection->close("the node stops", true);
    m_connections.clear();
    if (m_listenFd >= 0) {
        m_world.unwatchFd(m_listenFd);
        ::close(m_listenFd);
        unlink(m_socketPath.c_str());
    }
}

bool Gateway::start(std::string* error)
{
    auto failWith = [&](const std::string& text) {
        if (error != nullptr) *error = text;
        SSC_TRACE(group(), 1, "%s", text.c_str());
        if (m_listenFd >= 0) ::close(m_listenFd);
        m_listenFd = -1;
        return false;
    };
    sockaddr_un address{};
    if (m_socketPath.empty() || m_socketPath.size() >= sizeof address.sun_path)
        return failWith("gateway socket path '" + m_socketPath + "' is empty or longer than " +
                        std::to_string(sizeof address.sun_path - 1) + " characters");
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, m_socketPath.c_str(), m_socketPath.size() + 1);
    m_listenFd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_listenFd < 0) return failWith(std::string("cannot create the gateway socket: ") + std::strerror(errno));
    if (access(m_socketPath.c_str(), F_OK) == 0 && isStaleSocket(m_socketPath)) unlink(m_socketPath.c_str());
    if (bind(m_listenFd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        return failWith("cannot bind the gateway socket " + m_socketPath + ": " + std::strerror(errno));
    if (listen(m_listenFd, 64) != 0)
        return failWith("cannot listen on the gateway socket " + m_socketPath + ": " + std::strerror(errno));
    m_world.watchFd(m_listenFd, POLLIN, [this](short) { acceptClients(); });
    SSC_TRACE(group(), 4, "gateway of node %s listens on %s", m_node.name().c_str(), m_socketPath.c_str());
    return true;
}

void Gateway::acceptClients()
{
    reapClosed();
    for (;;) {
        int fd = accept4(m_listenFd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0) {
            if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR)
                SSC_TRACE(group(), 1, "accept on the gateway socket failed: %s", std::strerror(errno));
            return;
        }
        auto connection = std::make_unique<GatewayConnection>(*this, fd);
        GatewayConnection* raw = connection.get();
        m_connections[fd] = std::move(connection);
        m_world.watchFd(fd, POLLIN, [this, fd, raw](short revents) {
            reapClosed();
            auto it = m_connections.find(fd);
            if (it != m_connections.end() && it->second.get() == raw) raw->onReady(revents);
        });
    }
}

void Gateway::dispatchSignal(Process& process)
{
    for (auto& [fd, connection] : m_connections) {
        if (connection->pid() == process.pid() && !connection->isClosed()) {
            connection->onSignal(process);
            return;
        }
    }
    while (Signal* signal = m_world.takeSignal(process.pid(), kAnySignal)) SignalPool::release(signal);
}

void Gateway::connectionClosed(GatewayConnection& connection)
{
    m_world.unwatchFd(connection.fd());
    updateTimeCeiling();
}

void Gateway::reapClosed()
{
    for (auto it = m_connections.begin(); it != m_connections.end();) {
        if (it->second->isClosed()) it = m_connections.erase(it);
        else ++it;
    }
}

void Gateway::holdTimeForFirstHolder()
{
    m_waitForHolder = true;
    updateTimeCeiling();
}

// Virtual time may go as far as the slowest client that steps it allows.
void Gateway::updateTimeCeiling()
{
    std::optional<std::uint64_t> ceiling;
    for (auto& [fd, connection] : m_connections) {
        if (connection->isClosed() || !connection->holdsTime()) continue;
        ceiling = ceiling ? std::min(*ceiling, connection->allowance()) : connection->allowance();
    }
    if (ceiling) m_waitForHolder = false;
    else if (m_waitForHolder) ceiling = m_world.now();
    m_world.setTimeCeiling(ceiling);
}

} // namespace ose
