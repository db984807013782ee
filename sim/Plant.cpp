#include "sim/Plant.h"

#include "sim/SimCabinet.h"

#include <cmath>
#include <string>

namespace sim {

namespace {

std::int32_t rounded(double value) { return static_cast<std::int32_t>(std::lround(value)); }

std::int32_t valueOf(const SimUnit& unit, const char* name) { return unit.get(name).value_or(0); }

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
    }
    m_bound = true;
}

void Plant::takeCommands(SimCabinet& cabinet)
{
    for (SimUnit* unit : cabinet.units()) {
        switch (unit->type()) {
        case UnitType::PSU: {
            // Hundredths of a volt of the -48 V system; 0 until the node sets one.
            const std::int32_t setPoint = valueOf(*unit, "set.outputVoltage");
            if (setPoint != 0 && m_psuIndex.count(unit) != 0)
                m_electrical.setPsuSetPoint(m_psuIndex[unit], std::fabs(setPoint / 100.0));
            break;
        }
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
        case UnitType::BFU: m_electrical.setContactor(valueOf(*unit, "set.connect") != 0); break;
        default: break;
        }
    }
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
        case UnitType::SCU: unit->set("scuTemperature", rounded(m_thermal.hotSpotC(m_hotSpot[unit]))); break;
        case UnitType::BFU:
            unit->set("systemVoltage", rounded(busCentivolts));
            unit->set("batteryVoltage", rounded(-m_electrical.batteryVoltageV() * 100.0));
            unit->set("batteryCurrent", rounded(m_electrical.batteryCurrentA() * 10.0));
            unit->set("batteryTemperature", rounded(m_thermal.airC()));
            unit->set("batteryConnected", m_electrical.contactorClosed() ? 1 : 0);
            break;
        case UnitType::PDU: unit->set("systemVoltage", rounded(busCentivolts)); break;
        default: break;
        }
    }
}

void Plant::advanceTo(std::uint64_t nowMs, SimCabinet& cabinet)
{
    const bool first = !m_bound;
    if (first) bind(cabinet);
    // Most requests of a second find the plant where it was: the units hold
    // its measurements already.
    if (!first && m_nowMs + kStepMs > nowMs) return;
    while (m_nowMs + kStepMs <= nowMs) {
        takeCommands(cabinet);
        m_electrical.step(kStepMs / 1000.0);
        m_thermal.setPsuLossW(m_electrical.psuLossW());
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
