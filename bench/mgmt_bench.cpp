// Management transactions through the whole node: a client opens a
// transaction, creates 1, 10 or 100 objects with MAOFRO_CREATE_REQ (each
// answered before the next) and commits; the object process joins the
// transaction, hands each object's insert to it, and the transaction server
// runs them at the commit. The floor is plain SQLite doing the same inserts
// in one transaction through the same ODBC driver.

#include "froBl/froMgmtSwU/export/MaoFroSignals.h"
#include "froBl/froMgmtSwU/export/SupSysCtrlEngine.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosisSignals.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "platform/LoadModule.h"
#include "platform/VantoTransactionClient.h"
#include "vanto/VantoNameServer.h"
#include "vanto/VantoRpuServer.h"
#include "vanto/VantoTransactionServer.h"

#include "ose/BigEndian.h"
#include "ose/Kernel.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

using namespace maofro;

class TempDatabase {
public:
    TempDatabase()
    {
        char pattern[] = "/tmp/ssc_mgmt_bench_XXXXXX";
        m_dir = mkdtemp(pattern);
        m_config.connectionString = VantoDb_defaultConnectionString(m_dir);
    }
    ~TempDatabase() { std::filesystem::remove_all(m_dir); }
    const VantoDbConfig& config() const { return m_config; }

private:
    std::string m_dir;
    VantoDbConfig m_config;
};

std::string createRequestBody(int instance)
{
    const std::string ldn = "ExternalNode=" + std::to_string(instance);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<mim version=\"1.0\">\n<class ldn=\"" + ldn +
           "\">\n<attr name=\"logicalName\" type=\"STRING\" value=\"node " + std::to_string(instance) +
           "\"/>\n</class>\n</mim>\n";
}

ose::Signal* createRequest(std::int32_t transactionId, int instance)
{
    const std::string text = createRequestBody(instance);
    const std::uint32_t length = blockTextSize(text.size());
    ose::Signal* signal = ose::alloc(static_cast<ose::OSBUFSIZE>(32 + length), MAOFRO_CREATE_REQ);
    char* bytes = reinterpret_cast<char*>(signal);
    ose::storeBe32(bytes + 4, static_cast<std::uint32_t>(transactionId));
    ose::storeBe32(bytes + 12, 0x7040007); // ExternalNode
    ose::storeBe32(bytes + 16, 2);
    ose::storeBe32(bytes + 20, kXmlText);
    ose::storeBe16(bytes + 24, 1);
    ose::storeBe32(bytes + 28, length);
    std::memcpy(bytes + 32, text.c_str(), text.size() + 1);
    return signal;
}

// The node's platform and load module on the virtual clock, up and ready.
class Node {
public:
    explicit Node(const VantoDbConfig& database) : m_world(virtualClock()), m_node(m_world.defaultNode())
    {
        DatabaseFacade::configure(database);
        createTransactionServer(m_world, m_node, database);
        createNameServer(m_world, m_node);
        m_loadModule = std::make_unique<LoadModule>(m_world, m_node);
        createRpuServer(m_world, m_node, VantoRpuConfig{});
        m_loadModule->start();
        m_world.runFor(10000);
    }

    // One transaction of `count` creates and its commit, by a client process.
    bool transaction(int count)
    {
        bool ok = false;
        ose::ProcessSpec client;
        client.name = "manager";
        client.entry = [this, count, &ok] {
            ose::PROCESS objects = 0;
            ose::hunt(kSupSysProcessName, 0, &objects, nullptr);
            VantoTransactionClient transactions;
            std::int32_t id = 0;
            ok = transactions.create_e(0, id, 0) == 0;
            static constexpr ose::SIGSELECT kCfm[] = {1, MAOFRO_CREATE_CFM};
            for (int i = 0; i < count && ok; ++i) {
                ose::Signal* request = createRequest(id, m_next++);
                ose::send(&request, objects);
                ose::Signal* cfm = ose::receive(kCfm);
                ok = ose::loadBe32(reinterpret_cast<const char*>(cfm) + 12) == 0;
                ose::free_buf(&cfm);
            }
            ok = ok && transactions.commit_e(id, 1) == 0;
            m_world.stop();
        };
        m_world.start(m_world.createProcess(m_node, client));
        m_world.run();
        return ok;
    }

private:
    static ose::ClockConfig virtualClock()
    {
        ose::ClockConfig clock;
        clock.mode = ose::ClockMode::Virtual;
        return clock;
    }

    ose::World m_world;
    ose::Node& m_node;
    std::unique_ptr<LoadModule> m_loadModule;
    int m_next = 0;
};

void BM_CreateAndCommitThroughMaoFro(benchmark::State& state)
{
    TempDatabase database;
    Node node(database.config());
    const int count = static_cast<int>(state.range(0));
    for (auto _ : state)
        if (!node.transaction(count)) state.SkipWithError("a create or the commit failed");
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_CreateAndCommitThroughMaoFro)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

// The floor: the same rows inserted in one transaction with plain statements.
void BM_FloorPlainInsertAndCommit(benchmark::State& state)
{
    TempDatabase database;
    VantoDbHandles h;
    h.config = database.config();
    VantoDb_init(h);
    auto exec = [&h](const std::string& sql) {
        const SQLRETURN rc = SQLExecDirect(h.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS);
        SQLFreeStmt(h.stmt, SQL_CLOSE);
        return SQL_SUCCEEDED(rc);
    };
    exec("create table floor (froid integer, ldn varchar(0) not null, logicalName varchar(0) not null, "
         "fullDistinguishedName varchar(0) not null, radioAccessTechnology integer not null, "
         "supportSystemControl integer not null, primary key(froid))");
    SQLSetConnectAttr(h.dbc, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
    const int count = static_cast<int>(state.range(0));
    int next = 0;
    for (auto _ : state) {
        for (int i = 0; i < count; ++i, ++next)
            if (!exec("insert into floor values (" + std::to_string(next) + ", 'ExternalNode=" + std::to_string(next) +
                      "', 'node " + std::to_string(next) + "', '', 0, 2)"))
                state.SkipWithError("insert failed");
        SQLEndTran(SQL_HANDLE_DBC, h.dbc, SQL_COMMIT);
    }
    VantoDb_disconnect(h);
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_FloorPlainInsertAndCommit)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
