#pragma once
// A station alarm unit: external alarm ports on the bus.

#include "hwu/HwuStatusIf.h"

#include <cstdint>

class SauIf : public HwuStatusIf {
public:
    virtual std::uint16_t getAvailablePortsA() const = 0;
    virtual std::uint16_t getAvailablePortsB() const = 0;
};
