#include "app/SscctlMo.h"

#include "app/GatewayTransactionPort.h"
#include "app/SignalLayout.h"
#include "app/SscctlCommand.h"
#include "froBl/froMgmtSwU/export/MaoFroSignals.h"
#include "platform/VantoDb.h"
#include "froBl/froMgmtSwU/export/defaultAttributes.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/ldn.h"
#include "froBl/froMgmtSwU/export/xmlEscape.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "platform/NameServerSignals.h"
#include "platform/VantoTransactionMgmtClient.h"

#include "ose/BigEndian.h"

#include <chrono>
#include <map>
#include <ostream>

namespace app {

namespace {

using namespace maofro;
using namespace std::chrono_literals;

constexpr auto kAnswerWait = 10s;

bool isVerb(const std::string& word)
{
    return word == "create" || word == "set" || word == "get" || word == "delete" || word == "action" ||
           word == "watch" || word == "list";
}

struct MoStep {
    std::string verb;
    std::string ldn;                  // without "#ID"
    std::int32_t id = -1;             // from "#ID", else -1
    std::string actionName;
    std::vector<std::string> names, types, values; // escaped
    std::uint64_t watchMs = 0;
};

// NAME[:TYPE]=VALUE; without a type, the class's default type, else S32
// for a whole number and STRING for anything else.
bool parseAssignment(const std::string& moType, const std::string& word, MoStep& step, std::string& error)
{
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos || equals == 0) {
        error = "'" + word + "' is not NAME=VALUE";
        return false;
    }
    std::string name = word.substr(0, equals);
    const std::string value = word.substr(equals + 1);
    std::string type;
    if (const std::size_t colon = name.find(':'); colon != std::string::npos) {
        type = name.substr(colon + 1);
        name = name.substr(0, colon);
    }
    if (type.empty())
        for (const auto& row : default_attributes::kRows)
            if (row.moType == moType && row.name == name) type = std::string(row.type);
    if (type.empty()) {
        std::uint64_t number = 0;
        const bool negative = !value.empty() && value[0] == '-';
        type = parseUnsigned(negative ? value.substr(1) : value, number) ? "S32" : "STRING";
    }
    step.names.push_back(name);
    step.types.push_back(type);
    step.values.push_back(xmlEscape::encode(value));
    return true;
}

bool parseTarget(const std::string& word, MoStep& step, std::string& error)
{
    std::string ldn = word;
    if (const std::size_t hash = word.rfind('#'); hash != std::string::npos) {
        std::uint64_t id = 0;
        if (!parseUnsigned(word.substr(hash + 1), id) || id > 65534) {
            error = "'" + word + "': the id after # must be 0 to 65534";
            return false;
        }
        step.id = static_cast<std::int32_t>(id);
        ldn = word.substr(0, hash);
    }
    if (Ldn::moType(ldn).empty() || fro_types::froType(Ldn::moType(ldn)) == 0) {
        error = "'" + ldn + "' does not name an object of a known class";
        return false;
    }
    step.ldn = ldn;
    return true;
}

bool parseSteps(const std::vector<std::string>& words, std::vector<MoStep>& steps, std::string& error)
{
    for (std::size_t i = 0; i < words.size();) {
        MoStep step;
        step.verb = words[i++];
        if (!isVerb(step.verb)) {
            error = "unknown mo step '" + step.verb + "' (see --help)";
            return false;
        }
        std::vector<std::string> args;
        while (i < words.size() && !isVerb(words[i])) args.push_back(words[i++]);
        if (step.verb == "list") {
            if (!args.empty()) {
                error = "mo list takes nothing";
                return false;
            }
        } else if (step.verb == "watch") {
            if (args.size() != 1 || !parseUnsigned(args[0], step.watchMs)) {
                error = "mo watch takes the milliseconds to watch";
                return false;
            }
        } else {
            if (args.empty() || !parseTarget(args[0], step, error)) {
                if (args.empty()) error = "mo " + step.verb + " needs an ldn";
                return false;
            }
            if (step.verb == "delete" && args.size() > 1) {
                error = "mo delete takes only the ldn";
                return false;
            }
            std::size_t next = 1;
            if (step.verb == "action") {
                if (args.size() < 2) {
                    error = "mo action needs the action's name";
                    return false;
                }
                step.actionName = args[next++];
            }
            for (; next < args.size(); ++next) {
                if (step.verb == "get") {
                    // A name asked for travels as an attribute without a value.
                    if (!parseAssignment(Ldn::moType(step.ldn), args[next] + "=", step, error)) return false;
                    if (step.types.back() == "S32") step.types.back() = "STRING";
                } else if (!parseAssignment(Ldn::moType(step.ldn), args[next], step, error)) return false;
            }
            if (step.verb == "set" && step.names.empty()) {
                error = "mo set needs NAME=VALUE";
                return false;
            }
        }
        steps.push_back(step);
    }
    if (steps.empty()) error = "mo needs at least one step";
    return !steps.empty();
}

std::string word(std::uint32_t value)
{
    std::string bytes(4, '\0');
    ose::storeBe32(bytes.data(), value);
    return bytes;
}

std::uint32_t wordAt(const std::string& bytes, std::size_t offset)
{
    return bytes.size() >= offset + 4 ? ose::loadBe32(bytes.data() + offset) : 0;
}

std::string blockOf(std::uint32_t type, const std::string& text)
{
    std::string bytes(sizeof(ATTRIBUTE_BLOCK_S), '\0');
    ose::storeBe32(bytes.data(), type);
    ose::storeBe16(bytes.data() + 4, 1);
    ose::storeBe32(bytes.data() + 8, blockTextSize(text.size()));
    bytes += text;
    bytes.resize(sizeof(ATTRIBUTE_BLOCK_S) + blockTextSize(text.size()), '\0');
    return bytes;
}

// The text of the block whose header starts at `offset`, up to its NUL.
std::string blockText(const std::string& bytes, std::size_t offset)
{
    if (bytes.size() <= offset + sizeof(ATTRIBUTE_BLOCK_S)) return {};
    const std::string text = bytes.substr(offset + sizeof(ATTRIBUTE_BLOCK_S));
    return text.substr(0, text.find('\0'));
}

std::string bodyOf(const MoStep& step)
{
    if (step.verb != "action") {
        std::string xml;
        xmlHandler::instance().build(step.ldn, "1.0", step.names, step.types, step.values, xml);
        return xml;
    }
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<mim version=\"1.0\">\n<class ldn=\"" +
                      xmlEscape::encode(step.ldn) + "\">\n<action name=\"" + xmlEscape::encode(step.actionName) +
                      "\">\n";
    for (std::size_t i = 0; i < step.names.size(); ++i)
        xml += "<attr name=\"" + step.names[i] + "\" type=\"" + step.types[i] + "\" value=\"" + step.values[i] +
               "\"/>\n";
    return xml + "</action>\n</class>\n</mim>\n";
}

std::string requestOf(const MoStep& step, std::uint32_t transactionId, std::int32_t id)
{
    const std::uint32_t froType = fro_types::froType(Ldn::moType(step.ldn));
    const std::string block = blockOf(kXmlText, bodyOf(step));
    if (step.verb == "create") return word(MAOFRO_CREATE_REQ) + word(transactionId) + word(0) + word(froType) + word(2) + block;
    if (step.verb == "action")
        return word(MAOFRO_ACTION_REQ) + word(transactionId) + word(0) + word(0) + word(froType) + word(0) + word(2) + block;
    const ose::SIGSELECT sigNo = step.verb == "set" ? MAOFRO_SET_REQ : step.verb == "get" ? MAOFRO_GET_REQ : MAOFRO_DELETE_REQ;
    return word(sigNo) + word(transactionId) + word(static_cast<std::uint32_t>(id)) + word(0) + word(froType) + word(2) + block;
}

// Prints a get's or an action's attributes, one a line.
void printAttributes(const std::string& xml, std::ostream& out)
{
    xmlDocumentRecord record;
    if (!xmlHandler::instance().parse(xml, record)) {
        out << "  (unreadable answer)\n";
        return;
    }
    for (std::size_t i = 0; i < record.names.size(); ++i)
        out << "  " << record.names[i] << " (" << record.types[i] << ") = " << record.values[i] << "\n";
}

class MoSession {
public:
    MoSession(ose::GatewayClient& client, const std::string& databaseDir, std::ostream& out, std::ostream& err)
        : m_client(client), m_port(client), m_transactions(m_port), m_databaseDir(databaseDir), m_out(out), m_err(err)
    {
    }

