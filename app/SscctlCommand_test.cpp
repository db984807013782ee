#include "app/SscctlCommand.h"

#include <gtest/gtest.h>

#include <sstream>

namespace app {
namespace {

TEST(SscctlCommandTest, SendTakesANameOrPidANumberAndHexBytes)
{
    SscctlCommand command;
    std::string error;
    ASSERT_TRUE(parseSscctl({"--socket", "/tmp/s", "send", "echo", "0x1705011", "00:00:00:2a", "--reply", "500"},
                            command, error))
        << error;
    EXPECT_EQ(command.verb, SscctlCommand::Verb::Send);
    EXPECT_EQ(command.socketPath, "/tmp/s");
    EXPECT_EQ(command.target, "echo");
    EXPECT_EQ(command.sigNo, 0x1705011u);
    EXPECT_EQ(command.payload, std::string("\0\0\0\x2a", 4));
    EXPECT_EQ(command.replyMs, 500u);
}

TEST(SscctlCommandTest, BadCommandLinesAreRefusedWithAReason)
{
    struct Case {
        std::vector<std::string> args;
        const char* expected;
    };
    for (const Case& c : {Case{{}, "a command is missing"},
                          Case{{"launch"}, "unknown command 'launch'"},
                          Case{{"send", "echo"}, "the signal number is missing"},
                          Case{{"send", "echo", "12", "abc"}, "hex digits in pairs"},
                          Case{{"send", "echo", "99999999999"}, "must be a number"},
                          Case{{"hunt", "x", "--reply", "5"}, "unexpected '--reply'"},
                          Case{{"advance", "-5"}, "must be a number"},
                          Case{{"emi"}, "at least one step"},
                          Case{{"emi", "configure", "psu", "1"}, "needs 3 more words"},
                          Case{{"emi", "status", "fan", "1"}, "needs a unit type"},
                          Case{{"emi", "status", "psu", "x"}, "needs a unit type"},
                          Case{{"emi", "watch", "soon"}, "watch needs milliseconds"},
                          Case{{"emi", "explode", "psu", "1"}, "unknown emi step 'explode'"},
                          Case{{"cmi"}, "at least one step"},
                          Case{{"cmi", "cabinet"}, "needs 1 more words"},
                          Case{{"cmi", "fan-group", "101", "1"}, "needs 3 more words"},
                          Case{{"cmi", "fan-group", "101", "x", "0"}, "its number (1 to 4)"},
                          Case{{"cmi", "status", "door", "1"}, "cabinet or fan-group"},
                          Case{{"cmi", "cool"}, "unknown cmi step 'cool'"},
                          Case{{"cci"}, "at least one step"},
                          Case{{"cci", "register", "du"}, "needs 2 more words"},
                          Case{{"cci", "register", "fan", "45"}, "hardware type"},
                          Case{{"cci", "register", "du", "45,"}, "1 to 10 temperatures"},
                          Case{{"cci", "register", "du", "45,x"}, "1 to 10 temperatures"},
                          Case{{"cci", "register", "du", "1,2,3,4,5,6,7,8,9,10,11"}, "1 to 10 temperatures"},
                          Case{{"cci", "temps", "-", "400"}, "1 to 10 temperatures"},
                          Case{{"cci", "temps", "70000", "40"}, "group number"},
                          Case{{"cci", "deregister"}, "needs 1 more words"},
                          Case{{"cci", "cool"}, "unknown cci step 'cool'"},
                          Case{{"sim", "melt", "48"}, "sim needs"},
                          Case{{"sim", "replace", "48"}, "sim needs"},
                          Case{{"sim", "silence", "a0"}, "not a number"},
                          Case{{"sim", "mains-loss", "48"}, "sim needs"},
                          Case{{"sim", "fan-fail"}, "sim needs"},
                          Case{{"sim", "set", "32", "doorSwitchOpen"}, "sim needs"}}) {
        SscctlCommand command;
        std::string error;
        EXPECT_FALSE(parseSscctl(c.args, command, error));
        EXPECT_NE(error.find(c.expected), std::string::npos) << error;
    }
}

TEST(SscctlCommandTest, EmiTakesItsStepsInOrderAndSimItsFault)
{
    SscctlCommand command;
    std::string error;
    ASSERT_TRUE(parseSscctl({"emi", "configure", "PSU", "1", "AUX A3", "subscribe", "3", "1", "watch", "6000",
                             "product", "bfu", "2"},
                            command, error))
        << error;
    EXPECT_EQ(command.verb, SscctlCommand::Verb::Emi);
    EXPECT_EQ(command.words.size(), 12u);
    ASSERT_TRUE(parseSscctl({"sim", "replace", "48", "12345", "2"}, command, error)) << error;
    EXPECT_EQ(command.verb, SscctlCommand::Verb::Sim);
    EXPECT_EQ(command.words, (std::vector<std::string>{"replace", "48", "12345", "2"}));
    for (std::vector<std::string> args : {std::vector<std::string>{"sim", "ambient", "-10"},
                                          std::vector<std::string>{"sim", "set", "32", "doorSwitchOpen", "1"},
                                          std::vector<std::string>{"sim", "mains-loss"},
                                          std::vector<std::string>{"sim", "fan-fail", "2"}})
        EXPECT_TRUE(parseSscctl(args, command, error)) << args[1] << ": " << error;
}

TEST(SscctlCommandTest, MoStepsAreCheckedBeforeAnythingIsSent)
{
    SscctlCommand command;
    std::string error;
    ASSERT_TRUE(parseSscctl({"mo", "--rollback", "create", "Cabinet=1", "cabinetIdentifier=north", "smokeDetector=1",
                             "set", "Cabinet=1#0", "x:U32=3", "get", "Cabinet=1", "delete", "PowerSupply=1#2",
                             "action", "Cabinet=1", "reset", "list", "watch", "100"},
                            command, error))
        << error;
    EXPECT_TRUE(command.rollback);
    EXPECT_EQ(command.words.size(), 17u);
    const std::vector<std::pair<std::vector<std::string>, const char*>> refused = {
        {{"mo"}, "at least one step"},
        {{"mo", "make", "Cabinet=1"}, "unknown mo step 'make'"},
        {{"mo", "create", "Gadget=1"}, "does not name an object of a known class"},
        {{"mo", "create"}, "needs an ldn"},
        {{"mo", "set", "Cabinet=1#70000", "a=1"}, "the id after # must be 0 to 65534"},
        {{"mo", "set", "Cabinet=1"}, "needs NAME=VALUE"},
        {{"mo", "create", "Cabinet=1", "novalue"}, "is not NAME=VALUE"},
        {{"mo", "delete", "Cabinet=1", "extra"}, "takes only the ldn"},
        {{"mo", "action", "Cabinet=1"}, "needs the action's name"},
        {{"mo", "watch", "soon"}, "takes the milliseconds"},
        {{"mo", "list", "all"}, "takes nothing"},
    };
    for (const auto& [args, expected] : refused) {
        SscctlCommand bad;
        std::string why;
        EXPECT_FALSE(parseSscctl(args, bad, why)) << args.back();
        EXPECT_NE(why.find(expected), std::string::npos) << why;
    }
}

TEST(SscctlCommandTest, AnUnreachableNodeGivesExitCodeThree)
{
    SscctlCommand command;
    std::string error;
    ASSERT_TRUE(parseSscctl({"--socket", "/nonexistent/ssc.sock", "time"}, command, error));
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(runSscctl(command, out, err), kNoNode);
    EXPECT_NE(err.str().find("cannot connect to the node"), std::string::npos);
}

TEST(SscctlCommandTest, NumbersAndHexBytes)
{
    std::uint64_t value = 0;
    EXPECT_TRUE(parseUnsigned("0x1F", value));
    EXPECT_EQ(value, 31u);
    EXPECT_FALSE(parseUnsigned("", value));
    EXPECT_FALSE(parseUnsigned("0x", value));
    EXPECT_FALSE(parseUnsigned("12a", value));
    std::string bytes;
    EXPECT_TRUE(parseHexBytes("de ad_be:ef", bytes));
    EXPECT_EQ(bytes, "\xde\xad\xbe\xef");
    EXPECT_FALSE(parseHexBytes("abc", bytes));
}

} // namespace
} // namespace app
