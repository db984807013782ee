#include "froBl/froMgmtSwU/export/transMgr.h"

#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/testSupport/traceCapture.h"
#include "platform/VantoTransactionApi.h"

#include <gtest/gtest.h>

namespace {

using namespace fro_types;
using Names = std::vector<std::string>;

// The platform as transMgr sees it: registrations answered at once with a
// chosen result.
struct FakePlatform : VantoTransactionApi {
    int serviceAttach_e() override { return 0; }
    int create_e(int, std::int32_t&, int) override { return 0; }
    int registerResource_e(std::int32_t transactionId, int, int) override
    {
        registered.push_back(transactionId);
        return 0;
    }
    int awaitRegisterRsp(std::int32_t, std::uint32_t& result) override
    {
        result = answer;
        return 0;
    }
    int commit_e(std::int32_t, int) override { return 0; }
    int rollBack_e(std::int32_t, int) override { return 0; }
    void databaseUpdateSQL(std::int32_t, const std::string&) override {}

    std::vector<std::int32_t> registered;
    std::uint32_t answer = 0;
};

class transMgrTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(m_table.createMO("Cabinet=1", kCabinet, -1), nullptr);
        ASSERT_NE(m_table.createMO("Cabinet=1,FanGroup=1", kFanGroup, -1), nullptr);
    }

    int create(std::int32_t tx, const std::string& ldn, std::uint32_t froType, const Names& names = {},
               const Names& values = {}, const Names& types = {})
    {
        std::int32_t externalId = -1;
        return m_transactions.createMO(tx, ldn, names, values, types, froType, externalId);
    }

    bool commit(std::int32_t tx)
    {
        return m_transactions.commit(tx, m_created, m_set, m_deleted, nullptr);
    }

    std::string attribute(std::int32_t tx, const std::string& ldn, const std::string& name)
    {
        Names names{name}, values, types;
        return m_transactions.getMoAttributes(tx, ldn, names, values, types) == 1 ? values.at(0) : "<failed>";
    }

    // Whether an id of the class is taken, told by trying to reserve it.
    bool idTaken(std::uint32_t froType, std::int32_t externalId)
    {
        if (!m_ids.reserveFroId(froType, externalId))
            return true;
        m_ids.freeFroId(froType, externalId);
        return false;
    }

    froIdHandler m_ids;
    fROFactory m_factory{m_ids};
    froMgr m_table{m_factory};
    FakePlatform m_platform;
    transMgr m_transactions{m_table, m_factory, m_platform};
    Names m_created, m_set, m_deleted;
};

TEST_F(transMgrTest, ACommitPlaysEachKindOfShadowIntoTheTable)
{
    std::int32_t externalId = -1;
    ASSERT_EQ(m_transactions.createMO(5, "Cabinet=2", {"cabinetIdentifier", "userLabel"}, {"new", "label"},
                                      {"STRING", "STRING"}, kCabinet, externalId), 1);
    EXPECT_EQ(externalId, 1) << "the lowest free id of the class";
    ASSERT_EQ(m_transactions.setMoAttribute(5, "Cabinet=1", "smokeDetector", "1"), 1);
    ASSERT_EQ(m_transactions.deleteMO(5, "Cabinet=1,FanGroup=1"), 1);

    // Inside the transaction its own view; outside, the real objects as they were.
    EXPECT_EQ(attribute(5, "Cabinet=1", "smokeDetector"), "1");
    EXPECT_EQ(attribute(0, "Cabinet=1", "smokeDetector"), "0");
    EXPECT_EQ(attribute(5, "Cabinet=2", "cabinetIdentifier"), "new");
    EXPECT_FALSE(m_table.exists("Cabinet=2"));
    EXPECT_TRUE(m_table.exists("Cabinet=1,FanGroup=1"));
    EXPECT_EQ(m_transactions.getLdn(5, froIdHandler::toInternalId(kCabinet, 1)), "Cabinet=2");
    EXPECT_EQ(m_transactions.getLdn(5, m_table.getFro("Cabinet=1,FanGroup=1")->getInternalId()), "")
        << "a deleted object has no name in its transaction";
    EXPECT_EQ(m_platform.registered, (std::vector<std::int32_t>{5})) << "registered once, at first use";

    ASSERT_TRUE(commit(5));
    EXPECT_EQ(m_created, Names{"Cabinet=2"});
    EXPECT_EQ(m_set, Names{"Cabinet=1"});
    EXPECT_EQ(m_deleted, Names{"Cabinet=1,FanGroup=1"});
    const fRO* made = m_table.getFro("Cabinet=2");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->getExternalId(), 1);
    EXPECT_EQ(made->getAttribute("cabinetIdentifier"), "new");
    EXPECT_EQ(made->getAttribute("smokeDetector"), "0") << "class default";
    EXPECT_EQ(made->getAttribute("userLabel"), "label");
    EXPECT_FALSE(made->hasAttribute(transMgr::kTransState));
    EXPECT_EQ(m_table.getAttribute("Cabinet=1", "smokeDetector"), "1");
    EXPECT_FALSE(m_table.exists("Cabinet=1,FanGroup=1"));
    EXPECT_FALSE(m_transactions.hasTransaction(5));
    EXPECT_TRUE(idTaken(kCabinet, 0) && idTaken(kCabinet, 1) && !idTaken(kFanGroup, 0));
}

