// The RPU server as a load module and an operator see it: roles given at
// registration, role changes and shutdowns told to the registered load
// module, an RPU added late, restarts, and refusals of what makes no sense.

#include "vanto/VantoRpuServer.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <optional>
#include <vector>

namespace {

using namespace ose;
using namespace ose::testing;
using namespace vanto_cli;

class VantoRpuServerTest : public TestWorld {
protected:
    void startServer(bool rpuKnown)
    {
        VantoRpuConfig config;
        config.rpuId = 3;
        config.rpuKnown = rpuKnown;
        config.restartLoadModule = [this] { ++m_restarts; };
        createRpuServer(world(), node(), config);
    }

    static PROCESS server()
    {
        PROCESS pid = 0;
        EXPECT_TRUE(hunt(kServerName, 0, &pid, nullptr));
        return pid;
    }
    static Signal* await(SIGSELECT sigNo, OSTIME ms = 1000)
    {
        const SIGSELECT selector[] = {1, sigNo};
        return receive_w_tmo(ms, selector);
    }
    static std::uint32_t ask(SIGSELECT request, SIGSELECT answerNo, std::uint32_t role = 0)
    {
        Signal* signal = request == VANTO_RPU_SET_ROLE_REQ ? alloc(8, request) : alloc(4, request);
        if (request == VANTO_RPU_SET_ROLE_REQ) reinterpret_cast<VANTO_RPU_SET_ROLE_REQ_S*>(signal)->role = role;
        send(&signal, server());
        Signal* answer = await(answerNo);
        if (answer == nullptr) return 0xffffffffu;
        const std::uint32_t result = signal_cast<VANTO_RPU_RESULT_S>(answer)->result;
        free_buf(&answer);
        return result;
    }
    static VANTO_RPU_STATUS_CFM_S status()
    {
        Signal* signal = alloc(4, VANTO_RPU_STATUS_REQ);
        send(&signal, server());
        Signal* answer = await(VANTO_RPU_STATUS_CFM);
        VANTO_RPU_STATUS_CFM_S copy = *signal_cast<VANTO_RPU_STATUS_CFM_S>(answer);
        free_buf(&answer);
        return copy;
    }
    static void registerRpu(std::uint32_t rpuId)
    {
        auto* request = alloc_as<VANTO_CLI_REGISTER_RPU_REQ_S>(VANTO_CLI_REGISTER_RPU_REQ);
        request->rpuId = rpuId;
        Signal* signal = reinterpret_cast<Signal*>(request);
        send(&signal, server());
    }

