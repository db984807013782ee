#pragma once
// Big-endian field types for signal layouts.
//
// A signal is declared as a struct of these fields; the struct is then its
// own wire format: it has alignment 1 and no padding, each field converts on
// read and write, and a static_assert pins its size:
//
//   struct SSC_TIMER_EXPIRED_S {
//       ose::be_u32 sigNo;
//       ose::be_u32 timerRef;
//   };
//   OSE_SIGNAL_LAYOUT(SSC_TIMER_EXPIRED_S, 8);

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace ose {

template <typename T>
class BigEndian {
    static_assert(std::is_arithmetic_v<T>, "big-endian fields hold numbers");

public:
    BigEndian() = default;
    BigEndian(T value) { set(value); } // NOLINT: implicit like the number it holds

    operator T() const { return get(); } // NOLINT
    BigEndian& operator=(T value)
    {
        set(value);
        return *this;
    }

    T get() const
    {
        Raw raw = 0;
        for (unsigned char byte : m_bytes) raw = static_cast<Raw>((raw << 8) | byte);
        return std::bit_cast<T>(raw);
    }
    void set(T value)
    {
        Raw raw = std::bit_cast<Raw>(value);
        for (std::size_t i = sizeof(T); i-- > 0;) {
            m_bytes[i] = static_cast<unsigned char>(raw & 0xFFu);
            raw = static_cast<Raw>(raw >> 8);
        }
    }

private:
    using Raw = std::conditional_t<sizeof(T) == 1, std::uint8_t,
                std::conditional_t<sizeof(T) == 2, std::uint16_t,
                std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>>>;
    unsigned char m_bytes[sizeof(T)];
};

using be_u8 = std::uint8_t;
using be_i8 = std::int8_t;
using be_u16 = BigEndian<std::uint16_t>;
using be_i16 = BigEndian<std::int16_t>;
using be_u32 = BigEndian<std::uint32_t>;
using be_i32 = BigEndian<std::int32_t>;
using be_u64 = BigEndian<std::uint64_t>;
using be_i64 = BigEndian<std::int64_t>;
using be_f32 = BigEndian<float>;

static_assert(sizeof(be_u32) == 4 && alignof(be_u32) == 1);

// Reads and writes of big-endian fields in raw bytes, for code that walks a
// buffer (frames of the gateway, variable parts of signals).
inline std::uint32_t loadBe32(const void* p)
{
    const auto* b = static_cast<const unsigned char*>(p);
    return (std::uint32_t{b[0]} << 24) | (std::uint32_t{b[1]} << 16) | (std::uint32_t{b[2]} << 8) | b[3];
}
inline void storeBe32(void* p, std::uint32_t v)
{
    auto* b = static_cast<unsigned char*>(p);
    b[0] = static_cast<unsigned char>(v >> 24);
    b[1] = static_cast<unsigned char>(v >> 16);
    b[2] = static_cast<unsigned char>(v >> 8);
    b[3] = static_cast<unsigned char>(v);
}
inline std::uint16_t loadBe16(const void* p)
{
    const auto* b = static_cast<const unsigned char*>(p);
    return static_cast<std::uint16_t>((b[0] << 8) | b[1]);
}
inline void storeBe16(void* p, std::uint16_t v)
{
    auto* b = static_cast<unsigned char*>(p);
    b[0] = static_cast<unsigned char>(v >> 8);
    b[1] = static_cast<unsigned char>(v);
}

} // namespace ose

// Pins a signal struct to its wire size and checks that it is a plain layout.
#define OSE_SIGNAL_LAYOUT(Type, size)                                                   \
    static_assert(sizeof(Type) == (size), #Type " must be " #size " bytes on the wire"); \
    static_assert(alignof(Type) == 1, #Type " must have no alignment padding");         \
    static_assert(std::is_standard_layout_v<Type> && std::is_trivially_copyable_v<Type>, \
                  #Type " must be a plain layout")
