#pragma once
// The client side of the gateway, for tools, simulators and system tests: a
// program connects to a node's socket and becomes a process of that node.
// Calls block until the node answers; signals and deaths that arrive in the
// meantime are kept for next().

#include "ose/GatewayProtocol.h"
#include "ose/Types.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace ose {

struct GatewayEvent {
    enum class Kind { Signal, Died };
    Kind kind = Kind::Signal;
    // Signal: the signal's bytes as they travel (its number first, big-endian).
    PROCESS sender = 0;
    PROCESS addressee = 0;
    std::string bytes;
    // Died: the attach reference and the process that died.
    std::uint32_t attachRef = 0;
    PROCESS pid = 0;

    SIGSELECT sigNo() const { return bytes.size() >= 4 ? loadBe32(bytes.data()) : 0; }
};

struct GatewayTime {
    std::uint64_t nowMs = 0;      // since the world began
    std::int64_t calendarMs = 0;  // since 1970, UTC
    std::uint32_t clockMode = 0;  // 0 real, 1 virtual, 2 paced
};

class GatewayClient {
public:
    GatewayClient() = default;
    ~GatewayClient();
    GatewayClient(const GatewayClient&) = delete;
    GatewayClient& operator=(const GatewayClient&) = delete;

    // holdsTime: on a virtual clock, time does not pass what this client
    // allowed with advance().
    bool connect(const std::string& socketPath, const std::string& name, bool holdsTime = false);
    void close();
    bool isConnected() const { return m_fd >= 0; }
    PROCESS pid() const { return m_pid; }
    std::uint32_t clockMode() const { return m_clockMode; }
    const std::string& lastError() const { return m_error; }

    // The pid found (0: not found within timeoutMs of world time; 0 waits
    // not at all, gateway::kWaitForever without end); nullopt on failure.
    std::optional<PROCESS> hunt(const std::string& name, std::uint32_t timeoutMs = 0);
    // Sends without waiting: a refusal shows later in lastError().
    bool send(PROCESS to, const std::string& signalBytes);
    // Sends and waits for the node's acknowledgement (false and lastError()
    // when refused).
    bool sendAcknowledged(PROCESS to, const std::string& signalBytes);
    std::optional<std::uint32_t> attach(PROCESS pid);
    bool detach(std::uint32_t attachRef);
    bool publish(const std::string& name);
    bool trace(const std::string& config);
    std::optional<GatewayTime> time();
    // Lets world time go on to `targetMs` and returns when it is there.
    std::optional<std::uint64_t> advanceTo(std::uint64_t targetMs);
    std::optional<std::uint64_t> advanceBy(std::uint64_t ms);

    // The next signal or death; nullopt when none came within the wall time.
    std::optional<GatewayEvent> next(std::chrono::milliseconds wallTimeout);

    // Sends raw bytes: for tests of the node's defences.
    bool sendRaw(const std::string& bytes);

private:
    struct Frame {
        gateway::FrameType type;
        std::uint32_t requestId;
        std::string payload;
    };
    std::optional<Frame> request(std::string frame, std::uint32_t requestId, gateway::FrameType answer);
    std::optional<Frame> readFrame(std::optional<std::chrono::milliseconds> timeout);
    bool keepIfEvent(const Frame& frame);
    bool writeAll(const std::string& bytes);
    bool readExactly(char* data, std::size_t size, std::optional<std::chrono::milliseconds> timeout);
    void setError(const std::string& text) { m_error = text; }

    int m_fd = -1;
    PROCESS m_pid = 0;
    std::uint32_t m_clockMode = 0;
    std::uint32_t m_nextRequest = 1;
    std::deque<GatewayEvent> m_events;
    std::string m_error;
};

} // namespace ose
