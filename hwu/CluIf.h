#pragma once
// A climate unit: a cooler that stands in for fan groups 2 and 4.

#include "frame/Observer.h"
#include "hwu/HwuStatusIf.h"

#include <cstdint>

class CluIf : public HwuStatusIf {
public:
    virtual bool isFaulty() const = 0;
    virtual bool isFanAlarmGroup2() const = 0;
    virtual bool isFanAlarmGroup4() const = 0;
    virtual bool setFanSpeed(std::uint8_t speed) = 0;
    virtual bool subscribeStatus(std::uint32_t id, Observer* observer) = 0;
    virtual bool unsubscribeStatus(std::uint32_t id, Observer* observer) = 0;
};
