#pragma once
// The clock of a world: milliseconds since the world began, and the calendar.
//
// Modes:
//   real      time is the wall clock's;
//   virtual   time stands still while processes run and, when none is ready,
//             jumps to the next time-out: a simulated day runs in seconds and
//             every run gives the same result;
//   paced:N   virtual time that moves at N times the wall clock's speed.
// All calendar values are UTC.

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace ose {

enum class ClockMode { Real, Virtual, Paced };

struct CalendarTime {
    int year = 0;
    int month = 0; // 1..12
    int day = 0;   // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

struct ClockConfig {
    ClockMode mode = ClockMode::Virtual;
    double pace = 1.0; // for Paced
    // Calendar time at the start of a virtual or paced world, in ms since
    // 1970-01-01 00:00 UTC. The default is 2020-01-01 00:00 UTC.
    std::int64_t calendarStartMs = 1577836800000LL;

    // "real", "virtual" or "paced:N".
    static bool parseMode(std::string_view text, ClockConfig& config, std::string* error = nullptr);
    // "YYYY-MM-DD" or "YYYY-MM-DDTHH:MM" (UTC).
    static bool parseCalendarStart(std::string_view text, ClockConfig& config, std::string* error = nullptr);
};

class Clock {
public:
    explicit Clock(const ClockConfig& config);

    const ClockConfig& config() const { return m_config; }
    bool isVirtual() const { return m_config.mode != ClockMode::Real; }

    // Milliseconds since the world began.
    std::uint64_t now() const { return m_now; }
    // Real mode: reads the wall clock.
    void sync();
    // Virtual and paced modes: moves time forward (never back).
    void advanceTo(std::uint64_t ms);

    // How long to wait on the wall clock for `ms` of this clock to pass.
    std::chrono::nanoseconds wallDuration(std::uint64_t ms) const;

    std::int64_t calendarMs() const { return m_calendarStartMs + static_cast<std::int64_t>(m_now); }
    CalendarTime calendar() const { return toCalendar(calendarMs()); }
    // Calendar time in minutes since 1970, rounded down.
    std::uint32_t minutesSince1970() const;

    static CalendarTime toCalendar(std::int64_t msSince1970);
    static std::int64_t fromCalendar(const CalendarTime& time);

private:
    ClockConfig m_config;
    std::int64_t m_calendarStartMs;
    std::uint64_t m_now = 0;
    std::chrono::steady_clock::time_point m_wallStart;
};

} // namespace ose
