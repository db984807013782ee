#include "app/SscctlCmi.h"

#include "app/CmiText.h"
#include "app/SscctlCommand.h"
#include "app/SscctlConversation.h"

#include <ostream>

namespace app {

using namespace cmi;

namespace {

constexpr std::uint32_t kClientRef = 1;

struct Step {
    std::string verb;
    std::uint16_t objectType = 0;
    std::uint32_t objectId = 0;
    std::uint16_t fanGroupId = 0;
    std::uint32_t cabinetId = 0;
    std::uint64_t ms = 0;
};

int argumentsOf(const std::string& verb)
{
    if (verb == "primary" || verb == "secondary") return 0;
    if (verb == "cabinet" || verb == "report" || verb == "watch") return 1;
    if (verb == "subscribe" || verb == "status" || verb == "delete") return 2;
    if (verb == "fan-group") return 3;
    return -1;
}

bool number(const std::string& word, std::uint64_t limit, std::uint64_t& value)
{
    return parseUnsigned(word, value) && value <= limit;
}

bool parseStep(const std::vector<std::string>& words, std::size_t& i, Step& step, std::string& error)
{
    std::uint64_t value = 0;
    if (step.verb == "watch") {
        if (number(words[i++], UINT64_MAX, step.ms)) return true;
        error = "watch needs milliseconds";
        return false;
    }
    if (step.verb == "subscribe" || step.verb == "status" || step.verb == "delete") {
        const std::string& type = words[i++];
        if (type != "cabinet" && type != "fan-group") {
            error = step.verb + " needs cabinet or fan-group and an id";
            return false;
        }
        step.objectType = type == "cabinet" ? kCabinet : kFanGroup;
    } else {
        step.objectType = step.verb == "fan-group" ? kFanGroup : kCabinet;
    }
    if (!number(words[i++], 0xFFFFFFFFu, value)) {
        error = "cmi step '" + step.verb + "' needs an object id";
        return false;
    }
    step.objectId = static_cast<std::uint32_t>(value);
    if (step.verb != "fan-group") return true;
    std::uint64_t group = 0;
    std::uint64_t cabinet = 0;
    if (!number(words[i++], 0xFFFF, group) || !number(words[i++], 0xFFFFFFFFu, cabinet)) {
        error = "fan-group needs its id, its number (1 to 4) and its cabinet's id";
        return false;
    }
    step.fanGroupId = static_cast<std::uint16_t>(group);
    step.cabinetId = static_cast<std::uint32_t>(cabinet);
    return true;
}

bool parseSteps(const std::vector<std::string>& words, std::vector<Step>& steps, std::string& error)
{
    return splitSteps("cmi", words, steps, error, argumentsOf, parseStep);
}

std::string requestOf(const Step& step)
{
    if (step.verb == "primary" || step.verb == "secondary") return cmi_text::nodeConfig(step.verb == "primary", "sscctl");
    if (step.verb == "cabinet") {
        const CMI_CABINET_CONFIG_S config = cmi_text::outdoorCabinet();
        return cmi_text::request(CMI_SET_CONFIG_REQ, kCabinet, step.objectId, kClientRef, &config, sizeof config);
    }
    if (step.verb == "fan-group") return cmi_text::fanGroupConfig(step.objectId, step.fanGroupId, step.cabinetId, kClientRef);
    if (step.verb == "report") return cmi_text::startReport(step.objectId, 0, kClientRef);
    const ose::SIGSELECT sigNo = step.verb == "subscribe" ? CMI_SUBSCRIBE_RESOURCE_DATA_REQ
                                 : step.verb == "status"  ? CMI_GET_RESOURCE_DATA_REQ
                                                          : CMI_DELETE_CONFIG_REQ;
    return cmi_text::request(sigNo, step.objectType, step.objectId, kClientRef);
}

} // namespace

bool checkCmiSteps(const std::vector<std::string>& words, std::string& error)
{
    std::vector<Step> steps;
    return parseSteps(words, steps, error);
}

int runCmi(const std::vector<std::string>& words, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    std::vector<Step> steps;
    std::string error;
    if (!parseSteps(words, steps, error)) {
        err << "sscctl: " << error << "\n";
        return kUsage;
    }
    SscctlConversation conversation(client, out, err, cmi_text::describe);
    if (const int found = conversation.open(kServerName); found != kDone) return found;
    for (const Step& step : steps)
        if (!conversation.step(step.verb == "watch" ? std::string() : requestOf(step), step.ms)) return kNoNode;
    return kDone;
}

} // namespace app
