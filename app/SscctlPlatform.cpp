#include "app/SscctlPlatform.h"

#include "app/SignalLayout.h"
#include "app/SscctlCommand.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosisSignals.h"
#include "platform/NameServerSignals.h"
#include "platform/VantoCliSignals.h"

#include "ose/BigEndian.h"

#include <chrono>
#include <cstring>
#include <optional>
#include <ostream>

namespace app {

namespace {

using namespace vanto_cli;
using namespace std::chrono_literals;

constexpr auto kAnswerWait = 10s;

std::string hex(std::uint32_t value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", value);
    return text;
}

// Sends the request to the server and waits for the answer of that number.
std::optional<std::string> ask(ose::GatewayClient& client, const char* server, const std::string& request,
                               std::uint32_t answerNo, std::chrono::milliseconds wait, std::ostream& err, int& code)
{
    auto pid = client.hunt(server, 0);
    if (!pid || *pid == 0) {
        err << "sscctl: the node has no " << server << "\n";
        code = client.isConnected() ? kNotFound : kNoNode;
        return std::nullopt;
    }
    if (!client.send(*pid, request)) {
        err << "sscctl: " << client.lastError() << "\n";
        code = kNoNode;
        return std::nullopt;
    }
    for (;;) {
        auto event = client.next(wait);
        if (!event) break;
        if (event->kind == ose::GatewayEvent::Kind::Signal && event->sigNo() == answerNo) return event->bytes;
    }
    err << "sscctl: no answer from " << server << "\n";
    code = client.isConnected() ? kNotFound : kNoNode;
    return std::nullopt;
}

int printStatus(ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    int code = kDone;
    auto answer = ask(client, kServerName, bytesOf(VANTO_RPU_REQ_S{VANTO_RPU_STATUS_REQ}),
                      VANTO_RPU_STATUS_CFM, kAnswerWait, err, code);
    if (!answer) return code;
    const auto status = layoutOf<VANTO_RPU_STATUS_CFM_S>(*answer);
    if (status.numberOfRpu == 0) {
        out << "no RPU yet (add one with 'sscctl rpu add')\n";
        return kDone;
    }
    out << "RPU " << status.rpuId << ": " << (status.role == 1 ? "active" : "passive") << ", "
        << (status.registered ? "load module registered (process " + hex(status.clientPid) + ")"
                              : std::string("no load module registered"))
        << ", " << status.restarts << (status.restarts == 1 ? " restart\n" : " restarts\n");
    return kDone;
}

int resultLine(const std::optional<std::string>& answer, int code, const char* done, const char* refused,
               std::ostream& out)
{
    if (!answer) return code;
    const auto result = static_cast<RpuResult>(static_cast<std::uint32_t>(layoutOf<VANTO_RPU_RESULT_S>(*answer).result));
    out << (result == RpuResult::Done ? done : refused) << "\n";
    return result == RpuResult::Done ? kDone : kNotFound;
}

} // namespace

bool checkRpuArgs(const std::vector<std::string>& args, std::string& error)
{
    static const char* const kVerbs[] = {"status", "active", "passive", "shutdown", "add", "restart"};
    if (args.size() == 1)
        for (const char* verb : kVerbs)
            if (args[0] == verb) return true;
    error = "rpu takes one of: status, active, passive, shutdown, add, restart";
    return false;
}

int runRpu(const std::vector<std::string>& args, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    const std::string& verb = args[0];
    int code = kDone;
    if (verb == "status") return printStatus(client, out, err);
    if (verb == "active" || verb == "passive") {
        VANTO_RPU_SET_ROLE_REQ_S request{VANTO_RPU_SET_ROLE_REQ, static_cast<std::uint32_t>(verb == "active")};
        auto answer = ask(client, kServerName, bytesOf(request), VANTO_RPU_SET_ROLE_CFM, kAnswerWait, err, code);
        return resultLine(answer, code, verb == "active" ? "role active" : "role passive", "role refused", out);
    }
    if (verb == "shutdown") {
        auto answer = ask(client, kServerName, bytesOf(VANTO_RPU_REQ_S{VANTO_RPU_SHUTDOWN_REQ}),
                          VANTO_RPU_SHUTDOWN_CFM, kAnswerWait, err, code);
        return resultLine(answer, code, "shutdown sent to the load module", "no load module registered", out);
    }
    if (verb == "add") {
        auto answer = ask(client, kServerName, bytesOf(VANTO_RPU_REQ_S{VANTO_RPU_ADD_REQ}), VANTO_RPU_ADD_CFM,
                          kAnswerWait, err, code);
        return resultLine(answer, code, "RPU added", "the RPU is known already", out);
    }
    // restart: the platform's own request, as the load module sends it.
    auto pid = client.hunt(kServerName, 0);
    if (!pid || *pid == 0) {
        err << "sscctl: the node has no " << kServerName << "\n";
        return client.isConnected() ? kNotFound : kNoNode;
    }
    VANTO_CLI_RESTART_PGM_REQ_S request{};
    request.sigNo = VANTO_CLI_RESTART_PGM_REQ;
    if (!client.sendAcknowledged(*pid, bytesOf(request))) {
        err << "sscctl: " << client.lastError() << "\n";
        return kNoNode;
    }
    out << "restart of the load module requested\n";
    return kDone;
}

bool checkNsArgs(const std::vector<std::string>& args, std::string& error)
{
    if (args.size() == 2 && args[0] == "find" && !args[1].empty() && args[1].size() <= name_server::kMaxNameLength)
        return true;
    error = "ns takes: find NAME";
    return false;
}

int runNs(const std::vector<std::string>& args, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    using namespace name_server;
    const std::string& name = args[1];
    std::string request(sizeof(NS_SERVICE_S) + nameFieldSize(name.size()), '\0');
    ose::storeBe32(request.data(), NS_FIND_SERVICE);
    ose::storeBe32(request.data() + 4, nameFieldSize(name.size()));
    std::memcpy(request.data() + sizeof(NS_SERVICE_S), name.data(), name.size());
    int code = kDone;
    auto answer = ask(client, name_server::kServerName, request, NS_FIND_SERVICE_REPLY, kAnswerWait, err, code);
    if (!answer) return code;
    const auto reply = layoutOf<NS_SERVICE_REPLY_S>(*answer);
    if (static_cast<NsResult>(static_cast<std::uint32_t>(reply.result)) != NsResult::Done) {
        out << name << ": not published\n";
        return kNotFound;
    }
    out << name << ": process " << hex(reply.pid) << "\n";
    return kDone;
}

bool checkObjectsArgs(const std::vector<std::string>& args, std::string& error)
{
    std::uint64_t ms = 0;
    if (args.size() == 2 && args[0] == "timer" && parseUnsigned(args[1], ms) && ms <= 0x7fffffffu) return true;
    error = "objects takes: timer MS (0 to 2147483647)";
    return false;
}

int runObjects(const std::vector<std::string>& args, ose::GatewayClient& client, std::ostream& out,
               std::ostream& err)
{
    std::uint64_t ms = 0;
    parseUnsigned(args[1], ms);
    SUP_SYS_DIAG_TIMER_REQ_S request{SUP_SYS_DIAG_TIMER_REQ, 1, static_cast<std::uint32_t>(ms)};
    // A virtual clock runs ahead on its own; a real one takes the time asked.
    const auto wait = kAnswerWait + (client.clockMode() == 0 ? std::chrono::milliseconds(ms) : 0ms);
    int code = kDone;
    auto answer = ask(client, kSupSysProcessName, bytesOf(request), SUP_SYS_DIAG_TIMER_CFM, wait, err, code);
    if (!answer) return code;
    const auto reply = layoutOf<SUP_SYS_DIAG_TIMER_CFM_S>(*answer);
    out << "timer " << reply.timerId << " ran out after " << (reply.answeredAtMs - reply.requestedAtMs)
        << " ms (world time " << reply.requestedAtMs << " to " << reply.answeredAtMs << " ms)\n";
    return kDone;
}

} // namespace app
