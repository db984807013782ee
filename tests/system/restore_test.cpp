// The objects of the last run come back when a node starts again on its data
// directory, seen only through the gateway and the node's database: after a
// clean stop and after a kill in the middle of a stream of management
// transactions a new node serves exactly what was committed, and the database
// holds exactly that; a database that cannot be opened, and rows that cannot
// be read back, are traced and the node runs on.

#include "platform/VantoDb.h"
#include "platform/testSupport/odbcQuery.h"
#include "tests/system/MaoFroClient.h"
#include "tests/system/NodeProcess.h"

#include "ose/BigEndian.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <set>

namespace systemtest {
namespace {

constexpr std::uint32_t kCabinet = 0x7040000, kHwUnit = 0x7040002, kPowerSupply = 0x7040009;
constexpr std::uint32_t kNoClass = 0x704000D; // within the range of the classes, but none of them
// Alarm ports belong to a unit; an SCU needs no other object to exist.
constexpr const char* kUnitLdn = "HwUnit=SCU-1";

using namespace maofro;

// ---- the node's database, read and written beside it ----------------------

odbc_query::Rows query(const std::string& dataDir, const std::string& sql)
{
    VantoDbHandles probe;
    VantoDbConfig config;
    config.connectionString = VantoDb_defaultConnectionString(dataDir);
    auto rows = odbc_query::run(probe, config, sql);
    VantoDb_disconnect(probe);
    return rows;
}

bool tableExists(const std::string& dataDir, const std::string& table)
{
    return !query(dataDir, "select name from sqlite_master where type = 'table' and lower(name) = lower('" + table +
                               "')")
                .empty();
}

// ---- the trace ---------------------------------------------------------------

// The texts of the error lines: "[time] node/process group level file:line text".
std::vector<std::string> errorLines(const std::string& trace, const std::string& ofProcess = "")
{
    std::vector<std::string> errors;
    std::istringstream lines(trace);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t end = line.find("] ");
        if (line.empty() || line[0] != '[' || end == std::string::npos) continue;
        std::istringstream fields(line.substr(end + 2));
        std::string process, group, level, where, text;
        fields >> process >> group >> level >> where;
        std::getline(fields, text);
        if (level == "1" && process.find(ofProcess) != std::string::npos) errors.push_back(text);
    }
    return errors;
}

// An error line that holds all these parts.
bool hasError(const std::string& trace, std::initializer_list<std::string> parts)
{
    for (const std::string& text : errorLines(trace)) {
        bool all = true;
        for (const std::string& part : parts) all = all && text.find(part) != std::string::npos;
        if (all) return true;
    }
    return false;
}

// ---- a stream of transactions and what the client was told ------------------

struct AttributeKind {
    const char* name;
    const char* type; // "S32", "U32", "STRING" or "struct"
};

struct ObjectClass {
    const char* name;
    std::uint32_t froType;
    std::string parent; // the ldn that an object of the class lives below, with its comma
    // Attributes that only the management client writes: the status
    // attributes of the class defaults are the system's to change.
    std::vector<AttributeKind> attributes;
};

const std::vector<ObjectClass>& streamClasses()
{
    static const std::vector<ObjectClass> classes = {
        {"Cabinet", kCabinet, "", {{"climateControlMode", "S32"}, {"userLabel", "STRING"}}},
        {"FanGroup", 0x7040001, "", {{"userLabel", "STRING"}}},
        {"AlarmPort", 0x7040003, std::string(kUnitLdn) + ",", {{"normallyOpen", "S32"}, {"alarmSlogan", "STRING"}}},
        {"ControlPort", 0x7040004, "", {{"userLabel", "STRING"}, {"pulseLength", "U32"}}},
        {"PowerDistribution",
         0x7040008,
         "",
         {{"mainLoadUndervoltageDisconnect", "S32"},
          {"priorityLoadUndervoltageDisconnect", "S32"},
          {"undervoltageDisconnectCeaseOffset", "U32"}}},
        {"PowerSupply",
         kPowerSupply,
         "",
         {{"nominalVoltage", "S32"}, {"systemOvervoltageAlarmLevel", "S32"}, {"systemUndervoltageAlarmLevel", "S32"}}},
        {"EquipmentSupportFunction",
         0x704000A,
         "",
         {{"logicalName", "STRING"}, {"radioAccessTechnology", "S32"}, {"productData", "struct"}}},
    };
    return classes;
}

// The text as it travels and is stored: escaped once.
std::string escaped(const std::string& raw)
{
    std::string text;
    for (char c : raw) {
        switch (c) {
        case '&': text += "&amp;"; break;
        case '"': text += "&quot;"; break;
        case '\'': text += "&apos;"; break;
        case '<': text += "&lt;"; break;
        case '>': text += "&gt;"; break;
        default: text += c;
        }
    }
    return text;
}

struct Object {
    const ObjectClass* cls;
    std::uint32_t froId;
    std::map<std::string, std::string> values; // name to its text as it travels
};

// By ldn, the objects that a client holds for committed.
using Objects = std::map<std::string, Object>;

// One attribute element; a struct's value is its element already.
std::string element(const AttributeKind& kind, const std::string& value)
{
    if (std::string(kind.type) == "struct") return value;
    return "<attr name=\"" + std::string(kind.name) + "\" type=\"" + kind.type + "\" value=\"" + value + "\"/>\n";
}

std::string plainValue(const AttributeKind& kind)
{
    const std::string type = kind.type;
    if (type == "struct") return "<struct name=\"" + std::string(kind.name) + "\">\n</struct>\n";
    return type == "STRING" ? "plain" : "7";
}

// Every attribute of the class with a plain value: a class's table takes
// only objects with the columns of its first one.
std::string plainBody(const ObjectClass& cls)
{
    std::string body;
    for (const AttributeKind& kind : cls.attributes) body += element(kind, plainValue(kind));
    return body;
}

class Stream {
public:
    explicit Stream(std::uint32_t seed) : m_random(seed) {}

