// The secondary nodes' air flow demands on the virtual clock: kept fresh by
// demands, aged one step by three minutes of silence, and the highest one
// raising the primary's demand.

#include "climate/ExternalNodeControl.h"
#include "climate/ExternalNodeControlCallbackIf.h"
#include "frame/testSupport/TraceCapture.h"
#include "hwu/testSupport/HwuNodeHarness.h"

#include <gtest/gtest.h>

namespace {

class Callback : public ExternalNodeControlCallbackIf {
public:
    float getFlowFactor() const override { return 1.5f; }
    void updateBasicFanSpeed() override { ++m_updates; }
    int m_updates = 0;
};

class ExternalNodeControlTest : public HwuNodeHarness {
protected:
    void TearDown() override
    {
        TimerService::setHandler(nullptr);
        m_pControl.reset();
        HwuNodeHarness::TearDown();
    }
    void at(std::uint32_t ms, std::function<void(ExternalNodeControl&)> action)
    {
        step(ms, [this, action](HWU_Broker&) {
            if (!m_pControl) m_pControl = std::make_unique<ExternalNodeControl>(&m_callback);
            action(*m_pControl);
        });
    }
    float highest(float own)
    {
        m_pControl->getMaxAirflow(&own);
        return own;
    }

    Callback m_callback;
    std::unique_ptr<ExternalNodeControl> m_pControl;
};

TEST_F(ExternalNodeControlTest, DemandsKeepANodeFreshAndSilenceAgesItByOneStepOnly)
{
    TraceCapture trace("supSysCtrlClimate:all");
    std::vector<float> seen;
    std::vector<bool> withoutDemand;
    at(0, [&](ExternalNodeControl& control) {
        control.nodeAdded(ExternalNode(7));
        control.nodeAdded(ExternalNode(8));
        withoutDemand.push_back(control.hasNodeWithoutDemand());
        control.airflowDemand(7, 30.0f);
        control.airflowDemand(9, 50.0f); // no such node
    });
    // A demand every two minutes for ten minutes: no step.
    for (std::uint32_t minute = 2; minute <= 10; minute += 2)
        at(minute * 60'000, [](ExternalNodeControl& control) { control.airflowDemand(7, 30.0f); });
    at(12 * 60'000, [&](ExternalNodeControl&) { seen.push_back(highest(10.0f)); });
    // Silent from minute 10: one step at minute 13, none at 16 or 19.
    at(14 * 60'000, [&](ExternalNodeControl&) { seen.push_back(highest(10.0f)); });
    at(20 * 60'000, [&](ExternalNodeControl& control) {
        seen.push_back(highest(10.0f));
        seen.push_back(highest(60.0f));
        control.airflowDemand(8, 5.0f);
        withoutDemand.push_back(control.hasNodeWithoutDemand());
        control.nodeRemoved(ExternalNode(7));
        seen.push_back(highest(0.0f));
    });
    runNode(21 * 60'000);
    ASSERT_EQ(seen.size(), 5u);
    EXPECT_EQ(seen[0], 30.0f);
    EXPECT_FLOAT_EQ(seen[1], 30.0f + 20.0f / 1.5f);
    EXPECT_FLOAT_EQ(seen[2], seen[1]) << "one step, not one every three minutes";
    EXPECT_EQ(seen[3], 60.0f) << "the own demand stands when it is higher";
    EXPECT_EQ(seen[4], 5.0f);
    EXPECT_EQ(withoutDemand, (std::vector<bool>{true, false}));
    EXPECT_EQ(trace.count("No airflow demand from pid 7 for 3 min."), 1u);
    EXPECT_TRUE(trace.contains("Received an air flow demand (50.00) for a non configured external node with id: 9"));
    EXPECT_TRUE(trace.contains("Removed an external node with id 7"));
    EXPECT_GE(m_callback.m_updates, 7);
}

} // namespace
