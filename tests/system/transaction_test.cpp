// A management client's transactions against a running node, through the
// gateway, as sscctl plays them.

#include "app/SscctlCommand.h"
#include "ose/BigEndian.h"
#include "ose/GatewayClient.h"
#include "tests/system/NodeProcess.h"

#include <gtest/gtest.h>

#include <initializer_list>
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

// Signals written from the layouts in the gateway document alone: a number
// and big-endian words.
std::string words(std::initializer_list<std::uint32_t> values)
{
    std::string bytes;
    for (std::uint32_t value : values) {
        char raw[4];
        ose::storeBe32(raw, value);
        bytes.append(raw, 4);
    }
    return bytes;
}

std::uint32_t wordAt(const std::string& bytes, std::size_t index)
{
    return bytes.size() >= 4 * (index + 1) ? ose::loadBe32(bytes.data() + 4 * index) : 0xDEADBEEFu;
}

TEST(TransactionSystemTest, AnOutsideProgramSpeaksToTheTransactionServerFromTheDocumentedLayouts)
{
    using namespace std::chrono_literals;
    NodeProcess node({"--clock", "virtual"});
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "outside"));
    const auto server = client.hunt("VantoTransaction");
    ASSERT_TRUE(server && *server != 0);
    auto ask = [&](const std::string& signal) {
        EXPECT_TRUE(client.sendAcknowledged(*server, signal));
        auto answer = client.next(10s);
        return answer ? answer->bytes : std::string();
    };

    std::string cfm = ask(words({10012, 77}));
    EXPECT_EQ(cfm, words({10013, 77, 0}));
    // A signal shorter than its layout, and one of an unknown number, get no answer.
    ASSERT_TRUE(client.sendAcknowledged(*server, words({10001, 5})));
    ASSERT_TRUE(client.sendAcknowledged(*server, words({10099, 5, 0, 0})));
    EXPECT_EQ(ask(words({10012, 78})), words({10013, 78, 0}));

    cfm = ask(words({10001, 5, 0, 0}));
    ASSERT_EQ(cfm.size(), 16u);
    EXPECT_EQ(wordAt(cfm, 0), 10002u);
    EXPECT_EQ(wordAt(cfm, 1), 5u);
    const std::uint32_t id = wordAt(cfm, 2);
    EXPECT_GT(static_cast<std::int32_t>(id), 0);
    EXPECT_EQ(wordAt(cfm, 3), 0u);
    EXPECT_EQ(ask(words({10003, id, 0})), words({10004, id, 0, 0}));

    ASSERT_TRUE(client.sendAcknowledged(*server, words({10017, id}) + std::string("create table raw(x integer)", 28)));
    ASSERT_TRUE(client.sendAcknowledged(*server, words({10007, 6, id, 0})));
    auto first = client.next(10s);
    auto second = client.next(10s);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->bytes, words({10014, 0, id})) << "the resource hears first";
    EXPECT_EQ(second->bytes, words({10008, 6, id, 0}));
    EXPECT_EQ(ask(words({10007, 7, id, 0})), words({10008, 7, id, 1})) << "gone after its commit";

    // A piece of the wrong length breaks the transaction: reason 2, result 2.
    cfm = ask(words({10001, 8, 0, 0}));
    const std::uint32_t broken = wordAt(cfm, 2);
    EXPECT_EQ(ask(words({10003, broken, 0})), words({10004, broken, 0, 0}));
    ASSERT_TRUE(client.sendAcknowledged(*server, words({10018, broken}) + std::string(100, 'x')));
    ASSERT_TRUE(client.sendAcknowledged(*server, words({10007, 9, broken, 0})));
    first = client.next(10s);
    second = client.next(10s);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->bytes, words({10015, 2, broken}));
    EXPECT_EQ(second->bytes, words({10008, 9, broken, 2}));
}

} // namespace
} // namespace systemtest