    // The unit that the alarm ports belong to, committed before the stream
    // and left alone by it.
    static void makeUnit(ManagementClient& manager)
    {
        const std::int32_t tid = manager.begin();
        const std::string scu = "<attr name=\"unitType\" type=\"STRING\" value=\"SCU\"/>\n";
        const auto made = manager.create(tid, kHwUnit, mim(kUnitLdn, scu));
        ASSERT_EQ(made.result, 0u) << made.text;
        ASSERT_TRUE(manager.commit(tid));
    }

    // Runs `count` transactions, each committed or (one in six) rolled back,
    // every answer checked.
    void run(ManagementClient& manager, int count)
    {
        for (int i = 0; i < count && !::testing::Test::HasFatalFailure(); ++i) {
            Objects next = m_committed;
            const std::int32_t tid = changes(manager, next);
            if (pick(6) == 0) {
                ASSERT_TRUE(manager.rollback(tid));
            } else {
                ASSERT_TRUE(manager.commit(tid)) << "transaction " << i;
                m_committed = std::move(next);
            }
        }
    }

    // One more transaction whose commit is asked for but not awaited.
    void leaveInFlight(ManagementClient& manager)
    {
        m_inFlight = m_committed;
        const std::int32_t tid = changes(manager, m_inFlight);
        ASSERT_TRUE(manager.commitWithoutWaiting(tid, pick(4)));
    }

