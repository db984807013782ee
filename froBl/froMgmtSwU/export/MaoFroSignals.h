#pragma once
// Signals between the management client and the object process: requests
// and confirmations with an XML body (the MAOFRO signals) and the
// indications. All fields are big-endian. An attribute block is a type, an
// element count, a zero, a length and then the text with its NUL; the length
// is (text length + 4) rounded down to a multiple of 4, and that many bytes
// of the text are carried.

#include "ose/BigEndian.h"
#include "ose/Signal.h"

#include <cstdint>
#include <string>

namespace maofro {

inline constexpr const char* kServiceName = "ZORV_SUP_SYS_CTRL_MGMT_SERVICE";

inline constexpr ose::SIGSELECT MAOFRO_IN_SERVICE_REQ = 0xB0021;
inline constexpr ose::SIGSELECT MAOFRO_IN_SERVICE_CFM = 0xB0022;
inline constexpr ose::SIGSELECT MAOFRO_NOTIFY_SUBSCRIBE_REQ2 = 0xB0024;
inline constexpr ose::SIGSELECT MAOFRO_CREATE_REQ = 0xB0061;
inline constexpr ose::SIGSELECT MAOFRO_CREATE_CFM = 0xB0062;
inline constexpr ose::SIGSELECT MAOFRO_DELETE_REQ = 0xB0063;
inline constexpr ose::SIGSELECT MAOFRO_DELETE_CFM = 0xB0064;
inline constexpr ose::SIGSELECT MAOFRO_GET_REQ = 0xB0065;
inline constexpr ose::SIGSELECT MAOFRO_GET_CFM = 0xB0066;
inline constexpr ose::SIGSELECT MAOFRO_SET_REQ = 0xB0067;
inline constexpr ose::SIGSELECT MAOFRO_SET_CFM = 0xB0068;
inline constexpr ose::SIGSELECT MAO_FRO_FAULT_IND = 0xB0070;
inline constexpr ose::SIGSELECT MAO_FRO_FAULT_CEASED_IND = 0xB0071;
inline constexpr ose::SIGSELECT MAO_FRO_EVENT_IND = 0xB0072;
inline constexpr ose::SIGSELECT MAOFRO_ACTION_NO_CFM_REQ = 0xB0073;
inline constexpr ose::SIGSELECT MAO_FRO_PARAMETER_CHD_IND = 0xB0074;
inline constexpr ose::SIGSELECT MAOFRO_ACTION_REQ = 0xB0077;
inline constexpr ose::SIGSELECT MAOFRO_ACTION_CFM = 0xB0078;
// The indication handler's attach signal: its client has died.
inline constexpr ose::SIGSELECT NC_IND_HND_MAO_FRO_ATTACH_IND = 0x1705101;

// Attribute block types.
inline constexpr std::uint32_t kXmlText = 21;
inline constexpr std::uint32_t kErrorText = 9;

struct ATTRIBUTE_BLOCK_S {
    ose::be_u32 type;
    ose::be_u16 elementCount;
    ose::be_u16 zero;
    ose::be_u32 length; // bytes of text that follow
};
OSE_SIGNAL_LAYOUT(ATTRIBUTE_BLOCK_S, 12);

// The length field, and the bytes carried, for a text of `length` characters.
inline std::uint32_t blockTextSize(std::size_t length)
{
    return static_cast<std::uint32_t>((length + 4) & ~std::size_t{3});
}

} // namespace maofro
