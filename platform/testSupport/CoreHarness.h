#pragma once
// A core process for world tests and fuzz targets, made of the real pieces: the target's OS
// and timer handlers, the dispatcher and the timer service. `setUp` runs
// inside the process before its receive loop, to create what a test needs.

#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "frame/TimerService.h"
#include "platform/WLOsHandler.h"
#include "platform/WLTimerHandler.h"

#include <functional>
#include <memory>

namespace core_harness {

using SetUp = std::function<void(SignalDispatcher&)>;

inline std::function<void()> coreBody(SetUp setUp)
{
    return [setUp = std::move(setUp)] {
        struct ServicesReset {
            ~ServicesReset()
            {
                TimerService::setHandler(nullptr);
                OsService::setHandler(nullptr);
            }
        };
        WLOsHandler os;
        ServicesReset reset;
        OsService::setHandler(&os);
        auto dispatcher = std::make_unique<SignalDispatcher>();
        auto timers = std::make_unique<WLTimerHandler>(dispatcher.get());
        TimerService::setHandler(timers.get());
        if (setUp) setUp(*dispatcher);
        dispatcher->run();
    };
}

} // namespace core_harness