    const Objects& committed() const { return m_committed; }
    const Objects& withInFlight() const { return m_inFlight; }
    // Every ldn that was ever used (created, rolled back or deleted), with
    // its class number.
    const std::map<std::string, std::uint32_t>& ldns() const { return m_ldns; }

private:
    // One to four changes on distinct objects in a new transaction.
    std::int32_t changes(ManagementClient& manager, Objects& next)
    {
        const std::int32_t tid = manager.begin();
        std::set<std::string> touched;
        const int count = 1 + pick(4);
        for (int i = 0; i < count; ++i) {
            const std::optional<std::string> target = untouched(next, touched);
            const int kind = target ? pick(8) : 0;
            if (kind < 4) create(manager, tid, next, touched);
            else if (kind < 7) set(manager, tid, *target, next, touched);
            else remove(manager, tid, *target, next, touched);
        }
        return tid;
    }

    void create(ManagementClient& manager, std::int32_t tid, Objects& next, std::set<std::string>& touched)
    {
        const ObjectClass& cls = streamClasses()[pick(static_cast<int>(streamClasses().size()))];
        const std::string ldn = cls.parent + cls.name + "=" + std::to_string(++m_instances);
        Object object{&cls, 0, {}};
        std::string body;
        for (const AttributeKind& kind : cls.attributes) {
            object.values[kind.name] = value(kind);
            body += element(kind, object.values[kind.name]);
        }
        const auto made = manager.create(tid, cls.froType, mim(ldn, body));
        ASSERT_EQ(made.result, 0u) << ldn << ": " << made.text;
        object.froId = made.froId;
        next[ldn] = object;
        touched.insert(ldn);
        m_ldns[ldn] = cls.froType;
    }

    void set(ManagementClient& manager, std::int32_t tid, const std::string& ldn, Objects& next,
             std::set<std::string>& touched)
    {
        Object& object = next.at(ldn);
        std::string body;
        for (const AttributeKind& kind : object.cls->attributes) {
            if (pick(2) == 0 && !body.empty()) continue;
            object.values[kind.name] = value(kind);
            body += element(kind, object.values[kind.name]);
        }
        const auto done = manager.set(tid, object.froId, object.cls->froType, mim(ldn, body));
        ASSERT_EQ(done.result, 0u) << ldn << ": " << done.text;
        touched.insert(ldn);
    }

    void remove(ManagementClient& manager, std::int32_t tid, const std::string& ldn, Objects& next,
                std::set<std::string>& touched)
    {
        const Object& object = next.at(ldn);
        const auto done = manager.remove(tid, object.froId, object.cls->froType, ldn);
        ASSERT_EQ(done.result, 0u) << ldn << ": " << done.text;
        next.erase(ldn);
        touched.insert(ldn);
    }

    // A committed object that this transaction has not touched yet.
    std::optional<std::string> untouched(const Objects& next, const std::set<std::string>& touched)
    {
        std::vector<std::string> free;
        for (const auto& [ldn, object] : next)
            if (!touched.count(ldn) && m_committed.count(ldn)) free.push_back(ldn);
        if (free.empty()) return std::nullopt;
        return free[pick(static_cast<int>(free.size()))];
    }

    std::string value(const AttributeKind& kind)
    {
        const std::string type = kind.type;
        if (type == "S32") {
            static constexpr std::int32_t edges[] = {INT32_MIN, INT32_MAX, 0, -1};
            return std::to_string(pick(4) == 0 ? edges[pick(4)] : pick(2001) - 1000);
        }
        if (type == "U32") {
            static constexpr std::uint32_t edges[] = {0u, 0x80000000u, 0xFFFFFFFFu, 4000000000u};
            return std::to_string(pick(4) == 0 ? edges[pick(4)] : static_cast<std::uint32_t>(pick(100000)));
        }
        if (type == "STRING") return escaped(text());
        std::string members;
        for (const char* member : {"productionDate", "productName", "productNumber", "productRevision", "serialNumber"})
            members += element({member, "STRING"}, escaped(text()));
        return "<struct name=\"" + std::string(kind.name) + "\">\n" + members + "</struct>\n";
    }

