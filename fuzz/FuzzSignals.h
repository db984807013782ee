#pragma once
// Signals made of a fuzzer's input, for targets that play a process sending
// anything to the process under test.

#include "fuzz/FuzzInput.h"

#include "ose/Kernel.h"

#include <cstring>
#include <span>

// The next signal: a byte chooses its number among numbers, then a piece of
// the input is its body after the number.
inline ose::Signal* nextSignal(FuzzInput& input, std::span<const ose::SIGSELECT> numbers)
{
    const ose::SIGSELECT sigNo = numbers[input.byte() % numbers.size()];
    const std::string_view body = input.piece();
    ose::Signal* signal = ose::alloc(static_cast<ose::OSBUFSIZE>(4 + body.size()), sigNo);
    std::memcpy(reinterpret_cast<char*>(signal) + 4, body.data(), body.size());
    return signal;
}

// Takes every answer and drops it, for the rest of the run.
[[noreturn]] inline void dropAnswersForever()
{
    for (;;) {
        ose::Signal* answer = ose::receive(ose::kAnySignal);
        ose::free_buf(&answer);
    }
}
