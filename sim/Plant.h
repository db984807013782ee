#pragma once
// The physics behind a simulated cabinet: the thermal and electrical models,
// driven by what the node has sent the units (set points, fan speeds,
// heater thresholds, battery connect) and read back into the units'
// measurements, one step per simulated second as the bus is used.

#include "sim/ElectricalModel.h"
#include "sim/PlantRecorder.h"
#include "sim/ThermalModel.h"

#include <cstdint>
#include <map>
#include <memory>

namespace sim {

class SimCabinet;
class SimUnit;

struct PlantParameters {
    ThermalParameters thermal;
    ElectricalParameters electrical;
    BatteryParameters battery;
    PsuParameters psu;
    double hotSpotOffsetC = 3.0;     // of each unit's temperature sensor
    double hotSpotTimeConstantS = 120.0;
};

class Plant {
public:
    static constexpr std::uint64_t kStepMs = 1000;

    explicit Plant(const PlantParameters& parameters);

    // Steps whole seconds up to `nowMs`; the units of the cabinet are bound
    // at the first call.
    void advanceTo(std::uint64_t nowMs, SimCabinet& cabinet);

    // Every step from now on goes to the recorder, after its measurements.
    void setRecorder(std::unique_ptr<PlantRecorder> recorder) { m_pRecorder = std::move(recorder); }

    ThermalModel& thermal() { return m_thermal; }
    ElectricalModel& electrical() { return m_electrical; }
    std::uint64_t nowMs() const { return m_nowMs; }

private:
    void bind(SimCabinet& cabinet);
    void takeCommands(SimCabinet& cabinet);
    void giveMeasurements(SimCabinet& cabinet);

    PlantParameters m_parameters;
    ThermalModel m_thermal;
    ElectricalModel m_electrical;
    bool m_bound = false;
    std::uint64_t m_nowMs = 0;
    std::map<const SimUnit*, std::size_t> m_psuIndex;
    std::map<const SimUnit*, std::size_t> m_hotSpot;
    bool m_heaterOn[2] = {};
    std::unique_ptr<PlantRecorder> m_pRecorder;
};

} // namespace sim
