// Management transactions of 1, 10 and 100 object creations, each through
// the whole path: the platform transaction created at the transaction server,
// shadows in transMgr (registered as a resource), the object database's
// insert handed over as SQL, the commit at the server (one SQLite
// transaction), the commit indication playing the shadows into froMgr and the
// database's sanity check. The floor is the same insert statements in one
// plain SQLite transaction through the same ODBC driver.
//
// One process plays both the management client and the object process, so
// the signals of the management requests themselves are not counted.

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/SupSysTraniHandler.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/transMgr.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/testSupport/localTransactionServer.h"
#include "froBl/froMgmtSwU/testSupport/shadowMimText.h"
#include "platform/VantoTransaction.h"
#include "platform/VantoTransactionClient.h"
#include "platform/VantoTransactionSignals.h"
#include "vanto/VantoTransactionServer.h"

#include "ose/Kernel.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace fro_types;

class ScratchDir {
public:
    ScratchDir()
    {
        char pattern[] = "/tmp/ssc_trans_bench_XXXXXX";
        m_dir = mkdtemp(pattern);
        m_config.connectionString = VantoDb_defaultConnectionString(m_dir);
        m_config.wait = [](std::chrono::milliseconds) {};
    }
    ~ScratchDir() { std::filesystem::remove_all(m_dir); }
    const VantoDbConfig& config() const { return m_config; }

private:
    std::string m_dir;
    VantoDbConfig m_config;
};

std::string ldnOf(int k)
{
    return "Cabinet=1,HwUnit=" + std::to_string(k);
}

// The object layer of one node, driven from one process of its world.
class ObjectLayer {
public:
    explicit ObjectLayer(const VantoDbConfig& config) : m_config(config) {}

    void start()
    {
        m_database = std::make_unique<DatabaseFacade>(m_config, m_platform);
        m_database->init();
        m_handler =
            std::make_unique<SupSysTraniHandler>(m_distributor, m_transactions, m_table, m_platform, m_database.get());
        m_handler->init();
    }

    // One management transaction of n creations; false when anything failed.
    bool transaction(int n, int& next)
    {
        std::int32_t tx = 0;
        if (VantoTransaction_create_e(1, tx, 1) != 0)
            return false;
        for (int i = 0; i < n; ++i)
            if (!create(tx, ldnOf(next++)))
                return false;
        if (VantoTransaction_commit_e(tx, 1) != 0)
            return false;
        // The commit indication waits in the queue behind the commit's answer.
        const ose::SIGSELECT indication[] = {2, vanto_trans::VANTO_TRANS_COMMIT_IND, vanto_trans::VANTO_TRANS_ROLLBACK_IND};
        ose::Signal* signal = ose::receive_w_tmo(10000, indication);
        const bool committed = ose::signalNumber(signal) == vanto_trans::VANTO_TRANS_COMMIT_IND;
        if (signal != nullptr) {
            m_distributor.distribute(signal);
            ose::free_buf(&signal);
        }
        return committed && m_table.exists(ldnOf(next - 1));
    }

private:
    bool create(std::int32_t tx, const std::string& ldn)
    {
        std::int32_t externalId = -1;
        if (m_transactions.createMO(tx, ldn, {}, {}, {}, kHwUnit, externalId) != 1)
            return false;
        const fRO* shadow = m_transactions.getFro(tx, ldn);
        std::string xml;
        return shadowMimText(*shadow, ldn, xml) && m_database->saveFRO(tx, shadow->getInternalId(), kHwUnit, xml);
    }

    VantoDbConfig m_config;
    froIdHandler m_ids;
    fROFactory m_factory{m_ids};
    froMgr m_table{m_factory};
    SignalDistributor m_distributor;
    VantoTransactionClient m_platform;
    transMgr m_transactions{m_table, m_factory, m_platform};
    std::unique_ptr<DatabaseFacade> m_database;
    std::unique_ptr<SupSysTraniHandler> m_handler;
};

