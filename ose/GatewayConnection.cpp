#include "ose/GatewayConnection.h"

#include "ose/Gateway.h"
#include "ose/Kernel.h"
#include "ose/SignalPool.h"
#include "ose/Trace.h"
#include "ose/World.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace ose {
namespace {

using gateway::ErrorCode;
using gateway::FrameReader;
using gateway::FrameType;
using gateway::FrameWriter;

TraceGroupId group()
{
    static const TraceGroupId id = Trace::registerGroup("gateway");
    return id;
}

// Signals the gateway sends itself through the kernel, so that hunts,
// attaches and time steps of a client are answered in the kernel's own order.
// The numbers are reserved for this use.
constexpr SIGSELECT kHuntAnswer = 0xFFFF0001u;
constexpr SIGSELECT kHuntTimeout = 0xFFFF0002u;
constexpr SIGSELECT kAttachFired = 0xFFFF0003u;
constexpr SIGSELECT kAdvanceReached = 0xFFFF0004u;

struct InternalSignal {
    be_u32 sigNo;
    be_u32 reference;
};
OSE_SIGNAL_LAYOUT(InternalSignal, 8);

Signal* internalSignal(SIGSELECT sigNo, std::uint32_t reference)
{
    auto* signal = reinterpret_cast<InternalSignal*>(SignalPool::allocate(sizeof(InternalSignal), sigNo));
    signal->reference = reference;
    return reinterpret_cast<Signal*>(signal);
}

// A client that reads nothing must not make the node hold its output for ever.
constexpr std::size_t kMaxPendingOutput = 64u * 1024u * 1024u;

// "0x" and the number in hexadecimal, as every text of the gateway writes numbers.
std::string hex(std::uint32_t value, int digits)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*x", digits, value);
    return text;
}

std::uint32_t clockModeNumber(ClockMode mode)
{
    switch (mode) {
    case ClockMode::Real: return 0;
    case ClockMode::Virtual: return 1;
    case ClockMode::Paced: return 2;
    }
    return 0;
}

} // namespace

GatewayConnection::GatewayConnection(Gateway& gateway, int fd) : m_gateway(gateway), m_fd(fd)
{
}

GatewayConnection::~GatewayConnection()
{
    close("the connection is released", true);
}

void GatewayConnection::close(const char* why, bool killNow)
{
    if (m_closed) return;
    m_closed = true;
    SSC_TRACE(group(), 6, "client %s closed: %s", m_name.empty() ? "(no hello)" : m_name.c_str(), why);
    m_gateway.connectionClosed(*this);
    ::close(m_fd);
    if (m_pid == 0) return;
    World& world = m_gateway.world();
    PROCESS pid = m_pid;
    if (killNow) {
        world.kill(pid);
        return;
    }
    // Killed from the world's loop, never from inside a delivery that may be
    // under way: attaches to the client fire then.
    world.post([&world, pid] { world.kill(pid); });
}

void GatewayConnection::onReady(short revents)
{
    if (m_closed) return;
    if (revents & POLLOUT) flush();
    if (m_closed) return;
    if (revents & (POLLIN | POLLHUP | POLLERR)) {
        const ReadState state = readAvailable();
        if (state == ReadState::Failed) return;
        // Frames that arrived before the client closed are still its own:
        // they are handled before its process ends.
        handleFrames();
        if (state == ReadState::EndOfInput && !m_closed) {
            flush();
            close(m_in.empty() ? "disconnected" : "disconnected in the middle of a frame");
        }
    }
}

GatewayConnection::ReadState GatewayConnection::readAvailable()
{
    char buffer[65536];
    for (;;) {
        ssize_t n = recv(m_fd, buffer, sizeof buffer, 0);
        if (n > 0) {
            m_in.append(buffer, static_cast<std::size_t>(n));
            if (m_in.size() >= gateway::kMaxLength + 4) return ReadState::Open; // handle what is complete first
            continue;
        }
        if (n == 0) return ReadState::EndOfInput;
        if (errno == EINTR) continue;
        if (errno == EAGAIN || errno == EWOULDBLOCK) return ReadState::Open;
        close(std::strerror(errno));
        return ReadState::Failed;
    }
}

