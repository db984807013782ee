#pragma once
// Signals of the timer service, in the core's own signal range.

#include "ose/BigEndian.h"
#include "ose/Types.h"

inline constexpr ose::SIGSELECT SSC_TIMER_EXPIRED = 0x1705000;
inline constexpr ose::SIGSELECT SSC_CYCLIC_TIMER_EXPIRED = 0x1705001;
inline constexpr ose::SIGSELECT SSC_TEST_TRIGGER_TIMER_REQ = 0x1705011;
inline constexpr ose::SIGSELECT SSC_TEST_TRIGGER_TIMER_CFM = 0x1705012;
inline constexpr ose::SIGSELECT SSC_TEST_TRIGGER_TIMER_REJ = 0x1705013;

// SSC_TIMER_EXPIRED and SSC_CYCLIC_TIMER_EXPIRED.
struct SSC_TIMER_EXPIRED_S {
    ose::be_u32 sigNo;
    ose::be_u32 timerRef;
};
OSE_SIGNAL_LAYOUT(SSC_TIMER_EXPIRED_S, 8);

struct SSC_TEST_TRIGGER_TIMER_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 timerType;
};
OSE_SIGNAL_LAYOUT(SSC_TEST_TRIGGER_TIMER_REQ_S, 8);

struct SSC_TEST_TRIGGER_TIMER_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 timersFound; // always 1
};
OSE_SIGNAL_LAYOUT(SSC_TEST_TRIGGER_TIMER_CFM_S, 8);

struct SSC_TEST_TRIGGER_TIMER_REJ_S {
    ose::be_u32 sigNo;
};
OSE_SIGNAL_LAYOUT(SSC_TEST_TRIGGER_TIMER_REJ_S, 4);
