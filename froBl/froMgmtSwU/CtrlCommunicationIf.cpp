#include "froBl/froMgmtSwU/export/CtrlCommunicationIf.h"

#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include "ose/Kernel.h"

using namespace sup_sys_trace;

namespace {

constexpr const char* kServerNames[] = {
    "ssc_equipment_management_server",
    "ssc_cabinet_management_server",
    "ssc_alarm_control_server",
    "ssc_power_management_server",
};

// The order in which start looks for them.
constexpr CtrlService kHuntOrder[] = {CtrlService::Cabinet, CtrlService::Equipment, CtrlService::Power,
                                      CtrlService::Alarm};

} // namespace

CtrlCommunicationIf& CtrlCommunicationIf::instance()
{
    return SupSysSingletons::get<CtrlCommunicationIf>();
}

void CtrlCommunicationIf::init()
{
    for (CtrlService service : kHuntOrder) huntUntilFound(service);
}

void CtrlCommunicationIf::huntUntilFound(const CtrlService service)
{
    const char* name = kServerNames[index(service)];
    ose::PROCESS pid = 0;
    while (!ose::hunt(name, 0, &pid, nullptr)) {
        SSC_TRACE(communicationGroup(), kUnexpected, "Hunt for %s failed, trying again in %u ms", name,
                  kHuntRetryMs);
        ose::delay(kHuntRetryMs);
    }
    SSC_TRACE(communicationGroup(), kFlow, "Hunt for %s successful, pid %u", name, pid);
    registerService(service, pid);
}

int CtrlCommunicationIf::sendSignal(ose::Signal** signal, const ose::PROCESS pid)
{
    if (signal == nullptr || *signal == nullptr) return 0;
    if (pid == 0) {
        ose::free_buf(signal);
        return 0;
    }
    m_sender.send(signal, pid);
    return 1;
}

int CtrlCommunicationIf::sendSignal(ose::Signal** signal, const CtrlService destination)
{
    const std::size_t at = index(destination);
    const ose::PROCESS pid = at < m_pids.size() ? m_pids[at] : 0;
    if (pid == 0) {
        SSC_TRACE(communicationGroup(), kError, "pid for destinationService: %u not found",
                  static_cast<unsigned>(destination));
        if (signal != nullptr && *signal != nullptr) ose::free_buf(signal);
        return 0;
    }
    if (signal == nullptr || *signal == nullptr) {
        SSC_TRACE(communicationGroup(), kError, "SIGNAL sig_p not correct");
        return 0;
    }
    SSC_TRACE(communicationGroup(), kFlow, "sendSignal SigNo: %u to pid: %u", ose::signalNumber(*signal), pid);
    m_sender.send(signal, pid);
    return 1;
}

void CtrlCommunicationIf::registerService(const CtrlService service, const ose::PROCESS pid)
{
    SSC_TRACE(communicationGroup(), kFlow, "registerService, service = %u", static_cast<unsigned>(service));
    const std::size_t at = index(service);
    if (at < m_pids.size()) m_pids[at] = pid;
}
