#include "app/SscctlPmi.h"

#include "app/PmiText.h"
#include "app/SscctlCommand.h"
#include "app/SscctlConversation.h"

#include <map>
#include <ostream>

namespace app {

using namespace pmi;

namespace {

constexpr std::uint32_t kClientRef = 1;

struct Step {
    std::string verb;
    std::string request; // the signal's bytes; empty for watch
    std::uint64_t ms = 0;
};

bool objectOf(const std::string& word, std::uint16_t& objectType)
{
    static const std::map<std::string, std::uint16_t> kObjects{
        {"battery", kBatteryBackup}, {"distribution", kPowerDistribution}, {"supply", kPowerSupply}};
    const auto found = kObjects.find(word);
    if (found == kObjects.end()) return false;
    objectType = found->second;
    return true;
}

bool actionOf(const std::string& verb, std::uint16_t& actionType, std::uint16_t& parameter)
{
    static const std::map<std::string, std::pair<std::uint16_t, std::uint16_t>> kActions{
        {"start-equalize", {kStartEqualizeCharging, 0}}, {"stop-equalize", {kStopEqualizeCharging, 0}},
        {"start-test", {kStartBatteryTest, 0}},          {"start-test-forced", {kStartBatteryTest, 1}},
        {"stop-test", {kStopBatteryTest, 0}},            {"test-status", {kReadBatteryTestStatus, 0}}};
    const auto found = kActions.find(verb);
    if (found == kActions.end()) return false;
    actionType = found->second.first;
    parameter = found->second.second;
    return true;
}

// NAME=VALUE words from i on, up to the next step.
bool settingsOf(const std::vector<std::string>& words, std::size_t& i, std::map<std::string, std::string>& settings,
                std::string& error)
{
    for (; i < words.size() && words[i].find('=') != std::string::npos; ++i) {
        const std::size_t equals = words[i].find('=');
        if (equals == 0) {
            error = "setting '" + words[i] + "' has no name";
            return false;
        }
        settings[words[i].substr(0, equals)] = words[i].substr(equals + 1);
    }
    return true;
}

bool configStep(const std::vector<std::string>& words, std::size_t& i, std::uint16_t objectType, Step& step,
                std::string& error)
{
    std::map<std::string, std::string> settings;
    if (!settingsOf(words, i, settings, error)) return false;
    const bool made = objectType == kPowerSupply        ? pmi_text::supplyConfig(settings, kClientRef, step.request, error)
                      : objectType == kPowerDistribution ? pmi_text::distributionConfig(settings, kClientRef, step.request, error)
                                                         : pmi_text::batteryConfig(settings, kClientRef, step.request, error);
    if (!made) error = step.verb + ": " + error + " (settings: " + pmi_text::settingNames(objectType) + ")";
    return made;
}

bool objectStep(const std::vector<std::string>& words, std::size_t& i, Step& step, std::string& error)
{
    std::uint16_t objectType = 0;
    if (i >= words.size() || !objectOf(words[i], objectType)) {
        error = step.verb + " needs battery, distribution or supply";
        return false;
    }
    ++i;
    const ose::SIGSELECT sigNo = step.verb == "subscribe"     ? PMI_SUBSCRIBE_RESOURCE_DATA_REQ
                                 : step.verb == "unsubscribe" ? PMI_UNSUBSCRIBE_RESOURCE_DATA_REQ
                                 : step.verb == "status"      ? PMI_GET_RESOURCE_DATA_REQ
                                                              : PMI_DELETE_CONFIG_REQ;
    step.request = pmi_text::request(sigNo, objectType, kClientRef);
    return true;
}

bool parseStep(const std::vector<std::string>& words, std::size_t& i, Step& step, std::string& error)
{
    std::uint16_t objectType = 0;
    std::uint16_t actionType = 0;
    std::uint16_t parameter = 0;
    if (objectOf(step.verb, objectType)) return configStep(words, i, objectType, step, error);
    if (step.verb == "subscribe" || step.verb == "unsubscribe" || step.verb == "status" || step.verb == "delete")
        return objectStep(words, i, step, error);
    if (actionOf(step.verb, actionType, parameter)) {
        const ose::be_u32 tail = static_cast<std::uint32_t>(parameter) << 16;
        step.request = pmi_text::request(PMI_ACTION_REQ, kBatteryBackup, kClientRef, actionType, &tail, sizeof tail);
        return true;
    }
    if (step.verb == "watch") {
        if (i < words.size() && parseUnsigned(words[i++], step.ms)) return true;
        error = "watch needs milliseconds";
        return false;
    }
    error = "unknown pmi step '" + step.verb + "' (see --help)";
    return false;
}

bool parseSteps(const std::vector<std::string>& words, std::vector<Step>& steps, std::string& error)
{
    for (std::size_t i = 0; i < words.size();) {
        Step step;
        step.verb = words[i++];
        if (!parseStep(words, i, step, error)) return false;
        steps.push_back(step);
    }
    if (steps.empty()) error = "pmi needs at least one step";
    return !steps.empty();
}

} // namespace

bool checkPmiSteps(const std::vector<std::string>& words, std::string& error)
{
    std::vector<Step> steps;
    return parseSteps(words, steps, error);
}

int runPmi(const std::vector<std::string>& words, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    std::vector<Step> steps;
    std::string error;
    if (!parseSteps(words, steps, error)) {
        err << "sscctl: " << error << "\n";
        return kUsage;
    }
    SscctlConversation conversation(client, out, err, pmi_text::describe);
    if (const int found = conversation.open(kServerName); found != kDone) return found;
    for (const Step& step : steps)
        if (!conversation.step(step.verb == "watch" ? std::string() : step.request, step.ms)) return kNoNode;
    return kDone;
}

} // namespace app
