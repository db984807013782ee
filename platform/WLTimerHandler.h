#pragma once
// The TimerHandler of the target, on the kernel's time-out requests. The
// kernel counts in ticks of 1 ms, so times go over unchanged.

#include "frame/TimerHandler.h"

class WLTimerHandler : public TimerHandler {
public:
    explicit WLTimerHandler(SignalDispatcherIf* dispatcher);
    ~WLTimerHandler() override;

protected:
    ose::OSTMOREF createOsTimer(std::uint32_t timeMs, std::uint32_t timerRef, ose::SIGSELECT sigNo) override;
    bool restartOsTimer(TimerData& timerData, std::uint32_t timeMs) override;
    void cancelOsTimer(ose::OSTMOREF& handle) override;
    void deleteOsTimer(ose::OSTMOREF& handle) override;
    bool getTimerRef(ose::Signal* signal, std::uint32_t& timerRef) override;
};
