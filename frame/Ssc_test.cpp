#include "frame/Ssc.h"

#include "frame/testSupport/TraceCapture.h"

#include <gtest/gtest.h>

namespace {

TEST(SscTest, AServerTypeThatDoesNotExistGivesNilAndATrace)
{
    TraceCapture trace("supSysCtrlSWU:5");
    Ssc ssc;
    EXPECT_EQ(ssc.getServer(static_cast<ServerType>(3)), nullptr);
    EXPECT_EQ(ssc.getServer(static_cast<ServerType>(0)), nullptr);
    EXPECT_EQ(trace.count("Ssc::getServer: Invalid ServerType: 3"), 1u);
    EXPECT_EQ(trace.count("Ssc::getServer: Invalid ServerType: 0"), 1u);
    for (ServerType type : {ServerType::AlarmControl, ServerType::ApcInci, ServerType::ClimateControl})
        ssc.getServer(type);
    EXPECT_EQ(trace.count("Invalid ServerType"), 2u) << "the three types are valid";
}

} // namespace