TEST_F(transMgrTest, DeleteThenCreateRenewsAnObjectAndCreateThenDeleteLeavesNothing)
{
    ASSERT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1", "smokeDetector", "1"), 1);
    ASSERT_TRUE(commit(1));
    ASSERT_EQ(m_transactions.deleteMO(2, "Cabinet=1"), 1);
    ASSERT_EQ(create(2, "Cabinet=1", kCabinet, {"cabinetIdentifier"}, {"again"}, {"STRING"}), 1);
    ASSERT_EQ(create(2, "Cabinet=7", kCabinet), 1);
    ASSERT_EQ(m_transactions.deleteMO(2, "Cabinet=7"), 1);
    ASSERT_TRUE(commit(2));

    EXPECT_EQ(m_created, Names{"Cabinet=1"});
    EXPECT_TRUE(m_set.empty() && m_deleted.empty());
    EXPECT_EQ(m_table.getAttribute("Cabinet=1", "smokeDetector"), "0") << "a new object, not the old one changed";
    EXPECT_EQ(m_table.getAttribute("Cabinet=1", "cabinetIdentifier"), "again");
    EXPECT_FALSE(m_table.exists("Cabinet=7"));
    Names all;
    EXPECT_EQ(m_table.getAllLdns(all), 2);
    // The renewed object took the id its shadow had reserved; the old one and Cabinet=7's are free.
    EXPECT_EQ(m_table.getFro("Cabinet=1")->getExternalId(), 1);
    EXPECT_FALSE(idTaken(kCabinet, 0));
    EXPECT_FALSE(idTaken(kCabinet, 2));
}

TEST_F(transMgrTest, TwoTransactionsCannotTouchOneObject)
{
    traceCapture trace;
    ose::Trace::configure("supSysFroMgmtSwU:all");
    ASSERT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1", "smokeDetector", "1"), 1);
    EXPECT_EQ(m_transactions.setMoAttribute(2, "Cabinet=1", "smokeDetector", "2"), 0);
    EXPECT_EQ(m_transactions.deleteMO(2, "Cabinet=1"), 0);
    EXPECT_EQ(create(2, "Cabinet=1", kCabinet), 0);
    EXPECT_EQ(attribute(2, "Cabinet=1", "smokeDetector"), "0") << "the other transaction sees the real object";
    ose::Trace::reset();
    for (const char* words : {"Cannot set attribute of fRO, fRO part of another transaction",
                              "Cannot delete fRO with ldn \"Cabinet=1\" in transaction 2, fro is already part of "
                              "transaction 1",
                              "Could not add fRO Cabinet=1, it already exists and is not in state DELETE but state SET",
                              "fRO not found in the current transaction, looking for fRO in froMgr"})
        EXPECT_TRUE(trace.contains(words)) << words;

    ASSERT_EQ(m_transactions.deleteMO(1, "Cabinet=1,FanGroup=1"), 1);
    EXPECT_EQ(create(2, "Cabinet=1,FanGroup=1", kFanGroup), 0) << "a deleted shadow of another transaction";
    ASSERT_TRUE(m_transactions.rollback(1));
    EXPECT_EQ(m_transactions.setMoAttribute(2, "Cabinet=1", "smokeDetector", "2"), 1) << "free again";
}

