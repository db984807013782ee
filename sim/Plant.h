#pragma once
// The physics behind a simulated cabinet: the thermal and electrical models,
// driven by what the node has sent the units (set points, fan speeds,
// heater thresholds, battery connect, e-fuses) and read back into the units'
// measurements, one step per simulated second as the bus is used. The radio
// equipment is the DC load: what the bus delivers to it ends up as heat in
// the cabinet.

#include "sim/ElectricalModel.h"
#include "sim/PlantRecorder.h"
#include "sim/ThermalModel.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace sim {

class SimCabinet;
class SimUnit;

// Radio equipment behind one e-fuse of a PDU: it draws its power while the
// e-fuse is on.
struct LoadParameters {
    std::uint16_t port = 1;
    std::uint8_t pduAddress = 0;
    std::uint32_t efuse = 1; // 1 to 16
    double watts = 0.0;
};

// Mains is lost at `startS` seconds of world time for `durationS`, again
// every `repeatS` if that is not 0.
struct OutageParameters {
    std::uint64_t startS = 0;
    std::uint64_t durationS = 0;
    std::uint64_t repeatS = 0;
};

struct PlantParameters {
    ThermalParameters thermal;
    ElectricalParameters electrical;
    BatteryParameters battery;
    PsuParameters psu;
    double hotSpotOffsetC = 3.0;     // of each unit's temperature sensor
    double psuFullLoadRiseC = 10.0;  // a PSU's sensor, more at its current limit
    double hotSpotTimeConstantS = 120.0;
    double batteryTimeConstantS = 3.0 * 3600.0; // the battery's mass follows the air slowly
    // Without loads, the electrical model's loadW is drawn all the time.
    std::vector<LoadParameters> loads;
    // The loads swing by this share around their power over the day,
    // busiest at 20:00 and quietest at 08:00.
    double loadSwingPercent = 0.0;
    std::vector<OutageParameters> outages;
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
    void takePsuCommands(const SimCabinet& cabinet);
    void giveMeasurements(SimCabinet& cabinet);
    void giveFanMeasurements(SimUnit& scu);
    void warmPsuSensors();
    void takeBfuCommands(const SimUnit& bfu);
    void giveCluMeasurements(SimUnit& clu);
    // Mains follows the outage schedule where it changes; between its edges
    // a command of the control interface holds.
    void followSchedule();
    bool scheduledOutage(std::uint64_t second) const;
    double loadNowW(const SimCabinet& cabinet) const;

    PlantParameters m_parameters;
    ThermalModel m_thermal;
    ElectricalModel m_electrical;
    bool m_bound = false;
    std::uint64_t m_nowMs = 0;
    std::map<const SimUnit*, std::size_t> m_psuIndex;
    std::map<const SimUnit*, std::size_t> m_hotSpot;
    std::size_t m_batterySpot = 0;
    bool m_inOutage = false;
    bool m_heaterOn[2] = {};
    std::unique_ptr<PlantRecorder> m_pRecorder;
};

} // namespace sim
