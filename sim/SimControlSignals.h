#pragma once
// Signals that control the simulated bus from outside: set and read a
// unit's values, and make it misbehave. They go to the process that plays
// "A4ciServer" and are answered to their sender. Layouts are big-endian;
// see docs/gateway-protocol.md.

#include "ose/Signal.h"

namespace simctl {

inline constexpr ose::SIGSELECT SIM_SET_VALUE_REQ = 0x1707001;
inline constexpr ose::SIGSELECT SIM_SET_VALUE_CFM = 0x1707002;
inline constexpr ose::SIGSELECT SIM_SET_VALUE_REJ = 0x1707003;
inline constexpr ose::SIGSELECT SIM_GET_VALUE_REQ = 0x1707004;
inline constexpr ose::SIGSELECT SIM_GET_VALUE_CFM = 0x1707005;
inline constexpr ose::SIGSELECT SIM_GET_VALUE_REJ = 0x1707006;
inline constexpr ose::SIGSELECT SIM_FAULT_REQ = 0x1707007;
inline constexpr ose::SIGSELECT SIM_FAULT_CFM = 0x1707008;
inline constexpr ose::SIGSELECT SIM_FAULT_REJ = 0x1707009;

inline constexpr ose::SIGSELECT SIM_RAW_ANSWER_REQ = 0x170700A;
inline constexpr ose::SIGSELECT SIM_RAW_ANSWER_CFM = 0x170700B;
inline constexpr ose::SIGSELECT SIM_RAW_ANSWER_REJ = 0x170700C;

inline constexpr std::size_t kNameSize = 40;
inline constexpr std::size_t kRawAnswerSize = 128;
inline constexpr std::size_t kReasonSize = 80;

// SIM_SET_VALUE_REQ and SIM_GET_VALUE_REQ (value not read). The name is
// NUL-terminated within its field.
struct SIM_VALUE_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u16 port;
    ose::be_u8 address;
    ose::be_u8 unused;
    ose::be_i32 value;
    char name[kNameSize];
};
OSE_SIGNAL_LAYOUT(SIM_VALUE_REQ_S, 52);

// SIM_SET_VALUE_CFM, SIM_GET_VALUE_CFM, SIM_FAULT_CFM: the value now held
// (0 for a fault).
struct SIM_VALUE_CFM_S {
    ose::be_u32 sigNo;
    ose::be_i32 value;
};
OSE_SIGNAL_LAYOUT(SIM_VALUE_CFM_S, 8);

// Every REJ: why, as NUL-terminated text.
struct SIM_REJ_S {
    ose::be_u32 sigNo;
    char reason[kReasonSize];
};
OSE_SIGNAL_LAYOUT(SIM_REJ_S, 84);

enum class FaultKind : std::uint16_t {
    Clear = 0,       // every fault of the unit off
    Silent = 1,      // the unit does not answer; the server rejects with a time-out
    Late = 2,        // answers come `value` ms late
    Empty = 3,       // answers of length 0
    A4ciReject = 4,  // A4CI_DATA_REJ with error code `value`
    PpReject = 5,    // PP reject with cause byte `value`
    NoAnswer = 6,    // the server answers nothing at all
    StartFlag = 7,   // the start flag comes on
    Replace = 8,     // another unit: serial number "SIM" and `value` in 8 digits, then a restart
    Restart = 9,     // the unit restarts: deaf for its boot time, then the start flag
    NoProductData = 10, // the unit refuses product data requests with cause byte `value`
    // Events of the plant (a site with <plant>); port and address are not read.
    MainsLoss = 11,
    MainsReturn = 12,
    // `value` names the fans: a group g (1 to 4) for all its fans, or 10g + f
    // for fan f (1 to 4) of group g.
    FanFailure = 13,    // the fans stand still, and the SCU reports their group
    FanRepair = 14,     // the fans work again (after a failure or a block)
    FanBlocked = 17,    // the fans turn but move no air; the SCU sees nothing
    Ambient = 15,       // the mean ambient temperature becomes `value` degrees
    BatteryCellFault = 16, // one cell of the string fails: 2.1 V less, twice the resistance
    // FanBlocked = 17 is above, with the fans.
};

// `count`: how many requests the fault affects, 0 for all until cleared.
struct SIM_FAULT_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u16 port;
    ose::be_u8 address;
    ose::be_u8 unused;
    ose::be_u16 kind;
    ose::be_u16 unused2;
    ose::be_u32 count;
    ose::be_i32 value;
};
OSE_SIGNAL_LAYOUT(SIM_FAULT_REQ_S, 20);

// The unit's next answer, whatever the request: `length` bytes of `frame`
// sent as they stand (malformed answers on purpose). Several queue up.
struct SIM_RAW_ANSWER_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u16 port;
    ose::be_u8 address;
    ose::be_u8 unused;
    ose::be_u16 length;
    ose::be_u16 unused2;
    ose::be_u8 frame[kRawAnswerSize];
};
OSE_SIGNAL_LAYOUT(SIM_RAW_ANSWER_REQ_S, 140);

} // namespace simctl