    int run(const std::vector<MoStep>& steps, bool rollback);

private:
    bool findService();
    std::optional<std::string> ask(const std::string& request, ose::SIGSELECT answerNo);
    bool step(const MoStep& step);
    void watch(std::uint64_t ms);
    bool list();
    void printIndication(const std::string& bytes);

    ose::GatewayClient& m_client;
    GatewayTransactionPort m_port;
    VantoTransactionMgmtClient m_transactions;
    std::string m_databaseDir;
    std::ostream& m_out;
    std::ostream& m_err;
    ose::PROCESS m_service = 0;
    std::int32_t m_transactionId = 0;
    std::map<std::string, std::int32_t> m_ids; // made in this session
};

bool MoSession::findService()
{
    auto ns = m_client.hunt(name_server::kServerName, 0);
    const std::string name = kServiceName;
    std::string find = word(name_server::NS_FIND_SERVICE) + word(name_server::nameFieldSize(name.size())) + name;
    find.resize(8 + name_server::nameFieldSize(name.size()), '\0');
    if (!ns || *ns == 0 || !m_client.send(*ns, find)) return false;
    for (;;) {
        auto event = m_client.next(kAnswerWait);
        if (!event) return false;
        if (event->kind != ose::GatewayEvent::Kind::Signal || event->sigNo() != name_server::NS_FIND_SERVICE_REPLY) continue;
        m_service = wordAt(event->bytes, 4) == 0 ? wordAt(event->bytes, 8) : 0;
        return m_service != 0;
    }
}

std::optional<std::string> MoSession::ask(const std::string& request, ose::SIGSELECT answerNo)
{
    if (!m_client.send(m_service, request)) return std::nullopt;
    for (;;) {
        auto event = m_client.next(kAnswerWait);
        if (!event) return std::nullopt;
        if (event->kind == ose::GatewayEvent::Kind::Signal && event->sigNo() == answerNo) return event->bytes;
    }
}

bool MoSession::step(const MoStep& s)
{
    if (s.verb == "watch") {
        watch(s.watchMs);
        return true;
    }
    if (s.verb == "list") return list();
    std::int32_t id = s.id;
    if (id < 0 && m_ids.count(s.ldn) != 0) id = m_ids[s.ldn];
    const auto tid = static_cast<std::uint32_t>(s.verb == "action" ? 0 : m_transactionId);
    const ose::SIGSELECT answerNo = s.verb == "create" ? MAOFRO_CREATE_CFM : s.verb == "set" ? MAOFRO_SET_CFM
                                  : s.verb == "get"    ? MAOFRO_GET_CFM    : s.verb == "delete" ? MAOFRO_DELETE_CFM
                                                                                                 : MAOFRO_ACTION_CFM;
    if ((s.verb == "set" || s.verb == "delete") && id < 0) {
        m_err << "sscctl: " << s.verb << " " << s.ldn << ": the object's id is not known; give it as " << s.ldn
              << "#ID\n";
        return false;
    }
    auto answer = ask(requestOf(s, tid, id), answerNo);
    if (!answer) {
        m_err << "sscctl: no answer to " << s.verb << " " << s.ldn << "\n";
        return false;
    }
    const std::string& bytes = *answer;
    if (s.verb == "create") {
        const bool ok = wordAt(bytes, 12) == 0;
        if (ok) m_ids[s.ldn] = static_cast<std::int32_t>(wordAt(bytes, 8));
        if (ok) m_out << "created " << s.ldn << " (id " << wordAt(bytes, 8) << ")\n";
        else m_out << "create " << s.ldn << " refused: " << blockText(bytes, 20) << "\n";
        return ok;
    }
    const std::uint32_t result = wordAt(bytes, 8);
    if (s.verb == "set" || s.verb == "delete") {
        if (result == 0) m_out << (s.verb == "set" ? "set " : "deleted ") << s.ldn << "\n";
        else m_out << s.verb << " " << s.ldn << " refused: " << blockText(bytes, 16) << "\n";
        return result == 0;
    }
    if (result != 0) {
        m_out << s.verb << " " << s.ldn << (s.verb == "action" ? " " + s.actionName : std::string()) << " refused";
        if (s.verb == "action") {
            char code[16];
            std::snprintf(code, sizeof code, "0x%x", result);
            m_out << ", code " << code;
        }
        m_out << ": " << blockText(bytes, 16) << "\n";
        return false;
    }
    m_out << s.ldn << (s.verb == "action" ? " " + s.actionName + " done" : std::string()) << ":\n";
    printAttributes(blockText(bytes, 16), m_out);
    return true;
}

void MoSession::watch(std::uint64_t ms)
{
    for (const auto& cls : fro_types::kClasses) {
        std::string subscribe = word(MAOFRO_NOTIFY_SUBSCRIBE_REQ2) + word(1) + word(1) + word(cls.froType);
        m_client.send(m_service, subscribe);
    }
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    if (m_client.clockMode() != 0) m_client.advanceBy(ms);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        auto event = m_client.next(std::max(left, std::chrono::milliseconds(100)));
        if (!event) return;
        if (event->kind == ose::GatewayEvent::Kind::Signal) printIndication(event->bytes);
        if (m_client.clockMode() == 0 && left.count() <= 0) return;
    }
}

