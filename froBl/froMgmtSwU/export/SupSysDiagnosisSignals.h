#pragma once
// A diagnosis signal of the object process: "answer me after this many
// milliseconds". The answer comes through the process's own timers and
// receive loop, so it shows that both turn.

#include "ose/BigEndian.h"
#include "ose/Signal.h"

inline constexpr const char* kSupSysProcessName = "support_system_control_thread";

inline constexpr ose::SIGSELECT SUP_SYS_DIAG_TIMER_REQ = 0x1705110;
inline constexpr ose::SIGSELECT SUP_SYS_DIAG_TIMER_CFM = 0x1705111;

struct SUP_SYS_DIAG_TIMER_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 delayMs; // at most 2^31 - 1
};
OSE_SIGNAL_LAYOUT(SUP_SYS_DIAG_TIMER_REQ_S, 12);

struct SUP_SYS_DIAG_TIMER_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 timerId;
    ose::be_u32 requestedAtMs; // the node's ticks when the request came
    ose::be_u32 answeredAtMs;  // and when the timer ran out
};
OSE_SIGNAL_LAYOUT(SUP_SYS_DIAG_TIMER_CFM_S, 20);
