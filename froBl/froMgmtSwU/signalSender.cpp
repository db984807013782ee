#include "froBl/froMgmtSwU/export/signalSender.h"

#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include "ose/Kernel.h"

using namespace sup_sys_trace;

void signalSender::send(ose::Signal** signal, const ose::PROCESS pid) const
{
    const ose::SIGSELECT sigNo = ose::signalNumber(*signal);
    SSC_TRACE(communicationGroup(), kFlow, "Sent SigNo: %u to pid: %u", sigNo, pid);
    SSC_TRACE(communicationGroup(), kSent, "SigNo: %u size: %u", sigNo, static_cast<unsigned>(ose::sigsize(signal)));
    ose::send(signal, pid);
}
