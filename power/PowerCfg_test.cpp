// The two power configuration records: start values, their trace in its
// fixed order, copies of texts that fill their field, and the date parser's
// refusal of anything but eight digits of a real day.

#include "power/BatteryBackupCfg.h"
#include "power/PowerDistributionCfg.h"

#include "frame/testSupport/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using Texts = std::vector<std::string>;

const std::string kPower = "supSysCtrlPower";
constexpr unsigned kInfo = 4;
constexpr unsigned kUnexpected = 5;

template <std::size_t N>
void setText(char (&field)[N], const char* text)
{
    std::memset(field, 0, N);
    std::memcpy(field, text, std::min(N, std::strlen(text)));
}

Texts printed(const BatteryBackupCfg& cfg)
{
    TraceCapture trace(kPower + ":all");
    cfg.print();
    return trace.texts(kPower, kInfo);
}

// The name in " Name = value".
Texts names(const Texts& lines)
{
    Texts result;
    for (const std::string& line : lines) result.push_back(line.substr(1, line.find(" = ") - 1));
    return result;
}

TEST(BatteryBackupCfgTest, ARecordIsPrintedChargingModeFirstThenInItsFixedOrder)
{
    BatteryBackupCfg cfg;
    cfg.chargingMode = BatteryBackupCfg::kChargingModeAutomatic;
    cfg.batteryDisconnectTemp = -5;
    cfg.chargingVoltage = -54.5F;
    cfg.tempCompVoltageSlope = -0.08F;
    cfg.testStartMonths = {1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0};
    setText(cfg.testStartTime, "01:30");
    setText(cfg.batteryInstallationDate, "20240115");
    // A text that fills its field is printed whole and no further.
    setText(cfg.lastBatteryTestDate, "202401150123XYZ");
    const Texts lines = printed(cfg);

    EXPECT_THAT(names(lines),
                ElementsAre("ChargingMode", "ChargeMaxCurrent", "BatteryDisconnectTemp",
                            "BatteryDisconnectTempCeaseOffset", "ChargingVoltage", "TempCompVoltageSlope", "NominalTemp",
                            "TempCompMinVoltage", "TempCompMaxVoltage", "IncreasedChargeVoltage", "BoostChargeTime",
                            "BoostChargeTriggerVoltage", "EqualizeChargeTime", "EqualizeChargeCyclicInterval",
                            "IntermittentChargeConnectVoltage", "IntermittentChargeConnectTime",
                            "IntermittentChargeDisconnectTime", "SharedBattery", "TestMode", "TestStartDay",
                            "TestStartTime", "NumberOfTestMonths", "TestStartMonths", "LastNominalBatteryCapacity",
                            "BatteryInstallationDate", "MinimumStateOfHealth", "MinimumBackupTime",
                            "ReferenceBatteryCapacity", "NextScheduledBatteryTestDate",
                            "EstimatedRemainingBatteryBackup", "TotalDischargeCapacity", "RechargeTime",
                            "LastBatteryTestDate"));
    ASSERT_EQ(lines.size(), 33u);
    EXPECT_EQ(lines[0], " ChargingMode = AUTOMATIC");
    EXPECT_EQ(lines[2], " BatteryDisconnectTemp = -5");
    EXPECT_EQ(lines[4], " ChargingVoltage = -54.50");
    EXPECT_EQ(lines[5], " TempCompVoltageSlope = -0.08");
    EXPECT_EQ(lines[18], " TestMode = 3");
    EXPECT_EQ(lines[20], " TestStartTime = 01:30");
    EXPECT_EQ(lines[22], " TestStartMonths = 1,0,0,1,0,0,1,0,0,1,0,0");
    EXPECT_EQ(lines[23], " LastNominalBatteryCapacity = -2147483648");
    EXPECT_EQ(lines[24], " BatteryInstallationDate = 20240115");
    EXPECT_EQ(lines[28], " NextScheduledBatteryTestDate = ");
    EXPECT_EQ(lines[32], " LastBatteryTestDate = 202401150123");
}

