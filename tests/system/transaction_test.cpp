// A management client's transactions against a running node, through the
// gateway, as sscctl plays them.

#include "app/SscctlCommand.h"
#include "tests/system/NodeProcess.h"

#include <gtest/gtest.h>

#include <sstream>

namespace systemtest {
namespace {

struct Outcome {
    int exitCode;
    std::string out;
};

Outcome transaction(const NodeProcess& node, std::vector<std::string> args)
{
    std::vector<std::string> full = {"--socket", node.socketPath(), "transaction"};
    full.insert(full.end(), args.begin(), args.end());
    app::SscctlCommand command;
    std::string error;
    EXPECT_TRUE(app::parseSscctl(full, command, error)) << error;
    std::ostringstream out;
    std::ostringstream err;
    int code = app::runSscctl(command, out, err);
    return {code, out.str() + err.str()};
}

TEST(TransactionSystemTest, CommittedStatementsStayAndRolledBackOnesLeaveNothing)
{
    NodeProcess node({"--clock", "virtual"});
    Outcome made = transaction(node, {"--sql", "create table sites(name varchar(40) primary key)", "--sql",
                                      "insert into sites values('north')"});
    EXPECT_EQ(made.exitCode, app::kDone) << made.out;
    EXPECT_NE(made.out.find("commit: VANTO_TRANSACTION_OK"), std::string::npos) << made.out;

    // 'north' is there: inserting it again breaks the key, and the whole
    // transaction (with 'south') rolls back.
    Outcome clash = transaction(node, {"--sql", "insert into sites values('south')", "--sql",
                                       "insert into sites values('north')"});
    EXPECT_EQ(clash.exitCode, app::kNotFound) << clash.out;
    EXPECT_NE(clash.out.find("rolled back"), std::string::npos) << clash.out;

    Outcome undone = transaction(node, {"--sql", "insert into sites values('east')", "--rollback"});
    EXPECT_EQ(undone.exitCode, app::kDone) << undone.out;

    // Neither 'south' nor 'east' was kept, so both go in now; a statement
    // longer than one piece travels whole.
    std::string longName(20000, 'w');
    Outcome after = transaction(node, {"--sql", "insert into sites values('south')", "--sql",
                                       "insert into sites values('east')", "--sql",
                                       "insert into sites values('" + longName.substr(0, 30) + "')/*" + longName + "*/"});
    EXPECT_EQ(after.exitCode, app::kDone) << after.out;
}

} // namespace
} // namespace systemtest
