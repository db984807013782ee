#pragma once
// Answers SUP_SYS_DIAG_TIMER_REQ after the asked time through a timer of
// the process. A request that is too short, or asks for more than the
// timer's signed range, is traced and dropped.

#include "froBl/froMgmtSwU/export/SignalDistributorAPI.h"
#include "froBl/froMgmtSwU/export/TimerApi.h"

#include "ose/Signal.h"

#include <map>

class SupSysDiagnosis : public SignalSubscriber, public TimerObserver {
public:
    SupSysDiagnosis(SignalDistributorAPI& distributor, TimerApi& timer);
    ~SupSysDiagnosis() override;
    SupSysDiagnosis(const SupSysDiagnosis&) = delete;
    SupSysDiagnosis& operator=(const SupSysDiagnosis&) = delete;

    static SupSysDiagnosis& instance();

    void init();
    void handleSignal(ose::Signal* signal) override;
    void timeout(std::uint32_t timerId) override;

private:
    struct Waiting {
        ose::PROCESS client;
        std::uint32_t clientRef;
        std::uint32_t requestedAtMs;
    };

    SignalDistributorAPI& m_distributor;
    TimerApi& m_timer;
    std::map<std::uint32_t, Waiting> m_waiting;
};
