#pragma once
// What the power distribution tells the interface adapter: its faults coming
// and going, raises first, then the ceases in the same order.

class PowerDistributionEventIf {
public:
    virtual ~PowerDistributionEventIf() = default;

    virtual void raiseMainLoadDisconnected() = 0;     // 7003
    virtual void raisePriorityLoadDisconnected() = 0; // 7004
    virtual void raisePduMainTemperatureHigh() = 0;   // 18700

    virtual void ceaseMainLoadDisconnected() = 0;
    virtual void ceasePriorityLoadDisconnected() = 0;
    virtual void ceasePduMainTemperatureHigh() = 0;
};
