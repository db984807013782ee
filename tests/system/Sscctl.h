#pragma once
// sscctl run against a node from a system test, as a person runs it: its
// exit code and everything it printed.

#include "app/SscctlCommand.h"
#include "tests/system/NodeProcess.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace systemtest {

struct Outcome {
    int exitCode;
    std::string out;
};

inline Outcome sscctl(const NodeProcess& node, std::vector<std::string> args)
{
    std::vector<std::string> full = {"--socket", node.socketPath()};
    full.insert(full.end(), args.begin(), args.end());
    app::SscctlCommand command;
    std::string error;
    EXPECT_TRUE(app::parseSscctl(full, command, error)) << error;
    std::ostringstream out, err;
    const int code = app::runSscctl(command, out, err);
    return {code, out.str() + err.str()};
}

} // namespace systemtest
