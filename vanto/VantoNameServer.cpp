#include "vanto/VantoNameServer.h"

#include "platform/NameServerSignals.h"
#include "vanto/VantoTrace.h"

#include "ose/Kernel.h"

using namespace name_server;

namespace {

constexpr unsigned kError = 1;
constexpr unsigned kInfo = 4;
constexpr unsigned kFlow = 7;

// The server's own attach signal: a process that owns names has died.
constexpr ose::SIGSELECT NS_OWNER_DOWN_IND = 31604;

std::uint32_t code(NsResult result) { return static_cast<std::uint32_t>(result); }

} // namespace

const VantoNameServer::Entry VantoNameServer::kTable[] = {
    {NS_ADD_SERVICE, "NS_ADD_SERVICE", &VantoNameServer::onAdd},
    {NS_FIND_SERVICE, "NS_FIND_SERVICE", &VantoNameServer::onFind},
    {NS_OWNER_DOWN_IND, "NS_OWNER_DOWN_IND", &VantoNameServer::onOwnerDown},
};

VantoNameServer::~VantoNameServer()
{
    for (auto& [pid, ref] : m_supervised) ose::detach(&ref);
}

void VantoNameServer::run()
{
    SSC_TRACE(vantoGroup(), kInfo, "Name server started");
    serveVantoSignals(*this);
}

void VantoNameServer::handleSignal(ose::Signal* signal)
{
    dispatchVantoSignal<VantoNameServer>(*this, kTable, signal, "Name server");
}

void VantoNameServer::onAdd(ose::Signal* signal, const ose::PROCESS from)
{
    std::string name;
    if (!readServiceName(signal, name)) {
        SSC_TRACE(vantoGroup(), kError, "Name server: NS_ADD_SERVICE from 0x%x without a name, refused", from);
        reply(NS_ADD_SERVICE_REPLY, code(NsResult::BadRequest), 0, from);
        return;
    }
    auto [it, added] = m_services.emplace(name, from);
    if (!added && it->second != from) {
        SSC_TRACE(vantoGroup(), kError, "Name server: %s is taken by 0x%x, refused to 0x%x", name.c_str(),
                  it->second, from);
        reply(NS_ADD_SERVICE_REPLY, code(NsResult::Taken), it->second, from);
        return;
    }
    supervise(from);
    SSC_TRACE(vantoGroup(), kInfo, "Name server: %s published by 0x%x", name.c_str(), from);
    reply(NS_ADD_SERVICE_REPLY, code(NsResult::Done), from, from);
}

void VantoNameServer::onFind(ose::Signal* signal, const ose::PROCESS from)
{
    std::string name;
    if (!readServiceName(signal, name)) {
        reply(NS_FIND_SERVICE_REPLY, code(NsResult::BadRequest), 0, from);
        return;
    }
    auto it = m_services.find(name);
    if (it == m_services.end()) {
        SSC_TRACE(vantoGroup(), kFlow, "Name server: %s not found for 0x%x", name.c_str(), from);
        reply(NS_FIND_SERVICE_REPLY, code(NsResult::NotFound), 0, from);
        return;
    }
    reply(NS_FIND_SERVICE_REPLY, code(NsResult::Done), it->second, from);
}

void VantoNameServer::onOwnerDown(ose::Signal*, const ose::PROCESS from)
{
    m_supervised.erase(from);
    for (auto it = m_services.begin(); it != m_services.end();) {
        if (it->second != from) {
            ++it;
            continue;
        }
        SSC_TRACE(vantoGroup(), kInfo, "Name server: %s withdrawn, its process 0x%x has ended", it->first.c_str(),
                  from);
        it = m_services.erase(it);
    }
}

void VantoNameServer::supervise(const ose::PROCESS pid)
{
    if (m_supervised.count(pid) != 0) return;
    ose::Signal* down = ose::alloc(4, NS_OWNER_DOWN_IND);
    m_supervised[pid] = ose::attach(&down, pid);
}

void VantoNameServer::reply(const ose::SIGSELECT sigNo, const std::uint32_t result, const ose::PROCESS pid,
                            const ose::PROCESS to)
{
    auto* answer = ose::alloc_as<NS_SERVICE_REPLY_S>(sigNo);
    answer->result = result;
    answer->pid = pid;
    ose::Signal* buffer = reinterpret_cast<ose::Signal*>(answer);
    ose::send(&buffer, to);
}

ose::PROCESS createNameServer(ose::World& world, ose::Node& node)
{
    ose::ProcessSpec definition;
    definition.name = kServerName;
    definition.priority = 16;
    definition.entry = [] {
        VantoNameServer server;
        server.run();
    };
    const ose::PROCESS pid = world.createProcess(node, definition);
    world.start(pid);
    return pid;
}
