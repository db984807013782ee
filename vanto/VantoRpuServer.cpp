#include "vanto/VantoRpuServer.h"

#include "vanto/VantoTrace.h"

#include "ose/Kernel.h"

#include <algorithm>

using namespace vanto_cli;

namespace {

constexpr unsigned kError = 1;
constexpr unsigned kInfo = 4;
constexpr unsigned kFlow = 7;

const char* roleText(RpuRole role) { return role == RpuRole::Active ? "active" : "passive"; }

} // namespace

const VantoRpuServer::Entry VantoRpuServer::kTable[] = {
    {VANTO_CLI_GET_RPU_REQ, "VANTO_CLI_GET_RPU_REQ", &VantoRpuServer::onGetRpu},
    {VANTO_CLI_REGISTER_RPU_REQ, "VANTO_CLI_REGISTER_RPU_REQ", &VantoRpuServer::onRegister},
    {VANTO_CLI_RESTART_PGM_REQ, "VANTO_CLI_RESTART_PGM_REQ", &VantoRpuServer::onRestart},
    {VANTO_RPU_STATUS_REQ, "VANTO_RPU_STATUS_REQ", &VantoRpuServer::onStatus},
    {VANTO_RPU_SET_ROLE_REQ, "VANTO_RPU_SET_ROLE_REQ", &VantoRpuServer::onSetRole},
    {VANTO_RPU_SHUTDOWN_REQ, "VANTO_RPU_SHUTDOWN_REQ", &VantoRpuServer::onShutdown},
    {VANTO_RPU_ADD_REQ, "VANTO_RPU_ADD_REQ", &VantoRpuServer::onAdd},
    {VANTO_RPU_CLIENT_DOWN_IND, "VANTO_RPU_CLIENT_DOWN_IND", &VantoRpuServer::onClientDown},
};

VantoRpuServer::VantoRpuServer(VantoRpuConfig config) : m_config(std::move(config)) {}

VantoRpuServer::~VantoRpuServer()
{
    if (m_registered != 0) ose::detach(&m_registeredAttach);
}

void VantoRpuServer::run()
{
    SSC_TRACE(vantoGroup(), kInfo, "RPU server started: RPU %u %s, %s", m_config.rpuId,
              m_config.rpuKnown ? "known" : "not known yet", roleText(m_config.role));
    serveVantoSignals(*this);
}

void VantoRpuServer::handleSignal(ose::Signal* signal)
{
    dispatchVantoSignal<VantoRpuServer>(*this, kTable, signal, "RPU server");
}

void VantoRpuServer::onGetRpu(ose::Signal*, const ose::PROCESS from)
{
    SSC_TRACE(vantoGroup(), kFlow, "RPU server: 0x%x asks for its RPU, %s", from,
              m_config.rpuKnown ? "answered" : "none yet");
    auto* answer = ose::alloc_as<VANTO_CLI_GET_RPU_CFM_S>(VANTO_CLI_GET_RPU_CFM);
    answer->result = 0;
    answer->numberOfRpu = m_config.rpuKnown ? 1 : 0;
    answer->rpuId = m_config.rpuKnown ? m_config.rpuId : 0;
    if (!m_config.rpuKnown && std::find(m_waitingForRpu.begin(), m_waitingForRpu.end(), from) == m_waitingForRpu.end())
        m_waitingForRpu.push_back(from);
    ose::Signal* buffer = reinterpret_cast<ose::Signal*>(answer);
    ose::send(&buffer, from);
}

void VantoRpuServer::onRegister(ose::Signal* signal, const ose::PROCESS from)
{
    const auto* request = ose::signal_cast<VANTO_CLI_REGISTER_RPU_REQ_S>(signal);
    if (request == nullptr || !m_config.rpuKnown || request->rpuId != m_config.rpuId) {
        SSC_TRACE(vantoGroup(), kError, "RPU server: registration from 0x%x for an RPU it does not have, refused",
                  from);
        return;
    }
    if (m_registered != 0 && m_registered != from) {
        SSC_TRACE(vantoGroup(), kInfo, "RPU server: 0x%x registers in place of 0x%x", from, m_registered);
        forgetRegistered();
    }
    if (m_registered == 0) {
        ose::Signal* down = ose::alloc(4, VANTO_RPU_CLIENT_DOWN_IND);
        m_registeredAttach = ose::attach(&down, from);
        m_registered = from;
    }
    SSC_TRACE(vantoGroup(), kInfo, "RPU server: 0x%x registered on RPU %u, %s", from, m_config.rpuId,
              roleText(m_config.role));
    sendRpuSignal(m_config.role == RpuRole::Active ? VANTO_CLI_ACTIVE_RPU : VANTO_CLI_PASSIVE_RPU, from);
}

void VantoRpuServer::onRestart(ose::Signal* signal, const ose::PROCESS from)
{
    const auto* request = ose::signal_cast<VANTO_CLI_RESTART_PGM_REQ_S>(signal);
    SSC_TRACE(vantoGroup(), kInfo, "RPU server: restart of the load module asked by 0x%x (RPU %u)", from,
              request != nullptr ? static_cast<unsigned>(request->rpuId) : 0U);
    forgetRegistered();
    ++m_restarts;
    if (m_config.restartLoadModule) m_config.restartLoadModule();
    else SSC_TRACE(vantoGroup(), kError, "RPU server: no load module to restart");
}

