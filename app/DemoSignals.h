#pragma once
// Signals of the demonstration processes that ssc-node starts with --demo:
// an echo server that outside programs and tests can talk to.

#include "ose/BigEndian.h"

#include <type_traits>

namespace demo {

// Any other signal sent to "echo" comes back to its sender unchanged.
constexpr std::uint32_t DEMO_DELAY_REQ = 0x00DE0001;  // answered after `ms` of world time
constexpr std::uint32_t DEMO_DELAY_CFM = 0x00DE0002;
constexpr std::uint32_t DEMO_HUNT_REQ = 0x00DE0003;   // answered when the name exists
constexpr std::uint32_t DEMO_HUNT_CFM = 0x00DE0004;
constexpr std::uint32_t DEMO_DIE_REQ = 0x00DE0005;    // echo ends itself

struct DEMO_DELAY_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 ms;
};
OSE_SIGNAL_LAYOUT(DEMO_DELAY_REQ_S, 8);

struct DEMO_DELAY_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 ms;
    ose::be_u64 worldTimeMs; // when the answer was sent
};
OSE_SIGNAL_LAYOUT(DEMO_DELAY_CFM_S, 16);

struct DEMO_HUNT_REQ_S {
    ose::be_u32 sigNo;
    char name[64]; // NUL-terminated
};
OSE_SIGNAL_LAYOUT(DEMO_HUNT_REQ_S, 68);

struct DEMO_HUNT_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 pid;
};
OSE_SIGNAL_LAYOUT(DEMO_HUNT_CFM_S, 8);

} // namespace demo
