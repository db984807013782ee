// Site files: the default cabinet loads with one unit of each type, and a
// bad file is refused with its line and reason, leaving no half cabinet.

#include "sim/SiteFile.h"

#include "sim/SimScu.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

TEST(SiteFileTest, TheDefaultSiteHasOneUnitOfEachTypeAtItsFirstAddress)
{
    SimCabinet cabinet;
    std::string error;
    ASSERT_TRUE(SiteFile::load(SSC_SOURCE_DIR "/sim/sites/default.xml", cabinet, error)) << error;
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
        {"<site>\n<unit", "t:2: "},
        {"", "t:"},
    };
    for (const auto& [text, reason] : cases) {
        SimCabinet cabinet;
        std::string error;
        EXPECT_FALSE(SiteFile::parse(text, "t", cabinet, error)) << text;
        EXPECT_NE(error.find(reason), std::string::npos) << error << " / " << reason;
        EXPECT_TRUE(cabinet.units().empty()) << text;
    }
    SimCabinet cabinet;
    std::string error;
    EXPECT_FALSE(SiteFile::load("/nonexistent/site.xml", cabinet, error));
    EXPECT_EQ(error, "/nonexistent/site.xml: cannot be read");
}

} // namespace
} // namespace sim
