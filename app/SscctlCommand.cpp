#include "app/SscctlCommand.h"

#include "ose/BigEndian.h"
#include "ose/Clock.h"
#include "app/GatewayTransactionPort.h"
#include "app/SscctlCci.h"
#include "app/SscctlCmi.h"
#include "app/SscctlPmi.h"
#include "app/SscctlEmi.h"
#include "app/SscctlMo.h"
#include "app/SscctlPlatform.h"
#include "ose/GatewayClient.h"
#include "platform/VantoTransactionMgmtClient.h"

#include <cctype>
#include <filesystem>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ostream>

namespace app {

const char* sscctlUsage()
{
    return "Usage: sscctl [--socket PATH] [--name NAME] COMMAND [ARGS]\n"
           "Talks to a running ssc-node through its gateway socket.\n"
           "\n"
           "Commands:\n"
           "  hunt NAME [--wait MS]            print the pid of NAME; --wait MS of world time for it to appear\n"
           "  send NAME|PID SIGNO [HEX] [--reply MS]\n"
           "                                   send a signal (number, then HEX bytes); --reply waits MS (wall)\n"
           "                                   for one answer and prints it\n"
           "  recv [--publish NAME] [--timeout MS] [--count N]\n"
           "                                   print N signals sent to this client (or to NAME), waiting MS (wall)\n"
           "  time                             print world time, calendar and clock mode\n"
           "  advance MS                       let a virtual clock move on by MS and wait until it has\n"
           "  transaction [--sql STATEMENT]... [--rollback]\n"
           "                                   play the management client's part of a transaction: create it,\n"
           "                                   hand over each statement, then commit (or roll back)\n"
           "  trace CONFIG                     change trace groups and levels, e.g. 'demo:7,gateway:1-6'\n"
           "  emi STEP...                      talk to the equipment interface, the steps in order on one\n"
           "                                   connection (configurations belong to the client that made them):\n"
           "                                     configure TYPE ID POSITION   (POSITION: A1, 'AUX A3', - for none)\n"
           "                                     subscribe|status|product|measure|reset|delete TYPE ID\n"
           "                                     watch MS   print status and faults for MS (world time on a\n"
           "                                                virtual clock, else wall time)\n"
           "                                   TYPE: scu, sau, psu, pdu, bfu, efuse, clu. One line per answer.\n"
           "  cmi STEP...                      talk to the cabinet management interface as the object layer\n"
           "                                   does, the steps in order on one connection:\n"
           "                                     primary | secondary        the node's role in the site\n"
           "                                     cabinet ID                 an outdoor cabinet's climate\n"
           "                                     fan-group ID NUMBER CABINET\n"
           "                                     subscribe|status|delete cabinet|fan-group ID\n"
           "                                     report CABINET             the climate report, once\n"
           "                                     watch MS\n"
           "  pmi STEP...                      talk to the power management interface as the object layer\n"
           "                                   does, the steps in order on one connection:\n"
           "                                     supply [NAME=VALUE...]     the power supply's limits, volts:\n"
           "                                                nominal, over, over-cease, under, under-cease\n"
           "                                     distribution [NAME=VALUE...]   load disconnect, volts:\n"
           "                                                main, priority, cease\n"
           "                                     battery [NAME=VALUE...]    the battery backup: charging,\n"
           "                                                max-current, disconnect-temp, disconnect-cease,\n"
           "                                                nominal-temp, comp-slope, comp-min, comp-max,\n"
           "                                                increased, test-mode, charging-mode,\n"
           "                                                reference-capacity (unnamed ones: defaults)\n"
           "                                     subscribe|unsubscribe|status|delete battery|distribution|supply\n"
           "                                     start-equalize | stop-equalize | start-test |\n"
           "                                     start-test-forced | stop-test | test-status\n"
           "                                     watch MS\n"
           "  cci STEP...                      talk to the climate control interface as software with hot\n"
           "                                   spots does, the steps in order on one connection:\n"
           "                                     connect\n"
           "                                     register HWTYPE MAXTEMPS   (cbu, rax, ru, tx, du; degrees like\n"
           "                                                45,50.5: one sensor each)\n"
           "                                     temps GROUP DEGREES   (GROUP from register, - for the last)\n"
           "                                     deregister GROUP | watch MS\n"
           "  sim silence|clear|restart ADDRESS [PORT] | sim replace ADDRESS SERIAL [PORT]\n"
           "                                   fault injection on the simulated bus: a unit stops answering,\n"
           "                                   answers again, restarts, or is replaced (serial SIM<SERIAL>)\n"
           "  sim set ADDRESS NAME VALUE [PORT]\n"
           "                                   set a unit's value (docs/site-file.md), e.g. the SCU's\n"
           "                                   doorSwitchOpen or smokeDetectorAlarm\n"
           "  sim mains-loss|mains-return|cell-fault | sim ambient DEGREES\n"
           "  sim fan-fail|fan-block|fan-repair FANS\n"
           "                                   events of the plant of a site with <plant>; FANS is a\n"
           "                                   group 1 to 4, or 10 x group + fan (21: group 2, fan 1)\n"
           "  rpu status|active|passive|shutdown|add|restart\n"
           "                                   the platform's RPU server: its state; give the load module\n"
           "                                   another role or tell it to shut down (it restarts either\n"
           "                                   way); make the RPU known; restart the load module\n"
           "  ns find NAME                     the process that published NAME at the name server\n"
           "  mo [--rollback] STEP...          the management client's part of one transaction, the steps in\n"
           "                                   order, then a commit (or a roll-back):\n"
           "                                     create LDN [NAME[:TYPE]=VALUE]...\n"
           "                                     set LDN[#ID] NAME[:TYPE]=VALUE...   (ID: the object's id, which\n"
           "                                                create prints; not needed for one made in the run)\n"
           "                                     get LDN [NAME]... | delete LDN[#ID]\n"
           "                                     action LDN NAME [NAME[:TYPE]=VALUE]...\n"
           "                                     watch MS   print fault, cease, change and event indications\n"
           "                                     list       the committed objects and their ids, read from the\n"
           "                                                node's database in the socket's folder\n"
           "                                   TYPE defaults to the class's own, else S32 or STRING by the value.\n"
           "  objects timer MS                 ask the object process to answer after MS through its own\n"
           "                                   timers: shows that its receive loop and timers turn\n"
           "\n"
           "Options:\n"
           "  --socket PATH   the node's gateway socket (default: $SSC_SOCKET, else ssc-data/ssc.sock)\n"
           "  --name NAME     the name this client takes in the node (default: sscctl)\n"
           "\n"
           "Exit codes: 0 done, 1 not found, nothing received or refused by the node, 2 bad command\n"
           "line, 3 the node cannot be reached.\n";
}

bool parseUnsigned(const std::string& text, std::uint64_t& value)
{
    int base = 10;
    std::size_t start = 0;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        start = 2;
    }
    auto [end, error] = std::from_chars(text.data() + start, text.data() + text.size(), value, base);
    return !text.empty() && error == std::errc() && end == text.data() + text.size();
}

