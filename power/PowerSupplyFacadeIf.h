#pragma once
// The power supply as the power management adapter configures and reads it.

#include <cstdint>

class PowerSupplyEventIf;

class PowerSupplyFacadeIf {
public:
    // The system voltage when no valid reading exists.
    static constexpr std::int32_t kNoSystemVoltage = INT32_MIN;

    virtual ~PowerSupplyFacadeIf() = default;

    virtual void setEventHandler(PowerSupplyEventIf* handler) = 0;
    // Nine 16-bit values in tenths of a volt, of which 4 to 8 are used:
    // nominal voltage, overvoltage cease offset, overvoltage raise limit,
    // undervoltage cease offset, undervoltage raise limit.
    virtual void updatePowerSupply(const std::int16_t values[]) = 0;
    // Ceases the power supply's faults; the limits stay in force.
    virtual void deletePowerSupply() = 0;
    // Tenths of a volt, negative; kNoSystemVoltage without a valid reading.
    virtual std::int32_t getSystemVoltage() const = 0;
};
