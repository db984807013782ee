#pragma once
// Signals of the climate control interface (CCI), as they stand on the
// wire: big-endian fields at fixed offsets. Other software on the node
// registers its temperature sensors with the server
// "ssc_climate_control_server" and sends their measurements.

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <cstdint>

namespace cci {

inline constexpr const char* kServerName = "ssc_climate_control_server";

inline constexpr ose::SIGSELECT CCI_CONN_ESTABLISH_REQ = 0x1704201;
inline constexpr ose::SIGSELECT CCI_CONN_ESTABLISH_CFM = 0x1704202;
inline constexpr ose::SIGSELECT CCI_CONN_ESTABLISH_REJ = 0x1704203;
inline constexpr ose::SIGSELECT CCI_CAPABILITY_REQ = 0x1704204;
inline constexpr ose::SIGSELECT CCI_CAPABILITY_CFM = 0x1704205;
inline constexpr ose::SIGSELECT CCI_CAPABILITY_REJ = 0x1704206;
inline constexpr ose::SIGSELECT CCI_REGISTER_TEMP_MEAS_REQ = 0x1704207;
inline constexpr ose::SIGSELECT CCI_REGISTER_TEMP_MEAS_CFM = 0x1704208;
inline constexpr ose::SIGSELECT CCI_REGISTER_TEMP_MEAS_REJ = 0x1704209;
inline constexpr ose::SIGSELECT CCI_DEREGISTER_TEMP_MEAS_REQ = 0x170420A;
inline constexpr ose::SIGSELECT CCI_DEREGISTER_TEMP_MEAS_CFM = 0x170420B;
inline constexpr ose::SIGSELECT CCI_TEMP_MEAS_FWD = 0x170420C;
inline constexpr ose::SIGSELECT CCI_TEMP_MEAS_REJ = 0x170420D;

inline constexpr std::uint16_t kRevision = 1;
inline constexpr std::uint16_t kMaxRevisionsLooked = 5;
inline constexpr std::uint16_t kMaxSensors = 10;
inline constexpr std::uint16_t kMaxHwType = 4;
inline constexpr std::size_t kMaxCapabilitySize = 512;
// REJ reasons.
inline constexpr std::uint32_t kRevisionNotSupported = 1;
inline constexpr std::uint32_t kHwTypeNotSupported = 2;
inline constexpr std::uint32_t kTooManySensors = 3;
inline constexpr std::uint32_t kCapabilitiesTooBig = 3;

struct CCI_HEADER_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
};
OSE_SIGNAL_LAYOUT(CCI_HEADER_S, 8);

// Followed by `count` revisions, u16 each.
struct CCI_CONN_ESTABLISH_REQ_S {
    CCI_HEADER_S header;
    ose::be_u16 count;
};
OSE_SIGNAL_LAYOUT(CCI_CONN_ESTABLISH_REQ_S, 10);

struct CCI_CONN_ESTABLISH_CFM_S {
    CCI_HEADER_S header;
    ose::be_u16 revision;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(CCI_CONN_ESTABLISH_CFM_S, 12);

// A REJ with a reason: CCI_CONN_ESTABLISH_REJ, CCI_CAPABILITY_REJ and
// CCI_REGISTER_TEMP_MEAS_REJ.
struct CCI_REJ_S {
    CCI_HEADER_S header;
    ose::be_u32 reason;
};
OSE_SIGNAL_LAYOUT(CCI_REJ_S, 12);

// Followed by `count` rows of 6 bytes, each with its 16-bit length at its
// offset 2 (signal offset 12 + 6 i).
struct CCI_CAPABILITY_REQ_S {
    CCI_HEADER_S header;
    ose::be_u16 count;
};
OSE_SIGNAL_LAYOUT(CCI_CAPABILITY_REQ_S, 10);

struct CCI_CAPABILITY_CFM_S {
    CCI_HEADER_S header;
    ose::be_u16 result;
    ose::be_u16 unused;
    ose::be_u32 unused2;
};
OSE_SIGNAL_LAYOUT(CCI_CAPABILITY_CFM_S, 16);

// One sensor of a registration; temperatures in hundredths of a degree,
// the gain times 100, the time constant times 10.
struct CCI_SENSOR_S {
    ose::be_i16 maxTemp;
    ose::be_i16 gain;
    ose::be_i16 tau;
};
OSE_SIGNAL_LAYOUT(CCI_SENSOR_S, 6);

// Followed by `count` CCI_SENSOR_S.
struct CCI_REGISTER_TEMP_MEAS_REQ_S {
    CCI_HEADER_S header;
    ose::be_u16 hwType;
    ose::be_u16 count;
};
OSE_SIGNAL_LAYOUT(CCI_REGISTER_TEMP_MEAS_REQ_S, 12);

struct CCI_REGISTER_TEMP_MEAS_CFM_S {
    CCI_HEADER_S header;
    ose::be_u16 sampleTime;
    ose::be_u16 groupId;
};
OSE_SIGNAL_LAYOUT(CCI_REGISTER_TEMP_MEAS_CFM_S, 12);

struct CCI_DEREGISTER_TEMP_MEAS_REQ_S {
    CCI_HEADER_S header;
    ose::be_u16 groupId;
};
OSE_SIGNAL_LAYOUT(CCI_DEREGISTER_TEMP_MEAS_REQ_S, 10);

// CCI_DEREGISTER_TEMP_MEAS_CFM and CCI_TEMP_MEAS_REJ.
struct CCI_GROUP_S {
    CCI_HEADER_S header;
    ose::be_u16 groupId;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(CCI_GROUP_S, 12);

// Followed by `count` temperatures, i16 hundredths each, in the order of the
// registration's rows.
struct CCI_TEMP_MEAS_FWD_S {
    CCI_HEADER_S header;
    ose::be_u16 groupId;
    ose::be_u16 count;
};
OSE_SIGNAL_LAYOUT(CCI_TEMP_MEAS_FWD_S, 12);

} // namespace cci
