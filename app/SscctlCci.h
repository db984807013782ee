#pragma once
// sscctl's conversation with the core's climate control interface, on one
// gateway connection: what software on the node does to have its hot spots
// cooled.

#include "ose/GatewayClient.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace app {

// Steps, in order: connect; register HWTYPE MAXTEMPS (cbu, rax, ru, tx, du;
// degrees separated by commas, one sensor each); temps GROUP DEGREES (the
// group a registration gave, or - for the last one); deregister GROUP; watch
// MS. False with a message for steps that do not parse.
bool checkCciSteps(const std::vector<std::string>& steps, std::string& error);
int runCci(const std::vector<std::string>& steps, ose::GatewayClient& client, std::ostream& out, std::ostream& err);

} // namespace app
