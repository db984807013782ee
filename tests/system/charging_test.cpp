// A site's daily mains loss seen from outside: the node, configured as the
// main job configures it, carries the radio load on its battery for two
// hours, reports the battery mode over the power management interface, and
// once mains returns its charger brings the battery back up within its
// current limit, through its states, back to float. Only the gateway, the
// virtual clock and what the node writes (its recording and its trace) are
// used.

#include "adapters/PmiSignals.h"
#include "app/PmiText.h"
#include "ose/GatewayClient.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/SignalBytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <map>
#include <sstream>
#include <vector>

namespace systemtest {
namespace {

using namespace pmi;
using ::testing::ElementsAre;

constexpr std::uint64_t kHourMs = 3600ULL * 1000;
constexpr std::uint16_t kRunningOnBatteries = 5;

// The recording's columns by name, one row a recorded second.
struct Recording {
    std::map<std::string, std::vector<double>> columns;

    explicit Recording(const std::string& path)
    {
        std::ifstream in(path);
        std::string line;
        std::getline(in, line);
        std::vector<std::string> names;
        std::stringstream header(line);
        for (std::string name; std::getline(header, name, ',');) names.push_back(name);
        while (std::getline(in, line)) {
            std::stringstream row(line);
            std::size_t index = 0;
            for (std::string cell; std::getline(row, cell, ',') && index < names.size(); ++index)
                columns[names[index]].push_back(std::stod(cell));
        }
    }
    // The largest value of `column` at or after `fromS`.
    double mostFrom(const std::string& column, double fromS) const
    {
        double most = -1e9;
        const auto& times = columns.at("time_s");
        for (std::size_t i = 0; i < times.size(); ++i)
            if (times[i] >= fromS) most = std::max(most, columns.at(column)[i]);
        return most;
    }
    double leastFrom(const std::string& column, double fromS) const
    {
        double least = 1e9;
        const auto& times = columns.at("time_s");
        for (std::size_t i = 0; i < times.size(); ++i)
            if (times[i] >= fromS) least = std::min(least, columns.at(column)[i]);
        return least;
    }
};

std::vector<std::string> stateChanges(const std::string& trace)
{
    std::vector<std::string> changes;
    std::stringstream lines(trace);
    const std::string marker = "Charging State changed from ";
    for (std::string line; std::getline(lines, line);)
        if (const auto at = line.find(marker); at != std::string::npos) changes.push_back(line.substr(at + marker.size()));
    return changes;
}

TEST(ChargingSystemTest, ADailyMainsLossIsRechargedWithinItsLimitBackToFloat)
{
    const std::string recording = traceFile("charging_test.csv");
    const std::string trace = traceFile("charging_trace.txt");
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/mains-cycles.xml",
                      "--configure-site", "--record", recording, "--trace", "supSysCtrlBattery:4", "--trace-file",
                      trace});
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "charging_client", true)) << client.lastError();
    ASSERT_TRUE(client.advanceBy(10));
    auto pmi = client.hunt(kServerName, 0);
    ASSERT_TRUE(pmi && *pmi != 0);
    // The battery's faults reach the clients that configured it.
    std::string battery;
    std::string error;
    ASSERT_TRUE(pmi_text::batteryConfig({{"charging", "-55.0"}, {"nominal-temp", "25"}, {"comp-slope", "-0.072"},
                                         {"comp-min", "-54.0"}, {"comp-max", "-56.0"}},
                                        1, battery, error))
        << error;
    ASSERT_TRUE(client.send(*pmi, battery));

    // Mains goes at 02:00 for two hours; the day runs on to 20:00.
    std::vector<std::string> faults;
    for (std::uint64_t hour = 0; hour < 20; ++hour) {
        ASSERT_TRUE(client.advanceBy(kHourMs));
        while (auto event = client.next(std::chrono::milliseconds(100))) {
            if (event->sigNo() != PMI_FAULT_IND && event->sigNo() != PMI_FAULT_CEASE_IND) continue;
            const auto header = layoutOf<PMI_HEADER_S>(event->bytes);
            if (header.objectType == kBatteryBackup && header.word14 == kRunningOnBatteries)
                faults.push_back((event->sigNo() == PMI_FAULT_IND ? "raised before " : "ceased before ") +
                                 std::to_string(hour + 1) + " h");
        }
    }
    EXPECT_THAT(faults, ElementsAre("raised before 3 h", "ceased before 5 h"));
    EXPECT_EQ(node.stop(), 0);

    EXPECT_THAT(stateChanges(readFile(trace)),
                ElementsAre("CHARGING_UNDEFINED to SOFT_START.", "SOFT_START to FLOAT.", "FLOAT to DISCHARGE.",
                            "DISCHARGE to SOFT_START.", "SOFT_START to FLOAT."));
    const Recording plant(recording);
    EXPECT_LT(plant.leastFrom("battery_charge_pct", 0), 60.0) << "two hours of 1.2 kW from 100 Ah";
    // From the first minute after mains returns the charger holds the
    // battery to its 20 A; before its first pass the PSUs walk in at the
    // voltage they had.
    EXPECT_LE(plant.mostFrom("battery_A", 4 * 3600 + 60), 22.0);
    EXPECT_GT(plant.mostFrom("battery_A", 4 * 3600 + 60), 15.0) << "and the battery takes what it may";
    EXPECT_GT(plant.columns.at("battery_charge_pct").back(), 97.0) << "charged again";
}

} // namespace
} // namespace systemtest
