#include "platform/WLSscPlatform.h"

#include "hwu/WLPpCommunicationHandler.h"
#include "platform/WLHuntHandler.h"
#include "platform/WLOsHandler.h"
#include "platform/WLTimerHandler.h"

std::unique_ptr<OsHandler> WLSscPlatform::createOsHandler() { return std::make_unique<WLOsHandler>(); }

std::unique_ptr<TimerHandler> WLSscPlatform::createTimerHandler(SignalDispatcherIf* dispatcher)
{
    return std::make_unique<WLTimerHandler>(dispatcher);
}

std::unique_ptr<HuntHandler> WLSscPlatform::createHuntHandler() { return std::make_unique<WLHuntHandler>(); }

std::unique_ptr<PpCommunicationHandler> WLSscPlatform::createPpHandler(SignalDispatcherIf* dispatcher)
{
    return std::make_unique<WLPpCommunicationHandler>(dispatcher);
}
