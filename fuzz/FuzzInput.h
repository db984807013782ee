#pragma once
// Cuts a fuzzer's input into pieces, each led by a big-endian u16 length
// (cut short at the end of the input), so that one input can carry several
// signals or documents.

#include <cstddef>
#include <cstdint>
#include <string_view>

class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    bool empty() const { return m_offset >= m_size; }

    std::uint8_t byte()
    {
        return m_offset < m_size ? m_data[m_offset++] : 0;
    }

    std::string_view piece()
    {
        std::size_t length = std::size_t{byte()} << 8;
        length |= byte();
        if (length > m_size - m_offset) length = m_size - m_offset;
        std::string_view out(reinterpret_cast<const char*>(m_data + m_offset), length);
        m_offset += length;
        return out;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_offset = 0;
};