TEST(BatteryBackupCfgTest, OnlyChargingModeTwoIsUserDefined)
{
    BatteryBackupCfg cfg;
    EXPECT_EQ(printed(cfg)[0], " ChargingMode = USER_DEFINED");
    for (std::uint32_t mode : {0u, 1u, 3u, 0xFFFFFFFFu}) {
        cfg.chargingMode = mode;
        EXPECT_EQ(printed(cfg)[0], " ChargingMode = AUTOMATIC") << mode;
    }
}

TEST(BatteryBackupCfgTest, AssignmentCopiesEveryFieldAndTextsByTheirFullLength)
{
    BatteryBackupCfg source;
    source.testStartMonths[11] = 1;
    source.referenceBatteryCapacity = 190;
    source.configured = true;
    // Bytes behind the NUL and a text without one travel too.
    std::memcpy(source.nextScheduledBatteryTestDate, "20250301\0ab", BatteryBackupCfg::kDateSize);
    setText(source.testStartTime, "23:59:59");

    BatteryBackupCfg copy;
    copy.testMode = 1;
    copy = source;
    EXPECT_EQ(copy.testMode, 3u);
    EXPECT_EQ(copy.testStartMonths, source.testStartMonths);
    EXPECT_EQ(copy.referenceBatteryCapacity, 190);
    EXPECT_TRUE(copy.configured);
    EXPECT_EQ(std::memcmp(copy.nextScheduledBatteryTestDate, "20250301\0ab", BatteryBackupCfg::kDateSize), 0);
    EXPECT_EQ(std::memcmp(copy.testStartTime, "23:59:59", BatteryBackupCfg::kTimeSize), 0);
}

TEST(BatteryBackupCfgTest, ADateIsEightDigitsOfARealDay)
{
    BatteryBackupCfg cfg;
    BatteryBackupCfg::Date date;
    setText(cfg.batteryInstallationDate, "20240229");
    ASSERT_TRUE(cfg.installationDate(date));
    EXPECT_EQ(date.year, 2024);
    EXPECT_EQ(date.month, 2);
    EXPECT_EQ(date.day, 29);

    TraceCapture trace(kPower + ":all");
    // Never set: no date, and nothing to report.
    setText(cfg.batteryInstallationDate, "");
    EXPECT_FALSE(cfg.installationDate(date));
    EXPECT_TRUE(trace.texts(kPower, kUnexpected).empty());

    for (const char* text : {"2024022", "202402291", "2024-2-29", "2024 229", "20230229", "21000229", "20241301",
                             "20240001", "20240100", "20240431", "00000101", "202401150123"}) {
        setText(cfg.batteryInstallationDate, text);
        EXPECT_FALSE(cfg.installationDate(date)) << text;
    }
    EXPECT_EQ(date.year, 2024);
    EXPECT_EQ(trace.count(kPower, kUnexpected, "parseDate: malformed date 202401150123"), 1u);
    EXPECT_TRUE(BatteryBackupCfg::parseDate({'2', '0', '0', '0', '0', '2', '2', '9'}, date));
    EXPECT_EQ(date.year, 2000);
}

TEST(PowerDistributionCfgTest, TheLimitsArePrintedInTheirOrder)
{
    PowerDistributionCfg cfg;
    cfg.mainLoadUndervoltageDisconnect = -435;
    cfg.priorityLoadUndervoltageDisconnect = -420;
    cfg.undervoltageDisconnectCeaseOffset = 200;
    TraceCapture trace(kPower + ":all");
    cfg.print();
    EXPECT_THAT(trace.texts(kPower, kInfo),
                ElementsAre(" mainLoadUndervoltageDisconnect = -435", " priorityLoadUndervoltageDisconnect = -420",
                            " undervoltageDisconnectCeaseOffset = 200"));
}

} // namespace
