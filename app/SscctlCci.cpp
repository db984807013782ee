#include "app/SscctlCci.h"

#include "app/SscctlCommand.h"
#include "app/SscctlConversation.h"
#include "climate/CciSignals.h"

#include <cmath>
#include <cstring>
#include <optional>
#include <ostream>
#include <sstream>

namespace app {

using namespace cci;

namespace {

// A sensor registered from the command line: cooled by air with a gain of
// -0.5 degrees per unit of air flow, following it in a minute.
constexpr std::int16_t kGain = -50;
constexpr std::int16_t kTau = 600;
constexpr const char* kHwTypes[] = {"cbu", "rax", "ru", "tx", "du"};

struct Step {
    std::string verb;
    std::uint16_t hwType = 0;
    std::optional<std::uint16_t> group; // none: the last registration's
    std::vector<std::int16_t> hundredths;
    std::uint64_t ms = 0;
};

int argumentsOf(const std::string& verb)
{
    if (verb == "connect") return 0;
    if (verb == "register" || verb == "temps") return 2;
    if (verb == "deregister" || verb == "watch") return 1;
    return -1;
}

// Degrees separated by commas, each within what a signed 16-bit number of
// hundredths holds.
bool parseDegrees(const std::string& text, std::vector<std::int16_t>& out)
{
    std::istringstream in(text);
    for (std::string item; std::getline(in, item, ',');) {
        char* end = nullptr;
        const double degrees = std::strtod(item.c_str(), &end);
        if (item.empty() || end != item.c_str() + item.size() || !std::isfinite(degrees) || std::fabs(degrees) > 327.0)
            return false;
        out.push_back(static_cast<std::int16_t>(std::lround(degrees * 100.0)));
    }
    return !out.empty() && out.size() <= kMaxSensors && text.back() != ',';
}

bool parseGroup(const std::string& word, Step& step)
{
    if (word == "-") return true;
    std::uint64_t group = 0;
    if (!parseUnsigned(word, group) || group > 0xFFFF) return false;
    step.group = static_cast<std::uint16_t>(group);
    return true;
}

bool parseStep(const std::vector<std::string>& words, std::size_t& i, Step& step, std::string& error)
{
    const std::string& verb = step.verb;
    if (verb == "watch") {
        if (parseUnsigned(words[i++], step.ms)) return true;
        error = "watch needs milliseconds";
        return false;
    }
    if (verb == "register") {
        const std::string& type = words[i++];
        bool known = false;
        for (std::uint16_t index = 0; index < std::size(kHwTypes); ++index)
            if (type == kHwTypes[index]) {
                step.hwType = index;
                known = true;
            }
        if (known && parseDegrees(words[i++], step.hundredths)) return true;
        error = "register needs a hardware type (cbu, rax, ru, tx, du) and 1 to 10 temperatures in degrees, like 45,50.5";
        return false;
    }
    if (!parseGroup(words[i++], step)) {
        error = verb + " needs a group number, or - for the last registration's";
        return false;
    }
    if (verb == "temps" && !parseDegrees(words[i++], step.hundredths)) {
        error = "temps needs 1 to 10 temperatures in degrees, like 45,50.5";
        return false;
    }
    return true;
}

bool parseSteps(const std::vector<std::string>& words, std::vector<Step>& steps, std::string& error)
{
    return splitSteps("cci", words, steps, error, argumentsOf, parseStep);
}

void putU16(std::string& bytes, std::uint16_t value)
{
    bytes.push_back(static_cast<char>(value >> 8));
    bytes.push_back(static_cast<char>(value & 0xFF));
}

std::string header(ose::SIGSELECT sigNo)
{
    std::string bytes;
    for (const std::uint32_t word : {static_cast<std::uint32_t>(sigNo), 1U})
        for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(word >> shift));
    return bytes;
}

std::string requestOf(const Step& step, std::uint16_t group)
{
    if (step.verb == "connect") {
        std::string bytes = header(CCI_CONN_ESTABLISH_REQ);
        putU16(bytes, 1);
        putU16(bytes, kRevision);
        return bytes;
    }
    if (step.verb == "register") {
        std::string bytes = header(CCI_REGISTER_TEMP_MEAS_REQ);
        putU16(bytes, step.hwType);
        putU16(bytes, static_cast<std::uint16_t>(step.hundredths.size()));
        for (const std::int16_t maxTemp : step.hundredths)
            for (const std::int16_t word : {maxTemp, kGain, kTau}) putU16(bytes, static_cast<std::uint16_t>(word));
        return bytes;
    }
    if (step.verb == "deregister") {
        std::string bytes = header(CCI_DEREGISTER_TEMP_MEAS_REQ);
        putU16(bytes, group);
        return bytes;
    }
    std::string bytes = header(CCI_TEMP_MEAS_FWD);
    putU16(bytes, group);
    putU16(bytes, static_cast<std::uint16_t>(step.hundredths.size()));
    for (const std::int16_t temperature : step.hundredths) putU16(bytes, static_cast<std::uint16_t>(temperature));
    return bytes;
}

std::uint32_t u32At(const std::string& bytes, std::size_t offset)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && offset + i < bytes.size(); ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

std::uint16_t u16At(const std::string& bytes, std::size_t offset)
{
    if (offset + 2 > bytes.size()) return 0;
    return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[offset]) << 8 |
                                      static_cast<unsigned char>(bytes[offset + 1]));
}

