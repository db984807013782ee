#pragma once
// sscctl's words with the node platform and the object process: the RPU
// server (role, shutdown, restart), the name server and the object
// process's timer probe.

#include "ose/GatewayClient.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace app {

// rpu status | active | passive | shutdown | add | restart
bool checkRpuArgs(const std::vector<std::string>& args, std::string& error);
int runRpu(const std::vector<std::string>& args, ose::GatewayClient& client, std::ostream& out, std::ostream& err);

// ns find NAME
bool checkNsArgs(const std::vector<std::string>& args, std::string& error);
int runNs(const std::vector<std::string>& args, ose::GatewayClient& client, std::ostream& out, std::ostream& err);

// objects timer MS
bool checkObjectsArgs(const std::vector<std::string>& args, std::string& error);
int runObjects(const std::vector<std::string>& args, ose::GatewayClient& client, std::ostream& out,
               std::ostream& err);

} // namespace app
