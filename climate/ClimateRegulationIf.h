#pragma once
// Where a regulation pass's outcome goes: the secondary nodes' demand comes
// in, this node's demand goes to the primary, the fan speeds go to the units.

class ClimateRegulationIf {
public:
    virtual ~ClimateRegulationIf() = default;
    // Raises `*demand` to the highest demand of the secondary nodes.
    virtual void getMaxAirflowDemand(float* demand) = 0;
    virtual void sendAirflowDemand(float demand) = 0;
    virtual void setFanSpeeds(int internalSpeed, int externalSpeed) = 0;
};