TEST_F(transMgrTest, AShadowTakesOnlyAttributesThatItOrItsRealObjectHas)
{
    traceCapture trace;
    ASSERT_EQ(create(1, "Cabinet=2", kCabinet), 1);
    EXPECT_EQ(m_transactions.setMoAttribute(1, "Cabinet=2", "userLabel", "x"), 0)
        << "no real object to give the type";
    EXPECT_EQ(m_transactions.setMoAttribute(1, "Cabinet=2", "cabinetIdentifier", "x"), 1);
    EXPECT_EQ(m_transactions.setMoAttribute(1, "Cabinet=2", transMgr::kTransState, "DELETE"), 0);
    EXPECT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1", "noSuchAttribute", "x"), 0);
    EXPECT_EQ(m_transactions.setMoAttribute(1, "Cabinet=9", "smokeDetector", "1"), 0);
    ASSERT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1", "smokeDetector", "1"), 1);
    ASSERT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1", "cabinetIdentifier", "id"), 1);
    EXPECT_EQ(m_transactions.getFro(1, "Cabinet=1")->getAttributeType("cabinetIdentifier"), "STRING");
    ASSERT_EQ(m_transactions.deleteMO(1, "Cabinet=1"), 1);
    EXPECT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1", "smokeDetector", "2"), 0);
    EXPECT_EQ(m_transactions.deleteMO(1, "Cabinet=1"), 0);
    EXPECT_EQ(m_transactions.deleteMO(1, "Cabinet=9"), 0);
    for (const char* words : {"Could not set attribute in fRO with ldn Cabinet=2, fRO was not found in froMgr, "
                              "transaction inconsistant",
                              "Could not set attribute in fRO with ldn Cabinet=1, attribute does not exist",
                              "Could not set attribute in fRO with ldn Cabinet=9, fro does not exist",
                              "Could not set attribute in fRO with ldn Cabinet=1, fRO is deleted in the same transaction",
                              "fro is already deleted in the same transaction",
                              "Cannot delete fRO with ldn \"Cabinet=9\", it does not exist"})
        EXPECT_TRUE(trace.contains(words)) << words;
    ASSERT_TRUE(commit(1));
    EXPECT_EQ(m_table.getAttribute("Cabinet=2", "cabinetIdentifier"), "x");
    EXPECT_FALSE(m_table.exists("Cabinet=1"));
}

TEST_F(transMgrTest, AttributesAreReadFromTheShadowFirstAndAllOfThemWithoutNames)
{
    ASSERT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1", "smokeDetector", "1"), 1);
    Names names, values, types;
    ASSERT_EQ(m_transactions.getMoAttributes(1, "Cabinet=1", names, values, types), 1);
    EXPECT_EQ(names, (Names{"cabinetIdentifier", "smokeDetector"})) << "the real object's list";
    EXPECT_EQ(values, (Names{"", "1"}));
    EXPECT_EQ(types, (Names{"STRING", "S32"}));

    ASSERT_EQ(create(1, "Cabinet=2", kCabinet), 1);
    names.clear(), values.clear(), types.clear();
    ASSERT_EQ(m_transactions.getMoAttributes(1, "Cabinet=2", names, values, types), 1);
    EXPECT_EQ(names, (Names{"cabinetIdentifier", "smokeDetector", "TransState"}));
    EXPECT_EQ(values.back(), "CREATE");

    names = {"smokeDetector", "nothing", "cabinetIdentifier"};
    values.clear(), types.clear();
    EXPECT_EQ(m_transactions.getMoAttributes(1, "Cabinet=1", names, values, types), 0);
    EXPECT_EQ(values, (Names{"1", ""})) << "the others are still read";

    ASSERT_EQ(m_transactions.deleteMO(1, "Cabinet=1,FanGroup=1"), 1);
    names.clear(), values.clear(), types.clear();
    EXPECT_EQ(m_transactions.getMoAttributes(1, "Cabinet=1,FanGroup=1", names, values, types), 0);
    EXPECT_EQ(m_transactions.getMoAttributes(0, "Cabinet=9", names, values, types), 0);
}

