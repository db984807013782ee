#pragma once
// The kernel calls, with the names and the contract the system was written
// against. They act on the world running on the calling thread and on the
// process that calls them. Bad use (a NIL or freed buffer, a dead addressee,
// a selector whose count exceeds its numbers) is traced in the group "ose"
// and has a defined result; it never brings the world down.

#include "ose/Signal.h"
#include "ose/Types.h"

#include <functional>
#include <span>
#include <string>

namespace ose {

// --- signals ------------------------------------------------------------------
// A buffer of `size` bytes, zero-filled, with the number set. A size under 4
// is traced and raised to 4; a size over the largest buffer gives NIL.
Signal* alloc(OSBUFSIZE size, SIGSELECT sigNo);
// Frees the buffer and sets the caller's pointer to NIL. A NIL pointer or a
// buffer freed already is traced and ignored.
void free_buf(Signal** signal);
// Passes the buffer to `to`; the caller's pointer becomes NIL.
void send(Signal** signal, PROCESS to);
// The same with a given sender, for redirection and proxies.
void send_w_s(Signal** signal, PROCESS from, PROCESS to);

Signal* receive(Selector selector);
Signal* receive_w_tmo(OSTIME timeoutMs, Selector selector);
// Only signals sent by `from`; kWaitForever waits without end.
Signal* receive_from(OSTIME timeoutMs, Selector selector, PROCESS from);

PROCESS sender(Signal* const* signal);
PROCESS addressee(Signal* const* signal);
OSBUFSIZE sigsize(Signal* const* signal);

// A typed view of a received signal, or NIL when it is shorter than T: no
// length that arrives from outside is trusted.
template <typename T>
const T* signal_cast(const Signal* signal)
{
    if (signal == nullptr) return nullptr;
    Signal* mutableSignal = const_cast<Signal*>(signal);
    return sigsize(&mutableSignal) >= sizeof(T) ? reinterpret_cast<const T*>(signal) : nullptr;
}
template <typename T>
T* alloc_as(SIGSELECT sigNo)
{
    return reinterpret_cast<T*>(alloc(sizeof(T), sigNo));
}

// --- processes ------------------------------------------------------------
PROCESS create_process(ProcessType type, const char* name, std::function<void()> entry, OSBUFSIZE stackSize,
                       OSPRIORITY priority, std::span<const RedirEntry> redirection = {});
void start(PROCESS pid);
void kill_proc(PROCESS pid);
PROCESS current_process();
// The name of a living process; false when there is none.
bool get_pid_name(PROCESS pid, std::string& name);
// The process a signal of that number sent to `pid` would reach: phantoms'
// redirections are followed, a proxy stands for the process behind its link.
// 0 when the signal would be dropped (no such process, a phantom that
// redirects nowhere). Lets a caller that waits for a reply know when none
// can come.
PROCESS receiver_of(PROCESS pid, SIGSELECT sigNo);
void delay(OSTIME ms);

// --- names and supervision ----------------------------------------------------
// Finds `name` on the caller's node ("<link path>NAME" across a link). With a
// hunt signal, that signal is sent from the process found: now if it exists,
// else when it appears. The caller's pointer becomes NIL. `user` is kept for
// the kernel's signature and not used.
OSBOOLEAN hunt(const char* name, OSUSER user, PROCESS* pid, Signal** huntSignal);
// The signal (OS_ATTACH_SIG when NIL is given) comes back from `pid` when
// that process dies or the link it stands behind goes down; at once if it is
// dead already.
OSATTREF attach(Signal** signal, PROCESS pid);
void detach(OSATTREF* ref);

// --- time -------------------------------------------------------------------
OSTICK get_ticks();
// Milliseconds since the world began, without wrapping.
std::uint64_t get_time_ms();
// The signal is sent back to the caller after `ms`.
OSTMOREF request_tmo(OSTIME ms, Signal** signal);
// Cancels a pending request and gives its signal back; NIL when it expired.
Signal* cancel_tmo(OSTMOREF* ref);
// Moves a pending request to `ms` from now; false when it expired.
bool restart_tmo(OSTMOREF* ref, OSTIME ms);

struct DateTime {
    std::uint16_t year;   // full year
    std::uint16_t month;  // 1..12
    std::uint16_t day;
    std::uint16_t hour;
    std::uint16_t minute;
};
DateTime rtc_get_date_time();
// Calendar time in seconds since 1970 divided by 60, rounded down.
std::uint32_t rtc_get_minutes();

} // namespace ose
