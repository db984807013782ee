#pragma once
// The climate as the cabinet adapter sees it: parameters in, the climate
// system and the regulation's report out.

#include "climate/ClimateCfg.h"
#include "climate/ClimateReport.h"

#include <cstdint>

class ClimateEventIf;

class ClimateFacadeIf {
public:
    virtual ~ClimateFacadeIf() = default;
    virtual void setEventHandler(ClimateEventIf* handler) = 0;
    virtual void setClimateCfg(const ClimateCfg& cfg) = 0;
    // The manager gets an empty record.
    virtual void deleteClimateCfg() = 0;
    virtual void getClimateReport(ClimateReport* report) = 0;
    virtual std::uint32_t getClimateSystem() = 0;
    // Periodicity 1: every 5 s, 2: every 60 s (others 5 s); the handle of
    // the report's timer.
    virtual std::int32_t startAlgorithmParametersReport(std::uint32_t periodicity) = 0;
    virtual void stopAlgorithmParametersReport(std::int32_t handle) = 0;
};
