#pragma once
// The process ids of the core's equipment, cabinet, alarm control and power
// management servers, found by hunt at start, and the sender through which
// the object layer reaches them. A server the core does not have yet is
// hunted again every 5 seconds: the object layer cannot work without it.

#include "froBl/froMgmtSwU/export/CtrlCommunicationIfApi.h"
#include "froBl/froMgmtSwU/export/signalSender.h"

#include <array>

class CtrlCommunicationIf : public CtrlCommunicationIfApi {
public:
    static constexpr ose::OSTIME kHuntRetryMs = 5000;

    static CtrlCommunicationIf& instance();

    void init() override;
    int sendSignal(ose::Signal** signal, ose::PROCESS pid) override;
    int sendSignal(ose::Signal** signal, CtrlService destination) override;
    void registerService(CtrlService service, ose::PROCESS pid) override;

    // 0 while the server is not known.
    ose::PROCESS pidOf(CtrlService service) const { return m_pids[index(service)]; }

private:
    static std::size_t index(CtrlService service) { return static_cast<std::size_t>(service); }
    void huntUntilFound(CtrlService service);

    std::array<ose::PROCESS, 4> m_pids{};
    signalSender m_sender;
};
