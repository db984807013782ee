#pragma once
// What the power supply tells the interface adapter: its faults coming and
// going, raises first, then the ceases in the same order, and each new
// reading of the system voltage.

class PowerSupplyEventIf {
public:
    virtual ~PowerSupplyEventIf() = default;

    virtual void raiseNoPsuUsable() = 0;        // 20004
    virtual void raiseSystemOvervoltage() = 0;  // 14007
    virtual void raiseSystemUndervoltage() = 0; // 14008

    virtual void ceaseNoPsuUsable() = 0;
    virtual void ceaseSystemOvervoltage() = 0;
    virtual void ceaseSystemUndervoltage() = 0;

    // Volts of the -48 V system, negative.
    virtual void systemVoltageUpdated(float volts) = 0;
};