    // Up to 12 characters, with every character that needs escaping.
    std::string text()
    {
        static const std::string alphabet = "abcXYZ019 -_/&<>\"'";
        std::string raw;
        for (int n = pick(13); n > 0; --n) raw += alphabet[pick(static_cast<int>(alphabet.size()))];
        return raw;
    }

    int pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(m_random); }

    std::mt19937 m_random;
    Objects m_committed;
    Objects m_inFlight;
    std::map<std::string, std::uint32_t> m_ldns;
    int m_instances = 0;
};

// What the class tables hold of these classes, in the form of the objects.
Objects storedObjects(const std::string& dataDir)
{
    Objects stored;
    for (const ObjectClass& cls : streamClasses()) {
        const std::string table = std::string("apc_frodata_") + cls.name + "_INITIAL";
        if (!tableExists(dataDir, table)) continue;
        std::string columns = "froid, ldn";
        for (const AttributeKind& kind : cls.attributes) columns += std::string(", ") + kind.name;
        for (const auto& row : query(dataDir, "select " + columns + " from " + table + " order by froid")) {
            Object object{&cls, static_cast<std::uint32_t>(std::stoul(row[0])), {}};
            for (std::size_t i = 0; i < cls.attributes.size(); ++i)
                object.values[cls.attributes[i].name] = row[i + 2];
            stored[row[1]] = object;
        }
    }
    return stored;
}

// Where two sets of objects part, in words; empty when they are the same.
std::string differences(const Objects& expected, const Objects& actual)
{
    std::ostringstream out;
    for (const auto& [ldn, object] : expected) {
        const auto found = actual.find(ldn);
        if (found == actual.end()) {
            out << "  " << ldn << " missing\n";
            continue;
        }
        const Object& other = found->second;
        if (other.froId != object.froId)
            out << "  " << ldn << " has id " << other.froId << ", not " << object.froId << "\n";
        for (const auto& [name, value] : object.values)
            if (other.values.at(name) != value)
                out << "  " << ldn << " " << name << " = [" << other.values.at(name) << "], not [" << value << "]\n";
    }
    for (const auto& [ldn, object] : actual)
        if (!expected.count(ldn)) out << "  " << ldn << " should not be there\n";
    return out.str();
}

// The names of an object's attributes in the text of a get, sorted: those
// of the class element, not the members of a struct or array.
std::string attributeNames(const std::string& xml)
{
    std::vector<std::string> names;
    int depth = 0;
    std::istringstream lines(xml);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("</struct", 0) == 0 || line.rfind("</array", 0) == 0 || line.rfind("</moref", 0) == 0) {
            --depth;
            continue;
        }
        const bool opens =
            line.rfind("<struct", 0) == 0 || line.rfind("<array", 0) == 0 || line.rfind("<moref", 0) == 0;
        const std::size_t name = line.find("name=\"");
        if (depth == 0 && (opens || line.rfind("<attr", 0) == 0) && name != std::string::npos)
            names.push_back(line.substr(name + 6, line.find('"', name + 6) - name - 6));
        if (opens) ++depth;
    }
    std::sort(names.begin(), names.end());
    std::string joined;
    for (const std::string& name : names) joined += name + " ";
    return joined;
}

// The attribute names that each committed object is served with.
std::map<std::string, std::string> servedNames(ManagementClient& manager, const Objects& objects)
{
    std::map<std::string, std::string> names;
    for (const auto& [ldn, object] : objects) names[ldn] = attributeNames(manager.get(object.cls->froType, ldn).text);
    return names;
}

