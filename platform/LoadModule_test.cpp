#include "platform/LoadModule.h"

#include "frame/ActiveFaultsRegister.h"
#include "frame/FaultIds.h"
#include "frame/SscThread.h"
#include "frame/TimerSignals.h"
#include "frame/testSupport/TraceCapture.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosisSignals.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "platform/VantoCliSignals.h"
#include "vanto/VantoNameServer.h"
#include "vanto/VantoRpuServer.h"
#include "vanto/VantoTransactionServer.h"
#include "vanto/testSupport/sqliteFile.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <memory>
#include <optional>
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

// The whole load module beside the platform's servers: a role change makes
// the object process ask for a restart, and the restart brings all four
// processes back as new ones, the object process with its new role.
class LoadModuleRestartTest : public TestWorld {
protected:
    void startNode()
    {
        createTransactionServer(world(), node(), m_database.config());
        createNameServer(world(), node());
        // Each object process restores its objects from this database.
        EXPECT_TRUE(DatabaseFacade::configure(m_database.config()));
        m_loadModule = std::make_unique<LoadModule>(world(), node());
        VantoRpuConfig config;
        config.restartLoadModule = [this] { m_loadModule->restart(); };
        createRpuServer(world(), node(), config);
        m_loadModule->start();
    }
    void TearDown() override
    {
        m_world.reset();
        m_loadModule.reset();
        TestWorld::TearDown();
    }

    // At `atMs`: the object process's answer to a 1 s timer probe (0 when
    // none comes within 10 s), then the RPU server's state.
    struct Look {
        std::uint32_t timerAnsweredAfter = 0;
        vanto_cli::VANTO_RPU_STATUS_CFM_S status{};
        std::vector<ose::PROCESS> processes;
    };
    void lookAt(std::uint64_t atMs, Look& look, std::optional<std::uint32_t> roleAfter = {})
    {
        spawn("operator", [this, atMs, &look, roleAfter] {
            ose::delay(static_cast<ose::OSTIME>(atMs));
            look.processes = m_loadModule->processes();
            ose::PROCESS objects = 0, rpu = 0;
            ASSERT_TRUE(ose::hunt(kSupSysProcessName, 0, &objects, nullptr));
            ASSERT_TRUE(ose::hunt(vanto_cli::kServerName, 0, &rpu, nullptr));
            auto* probe = ose::alloc_as<SUP_SYS_DIAG_TIMER_REQ_S>(SUP_SYS_DIAG_TIMER_REQ);
            probe->delayMs = 1000;
            ose::Signal* signal = reinterpret_cast<ose::Signal*>(probe);
            ose::send(&signal, objects);
            static constexpr ose::SIGSELECT kProbe[] = {1, SUP_SYS_DIAG_TIMER_CFM};
            if (ose::Signal* answer = ose::receive_w_tmo(10000, kProbe)) {
                const auto* cfm = ose::signal_cast<SUP_SYS_DIAG_TIMER_CFM_S>(answer);
                look.timerAnsweredAfter = cfm->answeredAtMs - cfm->requestedAtMs;
                ose::free_buf(&answer);
            }
            ose::Signal* ask = ose::alloc(4, vanto_cli::VANTO_RPU_STATUS_REQ);
            ose::send(&ask, rpu);
            static constexpr ose::SIGSELECT kStatus[] = {1, vanto_cli::VANTO_RPU_STATUS_CFM};
            ose::Signal* status = ose::receive(kStatus);
            look.status = *ose::signal_cast<vanto_cli::VANTO_RPU_STATUS_CFM_S>(status);
            ose::free_buf(&status);
            if (roleAfter) {
                auto* role = ose::alloc_as<vanto_cli::VANTO_RPU_SET_ROLE_REQ_S>(vanto_cli::VANTO_RPU_SET_ROLE_REQ);
                role->role = *roleAfter;
                ose::Signal* request = reinterpret_cast<ose::Signal*>(role);
                ose::send(&request, rpu);
            }
        });
    }

    sqliteFile m_database;
    std::unique_ptr<LoadModule> m_loadModule;
};

TEST_F(LoadModuleRestartTest, ARoleChangeRestartsAllFourProcessesAndTheObjectProcessTakesTheNewRole)
{
    TraceCapture trace("supSysEngineSwU:4,supSysCtrlSWU:7");
    startNode();
    Look first, passive, active;
    lookAt(10000, first, 0);
    lookAt(40000, passive, 1);
    lookAt(70000, active);
    world().runFor(90000);

    EXPECT_EQ(first.timerAnsweredAfter, 1000u);
    EXPECT_EQ(first.status.registered, 1u);
    EXPECT_EQ(first.status.restarts, 0u);
    ASSERT_EQ(first.processes.size(), 4u);

    EXPECT_EQ(passive.timerAnsweredAfter, 0u) << "the passive object process has no timers running";
    EXPECT_EQ(passive.status.restarts, 1u);
    EXPECT_EQ(passive.status.registered, 1u) << "the new object process registered again";
    ASSERT_EQ(passive.processes.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NE(passive.processes[i], first.processes[i]);
    EXPECT_EQ(passive.status.clientPid, passive.processes[0]);

    EXPECT_EQ(active.timerAnsweredAfter, 1000u);
    EXPECT_EQ(active.status.restarts, 2u);
    EXPECT_EQ(trace.count("APC Active RPU"), 2u);
    EXPECT_EQ(trace.count("APC Passive RPU"), 1u);
    EXPECT_EQ(trace.count("Received VANTO_CLI_PASSIVE_RPU, requesting a restart"), 1u);
    EXPECT_EQ(trace.count(" Starting SSC_THREAD\n"), 3u);
}

} // namespace
