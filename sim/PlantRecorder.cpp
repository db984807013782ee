#include "sim/PlantRecorder.h"

#include "sim/Plant.h"
#include "sim/SimCabinet.h"

#include <cstdio>

namespace sim {

namespace {
std::string unitColumn(const SimUnit& unit)
{
    std::string name = unitTypeName(unit.type());
    name += "@";
    if (unit.port() != 1) name += std::to_string(unit.port()) + ":";
    return name + std::to_string(unit.address());
}
} // namespace

bool PlantRecorder::open(const std::string& path, std::string& error)
{
    m_out.open(path, std::ios::out | std::ios::trunc);
    if (!m_out) {
        error = "cannot write the recording to " + path;
        return false;
    }
    return true;
}

void PlantRecorder::writeHeader(const SimCabinet& cabinet)
{
    m_out << "time_s,ambient_C,air_C,bus_V,battery_charge_pct,battery_A,mains";
    for (const SimUnit* unit : cabinet.units()) {
        for (const ValueDefinition& value : unit->definitions()) {
            const std::string name = value.name;
            if (name.rfind("cap.", 0) == 0 || name.rfind("add.", 0) == 0) continue;
            m_columns.push_back({unit->port(), unit->address(), value.name});
            m_out << "," << unitColumn(*unit) << "." << value.name;
        }
    }
    m_out << "\n";
    m_headerDone = true;
}

void PlantRecorder::record(std::uint64_t nowMs, Plant& plant, const SimCabinet& cabinet)
{
    if (!m_out) return;
    const bool first = !m_headerDone;
    if (first) writeHeader(cabinet);
    std::vector<std::int32_t> values;
    values.reserve(m_columns.size());
    const SimUnit* unit = nullptr;
    for (std::size_t index = 0; index < m_columns.size(); ++index) {
        const Column& column = m_columns[index];
        if (index == 0 || column.port != m_columns[index - 1].port || column.address != m_columns[index - 1].address)
            unit = cabinet.unit(column.port, column.address);
        values.push_back(unit != nullptr ? unit->get(column.name).value_or(0) : 0);
    }
    constexpr std::uint64_t kAtLeastEveryMs = 60 * 1000;
    if (!first && values == m_last && nowMs - m_lastRowMs < kAtLeastEveryMs) return;
    m_last = values;
    m_lastRowMs = nowMs;
    char head[160];
    std::snprintf(head, sizeof head, "%llu,%.2f,%.2f,%.3f,%.2f,%.2f,%d",
                  static_cast<unsigned long long>(nowMs / 1000), plant.thermal().ambientC(nowMs),
                  plant.thermal().airC(), plant.electrical().busV(), plant.electrical().stateOfCharge() * 100.0,
                  plant.electrical().batteryCurrentA(), plant.electrical().mains() ? 1 : 0);
    m_out << head;
    for (std::int32_t value : values) m_out << "," << value;
    m_out << "\n";
}

} // namespace sim
