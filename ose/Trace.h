#pragma once
// The one trace facility of the system: group, level, file, line and text.
//
// Groups are registered by name once at start (registration is idempotent and
// returns the same id for the same name). Which groups and levels print is set
// by a configuration text, normally from the SSC_TRACE environment variable or
// a --trace option:
//
//   SSC_TRACE="*:1,supSysCtrlSWU:1-7+15+16,ose:all"
//
// Entries are separated by ',' or ';'. Each is GROUP:LEVELS where GROUP is a
// group name or '*' (every group, also those registered later), and LEVELS is
// 'all', 'none', a number N (levels 1..N), a range A-B, or several of these
// joined by '+'. Later entries override earlier ones for the groups they name.
// Without configuration only level 1 (errors) prints.
//
// Each line carries the world time, the node and the process that traced.
//
// SSC_TRACE evaluates its arguments only when the group and level print:
// never put work that must happen (a subscription, a send) inside a trace.

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace ose {

using TraceGroupId = std::uint16_t;

// One emitted line, as a sink sees it.
struct TraceRecord {
    std::string_view where; // world time, node and process
    std::string_view group;
    unsigned level;
    std::string_view file;
    int line;
    std::string_view text;
};
using TraceSink = std::function<void(const TraceRecord&)>;

class Trace {
public:
    static constexpr unsigned kMaxGroups = 128;
    static constexpr unsigned kMaxLevel = 31;

    // Registers a group (or finds it when already registered) and returns its id.
    static TraceGroupId registerGroup(std::string_view name);
    static std::string groupName(TraceGroupId id);

    static bool enabled(TraceGroupId group, unsigned level) noexcept;

    // Applies a configuration text; false and a message in *error when it is
    // malformed (nothing is changed then).
    static bool configure(std::string_view config, std::string* error = nullptr);
    // Back to the default: level 1 for every group.
    static void reset();

    // Output: stderr (the default) or a file, appended to.
    static bool setOutputFile(const std::string& path, std::string* error = nullptr);
    static void setOutputStderr();
    // While a sink is set, every emitted line goes to it instead of the
    // output (tests read levels and groups without parsing text). An empty
    // sink restores the output.
    static void setSink(TraceSink sink);

    static void emit(TraceGroupId group, unsigned level, const char* file, int line,
                     const char* format, ...) __attribute__((format(printf, 5, 6)));
    static void vemit(TraceGroupId group, unsigned level, const char* file, int line,
                      const char* format, va_list args);
};

// The group of the kernel layer's own messages (bad use of the kernel calls).
TraceGroupId oseTraceGroup();

// A group's name as a template argument: traceGroup<"name">().
template <std::size_t N>
struct TraceGroupName {
    constexpr TraceGroupName(const char (&text)[N])
    {
        for (std::size_t i = 0; i < N; ++i)
            m_text[i] = text[i];
    }
    char m_text[N];
};

// The id of a group, registered at its first use, so that a subsystem's
// group accessors need no start-up.
template <TraceGroupName Name>
TraceGroupId traceGroup()
{
    static const TraceGroupId id = Trace::registerGroup(Name.m_text);
    return id;
}

} // namespace ose

#define SSC_TRACE(group, level, ...)                                                  \
    do {                                                                              \
        if (::ose::Trace::enabled((group), (level)))                                  \
            ::ose::Trace::emit((group), (level), __FILE_NAME__, __LINE__, __VA_ARGS__); \
    } while (0)
