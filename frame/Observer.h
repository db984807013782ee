#pragma once
// Plain publish and subscribe between objects of the core: the publisher
// calls update with the id the observer subscribed with.

#include <cstdint>

class Observer {
public:
    virtual ~Observer() = default;
    virtual void update(std::uint32_t id) = 0;
};