bool parseHexBytes(const std::string& text, std::string& bytes)
{
    std::string digits;
    for (char c : text) {
        if (c == ':' || c == '_' || c == ' ') continue;
        if (!std::isxdigit(static_cast<unsigned char>(c))) return false;
        digits += c;
    }
    if (digits.size() % 2 != 0) return false;
    bytes.clear();
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes += static_cast<char>(std::strtoul(digits.substr(i, 2).c_str(), nullptr, 16));
    return true;
}

namespace {

struct ArgReader {
    const std::vector<std::string>& args;
    std::size_t i = 0;
    std::string& error;

    bool more() const { return i < args.size(); }
    bool take(std::string& out, const std::string& what)
    {
        if (i >= args.size()) {
            error = what + " is missing";
            return false;
        }
        out = args[i++];
        return true;
    }
    template <typename T>
    bool number(T& out, const std::string& what)
    {
        std::string text;
        std::uint64_t value = 0;
        if (!take(text, what)) return false;
        if (!parseUnsigned(text, value) || value > static_cast<std::uint64_t>(static_cast<T>(~T{0}))) {
            error = what + " must be a number, not '" + text + "'";
            return false;
        }
        out = static_cast<T>(value);
        return true;
    }
};

bool parseVerbArgs(ArgReader& in, SscctlCommand& command)
{
    using Verb = SscctlCommand::Verb;
    std::string text;
    switch (command.verb) {
    case Verb::Hunt: if (!in.take(command.target, "the name to hunt")) return false; break;
    case Verb::Send: {
        if (!in.take(command.target, "the name or pid to send to") || !in.number(command.sigNo, "the signal number"))
            return false;
        if (in.more() && !in.args[in.i].starts_with("--")) {
            in.take(text, "");
            if (!parseHexBytes(text, command.payload)) {
                in.error = "the signal's bytes must be hex digits in pairs, not '" + text + "'";
                return false;
            }
        }
        break;
    }
    case Verb::Advance: if (!in.number(command.advanceMs, "the milliseconds to advance")) return false; break;
    case Verb::Trace: if (!in.take(command.traceConfig, "the trace configuration")) return false; break;
    case Verb::Emi:
        command.words.assign(in.args.begin() + static_cast<long>(in.i), in.args.end());
        in.i = in.args.size();
        return checkEmiSteps(command.words, in.error);
    case Verb::Cci:
        command.words.assign(in.args.begin() + static_cast<long>(in.i), in.args.end());
        in.i = in.args.size();
        return checkCciSteps(command.words, in.error);
    case Verb::Cmi:
        command.words.assign(in.args.begin() + static_cast<long>(in.i), in.args.end());
        in.i = in.args.size();
        return checkCmiSteps(command.words, in.error);
    case Verb::Pmi:
        command.words.assign(in.args.begin() + static_cast<long>(in.i), in.args.end());
        in.i = in.args.size();
        return checkPmiSteps(command.words, in.error);
    case Verb::Sim:
        command.words.assign(in.args.begin() + static_cast<long>(in.i), in.args.end());
        in.i = in.args.size();
        return checkSimArgs(command.words, in.error);
    case Verb::Mo: {
        // mo's own option comes first; the rest are its steps.
        while (in.more() && in.args[in.i] == "--rollback") {
            command.rollback = true;
            ++in.i;
        }
        command.words.assign(in.args.begin() + static_cast<long>(in.i), in.args.end());
        in.i = in.args.size();
        return checkMoSteps(command.words, in.error);
    }
    case Verb::Rpu:
    case Verb::Ns:
    case Verb::Objects:
        command.words.assign(in.args.begin() + static_cast<long>(in.i), in.args.end());
        in.i = in.args.size();
        if (command.verb == Verb::Rpu) return checkRpuArgs(command.words, in.error);
        return command.verb == Verb::Ns ? checkNsArgs(command.words, in.error)
                                        : checkObjectsArgs(command.words, in.error);
    default: break;
    }
    while (in.more()) {
        std::string option = in.args[in.i++];
        std::uint32_t value = 0;
        if (option == "--wait" && command.verb == Verb::Hunt) { if (!in.number(command.waitMs, "--wait")) return false; }
        else if (option == "--reply" && command.verb == Verb::Send) {
            if (!in.number(value, "--reply")) return false;
            command.replyMs = value;
        } else if (option == "--timeout" && command.verb == Verb::Recv) { if (!in.number(command.timeoutMs, "--timeout")) return false; }
        else if (option == "--count" && command.verb == Verb::Recv) { if (!in.number(command.count, "--count")) return false; }
        else if (option == "--publish" && command.verb == Verb::Recv) { if (!in.take(command.publishName, "--publish")) return false; }
        else if (option == "--sql" && command.verb == Verb::Transaction) {
            if (!in.take(command.statements.emplace_back(), "--sql")) return false;
        } else if (option == "--rollback" && command.verb == Verb::Transaction) command.rollback = true;
        else {
            in.error = "unexpected '" + option + "' (see --help)";
            return false;
        }
    }
    return true;
}

} // namespace

