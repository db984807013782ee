#pragma once
// What the alarm handler remembers of an object: enough to see a change of
// administrative state when the object has already taken the new value.

#include <string>

struct FroData {
    virtual ~FroData() = default;

    std::string ldn;
    std::string administrativeState; // "0" locked, "1" unlocked
};
