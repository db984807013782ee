#pragma once
// Where the regulators read the cabinet's climate parameters and sensors.

#include "climate/ClimateCfg.h"

class TempSensorList;

class ClimateConfigurationIf {
public:
    virtual ~ClimateConfigurationIf() = default;
    virtual const ClimateCfg& getClimateCfg() = 0;
    virtual TempSensorList& getTempSensorList() = 0;
};
