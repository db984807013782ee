#pragma once
// Signals between a load module and the node platform's RPU server
// "Vanto_cliServer_proc", which gives the load module its active or passive
// role and restarts it on request. The numbers and the fields of the
// load module's signals are fixed by the platform; the management signals
// at 0x10290 and above are this platform's own, for operators and tests.

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <cstdint>

namespace vanto_cli {

inline constexpr const char* kServerName = "Vanto_cliServer_proc";
inline constexpr std::size_t kIdentitySize = 30;

inline constexpr ose::SIGSELECT VANTO_CLI_RESTART_PGM_REQ = 0x10268;
inline constexpr ose::SIGSELECT VANTO_CLI_GET_RPU_CFM = 0x10269;
inline constexpr ose::SIGSELECT VANTO_CLI_ACTIVE_RPU = 0x1026A;
inline constexpr ose::SIGSELECT VANTO_CLI_PASSIVE_RPU = 0x1026B;
inline constexpr ose::SIGSELECT VANTO_CLI_GET_RPU_REQ = 0x1026F;
inline constexpr ose::SIGSELECT VANTO_CLI_REGISTER_RPU_REQ = 0x10270;
inline constexpr ose::SIGSELECT VANTO_CLI_ADD_RPU_IND = 0x10274;
inline constexpr ose::SIGSELECT VANTO_CLI_REMOVE_RPU_IND = 0x10275;
inline constexpr ose::SIGSELECT VANTO_CLI_SHUTDOWN_RPU = 0x10278;

struct VANTO_CLI_RESTART_PGM_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 rpuId;
    char identity[kIdentitySize];
    char pad[2];
};
OSE_SIGNAL_LAYOUT(VANTO_CLI_RESTART_PGM_REQ_S, 40);

struct VANTO_CLI_GET_RPU_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 result; // 0 success
    ose::be_u32 numberOfRpu;
    ose::be_u32 rpuId;
};
OSE_SIGNAL_LAYOUT(VANTO_CLI_GET_RPU_CFM_S, 16);

// VANTO_CLI_ACTIVE_RPU, VANTO_CLI_PASSIVE_RPU and VANTO_CLI_SHUTDOWN_RPU.
struct VANTO_CLI_RPU_S {
    ose::be_u32 sigNo;
    ose::be_u32 rpuId;
};
OSE_SIGNAL_LAYOUT(VANTO_CLI_RPU_S, 8);

struct VANTO_CLI_GET_RPU_REQ_S {
    ose::be_u32 sigNo;
    char identity[kIdentitySize];
    char pad[2];
};
OSE_SIGNAL_LAYOUT(VANTO_CLI_GET_RPU_REQ_S, 36);

struct VANTO_CLI_REGISTER_RPU_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 rpuId;
    char identity[kIdentitySize];
    char pad[2];
};
OSE_SIGNAL_LAYOUT(VANTO_CLI_REGISTER_RPU_REQ_S, 40);

struct VANTO_CLI_ADD_RPU_IND_S {
    ose::be_u32 sigNo;
    ose::be_u32 numberOfRpu;
    ose::be_u32 rpuId;
};
OSE_SIGNAL_LAYOUT(VANTO_CLI_ADD_RPU_IND_S, 12);

struct VANTO_CLI_REMOVE_RPU_IND_S {
    ose::be_u32 sigNo;
};
OSE_SIGNAL_LAYOUT(VANTO_CLI_REMOVE_RPU_IND_S, 4);

// --- the server's management signals --------------------------------------

// Reads the server's state.
inline constexpr ose::SIGSELECT VANTO_RPU_STATUS_REQ = 0x10290;
inline constexpr ose::SIGSELECT VANTO_RPU_STATUS_CFM = 0x10291;
// Gives the load module another role: a registered one is told and asks
// for a restart; the role holds for every later registration.
inline constexpr ose::SIGSELECT VANTO_RPU_SET_ROLE_REQ = 0x10292;
inline constexpr ose::SIGSELECT VANTO_RPU_SET_ROLE_CFM = 0x10293;
// Tells the registered load module to shut down, which it answers with a
// restart request.
inline constexpr ose::SIGSELECT VANTO_RPU_SHUTDOWN_REQ = 0x10294;
inline constexpr ose::SIGSELECT VANTO_RPU_SHUTDOWN_CFM = 0x10295;
// Makes the RPU known when the server started without one; load modules
// that asked meanwhile are told by VANTO_CLI_ADD_RPU_IND.
inline constexpr ose::SIGSELECT VANTO_RPU_ADD_REQ = 0x10296;
inline constexpr ose::SIGSELECT VANTO_RPU_ADD_CFM = 0x10297;
// The server's own attach signal: the registered load module has died.
inline constexpr ose::SIGSELECT VANTO_RPU_CLIENT_DOWN_IND = 0x10298;

enum class RpuRole : std::uint32_t {
    Passive = 0,
    Active = 1,
};

enum class RpuResult : std::uint32_t {
    Done = 0,
    NoneRegistered = 1, // shutdown: no load module to tell
    BadRequest = 2,     // a role other than 0 or 1, a short signal
    AlreadyKnown = 3,   // add: the RPU is known already
};

// STATUS, SHUTDOWN and ADD requests: the number alone.
struct VANTO_RPU_REQ_S {
    ose::be_u32 sigNo;
};
OSE_SIGNAL_LAYOUT(VANTO_RPU_REQ_S, 4);

struct VANTO_RPU_STATUS_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 numberOfRpu;
    ose::be_u32 rpuId;
    ose::be_u32 role;       // RpuRole
    ose::be_u32 registered; // 1 when a load module is registered
    ose::be_u32 clientPid;  // its process, 0 when none
    ose::be_u32 restarts;   // restarts done since the server started
};
OSE_SIGNAL_LAYOUT(VANTO_RPU_STATUS_CFM_S, 28);

struct VANTO_RPU_SET_ROLE_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 role; // RpuRole
};
OSE_SIGNAL_LAYOUT(VANTO_RPU_SET_ROLE_REQ_S, 8);

// The answer of SET_ROLE, SHUTDOWN and ADD.
struct VANTO_RPU_RESULT_S {
    ose::be_u32 sigNo;
    ose::be_u32 result; // RpuResult
};
OSE_SIGNAL_LAYOUT(VANTO_RPU_RESULT_S, 8);

} // namespace vanto_cli
