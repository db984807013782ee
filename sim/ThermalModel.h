#pragma once
// The cabinet's air as one heat capacity: heat from the radio load, the
// PSUs' losses and the heaters comes in; heat leaves through the walls and
// with the air that the fan groups move; ambient air follows a daily curve.
// Each temperature sensor sees a hot spot that follows the air with its own
// time constant and offset. Stepped at a fixed step on the world's clock;
// the same parameters and commands give the same numbers everywhere.

#include <cstdint>
#include <vector>

namespace sim {

struct ThermalParameters {
    double ambientC = 20.0;            // mean ambient temperature
    double ambientSwingC = 0.0;        // half the day's swing; coldest at 04:00, warmest at 16:00
    double heatCapacityJPerK = 60000.0; // cabinet air and what warms with it
    double wallConductanceWPerK = 15.0; // through the walls, fans off
    double radioLoadW = 1200.0;        // heat of the radio equipment
    double airflowPerGroupM3PerS = 0.12; // one fan group at 100 %
    double airHeatCapacityJPerM3K = 1200.0;
    double heaterW = 500.0;            // each heater when on
};

struct HotSpot {
    double offsetC = 0.0;      // above the air, at steady state
    double timeConstantS = 60.0;
    double temperatureC = 0.0; // state
};

class ThermalModel {
public:
    static constexpr std::uint32_t kFanGroups = 4;

    explicit ThermalModel(const ThermalParameters& parameters);

    // Commands of the node: fan speed in percent per group, heaters on.
    void setFanSpeed(std::uint32_t group, double percent);
    void setFanFailed(std::uint32_t group, bool failed);
    void setHeater(std::uint32_t heater, bool on);
    void setAmbientC(double meanC) { m_parameters.ambientC = meanC; }
    // Heat of the PSUs' losses, in watts, as the electrical model gives it.
    void setPsuLossW(double watts) { m_psuLossW = watts; }
    // A sensor's hot spot; its index.
    std::size_t addHotSpot(double offsetC, double timeConstantS);

    // One step of `seconds` at world time `nowMs` (for the ambient curve).
    void step(double seconds, std::uint64_t nowMs);

    double airC() const { return m_airC; }
    double ambientC(std::uint64_t nowMs) const;
    double hotSpotC(std::size_t index) const { return index < m_hotSpots.size() ? m_hotSpots[index].temperatureC : m_airC; }
    // Heat that leaves with the air at this moment, in W/K.
    double airflowConductanceWPerK() const;
    // The air temperature at which heat in and out balance now.
    double steadyStateC(std::uint64_t nowMs) const;

private:
    double heatInW() const;

    ThermalParameters m_parameters;
    double m_airC;
    double m_fanPercent[kFanGroups] = {};
    bool m_fanFailed[kFanGroups] = {};
    bool m_heaterOn[2] = {};
    double m_psuLossW = 0.0;
    std::vector<HotSpot> m_hotSpots;
};

} // namespace sim
