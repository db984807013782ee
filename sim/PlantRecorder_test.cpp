// A recording names every recorded value once, writes a row when something
// changed and at least once a minute, and does not change the run it records.

#include "sim/PlantRecorder.h"

#include "sim/SimCabinet.h"
#include "sim/SiteFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace sim {
namespace {

std::vector<std::string> split(const std::string& line)
{
    std::vector<std::string> cells;
    std::istringstream in(line);
    for (std::string cell; std::getline(in, cell, ',');) cells.push_back(cell);
    return cells;
}

TEST(PlantRecorderTest, ARecordingHoldsEveryValueOnChangeAndLeavesTheRunAsItWas)
{
    const std::string path = testing::TempDir() + "plant_recorder_test.csv";
    SimCabinet recorded;
    SimCabinet plain;
    std::string error;
    ASSERT_TRUE(SiteFile::load(SSC_SOURCE_DIR "/sim/sites/default.xml", recorded, error)) << error;
    ASSERT_TRUE(SiteFile::load(SSC_SOURCE_DIR "/sim/sites/default.xml", plain, error)) << error;
    auto recorder = std::make_unique<PlantRecorder>();
    ASSERT_TRUE(recorder->open(path, error)) << error;
    recorded.plant->setRecorder(std::move(recorder));
    // Ten minutes in uneven requests; the node commands the fans at 6 min.
    for (std::uint64_t ms = 0; ms <= 600 * 1000; ms += 1700) {
        if (ms >= 360 * 1000) recorded.unit(1, 32)->set("set.fanSpeed1", 100);
        if (ms >= 360 * 1000) plain.unit(1, 32)->set("set.fanSpeed1", 100);
        recorded.advancePlant(ms);
        plain.advancePlant(ms);
    }
    for (const char* name : {"scuTemperature", "fanGroupFailure"})
        EXPECT_EQ(recorded.unit(1, 32)->get(name), plain.unit(1, 32)->get(name)) << name;
    EXPECT_EQ(recorded.unit(1, 64)->get("batteryVoltage"), plain.unit(1, 64)->get("batteryVoltage"));
    EXPECT_EQ(recorded.unit(1, 48)->get("temperature"), plain.unit(1, 48)->get("temperature"));
    EXPECT_DOUBLE_EQ(recorded.plant->thermal().hotSpotC(1), plain.plant->thermal().hotSpotC(1));
    recorded.plant.reset(); // closes the file

    std::ifstream in(path);
    std::string line;
    ASSERT_TRUE(std::getline(in, line));
    const std::vector<std::string> header = split(line);
    EXPECT_EQ(header.at(0), "time_s");
    std::size_t fanColumn = 0;
    for (std::size_t i = 0; i < header.size(); ++i) {
        EXPECT_EQ(header[i].find(".cap."), std::string::npos) << header[i];
        if (header[i] == "SCU@32.set.fanSpeed1") fanColumn = i;
    }
    ASSERT_NE(fanColumn, 0u);
    std::uint64_t lastSecond = 0;
    std::size_t rows = 0;
    std::string fanBefore = "50";
    while (std::getline(in, line)) {
        const std::vector<std::string> row = split(line);
        ASSERT_EQ(row.size(), header.size()) << line;
        const std::uint64_t second = std::stoull(row[0]);
        EXPECT_GT(second, lastSecond);
        EXPECT_LE(second - lastSecond, 60u) << "at least a row a minute";
        // The fan command shows in the row of the second it came in.
        if (row[fanColumn] != fanBefore) {
            EXPECT_GE(second, 358u);
            EXPECT_LE(second, 361u);
        }
        fanBefore = row[fanColumn];
        lastSecond = second;
        ++rows;
    }
    EXPECT_EQ(fanBefore, "100");
    EXPECT_GE(lastSecond, 598u - 60u) << "the run steps to 598 s";
    // The cabinet warms in whole degrees now and then: far fewer rows than seconds.
    EXPECT_GE(rows, 10u);
    EXPECT_LT(rows, 300u);
    std::remove(path.c_str());

    PlantRecorder nowhere;
    EXPECT_FALSE(nowhere.open("/nonexistent/dir/x.csv", error));
    EXPECT_EQ(error, "cannot write the recording to /nonexistent/dir/x.csv");
}

} // namespace
} // namespace sim
