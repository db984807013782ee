#pragma once
// The target's handlers for the core process.

#include "frame/SscPlatformIf.h"

class WLSscPlatform : public SscPlatformIf {
public:
    std::unique_ptr<OsHandler> createOsHandler() override;
    std::unique_ptr<TimerHandler> createTimerHandler(SignalDispatcherIf* dispatcher) override;
    std::unique_ptr<HuntHandler> createHuntHandler() override;
    std::unique_ptr<PpCommunicationHandler> createPpHandler(SignalDispatcherIf* dispatcher) override;
};