// One line for an answer of the climate server; empty for anything else.
std::string describe(const std::string& bytes, std::uint16_t& lastGroup)
{
    if (bytes.size() < 12) return {};
    switch (u32At(bytes, 0)) {
    case CCI_CONN_ESTABLISH_CFM: return "connected: revision " + std::to_string(u16At(bytes, 8));
    case CCI_CONN_ESTABLISH_REJ: return "connection refused: no common revision";
    case CCI_CAPABILITY_CFM: return "capabilities taken";
    case CCI_CAPABILITY_REJ: return "capabilities refused: too big";
    case CCI_REGISTER_TEMP_MEAS_CFM:
        lastGroup = u16At(bytes, 10);
        return "registered: group " + std::to_string(lastGroup) + ", sample time " + std::to_string(u16At(bytes, 8)) +
               " s";
    case CCI_REGISTER_TEMP_MEAS_REJ:
        return u32At(bytes, 8) == kHwTypeNotSupported ? "registration refused: hardware type not served"
                                                      : "registration refused: more than 10 sensors";
    case CCI_DEREGISTER_TEMP_MEAS_CFM: return "deregistered: group " + std::to_string(u16At(bytes, 8));
    case CCI_TEMP_MEAS_REJ:
        return "measurement refused: group " + std::to_string(u16At(bytes, 8)) +
               " (not registered, or not one temperature per sensor)";
    default: return {};
    }
}

} // namespace

bool checkCciSteps(const std::vector<std::string>& words, std::string& error)
{
    std::vector<Step> steps;
    return parseSteps(words, steps, error);
}

int runCci(const std::vector<std::string>& words, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    std::vector<Step> steps;
    std::string error;
    if (!parseSteps(words, steps, error)) {
        err << "sscctl: " << error << "\n";
        return kUsage;
    }
    // The group a registration was given is the one later steps mean.
    std::uint16_t lastGroup = 0;
    SscctlConversation conversation(client, out, err,
                                    [&lastGroup](const std::string& bytes) { return describe(bytes, lastGroup); });
    if (const int found = conversation.open(kServerName); found != kDone) return found;
    for (const Step& step : steps) {
        const std::string request = step.verb == "watch" ? std::string() : requestOf(step, step.group.value_or(lastGroup));
        if (!conversation.step(request, step.ms)) return kNoNode;
    }
    return kDone;
}

} // namespace app
