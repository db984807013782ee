#pragma once
// The inter-node protocol's climate signals, as they stand on the wire:
// a secondary node subscribes to the primary's climate system and sends its
// air flow demand; the primary answers with the air flow it runs. All
// big-endian; the climate server "ssc_climate_control_server" serves them.

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <cstdint>

namespace apc {

inline constexpr ose::SIGSELECT APC_CLIMATE_SUBSCRIBE_REQ = 0x170000F;
inline constexpr ose::SIGSELECT APC_CLIMATE_SUBSCRIBE_CFM = 0x1700010;
inline constexpr ose::SIGSELECT APC_CLIMATE_SYSTEM_CONFIG_IND = 0x1700012;
inline constexpr ose::SIGSELECT APC_AIRFLOW_REQ = 0x1700013;
inline constexpr ose::SIGSELECT APC_AIRFLOW_CFM = 0x1700014;
inline constexpr ose::SIGSELECT APC_AIRFLOW_REJ = 0x1700015;

// A demand outside this range is refused.
inline constexpr std::int16_t kMaxDemand = 400;
inline constexpr std::uint16_t kDemandOutOfRange = 2;

// APC_CLIMATE_SUBSCRIBE_REQ and its CFM.
struct APC_CLIMATE_SUBSCRIBE_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 serverRef;
};
OSE_SIGNAL_LAYOUT(APC_CLIMATE_SUBSCRIBE_S, 12);

struct APC_CLIMATE_SYSTEM_CONFIG_IND_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 serverRef;
    ose::be_u16 climateSystem;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(APC_CLIMATE_SYSTEM_CONFIG_IND_S, 16);

// APC_AIRFLOW_REQ (demand), its CFM and REJ (the air flow; the REJ's error
// at 14).
struct APC_AIRFLOW_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 serverRef; // the secondary node's FuncInst on the primary
    ose::be_i16 airflow;
    ose::be_u16 error;
};
OSE_SIGNAL_LAYOUT(APC_AIRFLOW_S, 16);

} // namespace apc
