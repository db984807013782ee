#pragma once
// The power control as the units and the power facades reach it. The units
// only say that their figures changed; the regulator reads what it needs.

class PowerCtrlManagerIf {
public:
    virtual ~PowerCtrlManagerIf() = default;
    virtual void statusChanged() = 0;
};