bool parseSscctl(const std::vector<std::string>& args, SscctlCommand& command, std::string& error)
{
    using Verb = SscctlCommand::Verb;
    ArgReader in{args, 0, error};
    const char* fromEnvironment = std::getenv("SSC_SOCKET");
    command.socketPath = fromEnvironment != nullptr ? fromEnvironment : "ssc-data/ssc.sock";
    std::string word;
    while (in.more() && args[in.i].starts_with("-")) {
        std::string option = args[in.i++];
        if (option == "--help" || option == "-h") { command.verb = Verb::Help; return true; }
        if (option == "--socket") { if (!in.take(command.socketPath, "--socket")) return false; }
        else if (option == "--name") { if (!in.take(command.clientName, "--name")) return false; }
        else {
            error = "unknown option '" + option + "' (see --help)";
            return false;
        }
    }
    if (!in.take(word, "a command")) return false;
    static const std::pair<const char*, Verb> verbs[] = {{"hunt", Verb::Hunt}, {"send", Verb::Send},
                                                          {"recv", Verb::Recv}, {"time", Verb::Time},
                                                          {"advance", Verb::Advance}, {"trace", Verb::Trace}, {"transaction", Verb::Transaction},
                                                          {"emi", Verb::Emi}, {"cci", Verb::Cci}, {"cmi", Verb::Cmi}, {"pmi", Verb::Pmi}, {"sim", Verb::Sim},
                                                          {"rpu", Verb::Rpu}, {"ns", Verb::Ns}, {"objects", Verb::Objects}, {"mo", Verb::Mo},
                                                          {"help", Verb::Help}};
    for (auto [name, verb] : verbs)
        if (word == name) {
            command.verb = verb;
            return parseVerbArgs(in, command);
        }
    error = "unknown command '" + word + "' (see --help)";
    return false;
}

