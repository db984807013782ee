#pragma once
// What a state event carries between an object and its parent.

#include <cstdint>
#include <string>

class stateUserData {
public:
    std::string className() const { return "stateUserData"; }

    // Free for the user; nothing in the system reads them.
    std::uint32_t userWord1 = 0;
    std::uint32_t userWord2 = 0;
    std::int32_t froId = -1; // internal id of the sender
    std::string operationalState;
    std::string availabilityStatus;
    std::string administrativeState;
};
