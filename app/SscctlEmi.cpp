#include "app/SscctlEmi.h"

#include "adapters/EmiSignals.h"
#include "app/EmiText.h"
#include "app/SscctlCommand.h"
#include "app/SscctlConversation.h"
#include "sim/SimControlSignals.h"

#include <cstring>
#include <ostream>

namespace app {

using namespace emi;

namespace {

struct Step {
    std::string verb;
    std::uint16_t objectType = 0;
    std::uint32_t objectId = 0;
    std::string hubPosition;
    std::uint64_t ms = 0;
};

// How many words each step takes after its own.
int argumentsOf(const std::string& verb)
{
    if (verb == "configure") return 3;
    if (verb == "watch") return 1;
    if (verb == "subscribe" || verb == "status" || verb == "product" || verb == "measure" || verb == "reset" ||
        verb == "delete")
        return 2;
    return -1;
}

bool parseStep(const std::vector<std::string>& words, std::size_t& i, Step& step, std::string& error)
{
    if (step.verb == "watch") {
        if (parseUnsigned(words[i++], step.ms)) return true;
        error = "watch needs milliseconds";
        return false;
    }
    const auto type = emi_text::objectTypeOf(words[i++]);
    std::uint64_t id = 0;
    if (!type || !parseUnsigned(words[i++], id) || id > 0xFFFFFFFFu) {
        error = "emi step '" + step.verb + "' needs a unit type (scu, sau, psu, pdu, bfu, efuse, clu) and an id";
        return false;
    }
    step.objectType = *type;
    step.objectId = static_cast<std::uint32_t>(id);
    if (step.verb == "configure") step.hubPosition = words[i++] == "-" ? "" : words[i - 1];
    return true;
}

bool parseSteps(const std::vector<std::string>& words, std::vector<Step>& steps, std::string& error)
{
    return splitSteps("emi", words, steps, error, argumentsOf, parseStep);
}

template <typename T>
std::string emiSignal(T body, ose::SIGSELECT sigNo, const Step& step)
{
    auto& header = reinterpret_cast<EMI_HEADER_S&>(body);
    header.sigNo = sigNo;
    header.clientRef = 1;
    header.objectType = step.objectType;
    header.objectId = step.objectId;
    return std::string(reinterpret_cast<const char*>(&body), sizeof body);
}

std::string requestOf(const Step& step)
{
    if (step.verb == "configure") {
        EMI_SET_CONFIG_HWU_REQ_S body{};
        std::strncpy(body.hubPosition, step.hubPosition.c_str(), sizeof body.hubPosition - 1);
        return emiSignal(body, EMI_SET_CONFIG_REQ, step);
    }
    if (step.verb == "reset") {
        EMI_ACTION_REQ_S body{};
        body.actionType = kReset;
        return emiSignal(body, EMI_ACTION_REQ, step);
    }
    const ose::SIGSELECT sigNo = step.verb == "subscribe" ? EMI_SUBSCRIBE_RESOURCE_DATA_REQ
                                 : step.verb == "status"  ? EMI_GET_RESOURCE_DATA_REQ
                                 : step.verb == "product" ? EMI_GET_UNIT_PRODUCT_DATA_REQ
                                 : step.verb == "measure" ? EMI_GET_UNIT_MEASUREMENT_DATA_REQ
                                                          : EMI_DELETE_CONFIG_REQ;
    return emiSignal(EMI_REQ_S{}, sigNo, step);
}

} // namespace

bool checkEmiSteps(const std::vector<std::string>& words, std::string& error)
{
    std::vector<Step> steps;
    return parseSteps(words, steps, error);
}

int runEmi(const std::vector<std::string>& words, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    std::vector<Step> steps;
    std::string error;
    if (!parseSteps(words, steps, error)) {
        err << "sscctl: " << error << "\n";
        return kUsage;
    }
    SscctlConversation conversation(client, out, err, emi_text::describe);
    if (const int found = conversation.open(kServerName); found != kDone) return found;
    for (const Step& step : steps)
        if (!conversation.step(step.verb == "watch" ? std::string() : requestOf(step), step.ms)) return kNoNode;
    return kDone;
}

namespace {

struct SimVerb {
    const char* word;
    simctl::FaultKind kind;
    int numbers; // after the verb, before an optional port
    bool unitEvent; // aimed at a unit by address (else the plant)
};

constexpr SimVerb kSimVerbs[] = {
    {"silence", simctl::FaultKind::Silent, 1, true},
    {"clear", simctl::FaultKind::Clear, 1, true},
    {"restart", simctl::FaultKind::Restart, 1, true},
    {"replace", simctl::FaultKind::Replace, 2, true},
    {"mains-loss", simctl::FaultKind::MainsLoss, 0, false},
    {"mains-return", simctl::FaultKind::MainsReturn, 0, false},
    {"fan-fail", simctl::FaultKind::FanFailure, 1, false},
    {"fan-repair", simctl::FaultKind::FanRepair, 1, false},
    {"fan-block", simctl::FaultKind::FanBlocked, 1, false},
    {"ambient", simctl::FaultKind::Ambient, 1, false},
    {"cell-fault", simctl::FaultKind::BatteryCellFault, 0, false},
};

const SimVerb* simVerbOf(const std::string& word)
{
    for (const SimVerb& verb : kSimVerbs)
        if (word == verb.word) return &verb;
    return nullptr;
}

// A number that may be negative.
bool parseSigned(const std::string& text, std::int64_t& value)
{
    std::uint64_t magnitude = 0;
    const bool negative = !text.empty() && text[0] == '-';
    if (!parseUnsigned(negative ? text.substr(1) : text, magnitude) || magnitude > 0x7FFFFFFF) return false;
    value = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    return true;
}

const char* kSimUsage = "sim needs silence|clear|restart ADDRESS [PORT], replace ADDRESS SERIAL [PORT], "
                        "set ADDRESS NAME VALUE [PORT], mains-loss, mains-return, fan-fail|fan-block|fan-repair FANS, "
                        "ambient DEGREES or cell-fault";

} // namespace

bool checkSimArgs(const std::vector<std::string>& args, std::string& error)
{
    std::int64_t number = 0;
    if (!args.empty() && args[0] == "set") {
        const bool ok = (args.size() == 4 || args.size() == 5) && parseSigned(args[1], number) &&
                        parseSigned(args[3], number) && (args.size() == 4 || parseSigned(args[4], number));
        if (!ok) error = kSimUsage;
        return ok;
    }
    const SimVerb* verb = args.empty() ? nullptr : simVerbOf(args[0]);
    const std::size_t needed = verb != nullptr ? 1 + static_cast<std::size_t>(verb->numbers) : 0;
    const std::size_t most = verb != nullptr && verb->unitEvent ? needed + 1 : needed;
    if (verb == nullptr || args.size() < needed || args.size() > most) {
        error = kSimUsage;
        return false;
    }
    for (std::size_t i = 1; i < args.size(); ++i)
        if (!parseSigned(args[i], number)) {
            error = "sim: '" + args[i] + "' is not a number";
            return false;
        }
    return true;
}

int runSim(const std::vector<std::string>& args, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    std::string error;
    if (!checkSimArgs(args, error)) {
        err << "sscctl: " << error << "\n";
        return kUsage;
    }
    auto bus = client.hunt("A4ciServer", 0);
    if (!bus || *bus == 0) {
        err << "sscctl: the node has no simulated bus (A4ciServer)\n";
        return client.isConnected() ? kNotFound : kNoNode;
    }
    std::vector<std::int64_t> numbers;
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::int64_t number = 0;
        if (args[0] != "set" || i != 2) parseSigned(args[i], number);
        numbers.push_back(number);
    }
    std::string request;
    ose::SIGSELECT cfmNo = simctl::SIM_FAULT_CFM;
    if (args[0] == "set") {
        simctl::SIM_VALUE_REQ_S set{};
        set.sigNo = simctl::SIM_SET_VALUE_REQ;
        set.address = static_cast<std::uint8_t>(numbers[0]);
        set.port = static_cast<std::uint16_t>(args.size() == 5 ? numbers[3] : 1);
        set.value = static_cast<std::int32_t>(numbers[2]);
        std::strncpy(set.name, args[2].c_str(), sizeof set.name - 1);
        request.assign(reinterpret_cast<const char*>(&set), sizeof set);
        cfmNo = simctl::SIM_SET_VALUE_CFM;
    } else {
        const SimVerb& verb = *simVerbOf(args[0]);
        simctl::SIM_FAULT_REQ_S fault{};
        fault.sigNo = simctl::SIM_FAULT_REQ;
        fault.kind = static_cast<std::uint16_t>(verb.kind);
        if (verb.unitEvent) {
            fault.address = static_cast<std::uint8_t>(numbers[0]);
            fault.port = static_cast<std::uint16_t>(numbers.size() > static_cast<std::size_t>(verb.numbers) ? numbers.back() : 1);
            if (verb.numbers == 2) fault.value = static_cast<std::int32_t>(numbers[1]);
        } else if (verb.numbers == 1) {
            fault.value = static_cast<std::int32_t>(numbers[0]);
        }
        request.assign(reinterpret_cast<const char*>(&fault), sizeof fault);
    }
    if (!client.send(*bus, request)) {
        err << "sscctl: " << client.lastError() << "\n";
        return kNoNode;
    }
    auto answer = client.next(std::chrono::milliseconds(2000));
    if (!answer || answer->kind != ose::GatewayEvent::Kind::Signal) {
        err << "sscctl: the simulator did not answer\n";
        return kNotFound;
    }
    if (answer->sigNo() == cfmNo) {
        out << "sim " << args[0] << ": done\n";
        return kDone;
    }
    simctl::SIM_REJ_S rej{};
    std::memcpy(&rej, answer->bytes.data(), std::min(answer->bytes.size(), sizeof rej));
    err << "sscctl: the simulator refused: " << std::string(rej.reason, strnlen(rej.reason, sizeof rej.reason)) << "\n";
    return kNotFound;
}

} // namespace app
