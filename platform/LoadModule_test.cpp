#include "platform/LoadModule.h"

#include "frame/ActiveFaultsRegister.h"
#include "frame/FaultIds.h"
#include "frame/SscThread.h"
#include "frame/TimerSignals.h"
#include "frame/testSupport/TraceCapture.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <string>

namespace {

using ose::testing::TestWorld;

using LoadModuleTest = TestWorld;

TEST_F(LoadModuleTest, TheCoreStartsDropsAnUnknownSignalWithATraceAndGoesOnAnswering)
{
    TraceCapture trace("supSysCtrlSWU:7");
    const ose::PROCESS core = createCoreProcess(world(), node());
    std::string name;
    std::vector<ose::SIGSELECT> answers;
    spawn("tester", [&] {
        ose::PROCESS found = 0;
        ASSERT_TRUE(ose::hunt("SSC_THREAD", 0, &found, nullptr));
        EXPECT_EQ(found, core);
        ose::Signal* unknown = ose::testing::word(0x4711, 0);
        ose::send(&unknown, found);
        for (int i = 0; i < 2; ++i) {
            auto* request = ose::alloc_as<SSC_TEST_TRIGGER_TIMER_REQ_S>(SSC_TEST_TRIGGER_TIMER_REQ);
            request->timerType = 2;
            ose::Signal* signal = reinterpret_cast<ose::Signal*>(request);
            ose::send(&signal, found);
            const ose::SIGSELECT replies[] = {2, SSC_TEST_TRIGGER_TIMER_CFM, SSC_TEST_TRIGGER_TIMER_REJ};
            ose::Signal* reply = ose::receive_w_tmo(1000, replies);
            ASSERT_NE(reply, nullptr);
            answers.push_back(ose::signalNumber(reply));
            ose::free_buf(&reply);
        }
    });
    world().runFor(3000);
    EXPECT_EQ(answers, (std::vector<ose::SIGSELECT>{SSC_TEST_TRIGGER_TIMER_REJ, SSC_TEST_TRIGGER_TIMER_REJ}));
    EXPECT_TRUE(trace.contains("node0/SSC_THREAD"));
    EXPECT_TRUE(trace.contains(" Starting SSC_THREAD\n"));
    EXPECT_TRUE(trace.contains(std::string(" Product info: ") + kSscProductNumber + " " + kSscProductRevision + "\n"));
    EXPECT_TRUE(trace.contains("supSysCtrlSWU 7 SignalDispatcher.cpp:"));
    EXPECT_TRUE(trace.contains(" No receiver for signal:18193 with OODB_Ref:0\n"));
    EXPECT_EQ(trace.count("Sending SSC_TEST_TRIGGER_TIMER_REJ"), 2u);
}

TEST_F(LoadModuleTest, ACoreThatEndsLeavesNoFaultsForTheNextOne)
{
    const ose::PROCESS core = createCoreProcess(world(), node());
    const FuncId_t psu{1, 4};
    bool activeWhileRunning = false;
    spawn("tester", [&] {
        ose::delay(10);
        ActiveFaultsRegister::instance().raiseFault(fault_id::kHwuMissing, psu);
        activeWhileRunning = ActiveFaultsRegister::instance().isFaultActive(fault_id::kHwuMissing, psu);
        ose::kill_proc(core);
    });
    world().runFor(1000);
    EXPECT_TRUE(activeWhileRunning);
    EXPECT_FALSE(ActiveFaultsRegister::instance().isFaultActive(fault_id::kHwuMissing, psu));
    EXPECT_EQ(ActiveFaultsRegister::instance().activeCount(), 0U);
}

} // namespace
