#pragma once
// A recording of a plant's run as CSV: a row with the time, the plant's own
// state (ambient and cabinet air, bus voltage, battery state of charge and
// current, mains) and every value of every unit, its measurements and what
// the node has set (not the fixed capabilities), whenever a unit's value
// changed and at least once a minute. The header names each column, a
// unit's as "PSU@48.outputVoltage" (port 2: "PSU@2:52....").

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace sim {

class Plant;
class SimCabinet;
class SimUnit;

class PlantRecorder {
public:
    // False (and a reason) when the file cannot be written.
    bool open(const std::string& path, std::string& error);
    void record(std::uint64_t nowMs, Plant& plant, const SimCabinet& cabinet);

private:
    void writeHeader(const SimCabinet& cabinet);

    std::ofstream m_out;
    bool m_headerDone = false;
    // The recorded values: which unit, which name. A unit is looked up by
    // its place at each row, so that one taken out reads as 0.
    struct Column {
        std::uint16_t port;
        std::uint8_t address;
        const char* name;
    };
    std::vector<Column> m_columns;
    std::vector<std::int32_t> m_last;
    std::uint64_t m_lastRowMs = 0;
};

} // namespace sim