    int m_restarts = 0;
};

TEST_F(VantoRpuServerTest, ARegisteredLoadModuleGetsItsRoleAndIsToldOfChangesAndShutdown)
{
    startServer(true);
    std::vector<SIGSELECT> heard;
    std::optional<VANTO_RPU_STATUS_CFM_S> whileRegistered, afterEnd;
    const PROCESS loadModule = spawn("lm", [&] {
        Signal* ask = alloc(36, VANTO_CLI_GET_RPU_REQ);
        send(&ask, server());
        Signal* cfm = await(VANTO_CLI_GET_RPU_CFM);
        EXPECT_EQ(signal_cast<VANTO_CLI_GET_RPU_CFM_S>(cfm)->numberOfRpu, 1u);
        EXPECT_EQ(signal_cast<VANTO_CLI_GET_RPU_CFM_S>(cfm)->rpuId, 3u);
        free_buf(&cfm);
        registerRpu(7); // not this server's RPU: no role comes
        EXPECT_EQ(await(VANTO_CLI_ACTIVE_RPU, 100), nullptr);
        registerRpu(3);
        for (int i = 0; i < 3; ++i) {
            static constexpr SIGSELECT kAny[] = {3, VANTO_CLI_ACTIVE_RPU, VANTO_CLI_PASSIVE_RPU, VANTO_CLI_SHUTDOWN_RPU};
            Signal* told = receive(kAny);
            heard.push_back(signalNumber(told));
            free_buf(&told);
        }
    });
    spawn("operator", [&] {
        delay(200);
        whileRegistered = status();
        EXPECT_EQ(ask(VANTO_RPU_SET_ROLE_REQ, VANTO_RPU_SET_ROLE_CFM, 1), 0u) << "unchanged: nobody told";
        EXPECT_EQ(ask(VANTO_RPU_SET_ROLE_REQ, VANTO_RPU_SET_ROLE_CFM, 0), 0u);
        EXPECT_EQ(ask(VANTO_RPU_SET_ROLE_REQ, VANTO_RPU_SET_ROLE_CFM, 9), static_cast<std::uint32_t>(RpuResult::BadRequest));
        EXPECT_EQ(ask(VANTO_RPU_SHUTDOWN_REQ, VANTO_RPU_SHUTDOWN_CFM), 0u);
        EXPECT_EQ(ask(VANTO_RPU_ADD_REQ, VANTO_RPU_ADD_CFM), static_cast<std::uint32_t>(RpuResult::AlreadyKnown));
        delay(100);
        afterEnd = status();
        EXPECT_EQ(ask(VANTO_RPU_SHUTDOWN_REQ, VANTO_RPU_SHUTDOWN_CFM),
                  static_cast<std::uint32_t>(RpuResult::NoneRegistered));
    });
    world().runFor(2000);
    EXPECT_EQ(heard, (std::vector<SIGSELECT>{VANTO_CLI_ACTIVE_RPU, VANTO_CLI_PASSIVE_RPU, VANTO_CLI_SHUTDOWN_RPU}));
    ASSERT_TRUE(whileRegistered && afterEnd);
    EXPECT_EQ(whileRegistered->registered, 1u);
    EXPECT_EQ(whileRegistered->clientPid, loadModule);
    EXPECT_EQ(afterEnd->registered, 0u) << "the load module has ended";
    EXPECT_EQ(afterEnd->role, 0u);
}

TEST_F(VantoRpuServerTest, AnRpuAddedLateIsToldToThoseWhoAskedAndARestartIsCounted)
{
    startServer(false);
    std::optional<std::uint32_t> numberAtFirst, addedRpu;
    std::optional<VANTO_RPU_STATUS_CFM_S> afterRestart;
    spawn("lm", [&] {
        Signal* ask = alloc(36, VANTO_CLI_GET_RPU_REQ);
        send(&ask, server());
        Signal* cfm = await(VANTO_CLI_GET_RPU_CFM);
        numberAtFirst = signal_cast<VANTO_CLI_GET_RPU_CFM_S>(cfm)->numberOfRpu;
        free_buf(&cfm);
        Signal* added = await(VANTO_CLI_ADD_RPU_IND, 5000);
        ASSERT_NE(added, nullptr);
        addedRpu = signal_cast<VANTO_CLI_ADD_RPU_IND_S>(added)->rpuId;
        free_buf(&added);
        registerRpu(3);
        Signal* role = await(VANTO_CLI_ACTIVE_RPU);
        free_buf(&role);
        auto* restart = alloc_as<VANTO_CLI_RESTART_PGM_REQ_S>(VANTO_CLI_RESTART_PGM_REQ);
        restart->rpuId = 3;
        Signal* signal = reinterpret_cast<Signal*>(restart);
        send(&signal, server());
        delay(10);
        afterRestart = status();
    });
    spawn("operator", [&] {
        delay(1000);
        EXPECT_EQ(ask(VANTO_RPU_ADD_REQ, VANTO_RPU_ADD_CFM), 0u);
    });
    world().runFor(3000);
    EXPECT_EQ(numberAtFirst, 0u);
    EXPECT_EQ(addedRpu, 3u);
    EXPECT_EQ(m_restarts, 1);
    ASSERT_TRUE(afterRestart);
    EXPECT_EQ(afterRestart->restarts, 1u);
    EXPECT_EQ(afterRestart->registered, 0u) << "the restarted load module registers anew";
}

} // namespace
