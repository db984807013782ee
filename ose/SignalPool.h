#pragma once
// Storage of signal buffers.
//
// Each buffer carries a hidden header before the bytes its owner sees: the
// size asked for, the sender and addressee, a state word, and the link of the
// queue it waits in. Freed buffers go back to a list of their size class and
// are handed out again; memory of signals is never returned to the system,
// which keeps a second free of the same buffer detectable (its header still
// says "free") instead of undefined.

#include "ose/Signal.h"
#include "ose/Types.h"

#include <cstddef>
#include <cstdint>

namespace ose {

struct SignalHeader {
    std::uint32_t state;     // kLive or kFree
    std::uint32_t sizeClass; // index into the pool's classes
    OSBUFSIZE size;          // bytes asked for
    PROCESS sender;
    PROCESS addressee;
    std::uint32_t reserved;
    SignalHeader* next;      // queue link while the signal waits in a queue

    static constexpr std::uint32_t kLive = 0x51A11FE5u;
    static constexpr std::uint32_t kFree = 0xDEADF12Eu;

    Signal* signal() { return reinterpret_cast<Signal*>(this + 1); }
    static SignalHeader* of(Signal* signal) { return reinterpret_cast<SignalHeader*>(signal) - 1; }
    static const SignalHeader* of(const Signal* signal) { return reinterpret_cast<const SignalHeader*>(signal) - 1; }
};
static_assert(sizeof(SignalHeader) % 16 == 0, "signal bytes start 16-byte aligned");

class SignalPool {
public:
    // The largest signal that can be allocated.
    static constexpr OSBUFSIZE kMaxSize = 64u * 1024u * 1024u;
    // The smallest size: a signal always holds its number.
    static constexpr OSBUFSIZE kMinSize = 4;

    // A buffer of at least `size` bytes, zero-filled, with the number set;
    // NIL when size is above kMaxSize.
    static Signal* allocate(OSBUFSIZE size, SIGSELECT sigNo);
    // Gives the buffer back; false (and nothing done) when it is not a live buffer.
    static bool release(Signal* signal);
    static bool isLive(const Signal* signal);

    // Buffers handed out and not yet given back, for leak checks in tests.
    static std::size_t liveCount();
};

} // namespace ose
