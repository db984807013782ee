#pragma once
// The load module's role, as the platform's RPU server gives it at start:
// active (the object layer comes up) or passive (it stays down). A role is
// only taken at start; any later word from the server about the role is
// answered with a request to restart the program.

#include "froBl/froMgmtSwU/export/SignalDistributorAPI.h"
#include "froBl/froMgmtSwU/export/SignalSubscriber.h"

#include <cstdint>

class RpuCtrl : public SignalSubscriber {
public:
    explicit RpuCtrl(SignalDistributorAPI& distributor) : m_distributor(distributor) {}

    static RpuCtrl& instance();

    // Asks the server for the RPU, registers with it, waits for the role and
    // then subscribes to the server's later signals. Blocks until the role
    // is told; other signals wait in the queue meanwhile.
    void handshake();
    bool isActive() const { return m_active; }

    void handleSignal(ose::Signal* signal) override;

private:
    std::uint32_t awaitRpu();
    void awaitRole();
    void subscribeToServer();
    void requestRestart(ose::Signal* signal, const char* what);

    SignalDistributorAPI& m_distributor;
    bool m_active = false;
};