// The objects whose get does not give what the client was told: present ones
// with all their values and the attributes they had before, the others
// refused.
std::string servedDifferently(ManagementClient& manager, const Stream& stream, const Objects& expected,
                              const std::map<std::string, std::string>& namesBefore)
{
    std::ostringstream out;
    for (const auto& [ldn, froType] : stream.ldns()) {
        const auto answer = manager.get(froType, ldn);
        const auto object = expected.find(ldn);
        if (object == expected.end()) {
            if (answer.result == 0) out << "  " << ldn << " is served, but was never committed or was deleted\n";
            continue;
        }
        if (answer.result != 0) {
            out << "  " << ldn << " is refused: " << answer.text << "\n";
            continue;
        }
        for (const AttributeKind& kind : object->second.cls->attributes) {
            const std::string wanted = element(kind, object->second.values.at(kind.name));
            if (answer.text.find(wanted) == std::string::npos)
                out << "  " << ldn << " lacks " << wanted << "    in " << answer.text << "\n";
        }
        const auto before = namesBefore.find(ldn);
        if (before != namesBefore.end() && before->second != attributeNames(answer.text))
            out << "  " << ldn << " has the attributes [" << attributeNames(answer.text) << "], before the restart ["
                << before->second << "]\n";
    }
    return out.str();
}

enum class Ending { Stop, Kill };

// A stream of transactions on a node, the node ended in the middle of one,
// and a new node on the same data directory.
void restartInTheMiddleOfAStream(std::uint32_t seed, Ending ending)
{
    SCOPED_TRACE("stream seed " + std::to_string(seed));
    std::mt19937 lengths(seed);
    NodeProcess first({"--clock", "virtual"});
    Stream stream(seed);
    std::map<std::string, std::string> namesBefore;
    {
        ManagementClient manager(first);
        Stream::makeUnit(manager);
        ASSERT_FALSE(::testing::Test::HasFatalFailure());
        stream.run(manager, 24 + static_cast<int>(lengths() % 12));
        ASSERT_FALSE(::testing::Test::HasFatalFailure());
        namesBefore = servedNames(manager, stream.committed());
        stream.leaveInFlight(manager);
        ASSERT_FALSE(::testing::Test::HasFatalFailure());
        if (ending == Ending::Stop) EXPECT_EQ(first.stop(), 0) << "SIGTERM stops the node cleanly";
        else EXPECT_EQ(first.kill(), 128 + SIGKILL);
    }

    // The transaction in flight is in the database whole or not at all.
    const Objects stored = storedObjects(first.dataDir());
    const std::string without = differences(stream.committed(), stored);
    const std::string with = differences(stream.withInFlight(), stored);
    ASSERT_TRUE(without.empty() || with.empty()) << "the database holds neither the committed objects:\n"
                                                 << without << "nor those and the transaction in flight:\n" << with;
    const Objects& expected = without.empty() ? stream.committed() : stream.withInFlight();

    NodeProcess second(first.dataDir(), {"--clock", "virtual"});
    ManagementClient manager(second);
    const auto unit = manager.get(kHwUnit, kUnitLdn);
    EXPECT_EQ(unit.result, 0u) << "the alarm ports' unit did not come back: " << unit.text;
    const std::string served = servedDifferently(manager, stream, expected, namesBefore);
    EXPECT_TRUE(served.empty()) << "after the restart the objects are served differently:\n" << served;
    EXPECT_EQ(differences(expected, storedObjects(second.dataDir())), "") << "the restart changed the database";

    // The objects have their stored ids again: a delete by id reaches its
    // object, and new objects take ids that no restored object has.
    std::map<std::uint32_t, std::set<std::uint32_t>> idsInUse;
    std::map<std::uint32_t, std::string> deletedOfClass;
    const std::int32_t tid = manager.begin();
    for (const auto& [ldn, object] : expected) {
        idsInUse[object.cls->froType].insert(object.froId);
        if (deletedOfClass.count(object.cls->froType)) continue;
        deletedOfClass[object.cls->froType] = ldn;
        EXPECT_EQ(manager.remove(tid, object.froId, object.cls->froType, ldn).result, 0u) << ldn;
    }
    std::map<std::string, std::uint32_t> made;
    for (const ObjectClass& cls : streamClasses()) {
        const std::string ldn = cls.parent + cls.name + "=after";
        const auto answer = manager.create(tid, cls.froType, mim(ldn, plainBody(cls)));
        EXPECT_EQ(answer.result, 0u) << ldn << ": " << answer.text;
        made[ldn] = answer.froId;
        EXPECT_EQ(idsInUse[cls.froType].count(answer.froId), 0u) << ldn << " took the id of a restored object";
    }
    EXPECT_TRUE(manager.commit(tid)) << "the commit after the restart";
    const Objects after = storedObjects(second.dataDir());
    for (const auto& [froType, ldn] : deletedOfClass) {
        EXPECT_EQ(after.count(ldn), 0u) << ldn << " deleted by its id is still stored";
        EXPECT_NE(manager.get(froType, ldn).result, 0u) << ldn << " deleted by its id is still served";
    }
    for (const auto& [ldn, froId] : made) {
        const auto found = after.find(ldn);
        EXPECT_TRUE(found != after.end() && found->second.froId == froId)
            << ldn << " is not stored with its id " << froId;
    }
}

