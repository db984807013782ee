#pragma once
// Publishes the object layer's service names at the platform's name server
// "ose_ns". The server is looked for once per publication, for at most a
// second; its reply is not waited for but comes through the receive loop
// to handleSignal.

#include "froBl/froMgmtSwU/export/SignalSubscriber.h"

#include "ose/Signal.h"

#include <string>

class NameServerFacade : public SignalSubscriber {
public:
    static constexpr ose::OSTIME kHuntWaitMs = 1000;

    static NameServerFacade& instance();

    void init();
    void handleSignal(ose::Signal* signal) override;
    // False when the name server was not found in time.
    bool publish(const std::string& serviceName);

    ose::PROCESS nameServer() const { return m_nameServer; }

private:
    ose::PROCESS m_nameServer = 0;
};
