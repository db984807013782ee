#pragma once
// sscctl's conversation with the core's power management interface, on one
// gateway connection: what the object layer does to configure the battery
// backup, the power distribution and the power supply, to follow their
// state and faults and to start the battery actions.

#include "ose/GatewayClient.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace app {

// Steps, in order: battery|distribution|supply [NAME=VALUE...] (a
// configuration from defaults, values in volts, amperes, degrees);
// subscribe|unsubscribe|status|delete battery|distribution|supply;
// start-equalize | stop-equalize | start-test | start-test-forced |
// stop-test | test-status; watch MS. False with a message for steps that
// do not parse.
bool checkPmiSteps(const std::vector<std::string>& steps, std::string& error);
int runPmi(const std::vector<std::string>& steps, ose::GatewayClient& client, std::ostream& out, std::ostream& err);

} // namespace app