TEST(RestoreSystemTest, ANodeStoppedInAStreamOfTransactionsComesBackWithExactlyWhatWasCommitted)
{
    restartInTheMiddleOfAStream(20240611, Ending::Stop);
}

TEST(RestoreSystemTest, ANodeKilledInAStreamOfTransactionsComesBackWithExactlyWhatWasCommitted)
{
    restartInTheMiddleOfAStream(7129, Ending::Kill);
}

// ---- a database that cannot be used ---------------------------------------

// The node is up without its database: its start ends with the reason in the
// trace, naming the database; the management service answers and refuses
// what it cannot store.
void runsWithoutItsDatabase(NodeProcess& node, const std::string& trace, const std::string& database)
{
    ManagementClient manager(node);
    const std::string atStart = readFile(trace);
    // Named once by the object process, however often it tried.
    const auto errors = errorLines(atStart, "support_system_control_thread");
    EXPECT_EQ(std::count_if(errors.begin(), errors.end(),
                            [&](const std::string& text) { return text.find(database) != std::string::npos; }),
              1)
        << "no single error at start names " << database << ":\n" << atStart.substr(0, 2000);
    const auto absent = manager.get(kCabinet, "Cabinet=1");
    EXPECT_EQ(absent.result, 1u);
    EXPECT_EQ(absent.text, "Fro does not exist in froMgr, returning false for getfRO().");
    const std::int32_t tid = manager.begin();
    const auto refused = manager.create(tid, kCabinet, mim("Cabinet=1", ""));
    EXPECT_EQ(refused.result, 1u);
    EXPECT_EQ(refused.text, "Couldn not save fRO Cabinet=1 to the database.");
    EXPECT_TRUE(node.isRunning());
}

TEST(RestoreSystemTest, ADatabaseThatCannotBeOpenedIsTracedAndTheNodeRunsWithoutIt)
{
    const std::string impossible = "/dev/null/ssc.db";
    const std::string nowhere = traceFile("nowhere.trace");
    NodeProcess first({"--clock", "virtual", "--trace-file", nowhere, "--odbc",
                       std::string("DRIVER=") + kVantoDbSqliteDriver + ";Database=" + impossible + ";Timeout=5000"});
    {
        SCOPED_TRACE("a database file that cannot be made");
        runsWithoutItsDatabase(first, nowhere, impossible);
    }
    first.stop();
    const std::string database = first.dataDir() + "/ssc.db";
    std::filesystem::remove_all(database);

    std::filesystem::create_directory(database);
    const std::string directory = traceFile("directory.trace");
    {
        SCOPED_TRACE("a directory in place of the database file");
        NodeProcess node(first.dataDir(), {"--clock", "virtual", "--trace-file", directory});
        runsWithoutItsDatabase(node, directory, database);
    }
    std::filesystem::remove_all(database);

    const std::string garbage = "not a database " + std::string(4096, '\x5a');
    std::ofstream(database, std::ios::binary) << garbage;
    const std::string noise = traceFile("garbage.trace");
    {
        SCOPED_TRACE("garbage in the database file");
        NodeProcess node(first.dataDir(), {"--clock", "virtual", "--trace-file", noise});
        runsWithoutItsDatabase(node, noise, database);
    }
    EXPECT_EQ(readFile(database), garbage) << "the unreadable file was changed";
}

