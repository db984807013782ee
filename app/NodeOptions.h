#pragma once
// Command line of ssc-node.

#include "ose/Clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

struct NodeOptions {
    std::string dataDir = "ssc-data";
    std::string socketPath;     // empty: <dataDir>/ssc.sock
    std::string nodeName = "node0";
    ose::ClockConfig clock{ose::ClockMode::Real};
    std::string trace;          // empty: $SSC_TRACE
    std::string traceFile;
    std::string odbc;           // ODBC connection string; empty: a SQLite file in dataDir
    std::string site;           // a simulated cabinet's site file; empty: no simulated bus
    bool holdClock = false;     // virtual clock: stand still until a time-holding client connects
    bool demo = false;
    bool configureSite = false; // configure the site's units over EMI, as the object layer will
    bool siteClimate = true;    // with configureSite: make the node primary and configure its cabinet's climate over CMI
    std::string record;         // the plant's recording, a CSV file; empty: none
    bool rolePassive = false;   // the RPU server gives the load module the passive role
    bool rpuLater = false;      // the RPU server knows no RPU until one is added
    std::optional<std::uint64_t> runForMs;
    bool help = false;
    bool version = false;
};

// False with a message in *error for a command line that makes no sense.
bool parseNodeOptions(const std::vector<std::string>& args, NodeOptions& options, std::string& error);
const char* nodeUsage();

} // namespace app
