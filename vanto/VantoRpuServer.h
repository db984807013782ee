#pragma once
// The node platform's RPU server "Vanto_cliServer_proc", our own. It knows
// one RPU (or none until one is added), gives a registered load module its
// role, tells it of role changes and shutdowns, and restarts the load module
// when asked: the load module's processes are torn down and made anew by
// the restart function it was given.

#include "platform/VantoCliSignals.h"

#include "vanto/VantoSignalTable.h"

#include "ose/Signal.h"
#include "ose/World.h"

#include <functional>
#include <map>
#include <vector>

struct VantoRpuConfig {
    std::uint32_t rpuId = 1;
    vanto_cli::RpuRole role = vanto_cli::RpuRole::Active;
    // False: the server starts without an RPU until VANTO_RPU_ADD_REQ.
    bool rpuKnown = true;
    // Tears the load module down and starts it again.
    std::function<void()> restartLoadModule;
};

class VantoRpuServer {
public:
    explicit VantoRpuServer(VantoRpuConfig config);
    ~VantoRpuServer();
    VantoRpuServer(const VantoRpuServer&) = delete;
    VantoRpuServer& operator=(const VantoRpuServer&) = delete;

    [[noreturn]] void run();
    // One received signal; the caller frees it.
    void handleSignal(ose::Signal* signal);

private:
    using Entry = VantoSignalEntry<VantoRpuServer>;
    static const Entry kTable[];

    void onGetRpu(ose::Signal* signal, ose::PROCESS from);
    void onRegister(ose::Signal* signal, ose::PROCESS from);
    void onRestart(ose::Signal* signal, ose::PROCESS from);
    void onStatus(ose::Signal* signal, ose::PROCESS from);
    void onSetRole(ose::Signal* signal, ose::PROCESS from);
    void onShutdown(ose::Signal* signal, ose::PROCESS from);
    void onAdd(ose::Signal* signal, ose::PROCESS from);
    void onClientDown(ose::Signal* signal, ose::PROCESS from);

    void sendRpuSignal(ose::SIGSELECT sigNo, ose::PROCESS to) const;
    void sendResult(ose::SIGSELECT sigNo, vanto_cli::RpuResult result, ose::PROCESS to) const;
    void forgetRegistered();

    VantoRpuConfig m_config;
    ose::PROCESS m_registered = 0;
    ose::OSATTREF m_registeredAttach = 0;
    std::vector<ose::PROCESS> m_waitingForRpu;
    std::uint32_t m_restarts = 0;
};

// Creates and starts the RPU server process in node.
ose::PROCESS createRpuServer(ose::World& world, ose::Node& node, VantoRpuConfig config);
