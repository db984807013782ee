#pragma once
// What the battery charger may ask of the power control: the battery
// connected or disconnected at every BFU, and the news that it is full.

class BatteryControlIf {
public:
    virtual ~BatteryControlIf() = default;
    virtual void connectBattery(bool connect, bool extended) = 0;
    virtual void batteryFullyCharged() = 0;
};
