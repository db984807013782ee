// Site files: the static cabinet loads with one unit of each type, and a
// bad file is refused with its line and reason, leaving no half cabinet.

#include "sim/SiteFile.h"

#include "sim/SimScu.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

TEST(SiteFileTest, TheStaticSiteHasOneUnitOfEachTypeAtItsFirstAddress)
{
    SimCabinet cabinet;
    std::string error;
    ASSERT_TRUE(SiteFile::load(SSC_SOURCE_DIR "/sim/sites/static.xml", cabinet, error)) << error;
    const std::pair<UnitType, std::uint8_t> expected[] = {{UnitType::SCU, 32}, {UnitType::SAU, 33},
                                                          {UnitType::CLU, 44}, {UnitType::PSU, 48},
                                                          {UnitType::BFU, 64}, {UnitType::PDU, 80}};
    ASSERT_EQ(cabinet.units().size(), std::size(expected));
    for (const auto& [type, address] : expected) {
        SimUnit* unit = cabinet.unit(1, address);
        ASSERT_NE(unit, nullptr) << int(address);
        EXPECT_EQ(unit->type(), type);
        EXPECT_TRUE(unit->startFlag());
    }
    EXPECT_EQ(cabinet.unit(1, 48)->get("outputCurrent"), 215);
    EXPECT_EQ(cabinet.unit(1, 48)->product().serialNumber, "PSU00012348");
    EXPECT_EQ(static_cast<SimScu*>(cabinet.unit(1, 32))->cabinet().serialNumber, "CAB00004711");
}

TEST(SiteFileTest, NumbersAndFlagsAreReadInDecimalAndHex)
{
    SimCabinet cabinet;
    std::string error;
    ASSERT_TRUE(SiteFile::parse(R"(<site><bus timeoutMs="35"/>
        <unit type="PDU" port="2" address="0x5F" bootMs="1500" startFlag="0">
          <value name="efuseOn" value="0xFFFF"/><value name="systemVoltage" value="-5300"/>
        </unit></site>)",
                                "inline", cabinet, error))
        << error;
    SimUnit* pdu = cabinet.unit(2, 95);
    ASSERT_NE(pdu, nullptr);
    EXPECT_EQ(pdu->get("efuseOn"), 0xFFFF);
    EXPECT_EQ(pdu->get("systemVoltage"), -5300);
    EXPECT_EQ(pdu->bootMs(), 1500u);
    EXPECT_FALSE(pdu->startFlag());
    EXPECT_EQ(cabinet.busTimeoutMs, 35u);
}

TEST(SiteFileTest, ThePlantsAttributesReachItsModels)
{
    SimCabinet cabinet;
    std::string error;
    ASSERT_TRUE(SiteFile::parse(R"(<site><plant mains="0" airflowPerGroupLPerS="100" cluAirflowLPerS="0"
        fanCurvePercent="0,10,20,30,100" batteryChargePercent="50" batteryBlocks="2"
        ambientProfileC="-5,-4,-3,-2,-1,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18"/></site>)",
                                "t", cabinet, error))
        << error;
    ASSERT_NE(cabinet.plant, nullptr);
    ThermalModel& thermal = cabinet.plant->thermal();
    EXPECT_DOUBLE_EQ(thermal.ambientC(2ULL * 3600 * 1000), -3.0);
    thermal.setFanSpeed(0, 75.0);
    EXPECT_NEAR(thermal.airflowConductanceWPerK(), 0.1 * 0.3 * 1200.0, 1e-9);
    EXPECT_FALSE(cabinet.plant->electrical().mains());
    EXPECT_DOUBLE_EQ(cabinet.plant->electrical().stateOfCharge(), 0.5);
    EXPECT_NEAR(cabinet.plant->electrical().openCircuitV(), 2 * (11.6 + 1.3 * 0.5), 1e-9);
}

