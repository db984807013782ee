#pragma once
// sscctl's managed-object words: the management client's part of one
// transaction, with the steps in order on one connection, then a commit
// (or a roll-back), and indications watched as they come.

#include "ose/GatewayClient.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace app {

// False with a message for steps that cannot be run.
bool checkMoSteps(const std::vector<std::string>& words, std::string& error);
// `databaseDir`: where `list` finds the node's database (the socket's folder).
int runMo(const std::vector<std::string>& words, bool rollback, const std::string& databaseDir,
          ose::GatewayClient& client, std::ostream& out, std::ostream& err);

} // namespace app
