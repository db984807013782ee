#pragma once
// One sscctl conversation with one server of the node, on one gateway
// connection: each step sends its request (a watch sends nothing) and then
// prints what arrives, one readable line a signal, until things are quiet;
// on a virtual clock the world is moved on by 100 ms first (a watch: by its
// time).

#include "ose/GatewayClient.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace app {

// Splits a command's words into its steps: each verb takes the fixed number
// of words that `argumentsOf` gives (-1 for a verb the interface does not
// know), which `parseStep` reads from `words[i]` on. False with a message
// for a verb not known, words missing, or no step at all.
template <typename Step, typename ArgumentsOf, typename ParseStep>
bool splitSteps(const std::string& interfaceName, const std::vector<std::string>& words, std::vector<Step>& steps,
                std::string& error, ArgumentsOf argumentsOf, ParseStep parseStep)
{
    for (std::size_t i = 0; i < words.size();) {
        Step step;
        step.verb = words[i++];
        const int count = argumentsOf(step.verb);
        if (count < 0) {
            error = "unknown " + interfaceName + " step '" + step.verb + "' (see --help)";
            return false;
        }
        if (i + static_cast<std::size_t>(count) > words.size()) {
            error = interfaceName + " step '" + step.verb + "' needs " + std::to_string(count) + " more words";
            return false;
        }
        if (count > 0 && !parseStep(words, i, step, error)) return false;
        steps.push_back(step);
    }
    if (steps.empty()) error = interfaceName + " needs at least one step";
    return !steps.empty();
}

class SscctlConversation {
public:
    // A signal's line; empty for one that says nothing to a person.
    using Describe = std::function<std::string(const std::string& signalBytes)>;

    SscctlConversation(ose::GatewayClient& client, std::ostream& out, std::ostream& err, Describe describe);

    // Finds the server; sscctl's exit code when it is not there, else kDone.
    int open(const char* serverName);
    // An empty request is a watch of `watchMs`. False, with the reason on
    // err, once the connection is gone.
    bool step(const std::string& request, std::uint64_t watchMs);

private:
    bool printArrivals(std::uint64_t worldMs, std::uint64_t wallMs);

    ose::GatewayClient& m_client;
    std::ostream& m_out;
    std::ostream& m_err;
    Describe m_describe;
    ose::PROCESS m_server = 0;
};

} // namespace app
