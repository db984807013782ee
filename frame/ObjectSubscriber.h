#pragma once
// Who subscribed to, or configured, a managed object through an adapter.
// Equal rows have the same pid and object address; the client's own
// reference takes no part, so a client cannot subscribe twice under two.

#include "ose/Types.h"

#include <cstdint>

struct ObjectSubscriber {
    std::uint32_t objectId = 0;
    std::uint16_t objectType = 0;
    std::uint32_t clientRef = 0; // echoed in signals to the client
    ose::PROCESS pid = 0;        // sender of the subscribing signal

    friend bool operator==(const ObjectSubscriber& a, const ObjectSubscriber& b)
    {
        return a.pid == b.pid && a.objectId == b.objectId && a.objectType == b.objectType;
    }
};
