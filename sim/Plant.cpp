#include "sim/Plant.h"

#include "sim/SimCabinet.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cmath>
#include <string>

namespace sim {

namespace {

std::int32_t rounded(double value) { return static_cast<std::int32_t>(std::lround(value)); }

std::int32_t valueOf(const SimUnit& unit, const char* name) { return unit.get(name).value_or(0); }

constexpr double kPi = 3.14159265358979323846;
constexpr double kDayMs = 24.0 * 3600.0 * 1000.0;
constexpr double kBusiestHour = 20.0;
constexpr double kReturnAirOffsetC = 1.0;

} // namespace

Plant::Plant(const PlantParameters& parameters)
    : m_parameters(parameters), m_thermal(parameters.thermal), m_electrical(parameters.electrical, parameters.battery)
{
}

void Plant::bind(SimCabinet& cabinet)
{
    for (SimUnit* unit : cabinet.units()) {
        if (unit->type() == UnitType::PSU) m_psuIndex[unit] = m_electrical.addPsu(m_parameters.psu);
        if (unit->type() == UnitType::PSU || unit->type() == UnitType::SCU)
            m_hotSpot[unit] = m_thermal.addHotSpot(m_parameters.hotSpotOffsetC, m_parameters.hotSpotTimeConstantS);
        // The climate unit measures the air that returns to it, mixed.
        if (unit->type() == UnitType::CLU)
            m_hotSpot[unit] = m_thermal.addHotSpot(kReturnAirOffsetC, m_parameters.hotSpotTimeConstantS);
    }
    m_batterySpot = m_thermal.addHotSpot(0.0, m_parameters.batteryTimeConstantS);
    m_bound = true;
}

void Plant::takePsuCommands(const SimCabinet& cabinet)
{
    const std::vector<SimUnit*> units = cabinet.units();
    for (const auto& [unit, psu] : m_psuIndex) {
        // A PSU taken out of the cabinet, or one with its fault flag set,
        // gives nothing; the pointer of one taken out is only compared.
        const bool present = std::find(units.begin(), units.end(), unit) != units.end();
        m_electrical.setPsuEnabled(psu, present && valueOf(*unit, "fault") == 0);
        if (!present) continue;
        // Hundredths of a volt of the -48 V system; 0 until the node sets one.
        const std::int32_t setPoint = valueOf(*unit, "set.outputVoltage");
        const double volts = setPoint != 0 ? std::fabs(setPoint / 100.0) : m_parameters.psu.setPointV;
        m_electrical.setPsuSetPoint(psu, volts + valueOf(*unit, "setPointError") / 100.0);
    }
}

void Plant::takeCommands(SimCabinet& cabinet)
{
    takePsuCommands(cabinet);
    for (SimUnit* unit : cabinet.units()) {
        switch (unit->type()) {
        case UnitType::SCU: {
            for (std::uint32_t group = 0; group < ThermalModel::kFanGroups; ++group)
                m_thermal.setFanSpeed(group, valueOf(*unit, ("set.fanSpeed" + std::to_string(group + 1)).c_str()));
            // The SCU runs its heaters itself on the thresholds it was given.
            for (int heater = 0; heater < 2; ++heater) {
                const std::string prefix = "set.scuHeater" + std::to_string(heater + 1);
                const double on = static_cast<std::int8_t>(valueOf(*unit, (prefix + "OnTemp").c_str()));
                const double off = static_cast<std::int8_t>(valueOf(*unit, (prefix + "OffTemp").c_str()));
                if (on == 0 && off == 0) continue;
                if (m_thermal.airC() < on) m_heaterOn[heater] = true;
                else if (m_thermal.airC() > off) m_heaterOn[heater] = false;
                m_thermal.setHeater(static_cast<std::uint32_t>(heater), m_heaterOn[heater]);
            }
            break;
        }
        case UnitType::CLU: m_thermal.setCluFanSpeed(valueOf(*unit, "cluIntFanSpeed")); break;
        case UnitType::BFU: takeBfuCommands(*unit); break;
        default: break;
        }
    }
}

void Plant::takeBfuCommands(const SimUnit& bfu)
{
    m_electrical.setContactor(valueOf(bfu, "set.connect") != 0);
    // Hundredths of a volt of the -48 V system; the site's thresholds hold
    // until the node configures its own.
    const std::int32_t disconnect = valueOf(bfu, "set.mainLoadDisconnect");
    const std::int32_t cease = valueOf(bfu, "set.disconnectCease");
    if (disconnect != 0)
        m_electrical.setDisconnect(std::abs(disconnect) / 100.0,
                                   cease != 0 ? std::abs(cease) / 100.0 : m_parameters.electrical.reconnectV);
}

double Plant::loadNowW(const SimCabinet& cabinet) const
{
    double watts = 0.0;
    if (m_parameters.loads.empty()) watts = m_parameters.electrical.loadW;
    // A load on a PDU that the cabinet does not have (any more) draws
    // nothing, like one behind an open e-fuse.
    for (const LoadParameters& load : m_parameters.loads) {
        const SimUnit* pdu = cabinet.unit(load.port, load.pduAddress);
        if (pdu == nullptr || pdu->type() != UnitType::PDU) continue;
        const auto on = static_cast<std::uint32_t>(valueOf(*pdu, "efuseOn"));
        if (load.efuse >= 1 && load.efuse <= 16 && (on >> (load.efuse - 1) & 1U) != 0) watts += load.watts;
    }
    const double hours = std::fmod(static_cast<double>(m_nowMs), kDayMs) / 3600000.0;
    return watts * (1.0 + m_parameters.loadSwingPercent / 100.0 * std::cos(2.0 * kPi * (hours - kBusiestHour) / 24.0));
}

bool Plant::scheduledOutage(std::uint64_t second) const
{
    for (const OutageParameters& outage : m_parameters.outages) {
        if (second < outage.startS) continue;
        const std::uint64_t since = second - outage.startS;
        const std::uint64_t into = outage.repeatS != 0 ? since % outage.repeatS : since;
        if (into < outage.durationS) return true;
    }
    return false;
}

void Plant::followSchedule()
{
    const bool outage = scheduledOutage(m_nowMs / 1000);
    if (outage != m_inOutage) m_electrical.setMains(!outage);
    m_inOutage = outage;
}

void Plant::giveMeasurements(SimCabinet& cabinet)
{
    const double busCentivolts = -m_electrical.busV() * 100.0;
    for (SimUnit* unit : cabinet.units()) {
        switch (unit->type()) {
        case UnitType::PSU: {
            const double current = m_electrical.psuCurrentA(m_psuIndex[unit]);
            unit->set("outputVoltage", rounded(busCentivolts));
            unit->set("outputCurrent", rounded(current * 10.0));
            unit->set("load", rounded(100.0 * current / m_parameters.psu.currentLimitA));
            unit->set("temperature", rounded(m_thermal.hotSpotC(m_hotSpot[unit])));
            unit->set("inputVoltageLow", m_electrical.mains() ? 0 : 1);
            break;
        }
        case UnitType::SCU:
            unit->set("scuTemperature", rounded(m_thermal.hotSpotC(m_hotSpot[unit])));
            giveFanMeasurements(*unit);
            break;
        case UnitType::CLU: giveCluMeasurements(*unit); break;
        case UnitType::BFU:
            unit->set("systemVoltage", rounded(busCentivolts));
            unit->set("batteryVoltage", rounded(-m_electrical.batteryVoltageV() * 100.0));
            unit->set("batteryCurrent", rounded(m_electrical.batteryCurrentA() * 10.0));
            unit->set("batteryTemperature", rounded(m_thermal.hotSpotC(m_batterySpot)));
            unit->set("batteryConnected", m_electrical.contactorClosed() ? 1 : 0);
            unit->set("mainLoadDisconnected", m_electrical.loadDisconnected() ? 1 : 0);
            break;
        case UnitType::PDU: unit->set("systemVoltage", rounded(busCentivolts)); break;
        default: break;
        }
    }
}

void Plant::warmPsuSensors()
{
    for (const auto& [unit, psu] : m_psuIndex)
        m_thermal.setHotSpotOffset(m_hotSpot[unit], m_parameters.hotSpotOffsetC +
                                                        m_parameters.psuFullLoadRiseC * m_electrical.psuCurrentA(psu) /
                                                            m_parameters.psu.currentLimitA);
}

void Plant::giveFanMeasurements(SimUnit& scu)
{
    // Fan f of group g is bit 4(g-1) + f - 1 of the connected fans; a group
    // with a failed fan sets its bit (group 1 in bit 0) in the failures.
    const auto connected = static_cast<std::uint32_t>(valueOf(scu, "fansConnected"));
    std::int32_t failures = 0;
    for (std::uint32_t group = 0; group < ThermalModel::kFanGroups; ++group) {
        const std::uint32_t nibble = connected >> (4 * group) & 0xFU;
        m_thermal.setFansInGroup(group, static_cast<std::uint32_t>(std::popcount(nibble)));
        for (std::uint32_t fan = 0; fan < ThermalModel::kFansPerGroup; ++fan)
            if (m_thermal.fan(group, fan) == FanState::Failed) failures |= 1 << group;
    }
    scu.set("fanGroupFailure", failures);
}

void Plant::giveCluMeasurements(SimUnit& clu)
{
    // The supply air leaves the heat exchanger cooled towards the ambient
    // air while the internal fan moves it.
    const double ambient = m_thermal.ambientC(m_nowMs);
    const double air = m_thermal.airC();
    const bool moving = valueOf(clu, "cluIntFanSpeed") > 0;
    clu.set("cluReturnTemp", rounded(m_thermal.hotSpotC(m_hotSpot[&clu])));
    clu.set("cluSupplyTemp", rounded(moving ? air - (air - ambient) * m_parameters.thermal.cluExchangerEffectiveness : air));
    clu.set("cluAmbientTemp", rounded(ambient));
    clu.set("cluExtFanSpeed", valueOf(clu, "cluIntFanSpeed"));
}

void Plant::advanceTo(std::uint64_t nowMs, SimCabinet& cabinet)
{
    const bool first = !m_bound;
    if (first) bind(cabinet);
    // Most requests of a second find the plant where it was: the units hold
    // its measurements already.
    if (!first && m_nowMs + kStepMs > nowMs) return;
    while (m_nowMs + kStepMs <= nowMs) {
        followSchedule();
        takeCommands(cabinet);
        const double load = loadNowW(cabinet);
        m_electrical.setLoadW(load);
        m_electrical.step(kStepMs / 1000.0);
        m_thermal.setRadioLoadW(m_electrical.busV() > 0 ? m_electrical.loadNowW() : 0.0);
        m_thermal.setPsuLossW(m_electrical.psuLossW());
        warmPsuSensors();
        m_thermal.step(kStepMs / 1000.0, m_nowMs);
        m_nowMs += kStepMs;
        if (m_pRecorder) {
            giveMeasurements(cabinet);
            m_pRecorder->record(m_nowMs, *this, cabinet);
        }
    }
    giveMeasurements(cabinet);
}

} // namespace sim
