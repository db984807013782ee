#include "ose/Clock.h"

#include <charconv>

namespace ose {
namespace {

using namespace std::chrono;

bool parseInt(std::string_view text, int& value)
{
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

std::int64_t floorDiv(std::int64_t a, std::int64_t b)
{
    return a / b - ((a % b != 0) && ((a < 0) != (b < 0)) ? 1 : 0);
}

} // namespace

bool ClockConfig::parseMode(std::string_view text, ClockConfig& config, std::string* error)
{
    if (text == "real") { config.mode = ClockMode::Real; return true; }
    if (text == "virtual") { config.mode = ClockMode::Virtual; return true; }
    if (text.starts_with("paced:")) {
        std::string_view number = text.substr(6);
        double pace = 0.0;
        auto [end, ec] = std::from_chars(number.data(), number.data() + number.size(), pace);
        if (ec == std::errc() && end == number.data() + number.size() && pace > 0.0 && pace <= 1e6) {
            config.mode = ClockMode::Paced;
            config.pace = pace;
            return true;
        }
    }
    if (error != nullptr)
        *error = "bad clock mode '" + std::string(text) + "': expected real, virtual or paced:N (N > 0)";
    return false;
}

bool ClockConfig::parseCalendarStart(std::string_view text, ClockConfig& config, std::string* error)
{
    CalendarTime time;
    bool ok = text.size() >= 10 && text[4] == '-' && text[7] == '-' && parseInt(text.substr(0, 4), time.year) &&
              parseInt(text.substr(5, 2), time.month) && parseInt(text.substr(8, 2), time.day);
    if (ok && text.size() > 10)
        ok = text.size() == 16 && text[10] == 'T' && text[13] == ':' && parseInt(text.substr(11, 2), time.hour) &&
             parseInt(text.substr(14, 2), time.minute);
    ok = ok && time.month >= 1 && time.month <= 12 && time.hour < 24 && time.minute < 60 &&
         year_month_day(year(time.year), month(static_cast<unsigned>(time.month)), day(static_cast<unsigned>(time.day))).ok();
    if (!ok) {
        if (error != nullptr)
            *error = "bad calendar start '" + std::string(text) + "': expected YYYY-MM-DD or YYYY-MM-DDTHH:MM (UTC)";
        return false;
    }
    config.calendarStartMs = Clock::fromCalendar(time);
    return true;
}

Clock::Clock(const ClockConfig& config)
    : m_config(config), m_calendarStartMs(config.calendarStartMs), m_wallStart(steady_clock::now())
{
    if (config.mode == ClockMode::Real)
        m_calendarStartMs = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

void Clock::sync()
{
    if (m_config.mode != ClockMode::Real) return;
    auto elapsed = duration_cast<milliseconds>(steady_clock::now() - m_wallStart).count();
    if (elapsed > 0 && static_cast<std::uint64_t>(elapsed) > m_now) m_now = static_cast<std::uint64_t>(elapsed);
}

void Clock::advanceTo(std::uint64_t ms)
{
    if (ms > m_now) m_now = ms;
}

std::chrono::nanoseconds Clock::wallDuration(std::uint64_t ms) const
{
    switch (m_config.mode) {
    case ClockMode::Real: return milliseconds(ms);
    case ClockMode::Paced: return nanoseconds(static_cast<std::int64_t>(static_cast<double>(ms) * 1e6 / m_config.pace));
    case ClockMode::Virtual: break;
    }
    return nanoseconds(0);
}

std::uint32_t Clock::minutesSince1970() const
{
    return static_cast<std::uint32_t>(floorDiv(calendarMs(), 60000));
}

CalendarTime Clock::toCalendar(std::int64_t msSince1970)
{
    std::int64_t days = floorDiv(msSince1970, 86400000);
    std::int64_t msOfDay = msSince1970 - days * 86400000;
    year_month_day date{sys_days{std::chrono::days{days}}};
    CalendarTime time;
    time.year = static_cast<int>(date.year());
    time.month = static_cast<int>(static_cast<unsigned>(date.month()));
    time.day = static_cast<int>(static_cast<unsigned>(date.day()));
    time.hour = static_cast<int>(msOfDay / 3600000);
    time.minute = static_cast<int>(msOfDay / 60000 % 60);
    time.second = static_cast<int>(msOfDay / 1000 % 60);
    time.millisecond = static_cast<int>(msOfDay % 1000);
    return time;
}

std::int64_t Clock::fromCalendar(const CalendarTime& time)
{
    sys_days date{year_month_day(year(time.year), month(static_cast<unsigned>(time.month)),
                                 day(static_cast<unsigned>(time.day)))};
    std::int64_t days = date.time_since_epoch().count();
    return ((days * 24 + time.hour) * 60 + time.minute) * 60000 + time.second * 1000 + time.millisecond;
}

} // namespace ose
