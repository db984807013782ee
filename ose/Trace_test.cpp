#include "ose/Trace.h"
#include "ose/TestWorld.h"

#include <cstdio>
#include <fstream>
#include <sstream>

namespace ose {
namespace {

class TraceTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        Trace::reset();
        Trace::setOutputStderr();
    }
};

TEST_F(TraceTest, OnlyErrorsPrintUntilConfigured)
{
    TraceGroupId group = Trace::registerGroup("traceTestA");
    EXPECT_EQ(Trace::registerGroup("traceTestA"), group) << "registration is idempotent";
    EXPECT_TRUE(Trace::enabled(group, 1));
    EXPECT_FALSE(Trace::enabled(group, 7));
}

TEST_F(TraceTest, ConfigurationSelectsGroupsAndLevelsAlsoForGroupsRegisteredLater)
{
    ASSERT_TRUE(Trace::configure("*:4, traceTestLater:1-7+15+16; traceTestOff:none"));
    TraceGroupId later = Trace::registerGroup("traceTestLater");
    TraceGroupId other = Trace::registerGroup("traceTestOther");
    TraceGroupId off = Trace::registerGroup("traceTestOff");
    EXPECT_TRUE(Trace::enabled(later, 7));
    EXPECT_TRUE(Trace::enabled(later, 16));
    EXPECT_FALSE(Trace::enabled(later, 11));
    EXPECT_TRUE(Trace::enabled(other, 4));
    EXPECT_FALSE(Trace::enabled(other, 5));
    EXPECT_FALSE(Trace::enabled(off, 1));
    EXPECT_FALSE(Trace::enabled(other, 99)) << "a level out of range is never on";
}

TEST_F(TraceTest, MalformedConfigurationIsRefusedAndChangesNothing)
{
    TraceGroupId group = Trace::registerGroup("traceTestB");
    std::string error;
    for (const char* bad : {"traceTestB", "traceTestB:", "traceTestB:7-3", "traceTestB:99", ":7", "traceTestB:x"}) {
        EXPECT_FALSE(Trace::configure(bad, &error)) << bad;
        EXPECT_FALSE(error.empty());
    }
    EXPECT_FALSE(Trace::configure("traceTestB:all,broken", &error));
    EXPECT_FALSE(Trace::enabled(group, 7)) << "a refused text changes nothing, not even its good entries";
}

TEST_F(TraceTest, LineCarriesTimeNodeProcessGroupLevelAndFileWithoutPath)
{
    std::string path = ::testing::TempDir() + "trace_line.txt";
    std::remove(path.c_str());
    ASSERT_TRUE(Trace::setOutputFile(path));
    ASSERT_TRUE(Trace::configure("traceTestC:7"));
    TraceGroupId group = Trace::registerGroup("traceTestC");
    {
        World world;
        ProcessSpec definition;
        definition.name = "SSC_THREAD";
        definition.entry = [group] {
            delay(1500);
            SSC_TRACE(group, 7, "Starting %s", "SSC_THREAD");
            SSC_TRACE(group, 9, "not shown");
        };
        world.start(world.createProcess(world.defaultNode(), definition));
        world.runUntilIdle();
    }
    Trace::setOutputStderr();
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_EQ(text.str().substr(0, 30), "[     1.500] node0/SSC_THREAD ");
    EXPECT_NE(text.str().find("traceTestC 7 Trace_test.cpp:"), std::string::npos);
    EXPECT_NE(text.str().find(" Starting SSC_THREAD\n"), std::string::npos);
    EXPECT_EQ(text.str().find("not shown"), std::string::npos);
    std::remove(path.c_str());
}

TEST_F(TraceTest, AnUnwritableFileIsReportedAndStderrStays)
{
    std::string error;
    EXPECT_FALSE(Trace::setOutputFile("/nonexistent-dir/x/trace.txt", &error));
    EXPECT_NE(error.find("cannot open trace file"), std::string::npos);
}

} // namespace
} // namespace ose
