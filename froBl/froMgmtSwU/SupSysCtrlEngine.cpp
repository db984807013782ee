#include "froBl/froMgmtSwU/export/SupSysCtrlEngine.h"

#include "froBl/froMgmtSwU/export/CtrlCommunicationIf.h"
#include "froBl/froMgmtSwU/export/IndHandler.h"
#include "froBl/froMgmtSwU/export/RpuCtrl.h"
#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosis.h"
#include "froBl/froMgmtSwU/export/SupSysMgmt.h"
#include "froBl/froMgmtSwU/export/Timer.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include "ose/Kernel.h"

using namespace sup_sys_trace;

void supSysMain()
{
    SupSysSingletons singletons;
    SSC_TRACE(engineGroup(), kInfo, "Support system control Process started");
    SupSysCtrlEngine engine;
    engine.start();
}

void SupSysCtrlEngine::start()
{
    SSC_TRACE(engineGroup(), kFlow, "SupSysCtrlEngine::start ");
    RpuCtrl& rpu = RpuCtrl::instance();
    rpu.handshake();
    if (rpu.isActive()) init();
    receiveLoop();
}

// Each step finishes before the next begins: later steps send to the core's
// servers that the first one finds.
void SupSysCtrlEngine::init()
{
    CtrlCommunicationIf::instance().init();
    IndHandler::instance().init();
    Timer::instance().init();
    SupSysDiagnosis::instance().init();
    SupSysMgmt::instance().init();
    SSC_TRACE(engineGroup(), kFlow, "SupSysCtrlEngine::init done");
}

void SupSysCtrlEngine::receiveLoop()
{
    SignalDistributor& distributor = SignalDistributor::instance();
    SSC_TRACE(engineGroup(), kFlow, "Support system control is now ready to receive signals");
    for (;;) {
        SSC_TRACE(engineGroup(), kFlow, "Support system control is now ready to receive another signal");
        ose::Signal* signal = ose::receive(ose::kAnySignal);
        if (signal == nullptr) continue;
        const ose::SIGSELECT sigNo = ose::signalNumber(signal);
        SSC_TRACE(engineGroup(), kFlow, "Support System Control received signal: 0x%08x", sigNo);
        SSC_TRACE(engineGroup(), kReceived, "SigNo: %u size: %u", sigNo, static_cast<unsigned>(ose::sigsize(&signal)));
        if (!distributor.distribute(signal))
            SSC_TRACE(engineGroup(), kError,
                      "Support System Control received an unknown signal(0x%08x) from PID: 0x%x", sigNo,
                      ose::sender(&signal));
        ose::free_buf(&signal);
    }
}
