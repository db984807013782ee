#pragma once
// The signal in which a time-out of the object process comes back.

#include "ose/BigEndian.h"
#include "ose/Signal.h"

inline constexpr ose::SIGSELECT SUP_SYS_TIMER_SIG = 0x1705100;

struct SUP_SYS_TIMER_SIG_S {
    ose::be_u32 sigNo;
    ose::be_u32 timerId;
};
OSE_SIGNAL_LAYOUT(SUP_SYS_TIMER_SIG_S, 8);
