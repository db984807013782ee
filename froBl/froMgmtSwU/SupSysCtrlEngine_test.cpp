// The object process from its first instruction: the role handshake with
// the platform's RPU server, the bring-up that waits for the core's
// servers, the receive loop, and role changes turned into restarts.

#include "froBl/froMgmtSwU/export/CtrlCommunicationIf.h"
#include "froBl/froMgmtSwU/export/SupSysCtrlEngine.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosisSignals.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "frame/testSupport/TraceCapture.h"
#include "platform/VantoCliSignals.h"
#include "vanto/VantoNameServer.h"
#include "vanto/VantoRpuServer.h"
#include "vanto/VantoTransactionServer.h"
#include "vanto/testSupport/sqliteFile.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <optional>
#include <string>
#include <vector>

namespace {

using namespace ose;
using namespace ose::testing;
using namespace vanto_cli;

constexpr const char* kCoreServers[] = {"ssc_cabinet_management_server", "ssc_equipment_management_server",
                                        "ssc_power_management_server", "ssc_alarm_control_server"};

class SupSysCtrlEngineTest : public TestWorld {
protected:
    // The object process with the platform's transaction and name servers
    // beside it.
    PROCESS startObjectProcess()
    {
        createTransactionServer(world(), node(), m_database.config());
        createNameServer(world(), node());
        // The process restores its objects from this database at start.
        EXPECT_TRUE(DatabaseFacade::configure(m_database.config()));
        m_objects = spawn(kSupSysProcessName, supSysMain);
        return m_objects;
    }

    // Servers that only take what they are sent, under the core's names.
    void startCoreServers()
    {
        for (const char* name : kCoreServers)
            spawn(name, [] {
                for (;;) {
                    Signal* signal = receive(kAnySignal);
                    free_buf(&signal);
                }
            });
    }

    void startCoreServersLate(std::uint64_t atMs)
    {
        spawn("core loader", [this, atMs] {
            delay(static_cast<OSTIME>(atMs));
            startCoreServers();
        });
    }

    // Asks the object process for a 0 ms timer at `atMs`; the answer tells
    // when the request was taken from the queue.
    void probeAt(std::uint64_t atMs)
    {
        spawn("prober", [this, atMs] {
            delay(static_cast<OSTIME>(atMs));
            auto* request = alloc_as<SUP_SYS_DIAG_TIMER_REQ_S>(SUP_SYS_DIAG_TIMER_REQ);
            request->clientRef = 42;
            Signal* signal = reinterpret_cast<Signal*>(request);
            send(&signal, m_objects);
            static constexpr SIGSELECT kAnswer[] = {1, SUP_SYS_DIAG_TIMER_CFM};
            Signal* answer = receive(kAnswer);
            m_probeTakenAt = signal_cast<SUP_SYS_DIAG_TIMER_CFM_S>(answer)->requestedAtMs;
            free_buf(&answer);
        });
    }

    sqliteFile m_database;
    PROCESS m_objects = 0;
    std::optional<std::uint32_t> m_probeTakenAt;
};

// A stand-in for the RPU server that plays a script and notes what the
// load module sends it.
struct ScriptedServer {
    std::vector<std::string> heard;

