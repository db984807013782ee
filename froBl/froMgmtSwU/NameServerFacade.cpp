#include "froBl/froMgmtSwU/export/NameServerFacade.h"

#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"
#include "platform/NameServerSignals.h"

#include "ose/Kernel.h"

using namespace sup_sys_trace;
using namespace name_server;

NameServerFacade& NameServerFacade::instance()
{
    return SupSysSingletons::get<NameServerFacade>();
}

void NameServerFacade::init()
{
    SSC_TRACE(nameServerGroup(), kFlow, "NC: nameServerFacade::init ");
}

bool NameServerFacade::publish(const std::string& serviceName)
{
    ose::Signal* huntSignal = ose::alloc(4, NS_HUNT_SIG);
    ose::PROCESS found = 0;
    ose::hunt(kServerName, 0, &found, &huntSignal);
    static constexpr ose::SIGSELECT kHunt[] = {1, NS_HUNT_SIG};
    ose::Signal* answer = ose::receive_w_tmo(kHuntWaitMs, kHunt);
    if (answer == nullptr) {
        SSC_TRACE(nameServerGroup(), kError, "Hunt for name server failed");
        return false;
    }
    SSC_TRACE(nameServerGroup(), kFlow, "NC:Hunt for name server successful");
    m_nameServer = ose::sender(&answer);
    ose::Signal* add = makeServiceSignal(NS_ADD_SERVICE, serviceName);
    ose::send(&add, m_nameServer);
    ose::free_buf(&answer);
    return true;
}

void NameServerFacade::handleSignal(ose::Signal* signal)
{
    if (ose::signalNumber(signal) == NS_ADD_SERVICE_REPLY) {
        SSC_TRACE(nameServerGroup(), kFlow, "NS_ADD_SERVICE_REPLY");
        return;
    }
    SSC_TRACE(nameServerGroup(), kUnexpected, "Unknown signal(0x%x) received from (0x%x)", ose::signalNumber(signal),
              ose::sender(&signal));
}
