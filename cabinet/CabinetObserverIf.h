#pragma once
// Where objects subscribe to events of the cabinet; id 0 is the cabinet
// being configured.

#include "frame/Observer.h"

#include <cstdint>

class CabinetObserverIf {
public:
    static constexpr std::uint32_t kCabinetConfigured = 0;

    virtual ~CabinetObserverIf() = default;
    virtual void subscribe(std::uint32_t id, Observer* observer) = 0;
    virtual void unsubscribe(std::uint32_t id, Observer* observer) = 0;
};
