#pragma once
// The handlers through which the core reaches the kernel, made by the
// process entry in its fixed order. The target's set is WLSscPlatform; tests
// may give their own.

#include "frame/HuntHandler.h"
#include "frame/OsHandler.h"
#include "frame/SignalDispatcherIf.h"
#include "frame/TimerHandler.h"
#include "hwu/PpCommunicationHandler.h"

#include <memory>

class SscPlatformIf {
public:
    virtual ~SscPlatformIf() = default;
    virtual std::unique_ptr<OsHandler> createOsHandler() = 0;
    virtual std::unique_ptr<TimerHandler> createTimerHandler(SignalDispatcherIf* dispatcher) = 0;
    virtual std::unique_ptr<HuntHandler> createHuntHandler() = 0;
    virtual std::unique_ptr<PpCommunicationHandler> createPpHandler(SignalDispatcherIf* dispatcher) = 0;
};
