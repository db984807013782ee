#include "froBl/froMgmtSwU/export/RpuCtrl.h"

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"
#include "platform/VantoCli.h"

#include "ose/Kernel.h"

using namespace sup_sys_trace;
using namespace vanto_cli;

namespace {

ose::Signal* awaitOnly(std::initializer_list<ose::SIGSELECT> numbers)
{
    std::vector<ose::SIGSELECT> selector{static_cast<ose::SIGSELECT>(numbers.size())};
    selector.insert(selector.end(), numbers);
    return ose::receive(selector);
}

} // namespace

RpuCtrl& RpuCtrl::instance()
{
    return SupSysSingletons::get<RpuCtrl>([] { return std::make_unique<RpuCtrl>(SignalDistributor::instance()); });
}

void RpuCtrl::handshake()
{
    VantoCli_getRpuReq();
    ose::Signal* answer = awaitOnly({VANTO_CLI_GET_RPU_CFM});
    SSC_TRACE(engineGroup(), kFlow, "Received  VANTO_CLI_GET_RPU_CFM");
    const auto* confirm = ose::signal_cast<VANTO_CLI_GET_RPU_CFM_S>(answer);
    if (confirm == nullptr) SSC_TRACE(engineGroup(), kError, "VANTO_CLI_GET_RPU_CFM too short");
    const bool hasRpu = confirm != nullptr && confirm->result == 0 && confirm->numberOfRpu != 0;
    const std::uint32_t confirmedRpu = hasRpu ? static_cast<std::uint32_t>(confirm->rpuId) : 0;
    // Freed before any further wait: the process may be killed while it waits.
    ose::free_buf(&answer);
    if (hasRpu) {
        SSC_TRACE(engineGroup(), kFlow, "RegisterRpuReq sent to server with rpuId = %d", static_cast<int>(confirmedRpu));
        VantoCli_registerRpuReq(confirmedRpu);
    } else {
        const std::uint32_t rpuId = awaitRpu();
        SSC_TRACE(engineGroup(), kFlow, "registerRpuReq sent to server with rpuId = %d", static_cast<int>(rpuId));
        VantoCli_registerRpuReq(rpuId);
    }
    awaitRole();
    subscribeToServer();
}

// An indication without an RPU registers nothing; the next one that has an
// RPU is waited for, since no role can come to a load module that is not
// registered.
std::uint32_t RpuCtrl::awaitRpu()
{
    SSC_TRACE(engineGroup(), kFlow, "Waiting for VANTO_CLI_ADD_RPU_IND");
    for (;;) {
        ose::Signal* signal = awaitOnly({VANTO_CLI_ADD_RPU_IND});
        const auto* indication = ose::signal_cast<VANTO_CLI_ADD_RPU_IND_S>(signal);
        const bool hasRpu = indication != nullptr && indication->numberOfRpu != 0;
        const std::uint32_t rpuId = hasRpu ? static_cast<std::uint32_t>(indication->rpuId) : 0;
        ose::free_buf(&signal);
        if (hasRpu) {
            SSC_TRACE(engineGroup(), kFlow, "Received VANTO_CLI_ADD_RPU_IND");
            return rpuId;
        }
        SSC_TRACE(engineGroup(), kError, "Received signal addRpuInd with numberOfRpu = 0");
    }
}

void RpuCtrl::awaitRole()
{
    ose::Signal* role = awaitOnly({VANTO_CLI_ACTIVE_RPU, VANTO_CLI_PASSIVE_RPU});
    m_active = ose::signalNumber(role) == VANTO_CLI_ACTIVE_RPU;
    SSC_TRACE(engineGroup(), kInfo, m_active ? "APC Active RPU" : "APC Passive RPU");
    ose::free_buf(&role);
}

void RpuCtrl::subscribeToServer()
{
    for (ose::SIGSELECT sigNo : {VANTO_CLI_ACTIVE_RPU, VANTO_CLI_PASSIVE_RPU, VANTO_CLI_ADD_RPU_IND,
                                 VANTO_CLI_REMOVE_RPU_IND, VANTO_CLI_SHUTDOWN_RPU}) {
        if (m_distributor.subscribe(sigNo, this) == 0) {
            SSC_TRACE(engineGroup(), kError, "Signal subscription failed!");
            return;
        }
    }
}

void RpuCtrl::handleSignal(ose::Signal* signal)
{
    switch (ose::signalNumber(signal)) {
    case VANTO_CLI_ACTIVE_RPU:
        requestRestart(signal, "Received VANTO_CLI_ACTIVE_RPU, requesting a restart");
        break;
    case VANTO_CLI_PASSIVE_RPU:
        requestRestart(signal, "Received VANTO_CLI_PASSIVE_RPU, requesting a restart");
        break;
    case VANTO_CLI_SHUTDOWN_RPU:
        requestRestart(signal, "Received VANTO_CLI_SHUTDOWN_RPU, requesting a restart");
        break;
    case VANTO_CLI_ADD_RPU_IND:
        SSC_TRACE(engineGroup(), kFlow, "Received VANTO_CLI_ADD_RPU_IND");
        break;
    case VANTO_CLI_REMOVE_RPU_IND:
        SSC_TRACE(engineGroup(), kFlow, "Received VANTO_CLI_REMOVE_RPU_IND");
        break;
    default:
        SSC_TRACE(engineGroup(), kInfo, "Received unknown signal: sigNo %d",
                  static_cast<int>(ose::signalNumber(signal)));
        break;
    }
}

void RpuCtrl::requestRestart(ose::Signal* signal, const char* what)
{
    const auto* role = ose::signal_cast<VANTO_CLI_RPU_S>(signal);
    if (role == nullptr) {
        SSC_TRACE(engineGroup(), kError, "Signal 0x%x from the RPU server too short, ignored",
                  ose::signalNumber(signal));
        return;
    }
    SSC_TRACE(engineGroup(), kInfo, "%s", what);
    VantoCli_restartPgmReq(role->rpuId);
}
