#pragma once
// One outside program connected to a node: a process of that node whose
// signals travel over the program's socket.

#include "ose/GatewayProtocol.h"
#include "ose/Signal.h"
#include "ose/Types.h"

#include <cstdint>
#include <map>
#include <string>

namespace ose {

class Gateway;
class Process;

class GatewayConnection {
public:
    GatewayConnection(Gateway& gateway, int fd);
    ~GatewayConnection();
    GatewayConnection(const GatewayConnection&) = delete;
    GatewayConnection& operator=(const GatewayConnection&) = delete;

    int fd() const { return m_fd; }
    PROCESS pid() const { return m_pid; }
    const std::string& name() const { return m_name; }
    bool holdsTime() const { return m_holdsTime; }
    std::uint64_t allowance() const { return m_allowance; }
    bool isClosed() const { return m_closed; }

    // The socket is readable or writable.
    void onReady(short revents);
    // A signal was queued for the connection's process.
    void onSignal(Process& process);
    // Ends the connection: its process dies, so attaches to it fire. From
    // inside the world's deliveries the death is put off to the loop.
    void close(const char* why, bool killNow = false);

private:
    enum class ReadState { Open, EndOfInput, Failed };
    ReadState readAvailable();
    void handleFrames();
    void handleFrame(gateway::FrameType type, std::uint16_t flags, std::uint32_t requestId,
                     gateway::FrameReader& payload);
    void handleHello(std::uint32_t requestId, gateway::FrameReader& payload);
    void handleHunt(std::uint32_t requestId, gateway::FrameReader& payload);
    void handleSend(std::uint32_t requestId, bool acknowledge, gateway::FrameReader& payload);
    void handleAttach(std::uint32_t requestId, gateway::FrameReader& payload);
    void handleDetach(std::uint32_t requestId, gateway::FrameReader& payload);
    void handlePublish(std::uint32_t requestId, gateway::FrameReader& payload);
    void handleTime(std::uint32_t requestId, gateway::FrameReader& payload);
    void handleAdvance(std::uint32_t requestId, gateway::FrameReader& payload);
    void handleTrace(std::uint32_t requestId, gateway::FrameReader& payload);
    void awaitTarget(std::uint32_t requestId);
    // A client that holds the clock lets world time pass up to target.
    void raiseAllowance(std::uint64_t target);
    bool handleInternalSignal(Signal* signal);
    void fail(std::uint32_t requestId, gateway::ErrorCode code, const std::string& text);
    void refuse(std::uint32_t requestId, gateway::ErrorCode code, const std::string& text);
    void queue(std::string frame);
    void flush();

    Gateway& m_gateway;
    int m_fd;
    PROCESS m_pid = 0;
    std::string m_name;
    bool m_holdsTime = false;
    std::uint64_t m_allowance = 0;
    bool m_closed = false;
    std::string m_in;
    std::string m_out;
    std::map<std::uint32_t, OSTMOREF> m_pendingHunts;    // request -> its time-out
    std::map<std::uint32_t, OSATTREF> m_attaches;        // ref given to the client -> the kernel's
    struct PendingAdvance {
        OSTMOREF timeout;
        std::uint64_t target;
    };
    std::map<std::uint32_t, PendingAdvance> m_pendingAdvances; // by request
    std::uint32_t m_nextAttachRef = 1;
};

} // namespace ose
