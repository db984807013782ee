#include "frame/AdapterBase.h"

#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "frame/testSupport/FakeOsHandler.h"

#include <gtest/gtest.h>

namespace {

class TestAdapter : public AdapterBase {
public:
    using AdapterBase::AdapterBase;
    ~TestAdapter() override { deregisterSignals(); }
    const char* getProcessName() const override { return "test_adapter"; }
    const char* getServerName() const override { return "TestAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override { return makeSignalIterator(*this, kTable); }
    std::uint32_t dataCount() const { return m_dataSubscribers.count(); }

private:
    void handle(ose::Signal*) {}
    static constexpr SignalTableRow<TestAdapter> kTable[] = {{0x1704301, "CMI_X", &TestAdapter::handle}};
};

TEST(AdapterBaseTest, RowsAreKeyedByPidAndObjectNotByTheClientsReferenceAndTheTwoListsAreApart)
{
    ::testing::NiceMock<FakeOsHandler> os;
    OsService::setHandler(&os);
    {
        SignalDispatcher dispatcher;
        TestAdapter adapter(&dispatcher);
        const ObjectSubscriber first{5, 3, 100, 0x20001};
        const ObjectSubscriber sameUnderOtherRef{5, 3, 200, 0x20001};
        const ObjectSubscriber otherType{5, 4, 100, 0x20001};
        const ObjectSubscriber otherPid{5, 3, 100, 0x20002};

        adapter.addDataSubscriber(first);
        adapter.addDataSubscriber(sameUnderOtherRef);
        adapter.addDataSubscriber(otherType);
        EXPECT_EQ(adapter.dataCount(), 2u);
        EXPECT_TRUE(adapter.findDataSubscriber(sameUnderOtherRef));
        EXPECT_FALSE(adapter.findDataSubscriber(otherPid));
        EXPECT_FALSE(adapter.findConfigHolder(first));

        adapter.addConfigHolder(otherPid);
        EXPECT_TRUE(adapter.removeDataSubscriber(sameUnderOtherRef));
        EXPECT_FALSE(adapter.findDataSubscriber(first));
        EXPECT_FALSE(adapter.removeDataSubscriber(first));
        EXPECT_TRUE(adapter.findDataSubscriber(otherType));
        EXPECT_TRUE(adapter.findConfigHolder(otherPid));
        EXPECT_TRUE(adapter.removeConfigHolder(otherPid));
        EXPECT_FALSE(adapter.findConfigHolder(otherPid));
    }
    OsService::setHandler(nullptr);
}

} // namespace