// Rows of a query, each column as text; false when it cannot be run.
bool queryRows(VantoDbHandles& handles, const std::string& sql, std::vector<std::vector<std::string>>& rows)
{
    if (!SQL_SUCCEEDED(SQLExecDirect(handles.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS))) {
        SQLFreeStmt(handles.stmt, SQL_CLOSE);
        return false;
    }
    SQLSMALLINT columns = 0;
    SQLNumResultCols(handles.stmt, &columns);
    while (SQL_SUCCEEDED(SQLFetch(handles.stmt))) {
        std::vector<std::string>& row = rows.emplace_back();
        for (SQLUSMALLINT c = 1; c <= columns; ++c) {
            char text[512] = {};
            SQLLEN indicator = 0;
            SQLGetData(handles.stmt, c, SQL_C_CHAR, text, sizeof text, &indicator);
            row.emplace_back(indicator == SQL_NULL_DATA ? "" : text);
        }
    }
    SQLFreeStmt(handles.stmt, SQL_CLOSE);
    return true;
}

// The committed objects, as the node's database holds them: read beside the
// node, without a request of the management interface.
bool MoSession::list()
{
    VantoDbHandles handles;
    handles.config.connectionString = VantoDb_defaultConnectionString(m_databaseDir);
    std::vector<std::vector<std::string>> classes;
    if (VantoDb_init(handles) != 1 || !queryRows(handles, "select * from apc_fro_versions order by frotype", classes)) {
        VantoDb_disconnect(handles);
        m_err << "sscctl: the node's database in " << m_databaseDir << " cannot be read\n";
        return false;
    }
    std::size_t count = 0;
    for (const auto& cls : classes) {
        std::vector<std::vector<std::string>> objects;
        // A class whose table was never made has no objects.
        if (cls.size() < 3 || !queryRows(handles, "select froid, ldn from " + cls[2] + " order by froid", objects))
            continue;
        for (const auto& object : objects) m_out << object[1] << " (id " << object[0] << ")\n";
        count += objects.size();
    }
    VantoDb_disconnect(handles);
    if (count == 0) m_out << "no objects\n";
    return true;
}

