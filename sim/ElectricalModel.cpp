#include "sim/ElectricalModel.h"

#include <algorithm>
#include <cmath>

namespace sim {

namespace {
constexpr double kScanStepV = 0.5;
constexpr int kBisections = 24;
constexpr double kLowestBusV = 1.0; // below this the bus has collapsed
} // namespace

ElectricalModel::ElectricalModel(const ElectricalParameters& parameters, const BatteryParameters& battery)
    : m_parameters(parameters), m_battery(battery)
{
    m_battery.stateOfCharge = std::clamp(m_battery.stateOfCharge, 0.0, 1.0);
    m_busV = openCircuitV();
}

std::size_t ElectricalModel::addPsu(const PsuParameters& psu)
{
    m_psus.push_back(psu);
    m_psuCurrentA.push_back(0.0);
    m_psuEnabled.push_back(true);
    return m_psus.size() - 1;
}

void ElectricalModel::setPsuSetPoint(std::size_t psu, double volts)
{
    if (psu < m_psus.size()) m_psus[psu].setPointV = std::max(volts, 0.0);
}

void ElectricalModel::setPsuEnabled(std::size_t psu, bool enabled)
{
    if (psu < m_psuEnabled.size()) m_psuEnabled[psu] = enabled;
}

double ElectricalModel::openCircuitV() const
{
    const double charge = m_battery.stateOfCharge;
    double block = m_battery.emptyBlockV + (m_battery.fullBlockV - m_battery.emptyBlockV) * charge;
    if (charge < m_battery.kneeCharge && m_battery.kneeCharge > 0) {
        const double atKnee = m_battery.emptyBlockV + (m_battery.fullBlockV - m_battery.emptyBlockV) * m_battery.kneeCharge;
        block = m_battery.exhaustedBlockV + (atKnee - m_battery.exhaustedBlockV) * charge / m_battery.kneeCharge;
    }
    return block * m_battery.blocks - m_failedCellsV;
}

double ElectricalModel::chargeEmfV() const
{
    return openCircuitV() + m_battery.chargeRiseBlockV * m_battery.blocks * std::pow(m_battery.stateOfCharge, 8.0);
}

double ElectricalModel::batteryOutA(double volts) const
{
    if (!contactorClosed() || m_battery.internalOhm <= 0) return 0.0;
    // An empty string gives nothing more.
    if (volts < openCircuitV()) return m_battery.stateOfCharge > 0 ? (openCircuitV() - volts) / m_battery.internalOhm : 0.0;
    if (volts > chargeEmfV()) return -(volts - chargeEmfV()) / m_battery.internalOhm;
    return 0.0;
}

void ElectricalModel::failCell()
{
    constexpr double kCellV = 2.1;
    m_failedCellsV += kCellV;
    m_battery.internalOhm *= 2.0;
}

void ElectricalModel::setDisconnect(double disconnectV, double reconnectV)
{
    m_parameters.disconnectV = std::max(disconnectV, 0.0);
    m_parameters.reconnectV = std::max(reconnectV, m_parameters.disconnectV);
}

double ElectricalModel::psuCurrent(const PsuParameters& psu, double volts) const
{
    if (!m_mains || psu.droopOhm <= 0) return 0.0;
    const double walkedIn = psu.walkInS > 0 ? std::min(1.0, m_sinceMainsS / psu.walkInS) : 1.0;
    return std::clamp((psu.setPointV - volts) / psu.droopOhm, 0.0, psu.currentLimitA * walkedIn);
}

double ElectricalModel::surplusA(double volts) const
{
    double sources = 0.0;
    for (std::size_t index = 0; index < m_psus.size(); ++index)
        if (m_psuEnabled[index]) sources += psuCurrent(m_psus[index], volts);
    return sources + batteryOutA(volts) - loadNowW() / volts;
}

double ElectricalModel::solveBusV() const
{
    // The operating point is the highest voltage where the sources carry the
    // load: scan down from above every source, then narrow it down.
    double high = openCircuitV();
    for (const PsuParameters& psu : m_psus) high = std::max(high, psu.setPointV);
    high += kScanStepV;
    double low = high;
    while (low > kLowestBusV && surplusA(low) < 0) low -= kScanStepV;
    if (low <= kLowestBusV) return 0.0;
    double upper = std::min(low + kScanStepV, high);
    for (int i = 0; i < kBisections; ++i) {
        const double middle = (low + upper) / 2.0;
        (surplusA(middle) >= 0 ? low : upper) = middle;
    }
    return low;
}

void ElectricalModel::step(double seconds)
{
    if (m_mains) m_sinceMainsS += seconds;
    m_busV = solveBusV();
    for (std::size_t index = 0; index < m_psus.size(); ++index)
        m_psuCurrentA[index] = m_busV > 0 && m_psuEnabled[index] ? psuCurrent(m_psus[index], m_busV) : 0.0;
    const double dischargeA = m_busV > 0 ? batteryOutA(m_busV) : 0.0;
    m_batteryChargeA = -dischargeA;
    const double hours = seconds / 3600.0;
    if (dischargeA > 0) {
        m_ampHoursOut += dischargeA * hours;
        m_battery.stateOfCharge -= dischargeA * hours / m_battery.capacityAh;
    } else {
        m_ampHoursIn += -dischargeA * hours;
        m_battery.stateOfCharge += -dischargeA * hours * m_battery.chargeEfficiency / m_battery.capacityAh;
    }
    m_battery.stateOfCharge = std::clamp(m_battery.stateOfCharge, 0.0, 1.0);
    // The disconnect protects the battery from deep discharge, and connects
    // the load again once the PSUs hold the bus up.
    if (!m_loadDisconnected && m_busV < m_parameters.disconnectV) m_loadDisconnected = true;
    else if (m_loadDisconnected && m_busV >= m_parameters.reconnectV && m_mains) m_loadDisconnected = false;
}

double ElectricalModel::psuLossW() const
{
    double loss = 0.0;
    for (std::size_t index = 0; index < m_psus.size(); ++index) {
        const double output = m_busV * m_psuCurrentA[index];
        if (m_psus[index].efficiency > 0) loss += output * (1.0 / m_psus[index].efficiency - 1.0);
    }
    return loss;
}

double ElectricalModel::batteryVoltageV() const { return contactorClosed() && m_busV > 0 ? m_busV : openCircuitV(); }

} // namespace sim
