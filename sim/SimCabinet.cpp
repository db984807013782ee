#include "sim/SimCabinet.h"

#include "sim/SimBfu.h"
#include "sim/SimClu.h"
#include "sim/SimPdu.h"
#include "sim/SimPsu.h"
#include "sim/SimSau.h"
#include "sim/SimScu.h"

namespace sim {

namespace {

std::unique_ptr<SimUnit> makeUnit(UnitType type, std::uint16_t port, std::uint8_t address)
{
    switch (type) {
    case UnitType::SCU: return std::make_unique<SimScu>(port, address);
    case UnitType::SAU: return std::make_unique<SimSau>(port, address);
    case UnitType::CLU: return std::make_unique<SimClu>(port, address);
    case UnitType::PSU: return std::make_unique<SimPsu>(port, address);
    case UnitType::BFU: return std::make_unique<SimBfu>(port, address);
    case UnitType::PDU: return std::make_unique<SimPdu>(port, address);
    }
    return nullptr;
}

} // namespace

SimCabinet::SimCabinet() : m_units(2 * 256) {}

SimCabinet::~SimCabinet() = default;

SimUnit* SimCabinet::addUnit(UnitType type, std::uint16_t port, std::uint8_t address)
{
    if (port < 1 || port > 2 || m_units[slot(port, address)] != nullptr) return nullptr;
    m_units[slot(port, address)] = makeUnit(type, port, address);
    return m_units[slot(port, address)].get();
}

bool SimCabinet::removeUnit(std::uint16_t port, std::uint8_t address)
{
    if (port < 1 || port > 2 || m_units[slot(port, address)] == nullptr) return false;
    m_units[slot(port, address)].reset();
    return true;
}

SimUnit* SimCabinet::unit(std::uint16_t port, std::uint8_t address) const
{
    if (port < 1 || port > 2) return nullptr;
    return m_units[slot(port, address)].get();
}

std::vector<SimUnit*> SimCabinet::units() const
{
    std::vector<SimUnit*> all;
    for (const auto& unit : m_units)
        if (unit) all.push_back(unit.get());
    return all;
}

void SimCabinet::log(BusLogEntry entry)
{
    if (logCapacity == 0) return;
    if (m_busLog.size() >= logCapacity) m_busLog.pop_front();
    m_busLog.push_back(std::move(entry));
}

} // namespace sim
