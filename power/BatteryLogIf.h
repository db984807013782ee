#pragma once
// The battery's long-term log as the power control feeds it.

#include "frame/TimerObserverIf.h"

#include <cstdint>

class BatteryLogIf : public virtual TimerObserverIf {
public:
    enum Event : std::uint32_t {
        kStart = 0,
        kBatteryModeOn = 1,
        kBatteryModeOff = 2,
        kBfuRemoved = 3,
        kBfuOperational = 4,
    };

    virtual void handleEvent(std::uint32_t event) = 0;
    virtual void setDisconnectInfo(std::uint32_t minutes) = 0;
    virtual void update(bool hwFault, bool mainLoadDisconnected, bool batteryConnected, bool sensorBroken,
                        bool overTemperature) = 0;
};
