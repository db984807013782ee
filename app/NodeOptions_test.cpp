#include "app/NodeOptions.h"

#include <gtest/gtest.h>

namespace app {
namespace {

TEST(NodeOptionsTest, DefaultsPutTheSocketInTheDataDirectory)
{
    NodeOptions options;
    std::string error;
    ASSERT_TRUE(parseNodeOptions({"--data-dir", "/var/ssc", "--clock", "paced:10", "--demo"}, options, error));
    EXPECT_EQ(options.socketPath, "/var/ssc/ssc.sock");
    EXPECT_EQ(options.clock.mode, ose::ClockMode::Paced);
    EXPECT_TRUE(options.demo);
    EXPECT_EQ(options.clock.calendarStartMs, ose::ClockConfig{}.calendarStartMs);
    EXPECT_TRUE(options.site.empty());
    ASSERT_TRUE(parseNodeOptions({"--clock", "virtual", "--hold-clock", "--site", "cab.xml"}, options, error));
    EXPECT_TRUE(options.holdClock);
    EXPECT_EQ(options.site, "cab.xml");
    EXPECT_FALSE(options.configureSite);
    ASSERT_TRUE(parseNodeOptions({"--site", "cab.xml", "--configure-site"}, options, error));
    EXPECT_TRUE(options.configureSite);
}

TEST(NodeOptionsTest, MistakesAreNamedInPlainWords)
{
    struct Case {
        std::vector<std::string> args;
        const char* expected;
    };
    for (const Case& c : {Case{{"--clock", "fast"}, "real, virtual or paced:N"},
                          Case{{"--socket"}, "--socket needs a value"},
                          Case{{"--run-for", "soon"}, "--run-for needs a number"},
                          Case{{"--frobnicate"}, "unknown option '--frobnicate'"},
                          Case{{"--calendar-start", "yesterday"}, "YYYY-MM-DD"},
                          Case{{"--node", ""}, "must not be empty"},
                          Case{{"--hold-clock"}, "--hold-clock needs --clock virtual"},
                          Case{{"--site"}, "--site needs a value"},
                          Case{{"--configure-site"}, "--configure-site needs --site"},
                          Case{{"--site", "cab.xml", "--no-climate"}, "--no-climate needs --configure-site"},
                          Case{{"--record", "run.csv"}, "--record needs --site"}}) {
        NodeOptions options;
        std::string error;
        EXPECT_FALSE(parseNodeOptions(c.args, options, error)) << c.args[0];
        EXPECT_NE(error.find(c.expected), std::string::npos) << error;
    }
}

} // namespace
} // namespace app
