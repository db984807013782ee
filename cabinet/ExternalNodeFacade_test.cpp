#include "cabinet/ExternalNodeFacade.h"

#include "cabinet/NodeFacade.h"
#include "frame/ActiveFaultsRegister.h"
#include "frame/EcbLinxService.h"
#include "frame/testSupport/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OwnNode : public NodeIf {
public:
    const NodeRecord& getNodeRecord() const override { return m_record; }
    NodeRecord m_record;
};

class Links : public EcbLinxHandler {
public:
    bool createLink(std::int32_t objectId, bool, std::uint32_t address) override
    {
        m_log.push_back("link " + std::to_string(objectId) + " " + std::to_string(address));
        return address != m_refused;
    }
    void deleteLink(std::int32_t objectId) override { m_log.push_back("unlink " + std::to_string(objectId)); }
    std::vector<std::string> m_log;
    std::uint32_t m_refused = 0;
};

class Events : public ExternalNodeEventIf {
public:
    void nodeAdded(const ExternalNode& node) override
    {
        m_log.push_back("added " + std::to_string(node.objectId) + " nin " + std::to_string(node.nin));
    }
    void nodeRemoved(std::int32_t objectId, std::int32_t nin) override
    {
        m_log.push_back("removed " + std::to_string(objectId) + " nin " + std::to_string(nin));
    }
    void nodeChanged(const ExternalNode& node) override
    {
        m_log.push_back("changed " + std::to_string(node.objectId) + " " + node.logicalName.data());
    }
    void raiseFault(ExternalNodeFault fault, std::uint32_t inst) override
    {
        m_log.push_back("raise " + std::to_string(static_cast<int>(fault)) + " " + std::to_string(inst));
    }
    void ceaseFault(ExternalNodeFault fault, std::uint32_t inst) override
    {
        m_log.push_back("cease " + std::to_string(static_cast<int>(fault)) + " " + std::to_string(inst));
    }
    std::vector<std::string> m_log;
};

HubPositionList positions(std::initializer_list<const char*> texts)
{
    HubPositionList list;
    for (const char* text : texts) {
        std::strncpy(list.positions[list.count].data(), text, HubPositionList::kFieldSize);
        ++list.count;
    }
    return list;
}

class ExternalNodeFacadeTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        EcbLinxService::setHandler(&m_links);
        m_facade.setEventHandler(&m_events);
    }
    void TearDown() override { EcbLinxService::setHandler(nullptr); }
    void makePrimary() { m_own.m_record.supportSystemControl = 1; }
    std::int32_t ninOf(std::int32_t objectId)
    {
        ExternalNode node;
        return m_facade.getNode(objectId, &node) ? (node.ninValid ? node.nin : 0) : -1;
    }

    ActiveFaultsRegister m_faults;
    OwnNode m_own;
    Links m_links;
    Events m_events;
    ExternalNodeFacade m_facade{m_faults, m_own};
};

TEST_F(ExternalNodeFacadeTest, OnThePrimaryNodesAreLinkedAndNumberedDenselyAcrossARemoval)
{
    makePrimary();
    m_facade.addNode(1, positions({"A0"}));
    m_facade.addNode(2, positions({"B0"}));
    m_facade.addNode(3, positions({"A1", "B1"}));
    m_facade.removeNode(2);
    EXPECT_EQ(ninOf(1), 1);
    EXPECT_EQ(ninOf(3), 2);
    EXPECT_EQ(ninOf(2), -1);
    EXPECT_THAT(m_links.m_log, ElementsAre("link 1 254", "link 2 253", "link 3 252", "link 3 251", "unlink 2"));
    EXPECT_THAT(m_events.m_log, ElementsAre("added 1 nin 1", "added 2 nin 2", "added 3 nin 3", "removed 2 nin 2"));
}

TEST_F(ExternalNodeFacadeTest, OnASecondaryNodesAreRowsOnlyUntilThePrimaryNumbersThem)
{
    m_facade.addNode(7, positions({"A0"}));
    m_facade.addNode(8, positions({}));
    NodeRecord record;
    record.setLogicalName("node-b");
    m_facade.updateNodeByNin(4, record);
    m_facade.removeNode(8);
    EXPECT_THAT(m_links.m_log, IsEmpty());
    EXPECT_THAT(m_events.m_log, ElementsAre("changed 7 node-b"));
    EXPECT_EQ(ninOf(7), 4);
    EXPECT_EQ(m_faults.activeCount(), 0u);
}

TEST_F(ExternalNodeFacadeTest, AddingAKnownNodeMergesItsAddressesUpToSixAndKeepsItsNin)
{
    TraceCapture trace("supSysCtrlPriSec:5");
    makePrimary();
    m_facade.addNode(1, positions({"A0", "B0", "A1"}));
    m_facade.addNode(1, positions({"A1", "B1", "A2", "B2", "A3"}));
    ExternalNode node;
    ASSERT_TRUE(m_facade.getNode(1, &node));
    EXPECT_EQ(node.nin, 1);
    EXPECT_EQ(node.hdlcAddresses, (std::array<std::uint32_t, 6>{254, 253, 252, 251, 250, 249}));
    EXPECT_EQ(trace.count("supSysCtrlPriSec", 5, "Not able to add HDLC address 248  to list"), 1u);
}

TEST_F(ExternalNodeFacadeTest, PositionsWithoutAddressOrLinkRaiseTheNodesFaults)
{
    makePrimary();
    m_links.m_refused = 252;
    m_facade.addNode(5, positions({"Q", "R"}));
    m_facade.addNode(6, positions({"A1", "B1"}));
    m_facade.addNode(9, positions({"B0", "A1"}));
    EXPECT_TRUE(m_faults.isFaultActive(21503, FuncId_t{8, 5}));
    EXPECT_TRUE(m_faults.isFaultActive(21504, FuncId_t{8, 6}));
    EXPECT_TRUE(m_faults.isFaultActive(21505, FuncId_t{8, 9}));
    EXPECT_THAT(m_events.m_log, ::testing::IsSupersetOf({"raise 1 5", "raise 2 6", "raise 3 9"}));
    // Removing the node takes its faults away without a word.
    m_facade.removeNode(6);
    EXPECT_FALSE(m_faults.isFaultActive(21504, FuncId_t{8, 6}));
}

} // namespace
