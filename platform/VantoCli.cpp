#include "platform/VantoCli.h"

#include "ose/Kernel.h"
#include "ose/Trace.h"

#include <cstdlib>
#include <cstring>

using namespace vanto_cli;

namespace {

ose::TraceGroupId cliGroup() { return ose::traceGroup<"supSysEngineSwU">(); }

constexpr ose::OSTIME kHuntRetryMs = 1000;

ose::PROCESS server()
{
    ose::PROCESS pid = 0;
    bool told = false;
    while (!ose::hunt(kServerName, 0, &pid, nullptr)) {
        if (!told) SSC_TRACE(cliGroup(), 5, "RPU server %s not found, retrying each %u ms", kServerName, kHuntRetryMs);
        told = true;
        ose::delay(kHuntRetryMs);
    }
    return pid;
}

// The server is found before the signal is made: the caller may be killed
// while it waits for the platform, and must hold nothing then.
template <class S>
void sendWithIdentity(const ose::SIGSELECT sigNo, const std::uint32_t rpuId = 0)
{
    const ose::PROCESS to = server();
    auto* signal = ose::alloc_as<S>(sigNo);
    if constexpr (requires { signal->rpuId; }) signal->rpuId = rpuId;
    const auto identity = VantoCli_identity();
    std::memcpy(signal->identity, identity.data(), identity.size());
    ose::Signal* buffer = reinterpret_cast<ose::Signal*>(signal);
    ose::send(&buffer, to);
}

} // namespace

std::array<char, kIdentitySize> VantoCli_identity()
{
    std::array<char, kIdentitySize> identity{};
    if (const char* text = std::getenv("OSE_LM_IDENTITY"))
        std::memcpy(identity.data(), text, std::min(std::strlen(text), identity.size()));
    return identity;
}

void VantoCli_getRpuReq()
{
    sendWithIdentity<VANTO_CLI_GET_RPU_REQ_S>(VANTO_CLI_GET_RPU_REQ);
}

void VantoCli_registerRpuReq(const std::uint32_t rpuId)
{
    sendWithIdentity<VANTO_CLI_REGISTER_RPU_REQ_S>(VANTO_CLI_REGISTER_RPU_REQ, rpuId);
}

void VantoCli_restartPgmReq(const std::uint32_t rpuId)
{
    sendWithIdentity<VANTO_CLI_RESTART_PGM_REQ_S>(VANTO_CLI_RESTART_PGM_REQ, rpuId);
}