void GatewayConnection::handleFrames()
{
    std::size_t offset = 0;
    while (!m_closed && m_in.size() - offset >= 4) {
        std::uint32_t length = loadBe32(m_in.data() + offset);
        if (length < gateway::kMinLength || length > gateway::kMaxLength) {
            fail(0, length > gateway::kMaxLength ? ErrorCode::TooLarge : ErrorCode::Malformed,
                 "frame length " + std::to_string(length) + " out of range");
            return;
        }
        if (m_in.size() - offset - 4 < length) break; // the rest comes later
        const char* frame = m_in.data() + offset + 4;
        const std::uint32_t typeAndFlags = loadBe32(frame);
        auto type = static_cast<FrameType>(typeAndFlags >> 16);
        const auto flags = static_cast<std::uint16_t>(typeAndFlags & 0xFFFFu);
        std::uint32_t requestId = loadBe32(frame + 4);
        FrameReader payload(frame + 8, length - 8);
        offset += 4 + length;
        handleFrame(type, flags, requestId, payload);
    }
    if (!m_closed) m_in.erase(0, offset);
}

void GatewayConnection::handleFrame(FrameType type, std::uint16_t flags, std::uint32_t requestId,
                                    FrameReader& payload)
{
    if (m_pid == 0 && type != FrameType::Hello) {
        fail(requestId, ErrorCode::HelloFirst, "the first frame must be a hello");
        return;
    }
    // A flag this node does not know may ask for something it would not do.
    // (A frame of an unknown type is refused for its type, below.)
    const bool request = type >= FrameType::Hello && type <= FrameType::Trace;
    const std::uint16_t known = type == FrameType::Send ? gateway::kSendAcknowledge : 0;
    if (request && (flags & ~known) != 0) {
        const std::string text = "reserved flags " + hex(flags & ~known, 4) + " set in a frame of type " +
                                 hex(static_cast<std::uint32_t>(type), 4);
        if (m_pid == 0)
            fail(requestId, ErrorCode::Malformed, text);
        else
            refuse(requestId, ErrorCode::BadArgument, text);
        return;
    }
    switch (type) {
    case FrameType::Hello: handleHello(requestId, payload); return;
    case FrameType::Hunt: handleHunt(requestId, payload); return;
    case FrameType::Send: handleSend(requestId, (flags & gateway::kSendAcknowledge) != 0, payload); return;
    case FrameType::Attach: handleAttach(requestId, payload); return;
    case FrameType::Detach: handleDetach(requestId, payload); return;
    case FrameType::Publish: handlePublish(requestId, payload); return;
    case FrameType::Time: handleTime(requestId, payload); return;
    case FrameType::Advance: handleAdvance(requestId, payload); return;
    case FrameType::Trace: handleTrace(requestId, payload); return;
    default: break;
    }
    fail(requestId, ErrorCode::UnknownType, "unknown frame type " + hex(static_cast<std::uint32_t>(type), 4));
}

void GatewayConnection::handleHello(std::uint32_t requestId, FrameReader& payload)
{
    std::uint32_t version = 0;
    std::uint32_t options = 0;
    if (m_pid != 0) {
        fail(requestId, ErrorCode::Malformed, "a second hello");
        return;
    }
    if (!payload.u32(version) || !payload.u32(options)) {
        fail(requestId, ErrorCode::Malformed, "hello too short");
        return;
    }
    if (version != gateway::kVersion) {
        fail(requestId, ErrorCode::BadVersion,
             "protocol version " + std::to_string(version) + " not spoken; this node speaks " +
                 std::to_string(gateway::kVersion));
        return;
    }
    std::string_view name = payload.rest();
    if (!gateway::isAcceptableName(name, gateway::kMaxNameLength)) {
        fail(requestId, ErrorCode::Malformed, "the client's name must be 1 to 255 printable characters");
        return;
    }
    World& world = m_gateway.world();
    m_name = std::string(name);
    Gateway* owner = &m_gateway;
    m_pid = world.createExternalProcess(m_gateway.node(), m_name,
                                        [owner](Process& process) { owner->dispatchSignal(process); });
    m_holdsTime = (options & gateway::kHelloHoldsTime) != 0;
    m_allowance = world.now();
    if (m_holdsTime) m_gateway.updateTimeCeiling();
    SSC_TRACE(group(), 6, "client %s connected as process %u%s", m_name.c_str(), m_pid,
              m_holdsTime ? ", holding the clock" : "");
    queue(FrameWriter(FrameType::Welcome, requestId)
              .u32(gateway::kVersion)
              .u32(m_pid)
              .u32(clockModeNumber(world.clock().config().mode))
              .u64(world.now())
              .finish());
}

