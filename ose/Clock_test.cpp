#include "ose/Clock.h"
#include "ose/TestWorld.h"

namespace ose::testing {
namespace {

TEST(ClockConfigTest, ParsesModesAndRefusesNonsense)
{
    ClockConfig config;
    EXPECT_TRUE(ClockConfig::parseMode("real", config));
    EXPECT_EQ(config.mode, ClockMode::Real);
    EXPECT_TRUE(ClockConfig::parseMode("paced:60", config));
    EXPECT_EQ(config.mode, ClockMode::Paced);
    EXPECT_EQ(config.pace, 60.0);
    std::string error;
    for (const char* bad : {"paced:", "paced:0", "paced:-3", "paced:x", "fast", ""}) {
        EXPECT_FALSE(ClockConfig::parseMode(bad, config, &error)) << bad;
        EXPECT_NE(error.find("real, virtual or paced:N"), std::string::npos);
    }
}

TEST(ClockConfigTest, ParsesTheCalendarStart)
{
    ClockConfig config;
    ASSERT_TRUE(ClockConfig::parseCalendarStart("2026-11-23T09:30", config));
    CalendarTime t = Clock::toCalendar(config.calendarStartMs);
    EXPECT_EQ(t.year, 2026);
    EXPECT_EQ(t.month, 11);
    EXPECT_EQ(t.day, 23);
    EXPECT_EQ(t.hour, 9);
    EXPECT_EQ(t.minute, 30);
    for (const char* bad : {"2026-02-30", "2026-13-01", "2026-11-23T24:00", "2026/11/23", "2026-11-23T9:30"})
        EXPECT_FALSE(ClockConfig::parseCalendarStart(bad, config)) << bad;
}

TEST(ClockTest, CalendarConversionRoundTripsAcrossLeapDaysAndBefore1970)
{
    for (std::int64_t ms : {0LL, 951782400000LL /* 2000-02-29 */, 4107542400000LL /* 2100-03-01 */, -86400000LL}) {
        CalendarTime t = Clock::toCalendar(ms);
        EXPECT_EQ(Clock::fromCalendar(t), ms);
    }
    CalendarTime leap = Clock::toCalendar(951782400000LL);
    EXPECT_EQ(leap.month, 2);
    EXPECT_EQ(leap.day, 29);
    CalendarTime before = Clock::toCalendar(-1);
    EXPECT_EQ(before.year, 1969);
    EXPECT_EQ(before.millisecond, 999);
}

using CalendarInWorldTest = TestWorld;

TEST_F(CalendarInWorldTest, VirtualCalendarStartsWhereSetAndTicksWrap)
{
    ClockConfig config;
    ClockConfig::parseCalendarStart("2026-12-31T23:59", config);
    m_world = std::make_unique<World>(config);
    DateTime before{};
    DateTime after{};
    std::uint32_t minutes = 0;
    spawn("clock", [&] {
        before = rtc_get_date_time();
        delay(60000);
        after = rtc_get_date_time();
        minutes = rtc_get_minutes();
    });
    world().runUntilIdle();
    EXPECT_EQ(before.year, 2026);
    EXPECT_EQ(before.minute, 59);
    EXPECT_EQ(after.year, 2027);
    EXPECT_EQ(after.month, 1);
    EXPECT_EQ(after.day, 1);
    EXPECT_EQ(after.hour, 0);
    EXPECT_EQ(minutes, static_cast<std::uint32_t>((config.calendarStartMs + 60000) / 60000));
}

TEST_F(CalendarInWorldTest, RunForMovesVirtualTimeExactlyEvenWhenIdle)
{
    world().runFor(1234);
    EXPECT_EQ(world().now(), 1234u);
    OSTICK ticks = 0;
    spawn("t", [&] { ticks = get_ticks(); });
    world().runFor(0);
    EXPECT_EQ(ticks, 1234u);
}

TEST_F(CalendarInWorldTest, PacedClockKeepsTheOrderAndTheTimesOfVirtualTime)
{
    ClockConfig config;
    ASSERT_TRUE(ClockConfig::parseMode("paced:1000000", config)); // a second of world time in a microsecond
    m_world = std::make_unique<World>(config);
    std::vector<std::uint64_t> wokeAt;
    spawn("slow", [&] {
        for (int i = 0; i < 4; ++i) {
            delay(500);
            wokeAt.push_back(get_time_ms());
        }
    });
    world().runUntilIdle();
    EXPECT_EQ(wokeAt, (std::vector<std::uint64_t>{500, 1000, 1500, 2000}));
}

} // namespace
} // namespace ose::testing
