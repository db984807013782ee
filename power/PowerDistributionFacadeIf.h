#pragma once
// The power distribution as the power management adapter configures it.

class PowerDistributionCfg;
class PowerDistributionEventIf;

class PowerDistributionFacadeIf {
public:
    virtual ~PowerDistributionFacadeIf() = default;

    virtual void setEventHandler(PowerDistributionEventIf* handler) = 0;
    virtual void updatePowerDistribution(const PowerDistributionCfg& cfg) = 0;
    // Ceases the power distribution's faults; the limits stay in force.
    virtual void deletePowerDistribution() = 0;
};
