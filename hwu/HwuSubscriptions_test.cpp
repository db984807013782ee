#include "hwu/HwuSubscriptions.h"

#include "frame/testSupport/TraceCapture.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct Listener : Observer {
    void update(std::uint32_t id) override { m_ids.push_back(id); }
    std::vector<std::uint32_t> m_ids;
};

TEST(HwuSubscriptions, ASubscriberIsToldAtOnceThenOnlyOfItsOwnIdAndOnlyOnce)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    HwuSubscriptions subscriptions;
    Listener bfu;
    Listener both;
    EXPECT_TRUE(subscriptions.subscribeStatus(HwuSubscriptions::kBfuStatusChange, &bfu));
    EXPECT_FALSE(subscriptions.subscribeStatus(HwuSubscriptions::kBfuStatusChange, &bfu));
    EXPECT_TRUE(subscriptions.subscribeStatus(HwuSubscriptions::kBfuStatusChange, &both));
    EXPECT_TRUE(subscriptions.subscribeStatus(HwuSubscriptions::kPduStatusChange, &both));
    subscriptions.notifySubscribers(HwuSubscriptions::kPduStatusChange);
    EXPECT_TRUE(subscriptions.unsubscribeStatus(HwuSubscriptions::kBfuStatusChange, &both));
    EXPECT_TRUE(subscriptions.unsubscribeStatus(HwuSubscriptions::kBfuStatusChange, &both));
    subscriptions.notifySubscribers(HwuSubscriptions::kBfuStatusChange);
    EXPECT_EQ(bfu.m_ids, (std::vector<std::uint32_t>{4, 4}));
    EXPECT_EQ(both.m_ids, (std::vector<std::uint32_t>{4, 5, 5}));
    EXPECT_EQ(trace.count("HwuSubscriptions::subscribeStatus: 4, "), 1u);
}

} // namespace
