#pragma once
// The cabinet's air as one heat capacity: heat from the radio load, the
// PSUs' losses and the heaters comes in; heat leaves through the walls,
// with the air that the fans move and through the climate unit's heat
// exchanger; ambient air follows a daily curve.
// Each temperature sensor sees a hot spot that follows the air with its own
// time constant and offset. Stepped at a fixed step on the world's clock;
// the same parameters and commands give the same numbers everywhere.

#include <cstdint>
#include <vector>

namespace sim {

struct ThermalParameters {
    double ambientC = 20.0;            // mean ambient temperature
    double ambientSwingC = 0.0;        // half the day's swing; coldest at 04:00, warmest at 16:00
    // Or the ambient temperature at each whole hour from 00:00 to 23:00,
    // linear in between; it replaces the mean and the swing.
    std::vector<double> ambientProfileC;
    double heatCapacityJPerK = 60000.0; // cabinet air and what warms with it
    double wallConductanceWPerK = 15.0; // through the walls, fans off
    double radioLoadW = 1200.0;        // heat of the radio equipment
    double airflowPerGroupM3PerS = 0.12; // one fan group, all its fans at 100 %
    // Air flow of a fan, as a share of its full flow, at 0, 25, 50, 75 and
    // 100 % speed; linear in between.
    double fanCurve[5] = {0.0, 0.25, 0.5, 0.75, 1.0};
    // The climate unit's internal fan at 100 % through its heat exchanger,
    // which passes this share of the air's heat to the ambient air.
    double cluAirflowM3PerS = 0.2;
    double cluExchangerEffectiveness = 0.6;
    double airHeatCapacityJPerM3K = 1200.0;
    double heaterW = 500.0;            // each heater when on
};

struct HotSpot {
    double offsetC = 0.0;      // above the air, at steady state
    double timeConstantS = 60.0;
    double temperatureC = 0.0; // state
};

// A fan that failed stands still (and its unit reports it); a blocked one
// turns but moves no air, which only the temperature shows.
enum class FanState { Working, Failed, Blocked };

class ThermalModel {
public:
    static constexpr std::uint32_t kFanGroups = 4;
    static constexpr std::uint32_t kFansPerGroup = 4;

    explicit ThermalModel(const ThermalParameters& parameters);

    // Commands of the node: fan speed in percent per group, heaters on.
    void setFanSpeed(std::uint32_t group, double percent);
    // How many fans a group has (its full flow is shared among them).
    void setFansInGroup(std::uint32_t group, std::uint32_t fans);
    void setFan(std::uint32_t group, std::uint32_t fan, FanState state);
    FanState fan(std::uint32_t group, std::uint32_t fan) const;
    void setCluFanSpeed(double percent);
    void setHeater(std::uint32_t heater, bool on);
    // A hot or cold day: the day's curve or profile moves to this mean.
    void setAmbientC(double meanC);
    // Heat of the PSUs' losses, in watts, as the electrical model gives it.
    void setPsuLossW(double watts) { m_psuLossW = watts; }
    // Heat of the radio equipment, which is the DC load the bus delivers.
    void setRadioLoadW(double watts) { m_parameters.radioLoadW = watts; }
    // A sensor's hot spot; its index.
    std::size_t addHotSpot(double offsetC, double timeConstantS);
    // A sensor whose spot warms with what its unit does.
    void setHotSpotOffset(std::size_t index, double offsetC);

    // One step of `seconds` at world time `nowMs` (for the ambient curve).
    void step(double seconds, std::uint64_t nowMs);

    double airC() const { return m_airC; }
    bool heaterOn(std::uint32_t heater) const { return heater < 2 && m_heaterOn[heater]; }
    double ambientC(std::uint64_t nowMs) const;
    double hotSpotC(std::size_t index) const { return index < m_hotSpots.size() ? m_hotSpots[index].temperatureC : m_airC; }
    // Heat that leaves with the air at this moment, in W/K.
    double airflowConductanceWPerK() const;
    // The air temperature at which heat in and out balance now.
    double steadyStateC(std::uint64_t nowMs) const;

private:
    double heatInW() const;
    double totalConductanceWPerK() const;
    double fanShare(double percent) const;

    ThermalParameters m_parameters;
    double m_profileShiftC = 0.0;
    double m_airC;
    double m_fanPercent[kFanGroups] = {};
    std::uint32_t m_fansInGroup[kFanGroups] = {kFansPerGroup, kFansPerGroup, kFansPerGroup, kFansPerGroup};
    FanState m_fans[kFanGroups][kFansPerGroup] = {};
    double m_cluFanPercent = 0.0;
    bool m_heaterOn[2] = {};
    double m_psuLossW = 0.0;
    std::vector<HotSpot> m_hotSpots;
};

} // namespace sim
