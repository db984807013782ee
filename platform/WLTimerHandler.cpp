#include "platform/WLTimerHandler.h"

#include "frame/TimerSignals.h"

#include "ose/Kernel.h"

WLTimerHandler::WLTimerHandler(SignalDispatcherIf* dispatcher) : TimerHandler(dispatcher) {}

WLTimerHandler::~WLTimerHandler() { cancelAllOsTimers(); }

ose::OSTMOREF WLTimerHandler::createOsTimer(std::uint32_t timeMs, std::uint32_t timerRef, ose::SIGSELECT sigNo)
{
    auto* expiry = ose::alloc_as<SSC_TIMER_EXPIRED_S>(sigNo);
    expiry->timerRef = timerRef;
    ose::Signal* signal = reinterpret_cast<ose::Signal*>(expiry);
    return ose::request_tmo(timeMs, &signal);
}

bool WLTimerHandler::restartOsTimer(TimerData& timerData, std::uint32_t timeMs)
{
    return ose::restart_tmo(&timerData.handle, timeMs);
}

void WLTimerHandler::cancelOsTimer(ose::OSTMOREF& handle)
{
    ose::Signal* returned = ose::cancel_tmo(&handle);
    if (returned != nullptr) ose::free_buf(&returned);
}

// The handle of an expired time-out needs no release on this kernel.
void WLTimerHandler::deleteOsTimer(ose::OSTMOREF&) {}

bool WLTimerHandler::getTimerRef(ose::Signal* signal, std::uint32_t& timerRef)
{
    const auto* expiry = ose::signal_cast<SSC_TIMER_EXPIRED_S>(signal);
    if (expiry == nullptr) return false;
    timerRef = expiry->timerRef;
    return true;
}