namespace {

void printSignal(const ose::GatewayEvent& event, std::ostream& out)
{
    if (event.kind == ose::GatewayEvent::Kind::Died) {
        out << "died pid=0x" << std::hex << event.pid << std::dec << "\n";
        return;
    }
    char head[96];
    std::snprintf(head, sizeof head, "signal 0x%x (%u) from 0x%x size %zu:", event.sigNo(), event.sigNo(),
                  event.sender, event.bytes.size());
    out << head;
    for (std::size_t i = 4; i < event.bytes.size(); ++i) {
        char byte[4];
        std::snprintf(byte, sizeof byte, " %02x", static_cast<unsigned char>(event.bytes[i]));
        out << byte;
    }
    out << "\n";
}

// A pid given as a number, or the pid of a name found now.
std::optional<ose::PROCESS> resolveTarget(ose::GatewayClient& client, const std::string& target, std::ostream& err)
{
    std::uint64_t pid = 0;
    if (parseUnsigned(target, pid) && pid <= 0xFFFFFFFFu) return static_cast<ose::PROCESS>(pid);
    auto found = client.hunt(target, 0);
    if (!found || *found == 0) {
        err << "sscctl: no process named '" << target << "' in the node\n";
        return std::nullopt;
    }
    return *found;
}

// One whole transaction: the server rolls back what a client leaves open when
// it goes, so a transaction cannot outlive one sscctl run.
int runTransaction(const SscctlCommand& command, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    GatewayTransactionPort port(client);
    VantoTransactionMgmtClient transactions(port);
    std::int32_t id = 0;
    vanto_trans::TransResult result = transactions.create(id);
    if (result != vanto_trans::TransResult::Ok) {
        err << "sscctl: no transaction: " << VantoTransactionMgmtClient::resultText(result) << "\n";
        return client.isConnected() ? kNotFound : kNoNode;
    }
    for (const std::string& statement : command.statements) {
        if (!port.sendStatement(id, statement)) {
            err << "sscctl: the statement could not be handed over: " << client.lastError() << "\n";
            return kNoNode;
        }
    }
    result = command.rollback ? transactions.rollback(id) : transactions.commit(id);
    out << "transaction " << id << (command.rollback ? " rollback: " : " commit: ")
        << VantoTransactionMgmtClient::resultText(result) << "\n";
    return result == vanto_trans::TransResult::Ok ? kDone : kNotFound;
}

int runVerb(const SscctlCommand& command, ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    using Verb = SscctlCommand::Verb;
    switch (command.verb) {
    case Verb::Hunt: {
        auto pid = client.hunt(command.target, command.waitMs);
        if (!pid) break;
        if (*pid == 0) {
            err << "sscctl: '" << command.target << "' not found\n";
            return kNotFound;
        }
        out << "0x" << std::hex << *pid << std::dec << "\n";
        return kDone;
    }
    case Verb::Send: {
        auto pid = resolveTarget(client, command.target, err);
        if (!pid) return kNotFound;
        std::string bytes(4, '\0');
        ose::storeBe32(bytes.data(), command.sigNo);
        if (!client.sendAcknowledged(*pid, bytes + command.payload)) break;
        if (!command.replyMs) return kDone;
        auto event = client.next(std::chrono::milliseconds(*command.replyMs));
        if (!event) {
            err << "sscctl: no answer within " << *command.replyMs << " ms\n";
            return kNotFound;
        }
        printSignal(*event, out);
        return kDone;
    }
    case Verb::Recv: {
        if (!command.publishName.empty() && !client.publish(command.publishName)) break;
        for (std::uint32_t n = 0; n < command.count; ++n) {
            auto event = client.next(std::chrono::milliseconds(command.timeoutMs));
            if (!event) {
                if (!client.isConnected()) break;
                err << "sscctl: nothing received within " << command.timeoutMs << " ms\n";
                return kNotFound;
            }
            printSignal(*event, out);
        }
        if (!client.isConnected()) break;
        return kDone;
    }
    case Verb::Time: {
        auto time = client.time();
        if (!time) break;
        static const char* const modes[] = {"real", "virtual", "paced"};
        auto calendar = ose::Clock::toCalendar(time->calendarMs);
        char text[128];
        std::snprintf(text, sizeof text, "world time %llu ms, calendar %04d-%02d-%02d %02d:%02d:%02d UTC, clock %s\n",
                      static_cast<unsigned long long>(time->nowMs), calendar.year, calendar.month, calendar.day,
                      calendar.hour, calendar.minute, calendar.second, modes[time->clockMode % 3]);
        out << text;
        return kDone;
    }
    case Verb::Advance: {
        auto now = client.advanceBy(command.advanceMs);
        if (!now) break;
        out << "world time " << *now << " ms\n";
        return kDone;
    }
    case Verb::Trace:
        if (!client.trace(command.traceConfig)) break;
        return kDone;
    case Verb::Transaction:
        return runTransaction(command, client, out, err);
    case Verb::Emi: return runEmi(command.words, client, out, err);
    case Verb::Cci: return runCci(command.words, client, out, err);
    case Verb::Cmi: return runCmi(command.words, client, out, err);
    case Verb::Pmi: return runPmi(command.words, client, out, err);
    case Verb::Sim: return runSim(command.words, client, out, err);
    case Verb::Rpu: return runRpu(command.words, client, out, err);
    case Verb::Ns: return runNs(command.words, client, out, err);
    case Verb::Objects: return runObjects(command.words, client, out, err);
    case Verb::Mo: {
        const std::string dir = std::filesystem::path(command.socketPath).parent_path().string();
        return runMo(command.words, command.rollback, dir.empty() ? "." : dir, client, out, err);
    }
    case Verb::Help:
        out << sscctlUsage();
        return kDone;
    }
    err << "sscctl: " << client.lastError() << "\n";
    return client.isConnected() ? kNotFound : kNoNode;
}

} // namespace

int runSscctl(const SscctlCommand& command, std::ostream& out, std::ostream& err)
{
    if (command.verb == SscctlCommand::Verb::Help) {
        out << sscctlUsage();
        return kDone;
    }
    ose::GatewayClient client;
    if (!client.connect(command.socketPath, command.clientName)) {
        err << "sscctl: " << client.lastError() << "\n";
        return kNoNode;
    }
    return runVerb(command, client, out, err);
}

} // namespace app