// ---- rows that cannot be read back -------------------------------------------

TEST(RestoreSystemTest, RowsThatCannotBeReadBackAreTracedAndTheOtherObjectsComeBack)
{
    const ObjectClass& cabinet = streamClasses()[0];
    const ObjectClass& supply = streamClasses()[5];
    const ObjectClass& function = streamClasses()[6];
    NodeProcess first({"--clock", "virtual"});
    {
        ManagementClient manager(first);
        const std::int32_t tid = manager.begin();
        for (const char* ldn : {"Cabinet=1", "Cabinet=2", "Cabinet=3"})
            ASSERT_EQ(manager.create(tid, kCabinet, mim(ldn, plainBody(cabinet))).result, 0u) << ldn;
        ASSERT_EQ(manager.create(tid, supply.froType, mim("PowerSupply=1", plainBody(supply))).result, 0u);
        const std::string esf = mim("EquipmentSupportFunction=1", plainBody(function));
        ASSERT_EQ(manager.create(tid, function.froType, esf).result, 0u);
        ASSERT_TRUE(manager.commit(tid));
    }
    first.stop();

    // A value that breaks the object's text, under an id of its own; and an
    // object of a class number that no class has, with its table.
    const std::string dir = first.dataDir();
    query(dir, "update apc_frodata_Cabinet_INITIAL set userLabel = 'broken \"text <', froid = 4321 "
               "where ldn = 'Cabinet=2'");
    query(dir, "insert into apc_fro_versions (frotype, froTypeName, frodataTableName) values (" +
                   std::to_string(kNoClass) + ", 'Gadget', 'apc_frodata_Gadget_INITIAL')");
    query(dir, "create table apc_frodata_Gadget_INITIAL (froid integer, ldn varchar(0) not null, primary key(froid))");
    query(dir, "insert into apc_frodata_Gadget_INITIAL (froid, ldn) values (4322, 'Gadget=7')");

    const std::string trace = traceFile("unreadable.trace");
    NodeProcess second(dir, {"--clock", "virtual", "--trace-file", trace});
    ManagementClient manager(second);
    for (const auto& [cls, ldn] : std::vector<std::pair<const ObjectClass*, std::string>>{
             {&cabinet, "Cabinet=1"}, {&cabinet, "Cabinet=3"}, {&supply, "PowerSupply=1"},
             {&function, "EquipmentSupportFunction=1"}}) {
        const auto back = manager.get(cls->froType, ldn);
        EXPECT_EQ(back.result, 0u) << ldn << " did not come back: " << back.text;
        for (const AttributeKind& kind : cls->attributes)
            EXPECT_NE(back.text.find(element(kind, plainValue(kind))), std::string::npos) << ldn << ": " << back.text;
    }
    EXPECT_NE(manager.get(kCabinet, "Cabinet=2").result, 0u) << "the unreadable object is served";
    EXPECT_NE(manager.get(kNoClass, "Gadget=7").result, 0u) << "an object of no class is served";
    // The node goes on taking changes.
    const std::int32_t tid = manager.begin();
    const auto made = manager.create(tid, kCabinet, mim("Cabinet=4", plainBody(cabinet)));
    EXPECT_EQ(made.result, 0u) << made.text;
    EXPECT_TRUE(manager.commit(tid));
    EXPECT_EQ(query(dir, "select ldn from apc_frodata_Cabinet_INITIAL where froid = " + std::to_string(made.froId)),
              (odbc_query::Rows{{"Cabinet=4"}}));
    EXPECT_TRUE(second.isRunning());

    const std::string text = readFile(trace);
    EXPECT_TRUE(hasError(text, {"4321", "0x07040000"}) || hasError(text, {"4321", std::to_string(kCabinet)}))
        << "the unreadable row is not named in an error:\n" << text.substr(0, 4000);
    EXPECT_TRUE(hasError(text, {"Gadget=7"}) || hasError(text, {"4322", "0x0704000d"}) ||
                hasError(text, {"4322", std::to_string(kNoClass)}))
        << "the object of no class is not named in an error:\n" << text.substr(0, 4000);
    // Nothing is deleted: the rows wait for someone to mend them.
    EXPECT_EQ(query(dir, "select count(*) from apc_frodata_Cabinet_INITIAL where froid = 4321"),
              (odbc_query::Rows{{"1"}}));
    EXPECT_EQ(query(dir, "select count(*) from apc_frodata_Gadget_INITIAL"), (odbc_query::Rows{{"1"}}));
}

