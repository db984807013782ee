#include "ose/Trace.h"

#include "ose/Format.h"
#include "ose/TraceContext.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

namespace ose {
namespace {

constexpr std::uint32_t kErrorsOnly = 1u << 1;
constexpr std::uint32_t kAllLevels = 0xFFFFFFFEu; // levels 1..31

struct Rule {
    std::string group; // "*" for every group
    std::uint32_t mask;
};

struct Registry {
    std::mutex mutex;
    std::vector<std::string> names;
    std::vector<Rule> rules{{"*", kErrorsOnly}};
    std::array<std::atomic<std::uint32_t>, Trace::kMaxGroups> masks{};
    std::FILE* out = stderr;
    bool ownsOut = false;
    TraceSink sink;

    std::uint32_t maskFor(const std::string& name) const
    {
        std::uint32_t mask = 0;
        for (const Rule& rule : rules)
            if (rule.group == "*" || rule.group == name) mask = rule.mask;
        return mask;
    }
    void applyRules()
    {
        for (std::size_t i = 0; i < names.size(); ++i)
            masks[i].store(maskFor(names[i]), std::memory_order_relaxed);
    }
};

Registry& registry()
{
    static Registry* r = new Registry; // lives as long as the program: traces may come from static destructors
    return *r;
}

bool parseNumber(std::string_view text, unsigned& value)
{
    if (text.empty() || text.size() > 2) return false;
    value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + static_cast<unsigned>(c - '0');
    }
    return value <= Trace::kMaxLevel;
}

std::uint32_t rangeMask(unsigned from, unsigned to)
{
    std::uint32_t mask = 0;
    for (unsigned level = from; level <= to; ++level) mask |= 1u << level;
    return mask;
}

// LEVELS: all | none | N | A-B, joined by '+'.
bool parseLevels(std::string_view text, std::uint32_t& mask)
{
    if (text == "all") { mask = kAllLevels; return true; }
    if (text == "none") { mask = 0; return true; }
    if (text.empty()) return false;
    mask = 0;
    while (!text.empty()) {
        std::size_t plus = text.find('+');
        std::string_view item = text.substr(0, plus);
        std::size_t dash = item.find('-');
        unsigned from = 0;
        unsigned to = 0;
        if (dash == std::string_view::npos) {
            if (!parseNumber(item, to)) return false;
            from = (text.size() == item.size() && mask == 0) ? 1 : to; // a single N means 1..N
        } else if (!parseNumber(item.substr(0, dash), from) || !parseNumber(item.substr(dash + 1), to) || from > to) {
            return false;
        }
        mask |= rangeMask(from, to);
        text = plus == std::string_view::npos ? std::string_view{} : text.substr(plus + 1);
    }
    return true;
}

bool parseConfig(std::string_view config, std::vector<Rule>& rules, std::string& error)
{
    while (!config.empty()) {
        std::size_t end = config.find_first_of(",;");
        std::string_view entry = config.substr(0, end);
        config = end == std::string_view::npos ? std::string_view{} : config.substr(end + 1);
        while (!entry.empty() && entry.front() == ' ') entry.remove_prefix(1);
        while (!entry.empty() && entry.back() == ' ') entry.remove_suffix(1);
        if (entry.empty()) continue;
        std::size_t colon = entry.rfind(':');
        std::uint32_t mask = 0;
        if (colon == std::string_view::npos || colon == 0 || !parseLevels(entry.substr(colon + 1), mask)) {
            error = "bad trace entry '" + std::string(entry) + "': expected GROUP:LEVELS, e.g. supSysCtrlSWU:1-7+15";
            return false;
        }
        rules.push_back({std::string(entry.substr(0, colon)), mask});
    }
    return true;
}

} // namespace

TraceGroupId Trace::registerGroup(std::string_view name)
{
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    for (std::size_t i = 0; i < r.names.size(); ++i)
        if (r.names[i] == name) return static_cast<TraceGroupId>(i);
    if (r.names.size() >= kMaxGroups) {
        std::fprintf(r.out, "trace: too many groups, '%.*s' shares the last one\n", static_cast<int>(name.size()), name.data());
        return static_cast<TraceGroupId>(kMaxGroups - 1);
    }
    r.names.emplace_back(name);
    r.masks[r.names.size() - 1].store(r.maskFor(r.names.back()), std::memory_order_relaxed);
    return static_cast<TraceGroupId>(r.names.size() - 1);
}

std::string Trace::groupName(TraceGroupId id)
{
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return id < r.names.size() ? r.names[id] : std::string("?");
}

bool Trace::enabled(TraceGroupId group, unsigned level) noexcept
{
    if (group >= kMaxGroups || level > kMaxLevel) return false;
    return (registry().masks[group].load(std::memory_order_relaxed) >> level) & 1u;
}

bool Trace::configure(std::string_view config, std::string* error)
{
    std::vector<Rule> rules;
    std::string message;
    if (!parseConfig(config, rules, message)) {
        if (error != nullptr) *error = message;
        return false;
    }
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.rules.insert(r.rules.end(), rules.begin(), rules.end());
    r.applyRules();
    return true;
}

void Trace::reset()
{
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.rules = {{"*", kErrorsOnly}};
    r.applyRules();
}

bool Trace::setOutputFile(const std::string& path, std::string* error)
{
    std::FILE* file = std::fopen(path.c_str(), "a");
    if (file == nullptr) {
        if (error != nullptr) *error = "cannot open trace file " + path + ": " + std::strerror(errno);
        return false;
    }
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    if (r.ownsOut) std::fclose(r.out);
    r.out = file;
    r.ownsOut = true;
    return true;
}

void Trace::setOutputStderr()
{
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    if (r.ownsOut) std::fclose(r.out);
    r.out = stderr;
    r.ownsOut = false;
}

void Trace::setSink(TraceSink sink)
{
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.sink = std::move(sink);
}

void Trace::vemit(TraceGroupId group, unsigned level, const char* file, int line, const char* format,
                  va_list args)
{
    std::string text = ose::vformat(format, args);
    std::string where = detail::traceContext();
    std::string groupText = groupName(group);
    Registry& r = registry();
    std::unique_lock<std::mutex> lock(r.mutex);
    if (r.sink) {
        TraceSink sink = r.sink; // called without the lock: it may trace or configure
        lock.unlock();
        sink(TraceRecord{where, groupText, level, file != nullptr ? file : "?", line, text});
        return;
    }
    std::fprintf(r.out, "%s %s %u %s:%d %s\n", where.c_str(), groupText.c_str(), level,
                 file != nullptr ? file : "?", line, text.c_str());
    std::fflush(r.out);
}

void Trace::emit(TraceGroupId group, unsigned level, const char* file, int line, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    vemit(group, level, file, line, format, args);
    va_end(args);
}

TraceGroupId oseTraceGroup()
{
    static const TraceGroupId id = Trace::registerGroup("ose");
    return id;
}

} // namespace ose

namespace ose::detail {
namespace {
std::atomic<TraceContextFn> g_traceContextFn{nullptr};
}

void setTraceContextFn(TraceContextFn fn)
{
    g_traceContextFn.store(fn);
}

std::string traceContext()
{
    TraceContextFn fn = g_traceContextFn.load();
    return fn != nullptr ? fn() : std::string("[          -] -/-");
}

} // namespace ose::detail