void GatewayConnection::handleHunt(std::uint32_t requestId, FrameReader& payload)
{
    std::uint32_t timeoutMs = 0;
    if (!payload.u32(timeoutMs)) {
        fail(requestId, ErrorCode::Malformed, "hunt too short for its time-out");
        return;
    }
    std::string_view name = payload.rest();
    if (!gateway::isAcceptableName(name)) {
        refuse(requestId, ErrorCode::BadArgument, "hunt needs a name of 1 to 1023 printable characters");
        return;
    }
    World& world = m_gateway.world();
    PROCESS found = 0;
    if (world.hunt(m_pid, name, &found, nullptr) || timeoutMs == 0) {
        queue(FrameWriter(FrameType::HuntResult, requestId).u32(found).finish());
        return;
    }
    Signal* answer = internalSignal(kHuntAnswer, requestId);
    world.hunt(m_pid, name, nullptr, &answer);
    OSTMOREF timeout;
    if (timeoutMs != gateway::kWaitForever) {
        Signal* expiry = internalSignal(kHuntTimeout, requestId);
        timeout = world.requestTimeout(m_pid, timeoutMs, &expiry);
        // A client that holds the clock waits for this answer before it can
        // step time: the hunt lets time pass to its own end, or it would
        // wait for ever.
        raiseAllowance(world.now() + timeoutMs);
    }
    m_pendingHunts[requestId] = timeout;
}

void GatewayConnection::handleSend(std::uint32_t requestId, bool acknowledge, FrameReader& payload)
{
    std::uint32_t to = 0;
    if (!payload.u32(to)) {
        fail(requestId, ErrorCode::Malformed, "send too short for its pid");
        return;
    }
    if (payload.left() < 4 || payload.left() > gateway::kMaxSignalSize) {
        refuse(requestId, ErrorCode::BadArgument, "send needs a signal of 4 bytes or more");
        return;
    }
    std::string_view bytes = payload.rest();
    Signal* signal = SignalPool::allocate(static_cast<OSBUFSIZE>(bytes.size()), 0);
    std::memcpy(static_cast<void*>(signal), bytes.data(), bytes.size());
    m_gateway.world().send(&signal, m_pid, to);
    if (acknowledge) queue(FrameWriter(FrameType::Done, requestId).finish());
}

void GatewayConnection::handleAttach(std::uint32_t requestId, FrameReader& payload)
{
    std::uint32_t pid = 0;
    if (!payload.u32(pid) || payload.left() != 0) {
        fail(requestId, ErrorCode::Malformed, "attach carries a pid and nothing else");
        return;
    }
    std::uint32_t ref = m_nextAttachRef++;
    queue(FrameWriter(FrameType::Attached, requestId).u32(ref).finish());
    Signal* signal = internalSignal(kAttachFired, ref);
    OSATTREF kernelRef = m_gateway.world().attach(m_pid, &signal, pid);
    if (kernelRef != 0) m_attaches[ref] = kernelRef;
}

