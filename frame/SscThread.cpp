#include "frame/SscThread.h"

#include "frame/ActiveFaultsRegister.h"
#include "frame/HuntService.h"
#include "frame/OsService.h"
#include "frame/Ssc.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "hwu/PpCommunicationService.h"

using namespace ssc_trace;

namespace {

// The services point at handlers of this process; when the process ends
// (a restart of the load module) they must not point at what is gone.
struct CoreServicesReset {
    ~CoreServicesReset()
    {
        // The register outlives the process; a restarted core sees its
        // units afresh and raises what is still wrong.
        ActiveFaultsRegister::instance().clear();
        PpCommunicationService::setHandler(nullptr);
        TimerService::setHandler(nullptr);
        HuntService::setHandler(nullptr);
        OsService::setHandler(nullptr);
    }
};

} // namespace

void sscThreadMain(SscPlatformIf& platform)
{
    // The handlers outlive the graph: objects that go away still stop their
    // timers and kill their phantoms. Made in the order below all the same.
    std::unique_ptr<OsHandler> osHandler;
    std::unique_ptr<TimerHandler> timerHandler;
    std::unique_ptr<HuntHandler> huntHandler;
    std::unique_ptr<PpCommunicationHandler> ppHandler;
    CoreServicesReset servicesReset;

    SSC_TRACE(swuGroup(), kFlow, "Starting SSC_THREAD");
    Ssc ssc;

    osHandler = platform.createOsHandler();
    OsService::setHandler(osHandler.get());
    SSC_TRACE(swuGroup(), kInfo, "Product info: %s %s", kSscProductNumber, kSscProductRevision);

    ssc.setDispatcher(std::make_unique<SignalDispatcher>());

    timerHandler = platform.createTimerHandler(ssc.getDispatcher());
    TimerService::setHandler(timerHandler.get());

    huntHandler = platform.createHuntHandler();
    HuntService::setHandler(huntHandler.get());

    ppHandler = platform.createPpHandler(ssc.getDispatcher());
    PpCommunicationService::setHandler(ppHandler.get());

    // Here: the EC bus link handler with the dispatcher, given to its
    // service, which registers its signals and sets the link up.

    ssc.createEquipmentManager();

    // The unit broker is made here, among the first servers.
    ssc.initialize();

    ssc.createManagers();

    ssc.getDispatcher()->run();
}
