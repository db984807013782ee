#pragma once
// The frames between outside programs and a node's gateway. The layout is
// described for users in docs/gateway-protocol.md; change both together and
// raise kGatewayVersion when a frame changes.
//
// Every frame: u32 length (bytes after this field), u16 type, u16 flags,
// u32 requestId, then the payload. All numbers big-endian.

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace ose::gateway {

constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kHeaderSize = 12;                   // length, type, flags, requestId
constexpr std::uint32_t kMinLength = kHeaderSize - 4;     // the length field counts what follows it
constexpr std::uint32_t kMaxSignalSize = 16u * 1024u * 1024u;
constexpr std::uint32_t kMaxLength = kMinLength + 8 + kMaxSignalSize;
constexpr std::size_t kMaxNameLength = 255;
constexpr std::size_t kMaxTextLength = 4096;
constexpr std::uint32_t kWaitForever = 0xFFFFFFFFu;

enum class FrameType : std::uint16_t {
    // client to node
    Hello = 0x0001,
    Hunt = 0x0002,
    Send = 0x0003,
    Attach = 0x0004,
    Detach = 0x0005,
    Publish = 0x0006,
    Time = 0x0007,
    Advance = 0x0008,
    Trace = 0x0009,
    // node to client
    Welcome = 0x8001,
    HuntResult = 0x8002,
    Signal = 0x8003,
    Attached = 0x8004,
    Died = 0x8005,
    Done = 0x8006,
    TimeNow = 0x8007,
    Advanced = 0x8008,
    Error = 0x80FF,
};

enum class ErrorCode : std::uint32_t {
    Malformed = 1,     // the connection is closed
    UnknownType = 2,   // the connection is closed
    TooLarge = 3,      // the connection is closed
    BadVersion = 4,    // the connection is closed
    HelloFirst = 5,    // the connection is closed
    BadArgument = 6,
    NotVirtual = 7,
};

constexpr std::uint32_t kHelloHoldsTime = 1u << 0;
// SEND only: answer with DONE once the signal is sent (a refused SEND is
// answered with ERROR either way).
constexpr std::uint16_t kSendAcknowledge = 1u << 0;

// Builds one frame.
class FrameWriter {
public:
    FrameWriter(FrameType type, std::uint32_t requestId, std::uint16_t flags = 0)
    {
        m_bytes.resize(kHeaderSize);
        storeBe32(&m_bytes[4], (static_cast<std::uint32_t>(type) << 16) | flags);
        storeBe32(&m_bytes[8], requestId);
    }
    FrameWriter& u32(std::uint32_t value)
    {
        char raw[4];
        storeBe32(raw, value);
        m_bytes.append(raw, 4);
        return *this;
    }
    FrameWriter& u64(std::uint64_t value)
    {
        u32(static_cast<std::uint32_t>(value >> 32));
        return u32(static_cast<std::uint32_t>(value));
    }
    FrameWriter& bytes(const void* data, std::size_t size)
    {
        m_bytes.append(static_cast<const char*>(data), size);
        return *this;
    }
    FrameWriter& text(std::string_view value) { return bytes(value.data(), value.size()); }

    // The frame with its length filled in.
    std::string finish()
    {
        storeBe32(&m_bytes[0], static_cast<std::uint32_t>(m_bytes.size() - 4));
        return std::move(m_bytes);
    }

private:
    std::string m_bytes;
};

// Reads a frame's payload; every read checks what is left, so a short
// payload gives false instead of a read past its end.
class FrameReader {
public:
    FrameReader(const char* data, std::size_t size) : m_data(data), m_size(size) {}

    bool u32(std::uint32_t& value)
    {
        if (left() < 4) return false;
        value = loadBe32(m_data + m_offset);
        m_offset += 4;
        return true;
    }
    bool u64(std::uint64_t& value)
    {
        std::uint32_t high = 0;
        std::uint32_t low = 0;
        if (left() < 8 || !u32(high) || !u32(low)) return false;
        value = (std::uint64_t{high} << 32) | low;
        return true;
    }
    std::string_view rest()
    {
        std::string_view out(m_data + m_offset, left());
        m_offset = m_size;
        return out;
    }
    std::size_t left() const { return m_size - m_offset; }

private:
    const char* m_data;
    std::size_t m_size;
    std::size_t m_offset = 0;
};

// A name that a client may give: printable, without NUL, of bounded length.
inline bool isAcceptableName(std::string_view name, std::size_t maxLength = 1023)
{
    if (name.empty() || name.size() > maxLength) return false;
    for (unsigned char c : name)
        if (c < 0x20 || c == 0x7F) return false;
    return true;
}

} // namespace ose::gateway
