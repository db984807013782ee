#pragma once
// Signals of the node platform's name server "ose_ns", where a process
// publishes a service name that clients look up. The add-service number and
// its name field are fixed by the platform: the name with its NUL in a field
// of (length + 4) rounded down to a multiple of 4 bytes, the signal 8 bytes
// longer than the field. This platform puts the field's size in the word at
// offset 4, so that the server need trust no terminator. Replies and the
// look-up are this platform's own.

#include "ose/BigEndian.h"
#include "ose/Signal.h"

#include <cstdint>
#include <string>

namespace name_server {

inline constexpr const char* kServerName = "ose_ns";
// The hunt signal with which a client waits for the name server.
inline constexpr ose::SIGSELECT NS_HUNT_SIG = 13;

inline constexpr ose::SIGSELECT NS_ADD_SERVICE = 31600;
inline constexpr ose::SIGSELECT NS_ADD_SERVICE_REPLY = 31601;
inline constexpr ose::SIGSELECT NS_FIND_SERVICE = 31602;
inline constexpr ose::SIGSELECT NS_FIND_SERVICE_REPLY = 31603;

// The longest name the server takes.
inline constexpr std::size_t kMaxNameLength = 255;

// NS_ADD_SERVICE and NS_FIND_SERVICE: this header, then the name field.
struct NS_SERVICE_S {
    ose::be_u32 sigNo;
    ose::be_u32 fieldSize;
};
OSE_SIGNAL_LAYOUT(NS_SERVICE_S, 8);

enum class NsResult : std::uint32_t {
    Done = 0,
    Taken = 1,     // add: another living process has the name
    NotFound = 2,  // find: nobody has the name
    BadRequest = 3 // a field that does not hold a terminated name
};

// NS_ADD_SERVICE_REPLY and NS_FIND_SERVICE_REPLY.
struct NS_SERVICE_REPLY_S {
    ose::be_u32 sigNo;
    ose::be_u32 result; // NsResult
    ose::be_u32 pid;    // the process that has the name, 0 when none
};
OSE_SIGNAL_LAYOUT(NS_SERVICE_REPLY_S, 12);

// The size of the name field for a name of `length` characters.
inline std::uint32_t nameFieldSize(std::size_t length)
{
    return static_cast<std::uint32_t>((length + 4) & ~std::size_t{3});
}

// Allocates NS_ADD_SERVICE or NS_FIND_SERVICE for `name`.
ose::Signal* makeServiceSignal(ose::SIGSELECT sigNo, const std::string& name);

// The name in such a signal; false when the size word or the field does not
// hold a terminated name of 1 to kMaxNameLength characters.
bool readServiceName(const ose::Signal* signal, std::string& name);

} // namespace name_server