// ---- the controllers after a restart ----------------------------------------

// A restored unit gets its device groups again, and a restored alarm port is
// filtered as before: unlocking it with its input active raises its alarm.
TEST(RestoreSystemTest, RestoredUnitsGetTheirGroupsAndRestoredPortsRaiseTheirAlarms)
{
    constexpr std::uint32_t kAlarmPort = 0x7040003, kDeviceGroup = 0x704000C;
    constexpr std::uint32_t kSubscribeReq = 0xB0024, kFaultInd = 0xB0070;
    const std::string unit = "Cabinet=1,HwUnit=SAU1", port = unit + ",AlarmPort=1";
    NodeProcess first({"--clock", "virtual"});
    std::uint32_t portId = 0;
    {
        ManagementClient manager(first);
        const std::int32_t tid = manager.begin();
        ASSERT_EQ(manager.create(tid, kCabinet, mim("Cabinet=1", "")).result, 0u);
        ASSERT_EQ(manager.create(tid, kHwUnit,
                                 mim(unit, attr("unitType", "STRING", "SAU") + attr("administrativeState", "S32", "1")))
                      .result,
                  0u);
        const auto made = manager.create(tid, kAlarmPort,
                                         mim(port, attr("administrativeState", "S32", "0") +
                                                       attr("activeExternalAlarm", "S32", "1")));
        ASSERT_EQ(made.result, 0u) << made.text;
        portId = made.froId;
        ASSERT_TRUE(manager.commit(tid));
    }
    first.stop();

    NodeProcess second(first.dataDir(), {"--clock", "virtual"});
    ManagementClient manager(second);
    for (const char* group : {",DeviceGroup=0", ",DeviceGroup=1"}) {
        const auto back = manager.get(kDeviceGroup, unit + group);
        EXPECT_EQ(back.result, 0u) << group << ": " << back.text;
        EXPECT_NE(back.text.find("name=\"parentObjectType\" type=\"STRING\" value=\"SAU\""), std::string::npos)
            << back.text;
    }
    ose::GatewayClient watcher;
    ASSERT_TRUE(watcher.connect(second.socketPath(), "watcher"));
    ASSERT_TRUE(watcher.send(manager.service(), word(kSubscribeReq) + word(1) + word(7) + word(kAlarmPort)));
    const std::int32_t tid = manager.begin();
    const auto unlocked = manager.set(tid, portId, kAlarmPort, mim(port, attr("administrativeState", "S32", "1")));
    ASSERT_EQ(unlocked.result, 0u) << unlocked.text;
    ASSERT_TRUE(manager.commit(tid));
    const auto fault = nextOf(watcher, kFaultInd);
    ASSERT_TRUE(fault.has_value()) << "the restored port raised nothing";
    EXPECT_EQ(wordAt(fault->bytes, 4), portId);
    EXPECT_EQ(wordAt(fault->bytes, 12), 4097u);
}

} // namespace
} // namespace systemtest
