#pragma once
// What sscctl was asked to do, read from its command line, and the doing of
// it against a node's gateway.

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace app {

struct SscctlCommand {
    enum class Verb { Hunt, Send, Recv, Time, Advance, Trace, Transaction, Emi, Cci, Cmi, Pmi, Sim, Rpu, Ns, Objects, Mo, Help };
    Verb verb = Verb::Help;
    std::string socketPath;
    std::string clientName = "sscctl";
    std::string target;            // hunt: name; send: name or pid
    std::uint32_t sigNo = 0;
    std::string payload;           // send: bytes after the signal number
    std::uint32_t waitMs = 0;      // hunt --wait (world time)
    std::optional<std::uint32_t> replyMs; // send --reply (wall time)
    std::uint32_t timeoutMs = 1000;       // recv --timeout (wall time)
    std::uint32_t count = 1;              // recv --count
    std::string publishName;              // recv --publish
    std::uint64_t advanceMs = 0;
    std::string traceConfig;
    std::vector<std::string> statements;  // transaction --sql
    bool rollback = false;                // transaction, mo --rollback
    std::vector<std::string> words;       // emi, cci, cmi, pmi: steps; sim, rpu, ns, objects: their arguments
};

// Exit codes that scripts can use.
enum SscctlExit : int { kDone = 0, kNotFound = 1, kUsage = 2, kNoNode = 3 };

bool parseSscctl(const std::vector<std::string>& args, SscctlCommand& command, std::string& error);
const char* sscctlUsage();
// Runs the command; what it prints goes to out, errors in plain words to err.
int runSscctl(const SscctlCommand& command, std::ostream& out, std::ostream& err);

// "0x2a", "42": a number; false for anything else.
bool parseUnsigned(const std::string& text, std::uint64_t& value);
// Hex digits, optionally separated by ':', '_' or ' ', to bytes.
bool parseHexBytes(const std::string& text, std::string& bytes);

} // namespace app
