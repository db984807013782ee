#pragma once
// How a power facade hands a fault of its subject to its event handler: one
// row per fault id with the raise and the cease operation that report it.

#include <array>
#include <cstddef>
#include <cstdint>

template <class EventIf>
struct FaultRoute {
    std::int32_t faultId;
    void (EventIf::*raise)();
    void (EventIf::*cease)();
};

// The row of `faultId`; NIL for a fault the table doesn't know.
template <class EventIf, std::size_t N>
constexpr const FaultRoute<EventIf>* findFaultRoute(const std::array<FaultRoute<EventIf>, N>& routes,
                                                    std::int32_t faultId)
{
    for (const FaultRoute<EventIf>& route : routes)
        if (route.faultId == faultId) return &route;
    return nullptr;
}
