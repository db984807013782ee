// A management client of the node, written from the gateway document alone:
// it finds the management service at the name server, opens transactions at
// the transaction server and creates, sets, gets, deletes and acts on
// managed objects with MAOFRO signals; the database holds exactly what was
// committed.

#include "app/SscctlCommand.h"
#include "platform/VantoDb.h"
#include "platform/testSupport/odbcQuery.h"
#include "tests/system/MaoFroClient.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/Sscctl.h"
#include "tests/system/SignalBytes.h"

#include "ose/BigEndian.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <sstream>

namespace systemtest {
namespace {

constexpr std::uint32_t kActionNoCfmReq = 0xB0073, kActionReq = 0xB0077, kActionCfm = 0xB0078,
                        kInServiceReq = 0xB0021, kInServiceCfm = 0xB0022;
constexpr std::uint32_t kCabinet = 0x7040000, kHwUnit = 0x7040002, kAlarmPort = 0x7040003, kEcPort = 0x7040006,
                        kPowerSupply = 0x7040009;
constexpr std::uint32_t kSubscribeReq = 0xB0024, kFaultInd = 0xB0070, kFaultCeasedInd = 0xB0071;

using namespace maofro;

odbc_query::Rows stored(const NodeProcess& node, const std::string& sql)
{
    VantoDbHandles probe;
    VantoDbConfig config;
    config.connectionString = VantoDb_defaultConnectionString(node.dataDir());
    auto rows = odbc_query::run(probe, config, sql);
    VantoDb_disconnect(probe);
    return rows;
}

// Every stored object of every class, as "table:count".
std::vector<std::string> storedObjects(const NodeProcess& node)
{
    std::vector<std::string> counts;
    for (const auto& table : stored(node, "select name from sqlite_master where name like 'apc_frodata_%' order by name"))
        counts.push_back(table[0] + ":" + stored(node, "select count(*) from " + table[0])[0][0]);
    return counts;
}

bool contains(const std::string& text, const std::string& words) { return text.find(words) != std::string::npos; }

TEST(ManagementSystemTest, CreateSetGetDeleteInCommittedAndRolledBackTransactions)
{
    NodeProcess node({"--clock", "virtual"});
    ManagementClient manager(node);

    const std::int32_t first = manager.begin();
    const auto cabinet = manager.create(first, kCabinet,
                                        mim("Cabinet=1", attr("cabinetIdentifier", "STRING", "north") +
                                                             attr("smokeDetector", "S32", "1")));
    ASSERT_EQ(cabinet.result, 0u) << cabinet.text;
    // Seen in its transaction, not outside it, until the commit.
    EXPECT_EQ(manager.get(kCabinet, "Cabinet=1").result, 1u);
    ASSERT_TRUE(manager.commit(first));
    const auto afterCommit = manager.get(kCabinet, "Cabinet=1");
    EXPECT_EQ(afterCommit.result, 0u) << afterCommit.text;
    EXPECT_TRUE(contains(afterCommit.text, "name=\"cabinetIdentifier\" type=\"STRING\" value=\"north\""))
        << afterCommit.text;

    const std::int32_t second = manager.begin();
    const std::string setCfm = manager.ask(request(kSetReq, static_cast<std::uint32_t>(second), cabinet.froId, kCabinet,
                                                   mim("Cabinet=1", attr("smokeDetector", "S32", "0"))),
                                           kSetCfm);
    EXPECT_EQ(wordAt(setCfm, 8), 0u) << textAt(setCfm, 16);
    const auto gone = manager.create(second, kCabinet, mim("Cabinet=2", ""));
    ASSERT_EQ(gone.result, 0u) << gone.text;
    ASSERT_TRUE(manager.rollback(second));
    EXPECT_TRUE(contains(manager.get(kCabinet, "Cabinet=1").text, "name=\"smokeDetector\" type=\"S32\" value=\"1\""));
    EXPECT_EQ(manager.get(kCabinet, "Cabinet=2").result, 1u);

    const std::int32_t third = manager.begin();
    const std::string deleteCfm =
        manager.ask(request(kDeleteReq, static_cast<std::uint32_t>(third), cabinet.froId, kCabinet, mim("Cabinet=1", "")),
                    kDeleteCfm);
    EXPECT_EQ(wordAt(deleteCfm, 8), 0u) << textAt(deleteCfm, 16);
    // An object that exists nowhere is deleted without a word.
    const std::string nothing =
        manager.ask(request(kDeleteReq, static_cast<std::uint32_t>(third), 77, kCabinet, mim("Cabinet=77", "")), kDeleteCfm);
    EXPECT_EQ(wordAt(nothing, 8), 0u);
    const auto classDefaults = manager.create(third, kCabinet, mim("Cabinet=3", ""));
    ASSERT_EQ(classDefaults.result, 0u);
    ASSERT_TRUE(manager.commit(third));

    EXPECT_EQ(manager.get(kCabinet, "Cabinet=1").result, 1u);
    EXPECT_TRUE(contains(manager.get(kCabinet, "Cabinet=3").text, "name=\"smokeDetector\" type=\"S32\" value=\"0\""));
    EXPECT_EQ(stored(node, "select count(*) from apc_frodata_cabinet_initial"), (odbc_query::Rows{{"1"}}));
    // The row holds the object, not the state of the transaction that made it.
    EXPECT_EQ(stored(node, "select count(*) from pragma_table_info('apc_frodata_Cabinet_INITIAL') where "
                           "name = 'TransState'"),
              (odbc_query::Rows{{"0"}}));
    EXPECT_FALSE(contains(manager.get(kCabinet, "Cabinet=3").text, "TransState"));
}

TEST(ManagementSystemTest, BadRequestsAreRefusedWithTheirTextsAndNothingIsStored)
{
    NodeProcess node({"--clock", "virtual"});
    ManagementClient manager(node);
    const std::int32_t tid = manager.begin();
    const auto refused = [&](const std::string& bytes) {
        const std::string cfm = manager.ask(bytes, kCreateCfm);
        EXPECT_EQ(wordAt(cfm, 12), 1u);
        return textAt(cfm, 20);
    };
    const auto t = static_cast<std::uint32_t>(tid);
    EXPECT_EQ(refused(request(kCreateReq, t, 0, kCabinet, mim("Cabinet=1", ""), 3)), "Failed to extract XML data.");
    EXPECT_EQ(refused(request(kCreateReq, t, 0, kCabinet, mim("Cabinet=1", ""), 2, 9)), "Failed to extract XML data.");
    EXPECT_EQ(refused(request(kCreateReq, t, 0, kCabinet, "<mim><class ldn=")), "Failed to read XML data.");
    std::string unterminated = request(kCreateReq, t, 0, kCabinet, mim("Cabinet=1", ""));
    unterminated.resize(unterminated.size() - 8); // the text ends without its NUL
    EXPECT_EQ(refused(unterminated), "Failed to extract XML data.");
    std::string pastTheEnd = request(kCreateReq, t, 0, kCabinet, mim("Cabinet=1", ""));
    ose::storeBe32(pastTheEnd.data() + 28, 0x7fffffff); // a length far beyond the signal, and no NUL
    for (std::size_t i = 32; i < pastTheEnd.size(); ++i)
        if (pastTheEnd[i] == '\0') pastTheEnd[i] = ' ';
    EXPECT_EQ(refused(pastTheEnd), "Failed to extract XML data.");
    EXPECT_EQ(refused(word(kCreateReq) + word(t)), "Failed to extract XML data.");
    EXPECT_TRUE(contains(refused(request(kCreateReq, t, 0, 0x7040077, mim("Gadget=1", ""))), "Failed to create FRO"));
    EXPECT_TRUE(contains(refused(request(kCreateReq, t, 0, kCabinet,
                                         mim("Cabinet=1", attr("smokeDetector", "S32", "many")))),
                         "Cabinet=1"));
    // A PSU needs its power supply, which may come in the same transaction.
    const std::string psu = mim("Cabinet=1,HwUnit=PSU-1", attr("unitType", "STRING", "PSU"));
    EXPECT_EQ(refused(request(kCreateReq, t, 0, kHwUnit, psu)), "Create requirements not fulfilled for HwUnit");
    EXPECT_EQ(refused(request(kCreateReq, t, 0, kHwUnit, mim("HwUnit=X", attr("unitType", "STRING", "XYZ")))),
              "Unknown Unit Type.");
    ASSERT_TRUE(manager.commit(tid));
    for (const std::string& count : storedObjects(node)) EXPECT_TRUE(contains(count, ":0")) << count;

    const std::int32_t together = manager.begin();
    EXPECT_EQ(manager.create(together, kPowerSupply, mim("PowerSupply=1", "")).result, 0u);
    const auto unit = manager.create(together, kHwUnit, psu);
    EXPECT_EQ(unit.result, 0u) << unit.text;
    EXPECT_TRUE(manager.commit(together));
    EXPECT_EQ(manager.get(kHwUnit, "Cabinet=1,HwUnit=PSU-1").result, 0u);

    // One EC port per hub position; a battery fuse unit needs its battery;
    // the power supply stays while a unit uses it, unless the unit goes too.
    const std::int32_t port = manager.begin();
    const std::string ecPort = attr("hubPosition", "STRING", "A2");
    EXPECT_EQ(manager.create(port, kEcPort, mim("Cabinet=1,HwUnit=PSU-1,EcPort=1", ecPort)).result, 0u);
    ASSERT_TRUE(manager.commit(port));
    const std::int32_t rules = manager.begin();
    const auto r = static_cast<std::uint32_t>(rules);
    EXPECT_EQ(refused(request(kCreateReq, r, 0, kEcPort, mim("Cabinet=1,EcPort=2", ecPort))),
              "The hubPosition is used by Cabinet=1,HwUnit=PSU-1,EcPort=1");
    EXPECT_EQ(refused(request(kCreateReq, r, 0, kHwUnit, mim("Cabinet=1,HwUnit=BFU-1", attr("unitType", "STRING", "BFU")))),
              "Create requirements not fulfilled for HwUnit");
    const auto deleteOf = [&](std::uint32_t froType, const std::string& ldn) {
        const std::string cfm = manager.ask(request(kDeleteReq, r, 0, froType, mim(ldn, "")), kDeleteCfm);
        return std::make_pair(wordAt(cfm, 8), textAt(cfm, 16));
    };
    EXPECT_EQ(deleteOf(kPowerSupply, "PowerSupply=1").second, "PowerSupply=1 is in use by Cabinet=1,HwUnit=PSU-1");
    EXPECT_EQ(deleteOf(kHwUnit, "Cabinet=1,HwUnit=PSU-1").first, 0u);
    EXPECT_EQ(deleteOf(kPowerSupply, "PowerSupply=1").first, 0u);
    ASSERT_TRUE(manager.commit(rules));
    EXPECT_NE(manager.get(kPowerSupply, "PowerSupply=1").result, 0u);
    EXPECT_EQ(stored(node, "select count(*) from apc_frodata_EcPort_INITIAL")[0][0], "1");
}

TEST(ManagementSystemTest, ActionsInServiceAndSignalsThatAreNotForTheHandler)
{
    NodeProcess node({"--clock", "virtual"});
    ManagementClient manager(node);
    const std::int32_t tid = manager.begin();
    ASSERT_EQ(manager.create(tid, kCabinet, mim("Cabinet=1", "")).result, 0u);
    ASSERT_TRUE(manager.commit(tid));
    const std::string action = "<?xml version=\"1.0\" ?>\n<mim version=\"1.0\">\n<class ldn=\"Cabinet=1\">\n"
                               "<action name=\"reset\">\n</action>\n</class>\n</mim>\n";
    // No controller runs actions yet: the action cannot be started.
    const std::string cfm = manager.ask(request(kActionReq, 0, 0, kCabinet, action), kActionCfm);
    EXPECT_EQ(wordAt(cfm, 8), 0x1040001u);
    EXPECT_EQ(textAt(cfm, 16), "action was not performed");
    const std::string unknown = manager.ask(request(kActionReq, 0, 0, kCabinet, mim("Cabinet=9", "")), kActionCfm);
    EXPECT_EQ(wordAt(unknown, 8), 0x1040001u);
    // Without a confirmation nothing comes back, also for an unknown object.
    EXPECT_TRUE(manager.send(request(kActionNoCfmReq, 0, 0, kCabinet, action)));

    std::string inService = word(kInServiceReq) + word(3) + word(0) + word(0) + word(1) + word(10) +
                            std::string("\0\1\0\0", 4) + word(8) + std::string("R1A\0\0\0\0\0", 8);
    const std::string served = manager.ask(inService, kInServiceCfm);
    EXPECT_EQ(served.size(), 132u);
    EXPECT_EQ(wordAt(served, 4), 3u);
    EXPECT_EQ(wordAt(served, 8), 1u);
    EXPECT_EQ(served.substr(40, 3), "R1A");
    EXPECT_EQ(wordAt(manager.ask(word(kInServiceReq) + word(3), kInServiceCfm), 8), 3u) << "a short one fails";
    EXPECT_FALSE(manager.client().next(std::chrono::milliseconds(200)).has_value())
        << "the action without confirmation answered";
}

TEST(ManagementSystemTest, AttributesOfEachTypeTravelAndHostileBodiesAreRefused)
{
    NodeProcess node({"--clock", "virtual"});
    ManagementClient manager(node);
    constexpr std::uint32_t kFunction = 0x704000A; // EquipmentSupportFunction: no defaults of its own
    const std::string product = "<struct name=\"productData\">\n" + attr("productNumber", "STRING", "KDU 1") +
                                attr("serialNumber", "STRING", "A&amp;B") + "</struct>\n";
    const std::string all = attr("level", "S32", "-7") + attr("count", "U32", "4000000000") +
                            attr("label", "STRING", "north &lt;east&gt;") + attr("big", "S64", "-9000000000") + product;
    const std::int32_t tid = manager.begin();
    const auto made = manager.create(tid, kFunction, mim("EquipmentSupportFunction=1", all));
    ASSERT_EQ(made.result, 0u) << made.text;
    const auto t = static_cast<std::uint32_t>(tid);
    const auto refused = [&](std::uint32_t froType, const std::string& xml) {
        const std::string cfm = manager.ask(request(kCreateReq, t, 0, froType, xml), kCreateCfm);
        EXPECT_EQ(wordAt(cfm, 12), 1u) << xml;
        return textAt(cfm, 20);
    };
    EXPECT_TRUE(contains(refused(kFunction, mim("EquipmentSupportFunction=2", attr("count", "U32", "-1"))),
                         "Couldn not save fRO"));
    EXPECT_TRUE(contains(refused(kFunction, mim("EquipmentSupportFunction=3", attr("level", "S32", "3000000000"))),
                         "Couldn not save fRO"));
    EXPECT_TRUE(contains(refused(kCabinet, mim("Cabinet", "")), "Failed to create FRO"));
    std::string deep;
    for (int i = 0; i < 200; ++i) deep += "<struct name=\"s\">";
    for (int i = 0; i < 200; ++i) deep += "</struct>";
    EXPECT_EQ(refused(kCabinet, mim("Cabinet=4", deep)), "Failed to read XML data.");
    EXPECT_EQ(refused(kCabinet, "<?xml version=\"1.0\" ?>\n<!DOCTYPE mim [<!ENTITY a \"aaaa\">]>\n"
                                "<mim version=\"1.0\"><class ldn=\"Cabinet=5\">&a;</class></mim>\n"),
              "Failed to read XML data.");
    ASSERT_TRUE(manager.commit(tid));

    const auto back = manager.get(kFunction, "EquipmentSupportFunction=1");
    ASSERT_EQ(back.result, 0u) << back.text;
    for (const std::string& expected : {attr("level", "S32", "-7"), attr("count", "U32", "4000000000"),
                                        attr("label", "STRING", "north &lt;east&gt;"), attr("big", "S64", "-9000000000")})
        EXPECT_TRUE(contains(back.text, expected.substr(0, expected.size() - 1))) << expected << back.text;
    EXPECT_TRUE(contains(back.text, "serialNumber\" type=\"STRING\" value=\"A&amp;B\"")) << back.text;
    const auto rows = stored(node, "select count(*) from apc_frodata_equipmentsupportfunction_initial");
    EXPECT_EQ(rows, (odbc_query::Rows{{"1"}}));
}

TEST(ManagementSystemTest, SscctlPlaysTheManagementClientForAPerson)
{
    NodeProcess node({"--clock", "virtual"});
    const Outcome made = sscctl(node, {"mo", "create", "Cabinet=1", "cabinetIdentifier=north", "create",
                                       "PowerSupply=1", "create", "Cabinet=1,HwUnit=PSU-1", "unitType=PSU", "get",
                                       "Cabinet=1"});
    EXPECT_EQ(made.exitCode, app::kNotFound) << "the get of an uncommitted object is refused: " << made.out;
    EXPECT_TRUE(contains(made.out, "created Cabinet=1 (id 0)")) << made.out;
    EXPECT_TRUE(contains(made.out, "committed")) << made.out;

    const Outcome read = sscctl(node, {"mo", "get", "Cabinet=1", "cabinetIdentifier", "set", "Cabinet=1#0",
                                       "smokeDetector=1", "get", "Cabinet=1", "smokeDetector"});
    EXPECT_EQ(read.exitCode, app::kDone) << read.out;
    EXPECT_TRUE(contains(read.out, "  cabinetIdentifier (STRING) = north")) << read.out;

    const Outcome refused = sscctl(node, {"mo", "delete", "PowerSupply=1#0"});
    EXPECT_EQ(refused.exitCode, app::kNotFound);
    EXPECT_TRUE(contains(refused.out, "in use by Cabinet=1,HwUnit=PSU-1")) << refused.out;

    const Outcome undone = sscctl(node, {"mo", "--rollback", "delete", "Cabinet=1,HwUnit=PSU-1#0"});
    EXPECT_TRUE(contains(undone.out, "rolled back")) << undone.out;
    const Outcome listed = sscctl(node, {"mo", "list"});
    EXPECT_EQ(listed.out, "Cabinet=1 (id 0)\nCabinet=1,HwUnit=PSU-1 (id 0)\nPowerSupply=1 (id 0)\ncommitted\n");
    EXPECT_TRUE(contains(sscctl(node, {"mo", "get", "Cabinet=1", "smokeDetector"}).out, "smokeDetector (S32) = 1"));
}

// An alarm port whose input is active raises its external alarm when it is
// unlocked and ceases it when it is locked again; a second client sees the
// indications in the order of the commits that caused them.
TEST(ManagementSystemTest, IndicationsReachTheSubscriberInTheOrderOfTheirCauses)
{
    NodeProcess node({"--clock", "virtual"});
    ManagementClient manager(node);
    ose::GatewayClient watcher;
    ASSERT_TRUE(watcher.connect(node.socketPath(), "watcher"));
    ASSERT_TRUE(watcher.send(manager.service(), word(kSubscribeReq) + word(1) + word(7) + word(kAlarmPort)));

    const std::int32_t setUp = manager.begin();
    EXPECT_EQ(manager.create(setUp, kCabinet, mim("Cabinet=1", "")).result, 0u);
    EXPECT_EQ(manager.create(setUp, kHwUnit,
                             mim("Cabinet=1,HwUnit=SAU1",
                                 attr("unitType", "STRING", "SAU") + attr("administrativeState", "S32", "1")))
                  .result,
              0u);
    std::uint32_t portIds[3] = {};
    for (int port = 1; port <= 2; ++port) {
        const auto created = manager.create(setUp, kAlarmPort,
                                            mim("Cabinet=1,HwUnit=SAU1,AlarmPort=" + std::to_string(port),
                                                attr("administrativeState", "S32", "0") +
                                                    attr("activeExternalAlarm", "S32", "1")));
        ASSERT_EQ(created.result, 0u) << created.text;
        portIds[port] = created.froId;
    }
    ASSERT_TRUE(manager.commit(setUp));

    const auto setLock = [&](int port, const char* state) {
        const std::int32_t tid = manager.begin();
        const std::string cfm = manager.ask(
            request(kSetReq, static_cast<std::uint32_t>(tid), portIds[port], kAlarmPort,
                    mim("Cabinet=1,HwUnit=SAU1,AlarmPort=" + std::to_string(port),
                        attr("administrativeState", "S32", state))),
            kSetCfm);
        EXPECT_EQ(wordAt(cfm, 8), 0u) << textAt(cfm, 16);
        EXPECT_TRUE(manager.commit(tid));
    };
    setLock(2, "1");
    setLock(1, "1");
    setLock(2, "0");

    std::vector<std::string> seen;
    while (seen.size() < 3) {
        const auto event = watcher.next(std::chrono::seconds(10));
        ASSERT_TRUE(event) << "only " << seen.size() << " indications came";
        if (event->kind != ose::GatewayEvent::Kind::Signal) continue;
        const std::string& bytes = event->bytes;
        const std::string what = event->sigNo() == kFaultInd         ? "fault"
                                 : event->sigNo() == kFaultCeasedInd ? "ceased"
                                                                     : "other";
        const std::uint32_t froId = wordAt(bytes, 4);
        seen.push_back(what + " " + (froId == portIds[1] ? "port 1" : froId == portIds[2] ? "port 2" : "?") + " " +
                       std::to_string(wordAt(bytes, 12)));
        EXPECT_EQ(wordAt(bytes, 8), kAlarmPort);
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"fault port 2 4097", "fault port 1 4097", "ceased port 2 4097"}));
}

} // namespace
} // namespace systemtest
