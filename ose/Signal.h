#pragma once
// Signals: heap buffers whose first 4 bytes are the signal number, big-endian.
// The rest of a buffer is the layout of that signal (see BigEndian.h).

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <span>

namespace ose {

// The head every signal has. Concrete layouts start with the same field.
struct Signal {
    be_u32 sigNo;
};
OSE_SIGNAL_LAYOUT(Signal, 4);

// A selector: a count followed by numbers. {0} is any signal; a negative
// count selects all but the numbers that follow.
using Selector = std::span<const SIGSELECT>;
inline constexpr SIGSELECT kAnySignal[] = {0};

// A receive time-out that never ends.
inline constexpr OSTIME kWaitForever = 0xFFFFFFFFu;

inline SIGSELECT signalNumber(const Signal* signal)
{
    return signal != nullptr ? static_cast<SIGSELECT>(signal->sigNo) : 0;
}

} // namespace ose