TEST_F(transMgrTest, EndingATransactionKeepsExactlyTheIdsOfExistingObjects)
{
    ASSERT_EQ(create(1, "Cabinet=2", kCabinet), 1);                       // reserves id 1
    ASSERT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1", "smokeDetector", "1"), 1);
    ASSERT_EQ(m_transactions.deleteMO(1, "Cabinet=1,FanGroup=1"), 1);
    ASSERT_EQ(create(2, "Cabinet=3", kCabinet), 1);                       // reserves id 2
    ASSERT_TRUE(m_transactions.rollback(1));
    EXPECT_TRUE(idTaken(kCabinet, 0) && idTaken(kFanGroup, 0)) << "the real objects keep theirs";
    EXPECT_FALSE(idTaken(kCabinet, 1));
    EXPECT_TRUE(idTaken(kCabinet, 2));
    m_transactions.rollbackAll();
    EXPECT_FALSE(idTaken(kCabinet, 2));
    EXPECT_EQ(m_transactions.transactionCount(), 0u);
    EXPECT_FALSE(m_transactions.rollback(1));

    // A new shadow turned into a deletion of the real one: both ids end free.
    ASSERT_EQ(m_transactions.deleteMO(3, "Cabinet=1"), 1);
    ASSERT_EQ(create(3, "Cabinet=1", kCabinet), 1);
    ASSERT_EQ(m_transactions.deleteMO(3, "Cabinet=1"), 1);
    ASSERT_TRUE(commit(3));
    EXPECT_EQ(m_deleted, Names{"Cabinet=1"});
    EXPECT_FALSE(idTaken(kCabinet, 0));
    EXPECT_FALSE(idTaken(kCabinet, 1));
}

TEST_F(transMgrTest, DeletedChildrenComeBeforeTheirParentsAndDeletedShadowsHideTheirType)
{
    ASSERT_NE(m_table.createMO("Cabinet=1,HwUnit=1", kHwUnit, -1), nullptr);
    ASSERT_NE(m_table.createMO("Cabinet=1,HwUnit=1,EFuse=1", kEFuse, -1), nullptr);
    ASSERT_NE(m_table.createMO("Cabinet=10", kCabinet, -1), nullptr);
    for (const char* ldn : {"Cabinet=10", "Cabinet=1,HwUnit=1", "Cabinet=1", "Cabinet=1,HwUnit=1,EFuse=1"})
        ASSERT_EQ(m_transactions.deleteMO(1, ldn), 1) << ldn;
    EXPECT_EQ(m_transactions.getDeleted(1),
              (Names{"Cabinet=1,HwUnit=1,EFuse=1", "Cabinet=1,HwUnit=1", "Cabinet=1", "Cabinet=10"}));
    EXPECT_FALSE(m_transactions.isInTransaction(1, "Cabinet"));
    ASSERT_EQ(m_transactions.setMoAttribute(1, "Cabinet=1,FanGroup=1", "fanGroupFaultIndicator", "0"), 1);
    EXPECT_TRUE(m_transactions.isInTransaction(1, "Cabinet")) << "a changed object below a cabinet";
    EXPECT_TRUE(m_transactions.isInTransaction(1, "FanGroup"));
    EXPECT_FALSE(m_transactions.isInTransaction(1, "HwUnit"));
    EXPECT_TRUE(m_transactions.getDeleted(99).empty());
}

TEST_F(transMgrTest, ATransactionThePlatformRefusesHoldsNothing)
{
    traceCapture trace;
    m_platform.answer = 1;
    EXPECT_EQ(m_transactions.setMoAttribute(4, "Cabinet=1", "smokeDetector", "1"), 0);
    EXPECT_EQ(m_transactions.transactionCount(), 0u);
    EXPECT_TRUE(trace.contains("Resource registration to TRANI failed. Failure code 1"));
    m_platform.answer = 0;
    EXPECT_EQ(m_transactions.setMoAttribute(5, "Cabinet=1", "smokeDetector", "1"), 1) << "the object is not held";

    EXPECT_FALSE(commit(4));
    EXPECT_TRUE(trace.contains("Transaction 4 does not exist"));
}

} // namespace
