#include "sim/ThermalModel.h"

#include <algorithm>
#include <cmath>

namespace sim {

namespace {
constexpr double kPi = 3.14159265358979323846;
constexpr double kDayMs = 24.0 * 3600.0 * 1000.0;
constexpr std::size_t kProfileHours = 24;
} // namespace

ThermalModel::ThermalModel(const ThermalParameters& parameters) : m_parameters(parameters), m_airC(0.0)
{
    if (m_parameters.ambientProfileC.size() != kProfileHours) m_parameters.ambientProfileC.clear();
    m_airC = ambientC(0);
}

void ThermalModel::setAmbientC(double meanC)
{
    const std::vector<double>& profile = m_parameters.ambientProfileC;
    if (profile.empty()) {
        m_parameters.ambientC = meanC;
        return;
    }
    double sum = 0.0;
    for (double hourC : profile) sum += hourC;
    m_profileShiftC = meanC - sum / static_cast<double>(profile.size());
}

void ThermalModel::setFanSpeed(std::uint32_t group, double percent)
{
    if (group < kFanGroups) m_fanPercent[group] = std::clamp(percent, 0.0, 100.0);
}

void ThermalModel::setFansInGroup(std::uint32_t group, std::uint32_t fans)
{
    if (group < kFanGroups) m_fansInGroup[group] = std::min(fans, kFansPerGroup);
}

void ThermalModel::setFan(std::uint32_t group, std::uint32_t fan, FanState state)
{
    if (group < kFanGroups && fan < kFansPerGroup) m_fans[group][fan] = state;
}

FanState ThermalModel::fan(std::uint32_t group, std::uint32_t fan) const
{
    return group < kFanGroups && fan < kFansPerGroup ? m_fans[group][fan] : FanState::Working;
}

void ThermalModel::setCluFanSpeed(double percent) { m_cluFanPercent = std::clamp(percent, 0.0, 100.0); }

double ThermalModel::fanShare(double percent) const
{
    const double position = std::clamp(percent, 0.0, 100.0) / 25.0;
    const auto below = std::min(static_cast<int>(position), 3);
    const double fraction = position - below;
    return m_parameters.fanCurve[below] + (m_parameters.fanCurve[below + 1] - m_parameters.fanCurve[below]) * fraction;
}

void ThermalModel::setHeater(std::uint32_t heater, bool on)
{
    if (heater < 2) m_heaterOn[heater] = on;
}

std::size_t ThermalModel::addHotSpot(double offsetC, double timeConstantS)
{
    m_hotSpots.push_back({offsetC, std::max(timeConstantS, 1.0), m_airC + offsetC});
    return m_hotSpots.size() - 1;
}

void ThermalModel::setHotSpotOffset(std::size_t index, double offsetC)
{
    if (index < m_hotSpots.size()) m_hotSpots[index].offsetC = offsetC;
}

double ThermalModel::ambientC(std::uint64_t nowMs) const
{
    const double dayFraction = std::fmod(static_cast<double>(nowMs), kDayMs) / kDayMs;
    const std::vector<double>& profile = m_parameters.ambientProfileC;
    if (!profile.empty()) {
        const double hour = dayFraction * kProfileHours;
        const auto before = std::min(static_cast<std::size_t>(hour), kProfileHours - 1);
        const double after = profile[(before + 1) % kProfileHours];
        return profile[before] + (after - profile[before]) * (hour - static_cast<double>(before)) + m_profileShiftC;
    }
    // A cosine with its minimum at 04:00 and its maximum at 16:00.
    return m_parameters.ambientC - m_parameters.ambientSwingC * std::cos(2.0 * kPi * (dayFraction - 4.0 / 24.0));
}

double ThermalModel::airflowConductanceWPerK() const
{
    double flowM3PerS = 0.0;
    for (std::uint32_t group = 0; group < kFanGroups; ++group) {
        const std::uint32_t fans = m_fansInGroup[group];
        std::uint32_t moving = 0;
        for (std::uint32_t fan = 0; fan < fans; ++fan) moving += m_fans[group][fan] == FanState::Working ? 1 : 0;
        if (fans != 0)
            flowM3PerS += m_parameters.airflowPerGroupM3PerS * fanShare(m_fanPercent[group]) * moving / fans;
    }
    const double exchanger = m_parameters.cluAirflowM3PerS * fanShare(m_cluFanPercent) *
                             m_parameters.cluExchangerEffectiveness;
    return (flowM3PerS + exchanger) * m_parameters.airHeatCapacityJPerM3K;
}

double ThermalModel::heatInW() const
{
    double heat = m_parameters.radioLoadW + m_psuLossW;
    for (bool on : m_heaterOn) heat += on ? m_parameters.heaterW : 0.0;
    return heat;
}

double ThermalModel::steadyStateC(std::uint64_t nowMs) const
{
    return ambientC(nowMs) + heatInW() / totalConductanceWPerK();
}

double ThermalModel::totalConductanceWPerK() const
{
    // A cabinet sealed tight (no walls, no air) still loses a trace of heat,
    // so that its temperature stays a number.
    constexpr double kLeastConductanceWPerK = 1e-3;
    return std::max(m_parameters.wallConductanceWPerK + airflowConductanceWPerK(), kLeastConductanceWPerK);
}

void ThermalModel::step(double seconds, std::uint64_t nowMs)
{
    const double conductance = totalConductanceWPerK();
    const double target = ambientC(nowMs) + heatInW() / conductance;
    // Exact for a constant input over the step, so that a long step or a
    // strong fan cannot overshoot.
    const double tau = m_parameters.heatCapacityJPerK / conductance;
    m_airC = target + (m_airC - target) * std::exp(-seconds / tau);
    for (HotSpot& spot : m_hotSpots) {
        const double spotTarget = m_airC + spot.offsetC;
        spot.temperatureC = spotTarget + (spot.temperatureC - spotTarget) * std::exp(-seconds / spot.timeConstantS);
    }
}

} // namespace sim
