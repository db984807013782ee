#pragma once
// Which timer expired: its kind and the free argument given at its start.

#include <cstdint>

// The kinds of timer form one numbering across the core; each user names its own.
using TimerType = std::uint32_t;

struct TimerId {
    TimerType timerType = 0;
    std::uint32_t argument = 0;

    friend bool operator==(const TimerId&, const TimerId&) = default;
};