void GatewayConnection::handleDetach(std::uint32_t requestId, FrameReader& payload)
{
    std::uint32_t ref = 0;
    if (!payload.u32(ref) || payload.left() != 0) {
        fail(requestId, ErrorCode::Malformed, "detach carries an attach reference and nothing else");
        return;
    }
    auto it = m_attaches.find(ref);
    if (it != m_attaches.end()) {
        m_gateway.world().detach(&it->second);
        m_attaches.erase(it);
    }
    queue(FrameWriter(FrameType::Done, requestId).finish());
}

void GatewayConnection::handlePublish(std::uint32_t requestId, FrameReader& payload)
{
    std::string_view name = payload.rest();
    if (!gateway::isAcceptableName(name, gateway::kMaxNameLength) || name.find('/') != std::string_view::npos) {
        refuse(requestId, ErrorCode::BadArgument, "a published name has 1 to 255 printable characters and no '/'");
        return;
    }
    World& world = m_gateway.world();
    PROCESS holder = 0;
    if (world.hunt(m_pid, name, &holder, nullptr)) {
        refuse(requestId, ErrorCode::BadArgument,
               "the name " + std::string(name) + " is taken by process " + hex(holder, 8));
        return;
    }
    world.publishName(m_pid, std::string(name));
    SSC_TRACE(group(), 6, "client %s published %.*s", m_name.c_str(), static_cast<int>(name.size()), name.data());
    queue(FrameWriter(FrameType::Done, requestId).finish());
}

void GatewayConnection::handleTime(std::uint32_t requestId, FrameReader& payload)
{
    if (payload.left() != 0) {
        fail(requestId, ErrorCode::Malformed, "time carries nothing");
        return;
    }
    World& world = m_gateway.world();
    queue(FrameWriter(FrameType::TimeNow, requestId)
              .u64(world.now())
              .u64(static_cast<std::uint64_t>(world.clock().calendarMs()))
              .u32(clockModeNumber(world.clock().config().mode))
              .finish());
}

void GatewayConnection::handleAdvance(std::uint32_t requestId, FrameReader& payload)
{
    std::uint64_t target = 0;
    World& world = m_gateway.world();
    if (!payload.u64(target) || payload.left() != 0) {
        fail(requestId, ErrorCode::Malformed, "advance carries a target time and nothing else");
        return;
    }
    if (world.clock().config().mode == ClockMode::Real) {
        refuse(requestId, ErrorCode::NotVirtual, "the clock is real: time cannot be stepped");
        return;
    }
    raiseAllowance(target);
    if (target <= world.now()) {
        queue(FrameWriter(FrameType::Advanced, requestId).u64(world.now()).finish());
        return;
    }
    m_pendingAdvances[requestId] = {OSTMOREF{}, target};
    awaitTarget(requestId);
}

// The kernel's time-outs count at most 0xFFFFFFFE ms: a farther target is
// reached in several steps.
void GatewayConnection::awaitTarget(std::uint32_t requestId)
{
    World& world = m_gateway.world();
    PendingAdvance& pending = m_pendingAdvances[requestId];
    const std::uint64_t delta = pending.target - world.now();
    Signal* reached = internalSignal(kAdvanceReached, requestId);
    pending.timeout =
        world.requestTimeout(m_pid, static_cast<OSTIME>(std::min<std::uint64_t>(delta, 0xFFFFFFFEu)), &reached);
}

void GatewayConnection::raiseAllowance(std::uint64_t target)
{
    if (!m_holdsTime || target <= m_allowance) return;
    m_allowance = target;
    m_gateway.updateTimeCeiling();
}

void GatewayConnection::handleTrace(std::uint32_t requestId, FrameReader& payload)
{
    std::string_view text = payload.rest();
    std::string error;
    if (text.size() > gateway::kMaxTextLength || !Trace::configure(text, &error)) {
        refuse(requestId, ErrorCode::BadArgument, error.empty() ? "trace configuration too long" : error);
        return;
    }
    queue(FrameWriter(FrameType::Done, requestId).finish());
}