TEST(SiteFileTest, ABadSiteIsRefusedWithItsLineAndReason)
{
    const std::pair<const char*, const char*> cases[] = {
        {"<site>\n<unit type=\"XYZ\" port=\"1\" address=\"1\"/></site>", "t:2: <unit> needs type"},
        {"<site>\n\n<unit type=\"PSU\" port=\"3\" address=\"1\"/></site>", "t:3: port=\"3\" is not a number from 1 to 2"},
        {"<site><unit type=\"PSU\" port=\"1\" address=\"256\"/></site>", "t:1: address=\"256\" is not a number"},
        {"<site><unit type=\"PSU\" port=\"1\" address=\"4x\"/></site>", "t:1: address=\"4x\" is not a number"},
        {"<site><unit type=\"PSU\" port=\"1\" address=\"48\"/>\n<unit type=\"BFU\" port=\"1\" address=\"48\"/></site>",
         "t:2: port 1 address 48 has a unit already"},
        {"<site><unit type=\"PSU\" port=\"1\" address=\"48\">\n<value name=\"fanSpeed\" value=\"1\"/></unit></site>",
         "t:2: a PSU has no value named fanSpeed"},
        {"<site><unit type=\"PSU\" port=\"1\" address=\"48\"><value name=\"load\" value=\"99999999999\"/></unit></site>",
         "is not a number from -2147483648 to 2147483647"},
        {"<site><unit type=\"PSU\" port=\"1\" address=\"48\"><product serial=\"123456789012345\"/></unit></site>",
         "serial is longer than 14 characters"},
        {"<site><unit type=\"PSU\" port=\"1\" address=\"48\"><cabinet/></unit></site>", "<cabinet> does not belong in a PSU"},
        {"<cabinet/>", "t:1: the root element must be <site>"},
        {"<site><plant fanCurvePercent=\"0,25,50,75\"/></site>", "fanCurvePercent needs 5 whole numbers"},
        {"<site><plant fanCurvePercent=\"0,25,50,75,101\"/></site>", "fanCurvePercent needs 5 whole numbers"},
        {"<site><plant fanCurvePercent=\"0,25,,75,100\"/></site>", "fanCurvePercent needs 5 whole numbers"},
        {"<site><plant fanCurvePercent=\"0, 25,50,75,100\"/></site>", "fanCurvePercent needs 5 whole numbers"},
        {"<site><plant fanCurvePercent=\"0,25,50,75,100,\"/></site>", "fanCurvePercent needs 5 whole numbers"},
        {"<site><plant ambientProfileC=\"1,2,3\"/></site>", "ambientProfileC needs 24 whole numbers from -60 to 70"},
        {"<site><plant ambientProfileC=\"-61,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24\"/></site>",
         "ambientProfileC needs 24"},
        {"<site><plant ambientProfileC=\"--1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24\"/></site>",
         "ambientProfileC needs 24"},
        {"<site><plant>\n<load pdu=\"80\" efuse=\"17\" watts=\"1\"/></plant></site>",
         "t:2: efuse=\"17\" is not a number from 1 to 16"},
        {"<site><plant><load efuse=\"1\" watts=\"1\"/></plant></site>", "<load> needs pdu"},
        {"<site><plant><outage startS=\"0\" durationS=\"60\" repeatS=\"60\"/></plant></site>",
         "an outage must end before it repeats"},
        {"<site><plant><outage startS=\"0\" durationS=\"0\"/></plant></site>", "durationS=\"0\" is not a number"},
        {"<site><plant><unit/></plant></site>", "<unit> does not belong in <plant>"},
        {"<site>\n<unit", "t:2: "},
        {"", "t:"},
    };
    for (const auto& [text, reason] : cases) {
        SimCabinet cabinet;
        std::string error;
        EXPECT_FALSE(SiteFile::parse(text, "t", cabinet, error)) << text;
        EXPECT_NE(error.find(reason), std::string::npos) << error << " / " << reason;
        EXPECT_TRUE(cabinet.units().empty()) << text;
        EXPECT_EQ(cabinet.plant, nullptr) << text;
    }
    SimCabinet cabinet;
    std::string error;
    EXPECT_FALSE(SiteFile::load("/nonexistent/site.xml", cabinet, error));
    EXPECT_EQ(error, "/nonexistent/site.xml: cannot be read");
}

} // namespace
} // namespace sim
