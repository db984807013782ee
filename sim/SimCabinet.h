#pragma once
// The simulated cabinet behind the bus server: its units by port and
// address, the bus settings, and the bus log that tests read.

#include "sim/Plant.h"
#include "sim/SimUnit.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace sim {

// One exchange on the bus, as the server saw it.
struct BusLogEntry {
    enum class Outcome : std::uint8_t { Answered, Empty, Rejected, NoAnswer, Forwarded };
    std::uint64_t timeMs = 0;
    std::uint16_t port = 0;
    std::uint8_t address = 0;
    std::string request;  // the frame, empty for a re-ask
    std::string answer;   // the answer frame when Answered
    Outcome outcome = Outcome::Answered;
    std::uint16_t rejectCode = 0; // when Rejected
};

class SimCabinet {
public:
    SimCabinet();
    ~SimCabinet();
    SimCabinet(const SimCabinet&) = delete;
    SimCabinet& operator=(const SimCabinet&) = delete;

    // Makes a unit of that type; NIL when the place is taken or the port is
    // not 1 or 2.
    SimUnit* addUnit(UnitType type, std::uint16_t port, std::uint8_t address);
    bool removeUnit(std::uint16_t port, std::uint8_t address);
    SimUnit* unit(std::uint16_t port, std::uint8_t address) const;
    std::vector<SimUnit*> units() const;

    // How long the bus waits for a silent unit before the server rejects
    // with a time-out.
    std::uint32_t busTimeoutMs = 20;
    // Refuse connection requests (a server that is up but not ready).
    bool refuseConnections = false;

    // The bus log keeps the latest `logCapacity` exchanges (0: none).
    void log(BusLogEntry entry);
    const std::deque<BusLogEntry>& busLog() const { return m_busLog; }
    void clearLog() { m_busLog.clear(); }
    std::size_t logCapacity = 4096;

    std::uint32_t connections = 0; // connection requests confirmed

    // The physics behind the units' measurements; without one, units keep
    // the values they were given.
    std::unique_ptr<Plant> plant;
    void advancePlant(std::uint64_t nowMs)
    {
        if (plant) plant->advanceTo(nowMs, *this);
    }

private:
    static std::size_t slot(std::uint16_t port, std::uint8_t address) { return (port - 1u) * 256u + address; }

    std::vector<std::unique_ptr<SimUnit>> m_units; // 2 ports x 256 addresses
    std::deque<BusLogEntry> m_busLog;
};

} // namespace sim