void GatewayConnection::onSignal(Process& process)
{
    World& world = m_gateway.world();
    while (Signal* signal = world.takeSignal(process.pid(), kAnySignal)) {
        if (m_closed) {
            SignalPool::release(signal);
            continue;
        }
        if (handleInternalSignal(signal)) continue;
        const SignalHeader* header = SignalHeader::of(signal);
        queue(FrameWriter(FrameType::Signal, 0)
                  .u32(header->sender)
                  .u32(header->addressee)
                  .bytes(signal, header->size)
                  .finish());
        SignalPool::release(signal);
    }
}

// Answers of the kernel to what the client asked; false for an ordinary
// signal (also one that only looks internal: its reference is not pending).
bool GatewayConnection::handleInternalSignal(Signal* signal)
{
    const auto* internal = signal_cast<InternalSignal>(signal);
    if (internal == nullptr) return false;
    std::uint32_t reference = internal->reference;
    World& world = m_gateway.world();
    switch (static_cast<SIGSELECT>(signal->sigNo)) {
    case kHuntAnswer:
    case kHuntTimeout: {
        auto it = m_pendingHunts.find(reference);
        if (it == m_pendingHunts.end()) return false;
        PROCESS found = signal->sigNo == kHuntAnswer ? SignalHeader::of(signal)->sender : 0;
        if (Signal* expiry = world.cancelTimeout(&it->second)) SignalPool::release(expiry);
        m_pendingHunts.erase(it);
        queue(FrameWriter(FrameType::HuntResult, reference).u32(found).finish());
        break;
    }
    case kAttachFired: {
        // An attach to a dead process fires at once, before its reference is kept.
        m_attaches.erase(reference);
        queue(FrameWriter(FrameType::Died, 0).u32(reference).u32(SignalHeader::of(signal)->sender).finish());
        break;
    }
    case kAdvanceReached: {
        const auto it = m_pendingAdvances.find(reference);
        if (it == m_pendingAdvances.end()) return false;
        if (world.now() < it->second.target) {
            awaitTarget(reference);
        } else {
            m_pendingAdvances.erase(it);
            queue(FrameWriter(FrameType::Advanced, reference).u64(world.now()).finish());
        }
        break;
    }
    default:
        return false;
    }
    SignalPool::release(signal);
    return true;
}

// A broken frame: the client is told why and the connection ends.
void GatewayConnection::fail(std::uint32_t requestId, ErrorCode code, const std::string& text)
{
    SSC_TRACE(group(), 1, "client %s sent a bad frame: %s", m_name.empty() ? "(no hello)" : m_name.c_str(),
              text.c_str());
    queue(FrameWriter(FrameType::Error, requestId).u32(static_cast<std::uint32_t>(code)).text(text).finish());
    close(text.c_str());
}

// A well-formed request that cannot be done: the connection goes on.
void GatewayConnection::refuse(std::uint32_t requestId, ErrorCode code, const std::string& text)
{
    SSC_TRACE(group(), 5, "client %s: %s", m_name.c_str(), text.c_str());
    queue(FrameWriter(FrameType::Error, requestId).u32(static_cast<std::uint32_t>(code)).text(text).finish());
}

void GatewayConnection::queue(std::string frame)
{
    if (m_closed) return;
    if (m_out.size() + frame.size() > kMaxPendingOutput) {
        SSC_TRACE(group(), 1, "client %s reads nothing; %zu bytes pending", m_name.c_str(), m_out.size());
        close("the client does not read");
        return;
    }
    m_out += frame;
    flush();
}

void GatewayConnection::flush()
{
    while (!m_out.empty()) {
        ssize_t n = ::send(m_fd, m_out.data(), m_out.size(), MSG_NOSIGNAL);
        if (n > 0) {
            m_out.erase(0, static_cast<std::size_t>(n));
            continue;
        }
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            m_gateway.world().setFdEvents(m_fd, POLLIN | POLLOUT);
            return;
        }
        // The peer is gone; what it asked for is lost with it.
        m_out.clear();
        return;
    }
    m_gateway.world().setFdEvents(m_fd, POLLIN);
}

} // namespace ose