void VantoRpuServer::onStatus(ose::Signal*, const ose::PROCESS from)
{
    auto* answer = ose::alloc_as<VANTO_RPU_STATUS_CFM_S>(VANTO_RPU_STATUS_CFM);
    answer->numberOfRpu = m_config.rpuKnown ? 1 : 0;
    answer->rpuId = m_config.rpuId;
    answer->role = static_cast<std::uint32_t>(m_config.role);
    answer->registered = m_registered != 0 ? 1 : 0;
    answer->clientPid = m_registered;
    answer->restarts = m_restarts;
    ose::Signal* buffer = reinterpret_cast<ose::Signal*>(answer);
    ose::send(&buffer, from);
}

void VantoRpuServer::onSetRole(ose::Signal* signal, const ose::PROCESS from)
{
    const auto* request = ose::signal_cast<VANTO_RPU_SET_ROLE_REQ_S>(signal);
    const std::uint32_t role = request != nullptr ? static_cast<std::uint32_t>(request->role) : 99;
    if (role != static_cast<std::uint32_t>(RpuRole::Passive) && role != static_cast<std::uint32_t>(RpuRole::Active)) {
        SSC_TRACE(vantoGroup(), kError, "RPU server: role %u from 0x%x refused", role, from);
        sendResult(VANTO_RPU_SET_ROLE_CFM, RpuResult::BadRequest, from);
        return;
    }
    const auto wanted = static_cast<RpuRole>(role);
    const bool changed = wanted != m_config.role;
    m_config.role = wanted;
    SSC_TRACE(vantoGroup(), kInfo, "RPU server: role %s%s", roleText(wanted), changed ? "" : ", unchanged");
    // A load module only takes a role at start: telling it makes it restart.
    if (changed && m_registered != 0)
        sendRpuSignal(wanted == RpuRole::Active ? VANTO_CLI_ACTIVE_RPU : VANTO_CLI_PASSIVE_RPU, m_registered);
    sendResult(VANTO_RPU_SET_ROLE_CFM, RpuResult::Done, from);
}

void VantoRpuServer::onShutdown(ose::Signal*, const ose::PROCESS from)
{
    if (m_registered == 0) {
        sendResult(VANTO_RPU_SHUTDOWN_CFM, RpuResult::NoneRegistered, from);
        return;
    }
    SSC_TRACE(vantoGroup(), kInfo, "RPU server: shutdown of RPU %u", m_config.rpuId);
    sendRpuSignal(VANTO_CLI_SHUTDOWN_RPU, m_registered);
    sendResult(VANTO_RPU_SHUTDOWN_CFM, RpuResult::Done, from);
}

void VantoRpuServer::onAdd(ose::Signal*, const ose::PROCESS from)
{
    if (m_config.rpuKnown) {
        sendResult(VANTO_RPU_ADD_CFM, RpuResult::AlreadyKnown, from);
        return;
    }
    m_config.rpuKnown = true;
    SSC_TRACE(vantoGroup(), kInfo, "RPU server: RPU %u added", m_config.rpuId);
    for (ose::PROCESS waiting : m_waitingForRpu) {
        auto* indication = ose::alloc_as<VANTO_CLI_ADD_RPU_IND_S>(VANTO_CLI_ADD_RPU_IND);
        indication->numberOfRpu = 1;
        indication->rpuId = m_config.rpuId;
        ose::Signal* buffer = reinterpret_cast<ose::Signal*>(indication);
        ose::send(&buffer, waiting);
    }
    m_waitingForRpu.clear();
    sendResult(VANTO_RPU_ADD_CFM, RpuResult::Done, from);
}

void VantoRpuServer::onClientDown(ose::Signal*, const ose::PROCESS from)
{
    if (from != m_registered) return;
    SSC_TRACE(vantoGroup(), kInfo, "RPU server: the registered load module 0x%x has ended", from);
    m_registered = 0;
    m_registeredAttach = 0;
}

void VantoRpuServer::forgetRegistered()
{
    if (m_registered == 0) return;
    ose::detach(&m_registeredAttach);
    m_registered = 0;
}

void VantoRpuServer::sendRpuSignal(const ose::SIGSELECT sigNo, const ose::PROCESS to) const
{
    auto* signal = ose::alloc_as<VANTO_CLI_RPU_S>(sigNo);
    signal->rpuId = m_config.rpuId;
    ose::Signal* buffer = reinterpret_cast<ose::Signal*>(signal);
    ose::send(&buffer, to);
}

void VantoRpuServer::sendResult(const ose::SIGSELECT sigNo, const RpuResult result, const ose::PROCESS to) const
{
    auto* answer = ose::alloc_as<VANTO_RPU_RESULT_S>(sigNo);
    answer->result = static_cast<std::uint32_t>(result);
    ose::Signal* buffer = reinterpret_cast<ose::Signal*>(answer);
    ose::send(&buffer, to);
}

ose::PROCESS createRpuServer(ose::World& world, ose::Node& node, VantoRpuConfig config)
{
    ose::ProcessSpec definition;
    definition.name = kServerName;
    definition.priority = 16;
    definition.entry = [config = std::move(config)] {
        VantoRpuServer server(config);
        server.run();
    };
    const ose::PROCESS pid = world.createProcess(node, definition);
    world.start(pid);
    return pid;
}
