#pragma once
// Listeners of a unit's status changes, by subscription id (4: a BFU's
// status, 5: a PDU's).

#include "frame/EC_LinkedList.h"
#include "frame/Observer.h"

#include <cstdint>

class HwuSubscriptions {
public:
    static constexpr std::uint32_t kBfuStatusChange = 4;
    static constexpr std::uint32_t kPduStatusChange = 5;

    struct Subscriber {
        std::uint32_t id = 0;
        Observer* observer = nullptr; // not owned
        friend bool operator==(const Subscriber&, const Subscriber&) = default;
    };

    virtual ~HwuSubscriptions() = default;

    // The new subscriber is told at once; false when it was there already.
    bool subscribeStatus(std::uint32_t id, Observer* observer);
    bool unsubscribeStatus(std::uint32_t id, Observer* observer);
    void notifySubscribers(std::uint32_t id);

private:
    EC_LinkedList<Subscriber> m_subscribers;
};
