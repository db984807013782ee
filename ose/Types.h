#pragma once
// The kernel's basic types, with the names the system was written against.

#include <cstddef>
#include <cstdint>

namespace ose {

using PROCESS = std::uint32_t;   // process id; 0 is no process
using SIGSELECT = std::uint32_t; // signal number
using OSBUFSIZE = std::uint32_t; // signal size in bytes
using OSTIME = std::uint32_t;    // milliseconds
using OSTICK = std::uint32_t;    // kernel ticks of 1 ms, wrapping
using OSPRIORITY = std::uint8_t; // 0 is the highest, 31 the lowest
using OSBOOLEAN = bool;
using OSUSER = std::uint32_t;

constexpr OSPRIORITY kLowestPriority = 31;

enum class ProcessType : std::uint32_t {
    Prioritized = 0, // OS_PRI_PROC
    Phantom = 512,   // OS_PHANTOM: no code, redirects its signals
};

// The signal an attach gives back when the caller did not give one.
constexpr SIGSELECT OS_ATTACH_SIG = 252;

// A redirection table: entry 0 holds the number of entries (itself included)
// in `sig` and the default target in `pid`; further entries send one signal
// number to their own target.
struct RedirEntry {
    SIGSELECT sig;
    PROCESS pid;
};

// Handle of an attach, for detach.
using OSATTREF = std::uint64_t;

// Handle of a time-out request, for cancel and restart.
struct OSTMOREF {
    std::uint64_t when = 0;
    std::uint64_t seq = 0; // 0: no request
    std::uint32_t slot = 0; // where the world keeps it, checked against seq
};

} // namespace ose
