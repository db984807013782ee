#pragma once
// The load disconnect limits of the power distribution, in tenths of a volt
// of the -48 V system, as the power management interface sends them.

#include <cstdint>

class PowerDistributionCfg {
public:
    PowerDistributionCfg() = default;
    PowerDistributionCfg(const PowerDistributionCfg&) = default;
    PowerDistributionCfg& operator=(const PowerDistributionCfg&) = default;
    virtual ~PowerDistributionCfg() = default;

    // Traces the three limits, one line each.
    void print() const;

    std::int16_t mainLoadUndervoltageDisconnect = 0;
    std::int16_t priorityLoadUndervoltageDisconnect = 0;
    std::uint8_t undervoltageDisconnectCeaseOffset = 0;
};
