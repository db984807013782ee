#include "ose/GatewayClient.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace ose {

using gateway::FrameReader;
using gateway::FrameType;
using gateway::FrameWriter;

GatewayClient::~GatewayClient()
{
    close();
}

bool GatewayClient::connect(const std::string& socketPath, const std::string& name, bool holdsTime)
{
    close();
    sockaddr_un address{};
    if (socketPath.size() >= sizeof address.sun_path) {
        setError("socket path too long: " + socketPath);
        return false;
    }
    m_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_fd < 0) {
        setError(std::string("cannot create a socket: ") + std::strerror(errno));
        return false;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);
    if (::connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        setError("cannot connect to the node at " + socketPath + ": " + std::strerror(errno));
        close();
        return false;
    }
    std::uint32_t id = m_nextRequest++;
    auto welcome = request(FrameWriter(FrameType::Hello, id)
                               .u32(gateway::kVersion)
                               .u32(holdsTime ? gateway::kHelloHoldsTime : 0)
                               .text(name)
                               .finish(),
                           id, FrameType::Welcome);
    if (!welcome) {
        close();
        return false;
    }
    FrameReader reader(welcome->payload.data(), welcome->payload.size());
    std::uint32_t version = 0;
    if (!reader.u32(version) || !reader.u32(m_pid) || !reader.u32(m_clockMode)) {
        setError("the node's welcome is too short");
        close();
        return false;
    }
    return true;
}

void GatewayClient::close()
{
    if (m_fd >= 0) ::close(m_fd);
    m_fd = -1;
    m_pid = 0;
}

std::optional<PROCESS> GatewayClient::hunt(const std::string& name, std::uint32_t timeoutMs)
{
    std::uint32_t id = m_nextRequest++;
    auto answer = request(FrameWriter(FrameType::Hunt, id).u32(timeoutMs).text(name).finish(), id, FrameType::HuntResult);
    std::uint32_t pid = 0;
    if (!answer || !FrameReader(answer->payload.data(), answer->payload.size()).u32(pid)) return std::nullopt;
    return pid;
}

bool GatewayClient::send(PROCESS to, const std::string& signalBytes)
{
    return writeAll(FrameWriter(FrameType::Send, m_nextRequest++).u32(to).text(signalBytes).finish());
}

bool GatewayClient::sendAcknowledged(PROCESS to, const std::string& signalBytes)
{
    std::uint32_t id = m_nextRequest++;
    return request(FrameWriter(FrameType::Send, id, gateway::kSendAcknowledge).u32(to).text(signalBytes).finish(), id,
                   FrameType::Done)
        .has_value();
}

std::optional<std::uint32_t> GatewayClient::attach(PROCESS pid)
{
    std::uint32_t id = m_nextRequest++;
    auto answer = request(FrameWriter(FrameType::Attach, id).u32(pid).finish(), id, FrameType::Attached);
    std::uint32_t ref = 0;
    if (!answer || !FrameReader(answer->payload.data(), answer->payload.size()).u32(ref)) return std::nullopt;
    return ref;
}

bool GatewayClient::detach(std::uint32_t attachRef)
{
    std::uint32_t id = m_nextRequest++;
    return request(FrameWriter(FrameType::Detach, id).u32(attachRef).finish(), id, FrameType::Done).has_value();
}

bool GatewayClient::publish(const std::string& name)
{
    std::uint32_t id = m_nextRequest++;
    return request(FrameWriter(FrameType::Publish, id).text(name).finish(), id, FrameType::Done).has_value();
}

bool GatewayClient::trace(const std::string& config)
{
    std::uint32_t id = m_nextRequest++;
    return request(FrameWriter(FrameType::Trace, id).text(config).finish(), id, FrameType::Done).has_value();
}

std::optional<GatewayTime> GatewayClient::time()
{
    std::uint32_t id = m_nextRequest++;
    auto answer = request(FrameWriter(FrameType::Time, id).finish(), id, FrameType::TimeNow);
    if (!answer) return std::nullopt;
    FrameReader reader(answer->payload.data(), answer->payload.size());
    GatewayTime time;
    std::uint64_t calendar = 0;
    if (!reader.u64(time.nowMs) || !reader.u64(calendar) || !reader.u32(time.clockMode)) {
        setError("the node's time answer is too short");
        return std::nullopt;
    }
    time.calendarMs = static_cast<std::int64_t>(calendar);
    return time;
}

std::optional<std::uint64_t> GatewayClient::advanceTo(std::uint64_t targetMs)
{
    std::uint32_t id = m_nextRequest++;
    auto answer = request(FrameWriter(FrameType::Advance, id).u64(targetMs).finish(), id, FrameType::Advanced);
    std::uint64_t now = 0;
    if (!answer || !FrameReader(answer->payload.data(), answer->payload.size()).u64(now)) return std::nullopt;
    return now;
}

