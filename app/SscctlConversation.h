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

namespace app {

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
