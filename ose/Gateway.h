#pragma once
// The door of a node for outside programs: a Unix domain socket on which
// each connection becomes a process of the node. The frames are described in
// docs/gateway-protocol.md.
//
// The gateway works on the world's own thread: its sockets are watched by the
// world's event loop, so everything it does happens between process runs and
// needs no lock. Create and start it before the world runs (or on its thread).

#include "ose/Types.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace ose {

class GatewayConnection;
class Node;
class Process;
class World;

class Gateway {
public:
    Gateway(World& world, Node& node, std::string socketPath);
    ~Gateway();
    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;

    // Binds and listens; a stale socket file of a node that is gone is replaced.
    bool start(std::string* error = nullptr);
    const std::string& socketPath() const { return m_socketPath; }
    std::size_t connectionCount() const { return m_connections.size(); }

    World& world() { return m_world; }
    Node& node() { return m_node; }

    // A signal was queued for a client's process; the client may be gone.
    void dispatchSignal(Process& process);

    // On a virtual clock: time stands still from now until the first client
    // that holds time connects, so that a test harness misses nothing of
    // the start.
    void holdTimeForFirstHolder();

    // Called by connections.
    void connectionClosed(GatewayConnection& connection);
    void updateTimeCeiling();

private:
    void acceptClients();
    void reapClosed();

    World& m_world;
    Node& m_node;
    std::string m_socketPath;
    int m_listenFd = -1;
    std::uint32_t m_nextSerial = 1;
    bool m_waitForHolder = false;
    std::map<int, std::unique_ptr<GatewayConnection>> m_connections;
};

} // namespace ose
