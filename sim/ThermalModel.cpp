#include "sim/ThermalModel.h"

#include <algorithm>
#include <cmath>

namespace sim {

namespace {
constexpr double kPi = 3.14159265358979323846;
constexpr double kDayMs = 24.0 * 3600.0 * 1000.0;
} // namespace

ThermalModel::ThermalModel(const ThermalParameters& parameters)
    : m_parameters(parameters), m_airC(parameters.ambientC)
{
}

void ThermalModel::setFanSpeed(std::uint32_t group, double percent)
{
    if (group < kFanGroups) m_fanPercent[group] = std::clamp(percent, 0.0, 100.0);
}

void ThermalModel::setFanFailed(std::uint32_t group, bool failed)
{
    if (group < kFanGroups) m_fanFailed[group] = failed;
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

double ThermalModel::ambientC(std::uint64_t nowMs) const
{
    // A cosine with its minimum at 04:00 and its maximum at 16:00.
    const double dayFraction = std::fmod(static_cast<double>(nowMs), kDayMs) / kDayMs;
    return m_parameters.ambientC - m_parameters.ambientSwingC * std::cos(2.0 * kPi * (dayFraction - 4.0 / 24.0));
}

double ThermalModel::airflowConductanceWPerK() const
{
    double flowM3PerS = 0.0;
    for (std::uint32_t group = 0; group < kFanGroups; ++group)
        if (!m_fanFailed[group]) flowM3PerS += m_parameters.airflowPerGroupM3PerS * m_fanPercent[group] / 100.0;
    return flowM3PerS * m_parameters.airHeatCapacityJPerM3K;
}

double ThermalModel::heatInW() const
{
    double heat = m_parameters.radioLoadW + m_psuLossW;
    for (bool on : m_heaterOn) heat += on ? m_parameters.heaterW : 0.0;
    return heat;
}

double ThermalModel::steadyStateC(std::uint64_t nowMs) const
{
    return ambientC(nowMs) + heatInW() / (m_parameters.wallConductanceWPerK + airflowConductanceWPerK());
}

void ThermalModel::step(double seconds, std::uint64_t nowMs)
{
    const double conductance = m_parameters.wallConductanceWPerK + airflowConductanceWPerK();
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