void runInWorld(ose::World& world, std::function<void()> body)
{
    ose::ProcessSpec definition;
    definition.name = "support_system_control_thread";
    definition.entry = std::move(body);
    world.start(world.createProcess(world.defaultNode(), definition));
    world.runUntilIdle();
}

void BM_Transaction(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    ScratchDir dir;
    ose::World world;
    ose::Node& node = world.addNode("node");
    createTransactionServer(world, node, dir.config());
    ObjectLayer layer(dir.config());
    int next = 0;
    runInWorld(world, [&] { layer.start(); });
    // The class table and attribute rows come with the first object: not part of what is measured.
    bool ok = true;
    runInWorld(world, [&] { ok = layer.transaction(1, next); });
    for (auto _ : state) {
        runInWorld(world, [&] { ok = layer.transaction(n, next); });
        if (!ok) {
            state.SkipWithError("transaction failed");
            break;
        }
    }
    state.counters["tx/s"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["objects/s"] =
        benchmark::Counter(static_cast<double>(state.iterations() * n), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_Transaction)->Arg(1)->Iterations(300)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Transaction)->Arg(10)->Iterations(60)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Transaction)->Arg(100)->Iterations(10)->Unit(benchmark::kMillisecond)->UseRealTime();

// ---- the floor ----------------------------------------------------------------

// The inserts the object database hands over for `count` new units, with the
// schema in place in the directory's database.
std::vector<std::string> insertsFor(const VantoDbConfig& config, int count)
{
    localTransactionServer server(config);
    DatabaseFacade database(config, server);
    database.init();
    froIdHandler ids;
    fROFactory factory(ids);
    const std::int32_t tx = server.newTransaction();
    std::vector<std::unique_ptr<fRO>> units; // each keeps its id while the others are made
    for (int k = 0; k < count; ++k) {
        auto unit = factory.createFro(ldnOf(k), kHwUnit, -1, false, true, true);
        std::vector<std::string> names, types, values;
        for (const AttrNameValue& a : unit->attributes()) {
            names.push_back(a.name());
            types.push_back(a.type());
            values.push_back(a.value());
        }
        std::string xml;
        xmlHandler::instance().build(ldnOf(k), "1.0", names, types, values, xml);
        database.saveFRO(tx, unit->getInternalId(), kHwUnit, xml);
        units.push_back(std::move(unit));
    }
    std::vector<std::string> statements;
    for (const std::string& s : server.pending(tx))
        statements.push_back(VantoDb_adaptSql(VantoDbDialect::Sqlite, s));
    return statements;
}

bool exec(VantoDbHandles& h, const std::string& sql)
{
    const SQLRETURN rc = SQLExecDirect(h.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS);
    SQLFreeStmt(h.stmt, SQL_CLOSE);
    return SQL_SUCCEEDED(rc);
}

void BM_FloorPlainTransaction(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const int rounds = static_cast<int>(state.max_iterations);
    ScratchDir dir;
    const std::vector<std::string> all = insertsFor(dir.config(), n * rounds + 1);
    VantoDbHandles h;
    h.config = dir.config();
    VantoDb_init(h);
    // Rows of apc_fro_attributes and the first object: set-up, as in BM_Transaction.
    const std::size_t setUp = all.size() - static_cast<std::size_t>(n * rounds);
    for (std::size_t i = 0; i < setUp; ++i)
        exec(h, all[i]);
    std::size_t at = setUp;
    for (auto _ : state) {
        SQLSetConnectAttr(h.dbc, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
        for (int i = 0; i < n; ++i)
            if (!exec(h, all[at++]))
                state.SkipWithError("insert failed");
        SQLEndTran(SQL_HANDLE_DBC, h.dbc, SQL_COMMIT);
        SQLSetConnectAttr(h.dbc, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
    }
    VantoDb_disconnect(h);
    state.counters["tx/s"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["objects/s"] =
        benchmark::Counter(static_cast<double>(state.iterations() * n), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_FloorPlainTransaction)->Arg(1)->Iterations(300)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_FloorPlainTransaction)->Arg(10)->Iterations(60)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_FloorPlainTransaction)->Arg(100)->Iterations(10)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
