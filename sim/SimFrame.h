#pragma once
// Builds the answer frames of the simulated units, byte by byte, as a unit
// puts them on the bus: message number, sequence number, big-endian fields.

#include <cstdint>
#include <initializer_list>
#include <string>

namespace sim {

class SimFrame {
public:
    void u8(std::int64_t value) { m_bytes.push_back(static_cast<char>(value & 0xFF)); }
    void i8(std::int64_t value) { u8(value); }
    void u16(std::int64_t value)
    {
        u8(value >> 8);
        u8(value);
    }
    void i16(std::int64_t value) { u16(value); }
    void text(const std::string& value, std::size_t size)
    {
        for (std::size_t i = 0; i < size; ++i) u8(i < value.size() ? static_cast<unsigned char>(value[i]) : 0);
    }
    const std::string& bytes() const { return m_bytes; }
    std::string& bytes() { return m_bytes; }

private:
    std::string m_bytes;
};

// Flags into a number: element k of `flags` goes to bit k.
inline std::uint32_t packFlags(std::initializer_list<bool> flags)
{
    std::uint32_t word = 0;
    unsigned bit = 0;
    for (bool flag : flags) {
        if (flag) word |= 1u << bit;
        ++bit;
    }
    return word;
}

// Reads the payload of a request; bytes beyond the end read as 0, and
// `complete()` tells whether the request was long enough.
class SimRequest {
public:
    SimRequest(const std::string& frame) : m_frame(frame) {}
    std::uint8_t message() const { return byteAt(0); }
    std::uint8_t sequence() const { return byteAt(1); }
    std::uint8_t u8() { return byteAt(m_position++); }
    std::int8_t i8() { return static_cast<std::int8_t>(u8()); }
    std::uint16_t u16()
    {
        const std::uint16_t high = u8();
        return static_cast<std::uint16_t>((high << 8) | u8());
    }
    std::int16_t i16() { return static_cast<std::int16_t>(u16()); }
    bool complete() const { return m_position <= m_frame.size(); }
    std::size_t size() const { return m_frame.size(); }

private:
    std::uint8_t byteAt(std::size_t at) const
    {
        return at < m_frame.size() ? static_cast<std::uint8_t>(m_frame[at]) : 0;
    }
    const std::string& m_frame;
    std::size_t m_position = 2;
};

} // namespace sim
