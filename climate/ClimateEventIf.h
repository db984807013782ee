#pragma once
// The periodic climate report, due for the client of a timer handle.

#include <cstdint>

class ClimateEventIf {
public:
    virtual ~ClimateEventIf() = default;
    virtual void climateReport(std::int32_t timerHandle) = 0;
};
