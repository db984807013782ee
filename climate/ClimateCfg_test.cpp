// The climate parameters: numbers land in their fields in the order they
// arrive, and the fall-backs keep a half-configured cabinet's fans running.

#include "climate/ClimateCfg.h"

#include "frame/testSupport/TraceCapture.h"

#include <gtest/gtest.h>

namespace {

std::array<std::int16_t, ClimateCfg::kNumbers> numbered()
{
    std::array<std::int16_t, ClimateCfg::kNumbers> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = static_cast<std::int16_t>(i + 1);
    return numbers;
}

TEST(ClimateCfgTest, TheNumbersFillTheFieldsInTheirOrderAndAreTracedInIt)
{
    ClimateCfg empty;
    EXPECT_FALSE(empty.valid);
    EXPECT_EQ(empty.climateSystem, 2u);
    EXPECT_EQ(empty.climateControlMode, 2u);
    EXPECT_EQ(empty.flowFactor, 0);

    TraceCapture trace("supSysCtrlClimate:all");
    ClimateCfg cfg;
    cfg.setCabinetParameters(1, 0, numbered());
    EXPECT_TRUE(cfg.valid);
    EXPECT_EQ(cfg.numberOfBlowers, 1);
    EXPECT_EQ(cfg.externalFanStopTemp, 9);
    EXPECT_EQ(cfg.placementFactorDU, 15);
    EXPECT_EQ(cfg.fanGroup4Control, 19);
    EXPECT_EQ(cfg.extFanSpeedFault, 32);
    EXPECT_EQ(cfg.missingNodeBasicFanSpeed, 35);
    EXPECT_EQ(cfg.heater2FanGroup1Fan2Speed, 41);
    EXPECT_EQ(cfg.externalFanMaxTemp, 43);
    EXPECT_EQ(cfg.climateSystem, 1u);
    EXPECT_EQ(cfg.climateControlMode, 0u);

    cfg.printCabinetParameters();
    const std::vector<std::string> lines = trace.texts("supSysCtrlClimate", 4);
    ASSERT_EQ(lines.size(), 45u);
    EXPECT_EQ(lines.front(), "numberOfBlowers         = 1");
    EXPECT_EQ(lines[34], "missingNodeBasicFanSpeed= 35");
    EXPECT_EQ(lines[42], "externalFanMaxTemp      = 43");
    EXPECT_EQ(lines[43], "climateSystem           = 1");
    EXPECT_EQ(lines[44], "climateControlMode      = 0");
}

TEST(ClimateCfgTest, ZeroSpeedsAndFactorFallBackSoThatTheFansRunRatherThanStand)
{
    TraceCapture trace("supSysCtrlClimate:all");
    ClimateCfg cfg;
    cfg.setCabinetParameters(0, 1, {});
    EXPECT_EQ(cfg.nominalFanSpeed, 100);
    EXPECT_EQ(cfg.basicFanSpeed, 100);
    EXPECT_EQ(cfg.minimumExternalFanSpeed, 100);
    EXPECT_EQ(cfg.missingNodeBasicFanSpeed, 30);
    EXPECT_EQ(cfg.flowFactor, 150);
    // Zero is a value for these, not a case for a fall-back.
    EXPECT_EQ(cfg.hysteresis, 0);
    EXPECT_EQ(cfg.startingPoint, 0);
    EXPECT_EQ(cfg.externalFanStartTemp, 0);
    EXPECT_TRUE(trace.contains("Nominal fan speed is configured to 0. The value 100 is used instead"));
    EXPECT_TRUE(trace.contains("MissingNodeFanSpeed is configured to 0. The value 30 is used instead"));
    EXPECT_TRUE(trace.contains("Flow factor is configured to 0. The value 150 is used instead"));
    // Without external fan groups the minimum external speed changes silently.
    EXPECT_FALSE(trace.contains("Min external fan speed"));

    auto numbers = std::array<std::int16_t, ClimateCfg::kNumbers>{};
    numbers[17] = ClimateCfg::kExternalFanGroup; // fanGroup3Control
    cfg.setCabinetParameters(0, 1, numbers);
    EXPECT_EQ(cfg.minimumExternalFanSpeed, 100);
    EXPECT_TRUE(trace.contains("Min external fan speed is configured to 0. The value 100 is used instead"));
    EXPECT_TRUE(cfg.anyExternalFanGroup());
    EXPECT_EQ(cfg.fanGroupControl(3), 2);
    EXPECT_EQ(cfg.fanGroupControl(5), 0);
}

TEST(ClimateCfgTest, TheSignalsClimateSystemAndModeAreNarrowedToWhatTheRegulatorKnows)
{
    EXPECT_EQ(ClimateCfg::climateSystemOf(0), 0u);
    EXPECT_EQ(ClimateCfg::climateSystemOf(1), 1u);
    EXPECT_EQ(ClimateCfg::climateSystemOf(7), 2u);
    EXPECT_EQ(ClimateCfg::climateControlModeOf(1), 1u);
    EXPECT_EQ(ClimateCfg::climateControlModeOf(2), 0u);
    EXPECT_EQ(ClimateCfg::climateControlModeOf(0), 0u);
}

} // namespace
