#pragma once
// The signals between the core and the EC bus server "A4ciServer". Each
// struct is the wire layout of its signal (big-endian, no padding).

#include "hwu/PpMessages.h"
#include "ose/Signal.h"

namespace a4ci {

inline constexpr const char* kServerName = "A4ciServer";

inline constexpr ose::SIGSELECT A4CI_HUNT_SIG = 0x1705009;
inline constexpr ose::SIGSELECT A4CI_CONN_ESTABLISH_REQ = 0x100fd00;
inline constexpr ose::SIGSELECT A4CI_CONN_ESTABLISH_CFM = 0x100fd01;
inline constexpr ose::SIGSELECT A4CI_CONN_ESTABLISH_REJ = 0x100fd02;
inline constexpr ose::SIGSELECT A4CI_DATA_FWD = 0x100fd03;
inline constexpr ose::SIGSELECT A4CI_DATA_REQ = 0x100fd04;
inline constexpr ose::SIGSELECT A4CI_DATA_CFM = 0x100fd05;
inline constexpr ose::SIGSELECT A4CI_DATA_REJ = 0x100fd06;

inline constexpr std::uint16_t kProtocolVersion = 1;

// Error codes of A4CI_DATA_REJ.
inline constexpr std::uint16_t BCP_A4CI_UNEXPECTED_PARAMETER_VALUE = 2;
inline constexpr std::uint16_t BCP_A4CI_OTHER_ERROR = 6;
inline constexpr std::uint16_t BCP_A4CI_TIME_OUT = 257;

struct A4CI_HUNT_S {
    ose::be_u32 sigNo;
};
OSE_SIGNAL_LAYOUT(A4CI_HUNT_S, 4);

struct A4CI_CONN_ESTABLISH_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u16 protocolVersion;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(A4CI_CONN_ESTABLISH_REQ_S, 8);

// The answers to a connection request carry nothing that the core reads.
struct A4CI_CONN_ESTABLISH_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u16 protocolVersion;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(A4CI_CONN_ESTABLISH_CFM_S, 8);

// A4CI_DATA_REQ and A4CI_DATA_FWD. A length of 0 in a request asks the
// server for the answer to the previous request again.
struct A4CI_DATA_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u16 port;
    ose::be_u8 address;
    ose::be_u8 unused;
    ose::be_u16 length;
    ose::be_u8 data[pp::BCP_A4CI_MAX_DATA_SIZE];
};
OSE_SIGNAL_LAYOUT(A4CI_DATA_REQ_S, 88);

// The head of A4CI_DATA_CFM; the answer frame follows at offset 10 and the
// signal may be longer or shorter than 88 bytes, so the frame is read
// within the signal's size only.
struct A4CI_DATA_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u16 port;
    ose::be_u8 address;
    ose::be_u8 unused;
    ose::be_u16 length;
};
OSE_SIGNAL_LAYOUT(A4CI_DATA_CFM_S, 10);
inline constexpr ose::OSBUFSIZE kDataCfmHeadSize = sizeof(A4CI_DATA_CFM_S);

struct A4CI_DATA_REJ_S {
    ose::be_u32 sigNo;
    ose::be_u16 errorCode;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(A4CI_DATA_REJ_S, 8);

} // namespace a4ci