std::optional<std::uint64_t> GatewayClient::advanceBy(std::uint64_t ms)
{
    auto now = time();
    if (!now) return std::nullopt;
    return advanceTo(now->nowMs + ms);
}

std::optional<GatewayEvent> GatewayClient::next(std::chrono::milliseconds wallTimeout)
{
    auto deadline = std::chrono::steady_clock::now() + wallTimeout;
    while (m_events.empty()) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() < 0) return std::nullopt;
        auto frame = readFrame(left);
        if (!frame) return std::nullopt;
        if (keepIfEvent(*frame)) continue;
        if (frame->type == FrameType::Error) { // the refusal of a send without acknowledgement
            FrameReader reader(frame->payload.data(), frame->payload.size());
            std::uint32_t code = 0;
            reader.u32(code);
            setError(std::string(reader.rest()));
        } else {
            setError("unexpected frame from the node");
        }
    }
    GatewayEvent event = std::move(m_events.front());
    m_events.pop_front();
    return event;
}

bool GatewayClient::sendRaw(const std::string& bytes)
{
    return writeAll(bytes);
}

std::optional<GatewayClient::Frame> GatewayClient::request(std::string frame, std::uint32_t requestId,
                                                           FrameType answer)
{
    if (m_fd < 0) {
        setError("not connected");
        return std::nullopt;
    }
    if (!writeAll(frame)) return std::nullopt;
    for (;;) {
        auto reply = readFrame(std::nullopt);
        if (!reply) return std::nullopt;
        if (keepIfEvent(*reply)) continue;
        if (reply->requestId != requestId) continue; // an answer nobody waits for any more
        if (reply->type == FrameType::Error) {
            FrameReader reader(reply->payload.data(), reply->payload.size());
            std::uint32_t code = 0;
            reader.u32(code);
            setError(std::string(reader.rest()));
            return std::nullopt;
        }
        if (reply->type == answer) return reply;
        setError("the node answered with an unexpected frame");
        return std::nullopt;
    }
}

bool GatewayClient::keepIfEvent(const Frame& frame)
{
    FrameReader reader(frame.payload.data(), frame.payload.size());
    GatewayEvent event;
    if (frame.type == FrameType::Signal && reader.u32(event.sender) && reader.u32(event.addressee)) {
        event.kind = GatewayEvent::Kind::Signal;
        event.bytes = std::string(reader.rest());
        m_events.push_back(std::move(event));
        return true;
    }
    if (frame.type == FrameType::Died && reader.u32(event.attachRef) && reader.u32(event.pid)) {
        event.kind = GatewayEvent::Kind::Died;
        m_events.push_back(std::move(event));
        return true;
    }
    return false;
}

std::optional<GatewayClient::Frame> GatewayClient::readFrame(std::optional<std::chrono::milliseconds> timeout)
{
    char head[gateway::kHeaderSize];
    if (!readExactly(head, sizeof head, timeout)) return std::nullopt;
    std::uint32_t length = loadBe32(head);
    if (length < gateway::kMinLength || length > gateway::kMaxLength) {
        setError("the node sent a frame of impossible length");
        close();
        return std::nullopt;
    }
    Frame frame{static_cast<FrameType>(loadBe32(head + 4) >> 16), loadBe32(head + 8), {}};
    frame.payload.resize(length - gateway::kMinLength);
    if (!frame.payload.empty() && !readExactly(frame.payload.data(), frame.payload.size(), std::nullopt))
        return std::nullopt;
    return frame;
}

bool GatewayClient::writeAll(const std::string& bytes)
{
    if (m_fd < 0) {
        setError("not connected");
        return false;
    }
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::send(m_fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            setError(std::string("the node is gone: ") + std::strerror(errno));
            close();
            return false;
        }
        done += static_cast<std::size_t>(n);
    }
    return true;
}

bool GatewayClient::readExactly(char* data, std::size_t size, std::optional<std::chrono::milliseconds> timeout)
{
    std::size_t done = 0;
    while (done < size) {
        if (m_fd < 0) {
            setError("not connected");
            return false;
        }
        if (timeout && done == 0) {
            pollfd fd{m_fd, POLLIN, 0};
            int ready = poll(&fd, 1, static_cast<int>(timeout->count()));
            if (ready == 0) return false; // nothing within the time: no error
        }
        ssize_t n = recv(m_fd, data + done, size - done, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            setError(n == 0 ? "the node closed the connection" : std::string("read failed: ") + std::strerror(errno));
            close();
            return false;
        }
        done += static_cast<std::size_t>(n);
    }
    return true;
}

} // namespace ose
