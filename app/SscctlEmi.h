#pragma once
// sscctl's conversations with the core's equipment interface and with the
// simulated bus, each on one gateway connection.

#include "ose/GatewayClient.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace app {

// Steps, in order, on one connection (the core keeps configurations per
// client): configure TYPE ID POSITION, subscribe|status|product|measure|
// reset|delete TYPE ID, watch MS. False with a message for steps that do not
// parse.
bool checkEmiSteps(const std::vector<std::string>& steps, std::string& error);
int runEmi(const std::vector<std::string>& steps, ose::GatewayClient& client, std::ostream& out, std::ostream& err);

// silence|clear|restart ADDRESS [PORT], replace ADDRESS SERIAL [PORT], set
// ADDRESS NAME VALUE [PORT], and the plant's events: mains-loss,
// mains-return, fan-fail|fan-repair GROUP, ambient DEGREES, cell-fault.
bool checkSimArgs(const std::vector<std::string>& args, std::string& error);
int runSim(const std::vector<std::string>& args, ose::GatewayClient& client, std::ostream& out, std::ostream& err);

} // namespace app
