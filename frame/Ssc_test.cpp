#include "frame/Ssc.h"

#include "adapters/AlarmCtrlServer.h"
#include "climate/ClimateCtrlServer.h"

#include "frame/OsService.h"
#include "frame/testSupport/FakeOsHandler.h"
#include "frame/testSupport/TraceCapture.h"

#include "ose/SignalPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using ::testing::_;
using ::testing::NiceMock;

TEST(SscTest, AServerTypeThatDoesNotExistGivesNilAndATrace)
{
    TraceCapture trace("supSysCtrlSWU:5");
    Ssc ssc;
    EXPECT_EQ(ssc.getServer(static_cast<ServerType>(3)), nullptr);
    EXPECT_EQ(ssc.getServer(static_cast<ServerType>(0)), nullptr);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 5, "Ssc::getServer: Invalid ServerType: 3"), 1u);
    EXPECT_EQ(trace.count("supSysCtrlSWU", 5, "Ssc::getServer: Invalid ServerType: 0"), 1u);
    for (ServerType type : {ServerType::AlarmControl, ServerType::ApcInci, ServerType::ClimateControl})
        ssc.getServer(type);
    EXPECT_EQ(trace.count("Invalid ServerType"), 2u) << "the three types are valid";
}

class SscGraphTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_liveBefore = ose::SignalPool::liveCount();
        OsService::setHandler(&m_os);
        ON_CALL(m_os, createPhantom(_)).WillByDefault([this](const char* name) {
            m_phantoms.emplace_back(name);
            return static_cast<ose::PROCESS>(0x30000 + m_phantoms.size());
        });
    }
    void TearDown() override
    {
        OsService::setHandler(nullptr);
        m_os.drain();
        EXPECT_EQ(ose::SignalPool::liveCount(), m_liveBefore);
    }

    std::size_t m_liveBefore = 0;
    NiceMock<FakeOsHandler> m_os;
    std::vector<std::string> m_phantoms;
};

TEST_F(SscGraphTest, EveryServerGetsItsPhantomAtStartInTheOrderOfBringUpAndTheInterNodeServerNone)
{
    std::vector<ose::PROCESS> killed;
    ON_CALL(m_os, killProcess(_)).WillByDefault([&](ose::PROCESS pid) { killed.push_back(pid); });
    {
        Ssc ssc;
        ssc.setDispatcher(std::make_unique<SignalDispatcher>());
        ssc.initialize();
        EXPECT_EQ(m_phantoms, (std::vector<std::string>{
                                  "ApcInci_Client",
                                  "ssc_power_management_server",
                                  "ssc_equipment_management_server",
                                  "ALM_Server",
                                  "ssc_cabinet_management_server",
                                  "ssc_alarm_control_server",
                                  "ssc_climate_control_server",
                                  "ssc_power_control_server",
                                  "APC_INCI_Server",
                              }));
        // The last "APC_INCI_Server" is the power adapter's; the inter-node
        // server of that name publishes itself later.
        SSC_Server* alarm = ssc.getServer(ServerType::AlarmControl);
        SSC_Server* apc = ssc.getServer(ServerType::ApcInci);
        SSC_Server* climate = ssc.getServer(ServerType::ClimateControl);
        ASSERT_NE(alarm, nullptr);
        ASSERT_NE(apc, nullptr);
        ASSERT_NE(climate, nullptr);
        EXPECT_STREQ(alarm->getServerName(), "AlarmCtrlServer");
        EXPECT_STREQ(apc->getServerName(), "ApcInciServer");
        EXPECT_STREQ(climate->getServerName(), "ClimateCtrlServer");
        EXPECT_EQ(alarm->getPid(), 0x30006u);
        EXPECT_EQ(apc->getPid(), 0u);
        EXPECT_EQ(climate->getPid(), 0x30007u);
        EXPECT_EQ(static_cast<SSC_Server*>(ssc.getAlarmCtrlServer()), alarm);
        EXPECT_EQ(static_cast<SSC_Server*>(ssc.getClimateCtrlServer()), climate);
    }
    // The graph going away takes each phantom with it, once.
    std::sort(killed.begin(), killed.end());
    std::vector<ose::PROCESS> expected;
    for (ose::PROCESS pid = 0x30001; pid <= 0x30009; ++pid) expected.push_back(pid);
    EXPECT_EQ(killed, expected);
}

} // namespace