void MoSession::printIndication(const std::string& bytes)
{
    const ose::SIGSELECT sigNo = wordAt(bytes, 0);
    const std::uint32_t froId = wordAt(bytes, 4);
    std::size_t blockAt = 0;
    std::string what;
    if (sigNo == MAO_FRO_FAULT_IND) { blockAt = 24; what = "fault " + std::to_string(static_cast<std::int32_t>(wordAt(bytes, 12))); }
    else if (sigNo == MAO_FRO_FAULT_CEASED_IND) { blockAt = 20; what = "fault ceased " + std::to_string(static_cast<std::int32_t>(wordAt(bytes, 12))); }
    else if (sigNo == MAO_FRO_EVENT_IND) { blockAt = 20; what = "event " + std::to_string(static_cast<std::int32_t>(wordAt(bytes, 12))); }
    else if (sigNo == MAO_FRO_PARAMETER_CHD_IND) { blockAt = 16; what = "changed"; }
    else return;
    xmlDocumentRecord record;
    const std::string xml = blockText(bytes, blockAt);
    xmlHandler::instance().parse(xml, record);
    m_out << what << " on " << (record.ldn.empty() ? "id " + std::to_string(froId) : record.ldn) << "\n";
    for (std::size_t i = 0; i < record.names.size(); ++i)
        m_out << "  " << record.names[i] << " = " << record.values[i] << "\n";
}

int MoSession::run(const std::vector<MoStep>& steps, bool rollback)
{
    if (!findService()) {
        m_err << "sscctl: the node has not published " << kServiceName << "\n";
        return m_client.isConnected() ? kNotFound : kNoNode;
    }
    if (m_transactions.create(m_transactionId) != vanto_trans::TransResult::Ok) {
        m_err << "sscctl: no transaction could be opened\n";
        return m_client.isConnected() ? kNotFound : kNoNode;
    }
    bool allDone = true;
    for (const MoStep& s : steps) allDone = step(s) && allDone;
    const auto result = rollback ? m_transactions.rollback(m_transactionId) : m_transactions.commit(m_transactionId);
    const bool ended = result == vanto_trans::TransResult::Ok;
    m_out << (rollback ? "rolled back" : ended ? "committed" : "commit failed, rolled back") << "\n";
    return allDone && ended ? kDone : kNotFound;
}

} // namespace

bool checkMoSteps(const std::vector<std::string>& words, std::string& error)
{
    std::vector<MoStep> steps;
    return parseSteps(words, steps, error);
}

int runMo(const std::vector<std::string>& words, bool rollback, const std::string& databaseDir,
          ose::GatewayClient& client, std::ostream& out, std::ostream& err)
{
    std::vector<MoStep> steps;
    std::string error;
    if (!parseSteps(words, steps, error)) {
        err << "sscctl: " << error << "\n";
        return kUsage;
    }
    return MoSession(client, databaseDir, out, err).run(steps, rollback);
}

} // namespace app
