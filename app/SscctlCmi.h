#pragma once
// sscctl's conversation with the core's cabinet management interface, on
// one gateway connection: what the object layer does to make the node a
// primary or a secondary and to configure its cabinet and fan groups.

#include "ose/GatewayClient.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace app {

// Steps, in order: primary | secondary; cabinet ID (an outdoor cabinet's
// climate); fan-group ID NUMBER CABINET; subscribe|status|delete cabinet|fan-group ID;
// report CABINET (the climate report, once); watch MS. False with a message
// for steps that do not parse.
bool checkCmiSteps(const std::vector<std::string>& steps, std::string& error);
int runCmi(const std::vector<std::string>& steps, ose::GatewayClient& client, std::ostream& out, std::ostream& err);

} // namespace app