    Signal* expect(SIGSELECT sigNo)
    {
        const SIGSELECT selector[] = {1, sigNo};
        Signal* signal = receive_w_tmo(60000, selector);
        if (signal != nullptr) heard.push_back(std::to_string(signalNumber(signal)));
        return signal;
    }
    static void sendCfm(PROCESS to, std::uint32_t result, std::uint32_t number, std::uint32_t rpuId)
    {
        auto* cfm = alloc_as<VANTO_CLI_GET_RPU_CFM_S>(VANTO_CLI_GET_RPU_CFM);
        cfm->result = result;
        cfm->numberOfRpu = number;
        cfm->rpuId = rpuId;
        Signal* signal = reinterpret_cast<Signal*>(cfm);
        send(&signal, to);
    }
    static void sendAdd(PROCESS to, std::uint32_t number, std::uint32_t rpuId)
    {
        auto* ind = alloc_as<VANTO_CLI_ADD_RPU_IND_S>(VANTO_CLI_ADD_RPU_IND);
        ind->numberOfRpu = number;
        ind->rpuId = rpuId;
        Signal* signal = reinterpret_cast<Signal*>(ind);
        send(&signal, to);
    }
    static void sendRpu(PROCESS to, SIGSELECT sigNo, std::uint32_t rpuId)
    {
        auto* rpu = alloc_as<VANTO_CLI_RPU_S>(sigNo);
        rpu->rpuId = rpuId;
        Signal* signal = reinterpret_cast<Signal*>(rpu);
        send(&signal, to);
    }
    static std::uint32_t rpuIdOf(Signal* signal)
    {
        return static_cast<std::uint32_t>(signal_cast<VANTO_CLI_REGISTER_RPU_REQ_S>(signal)->rpuId);
    }
};

TEST_F(SupSysCtrlEngineTest, AnActiveLoadModuleWaitsForALateCoreBeforeItsLoopTakesSignals)
{
    TraceCapture trace("supSysEngineSwU:7,supSysCommunicationSwU:7");
    VantoRpuConfig config;
    createRpuServer(world(), node(), config);
    startObjectProcess();
    startCoreServersLate(7000);
    probeAt(1000);
    world().runFor(20000);
    ASSERT_TRUE(m_probeTakenAt.has_value());
    EXPECT_EQ(*m_probeTakenAt, 10000u) << "hunts every 5 s; the loop only then takes the waiting request";
    const std::string text = trace.text();
    EXPECT_NE(text.find("APC Active RPU"), std::string::npos);
    const auto at = [&](const char* words) { return text.find(words); };
    EXPECT_LT(at("registerService, service = 1"), at("registerService, service = 0"));
    EXPECT_LT(at("registerService, service = 0"), at("registerService, service = 3"));
    EXPECT_LT(at("registerService, service = 3"), at("registerService, service = 2"));
    EXPECT_LT(at("registerService, service = 2"), at("Support system control is now ready to receive signals"));
    EXPECT_NE(at("Support System Control received signal: 0x01705110"), std::string::npos);
}

TEST_F(SupSysCtrlEngineTest, APassiveLoadModuleBringsNothingUpAndTurnsEveryLaterRoleWordIntoARestart)
{
    TraceCapture trace("supSysEngineSwU:7,supSysCommunicationSwU:7");
    std::vector<std::uint32_t> restartRpuIds;
    spawn(kServerName, [&] {
        ScriptedServer server;
        Signal* ask = server.expect(VANTO_CLI_GET_RPU_REQ);
        const PROCESS objects = sender(&ask);
        free_buf(&ask);
        server.sendCfm(objects, 0, 1, 4);
        Signal* reg = server.expect(VANTO_CLI_REGISTER_RPU_REQ);
        EXPECT_EQ(server.rpuIdOf(reg), 4u);
        free_buf(&reg);
        server.sendRpu(objects, VANTO_CLI_PASSIVE_RPU, 4);
        delay(1000);
        for (SIGSELECT word : {VANTO_CLI_ACTIVE_RPU, VANTO_CLI_PASSIVE_RPU, VANTO_CLI_SHUTDOWN_RPU}) {
            server.sendRpu(objects, word, 5);
            Signal* restart = server.expect(VANTO_CLI_RESTART_PGM_REQ);
            ASSERT_NE(restart, nullptr);
            restartRpuIds.push_back(signal_cast<VANTO_CLI_RESTART_PGM_REQ_S>(restart)->rpuId);
            free_buf(&restart);
        }
        server.sendAdd(objects, 1, 5);
        Signal* removed = alloc(4, VANTO_CLI_REMOVE_RPU_IND);
        send(&removed, objects);
        Signal* shortRole = alloc(4, VANTO_CLI_ACTIVE_RPU);
        send(&shortRole, objects);
    });
    startObjectProcess();
    startCoreServers();
    probeAt(500);
    world().runFor(30000);
    EXPECT_EQ(restartRpuIds, (std::vector<std::uint32_t>{5, 5, 5}));
    EXPECT_FALSE(m_probeTakenAt.has_value()) << "a passive load module has no timers or diagnosis";
    const std::string text = trace.text();
    EXPECT_NE(text.find("APC Passive RPU"), std::string::npos);
    EXPECT_EQ(text.find("registerService"), std::string::npos);
    EXPECT_NE(text.find("Received VANTO_CLI_PASSIVE_RPU, requesting a restart"), std::string::npos);
    EXPECT_NE(text.find("Received VANTO_CLI_SHUTDOWN_RPU, requesting a restart"), std::string::npos);
    EXPECT_NE(text.find("Received VANTO_CLI_REMOVE_RPU_IND"), std::string::npos);
    EXPECT_NE(text.find("Support System Control received an unknown signal(0x01705110)"), std::string::npos);
    EXPECT_NE(text.find("too short, ignored"), std::string::npos);
}

TEST_F(SupSysCtrlEngineTest, WithoutAnRpuTheHandshakeWaitsForAnIndicationThatNamesOne)
{
    TraceCapture trace("supSysEngineSwU:7");
    std::optional<std::uint32_t> registered;
    spawn(kServerName, [&] {
        ScriptedServer server;
        Signal* ask = server.expect(VANTO_CLI_GET_RPU_REQ);
        const PROCESS objects = sender(&ask);
        free_buf(&ask);
        // A failed answer that names an RPU all the same is no RPU.
        server.sendCfm(objects, 3, 1, 8);
        delay(2000);
        server.sendAdd(objects, 0, 8);
        delay(2000);
        server.sendAdd(objects, 1, 9);
        Signal* reg = server.expect(VANTO_CLI_REGISTER_RPU_REQ);
        registered = server.rpuIdOf(reg);
        free_buf(&reg);
        server.sendRpu(objects, VANTO_CLI_ACTIVE_RPU, 9);
    });
    startObjectProcess();
    startCoreServers();
    probeAt(1000);
    world().runFor(20000);
    EXPECT_EQ(registered, 9u);
    ASSERT_TRUE(m_probeTakenAt.has_value()) << "a signal that came during the handshake waits for the loop";
    EXPECT_GE(*m_probeTakenAt, 4000u);
    const std::string text = trace.text();
    EXPECT_NE(text.find("Waiting for VANTO_CLI_ADD_RPU_IND"), std::string::npos);
    EXPECT_NE(text.find("Received signal addRpuInd with numberOfRpu = 0"), std::string::npos);
    EXPECT_NE(text.find("registerRpuReq sent to server with rpuId = 9"), std::string::npos);
}

TEST_F(SupSysCtrlEngineTest, SendingToTheCoreNeedsAKnownServerAndNeverLosesTheBuffer)
{
    TraceCapture trace("supSysCommunicationSwU:7");
    std::vector<std::uint32_t> received;
    const PROCESS power = spawn("power", [&] {
        Signal* signal = receive(kAnySignal);
        received.push_back(valueOf(signal));
        free_buf(&signal);
    });
    std::vector<int> results;
    spawn("objects", [&] {
        CtrlCommunicationIf communication;
        Signal* early = word(0x1704401, 1);
        results.push_back(communication.sendSignal(&early, CtrlService::Power));
        communication.registerService(CtrlService::Power, power);
        Signal* none = nullptr;
        results.push_back(communication.sendSignal(&none, CtrlService::Power));
        Signal* toPid = word(0x1704402, 3);
        results.push_back(communication.sendSignal(&toPid, PROCESS{0}));
        Signal* sent = word(0x1704403, 2);
        results.push_back(communication.sendSignal(&sent, CtrlService::Power));
        EXPECT_EQ(sent, nullptr);
        EXPECT_EQ(communication.pidOf(CtrlService::Power), power);
    });
    world().runUntilIdle();
    EXPECT_EQ(results, (std::vector<int>{0, 0, 0, 1}));
    EXPECT_EQ(received, (std::vector<std::uint32_t>{2}));
    const std::string text = trace.text();
    EXPECT_NE(text.find("pid for destinationService: 3 not found"), std::string::npos);
    EXPECT_NE(text.find("SIGNAL sig_p not correct"), std::string::npos);
    EXPECT_NE(text.find("registerService, service = 3"), std::string::npos);
    EXPECT_NE(text.find("Sent SigNo: 24134659 to pid: "), std::string::npos);
}

} // namespace
