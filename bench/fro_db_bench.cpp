// The object database against a SQLite file through unixODBC: 10,000 unit
// objects (seven attributes, one of them the product data struct) saved in
// one transaction, read back one by one, and found again by the bulk
// retrieval of the start. The floor is the same rows written and read with
// plain statements through the same driver.

#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/defaultAttributes.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/testSupport/localTransactionServer.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kObjects = 10000;

struct Body {
    std::int32_t froId;
    std::string xml;
};

// The objects as the management client would send them.
std::vector<Body> makeBodies()
{
    froIdHandler ids;
    fROFactory factory(ids);
    std::vector<Body> bodies;
    std::vector<std::unique_ptr<fRO>> units; // each keeps its id while the others are made
    for (int i = 0; i < kObjects; ++i) {
        const std::string ldn = "Cabinet=1,HwUnit=" + std::to_string(i);
        auto unit = factory.createFro(ldn, fro_types::kHwUnit, -1, false, true, true);
        std::vector<std::string> names, types, values;
        for (const AttrNameValue& a : unit->attributes()) {
            names.push_back(a.name());
            types.push_back(a.type());
            values.push_back(a.value());
        }
        Body body{unit->getInternalId(), {}};
        xmlHandler::instance().build(ldn, "1.0", names, types, values, body.xml);
        bodies.push_back(std::move(body));
        units.push_back(std::move(unit));
    }
    return bodies;
}

const std::vector<Body>& bodies()
{
    static const std::vector<Body> all = makeBodies();
    return all;
}

class Database {
public:
    Database()
    {
        char pattern[] = "/tmp/ssc_fro_bench_XXXXXX";
        m_dir = mkdtemp(pattern);
        m_config.connectionString = VantoDb_defaultConnectionString(m_dir);
        m_server = std::make_unique<localTransactionServer>(m_config);
        m_db = std::make_unique<DatabaseFacade>(m_config, *m_server);
        m_db->init();
    }
    ~Database()
    {
        m_db.reset();
        m_server.reset();
        std::filesystem::remove_all(m_dir);
    }

    bool saveAll()
    {
        const std::int32_t tx = m_server->newTransaction();
        for (const Body& body : bodies())
            if (!m_db->saveFRO(tx, body.froId, fro_types::kHwUnit, body.xml))
                return false;
        const bool ok = m_server->commit_e(tx, 1) == 0;
        if (!ok)
            std::fprintf(stderr, "commit failed: %s\n", m_server->lastError().c_str());
        const auto signal = localTransactionServer::indication(10014, tx);
        m_db->handleSignal(signal.data(), signal.size());
        return ok;
    }

    DatabaseFacade& db() { return *m_db; }
    const VantoDbConfig& config() const { return m_config; }

private:
    std::string m_dir;
    VantoDbConfig m_config;
    std::unique_ptr<localTransactionServer> m_server;
    std::unique_ptr<DatabaseFacade> m_db;
};

void BM_SaveObjects(benchmark::State& state)
{
    bodies();
    for (auto _ : state) {
        state.PauseTiming();
        auto database = std::make_unique<Database>();
        state.ResumeTiming();
        if (!database->saveAll()) {
            state.SkipWithError("save failed");
            break;
        }
        state.PauseTiming();
        database.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kObjects);
}
BENCHMARK(BM_SaveObjects)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_ReadBackObjects(benchmark::State& state)
{
    Database database;
    database.saveAll();
    for (auto _ : state) {
        std::string xml;
        for (const Body& body : bodies())
            if (!database.db().retrieveFRO(body.froId, fro_types::kHwUnit, xml) || xml.size() != body.xml.size())
                state.SkipWithError("read back differs");
    }
    state.SetItemsProcessed(state.iterations() * kObjects);
}
BENCHMARK(BM_ReadBackObjects)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_BulkRetrieval(benchmark::State& state)
{
    Database database;
    database.saveAll();
    for (auto _ : state) {
        std::vector<froRecord> records;
        if (!database.db().retrieveFros(fro_types::kFirst, fro_types::kEnd, records) ||
            records.size() != static_cast<std::size_t>(kObjects))
            state.SkipWithError("bulk retrieval incomplete");
    }
    state.SetItemsProcessed(state.iterations() * kObjects);
}
BENCHMARK(BM_BulkRetrieval)->Unit(benchmark::kMillisecond)->Iterations(3);

// ---- the floor: the same rows with plain statements -------------------------

const char* kFloorTable = "create table floor (froid integer, ldn varchar(0) not null, productData varchar(0) not "
                          "null, availabilityStatus integer not null, operationalState integer not null, "
                          "operationalIndicator integer not null, faultIndicator integer not null, "
                          "batteryFaultIndicator integer not null, powerDistrFaultIndicator integer not null, "
                          "primary key(froid))";

bool exec(VantoDbHandles& h, const std::string& sql)
{
    const SQLRETURN rc = SQLExecDirect(h.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS);
    SQLFreeStmt(h.stmt, SQL_CLOSE);
    return SQL_SUCCEEDED(rc);
}

std::vector<std::string> floorInserts()
{
    std::vector<std::string> rows;
    const std::string productData(default_attributes::kProductData);
    for (int i = 0; i < kObjects; ++i)
        rows.push_back("insert into floor values (" + std::to_string(i) + ", 'Cabinet=1,HwUnit=" + std::to_string(i) +
                       "', '" + productData + "', 0, 0, 1, 1, 0, 1)");
    return rows;
}

void BM_FloorPlainInsert(benchmark::State& state)
{
    const std::vector<std::string> rows = floorInserts();
    for (auto _ : state) {
        state.PauseTiming();
        Database database;
        VantoDbHandles h;
        h.config = database.config();
        VantoDb_init(h);
        exec(h, kFloorTable);
        state.ResumeTiming();
        SQLSetConnectAttr(h.dbc, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
        for (const std::string& row : rows)
            if (!exec(h, row))
                state.SkipWithError("insert failed");
        SQLEndTran(SQL_HANDLE_DBC, h.dbc, SQL_COMMIT);
        state.PauseTiming();
        VantoDb_disconnect(h);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kObjects);
}
BENCHMARK(BM_FloorPlainInsert)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_FloorPlainSelect(benchmark::State& state)
{
    Database database;
    VantoDbHandles h;
    h.config = database.config();
    VantoDb_init(h);
    exec(h, kFloorTable);
    SQLSetConnectAttr(h.dbc, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
    for (const std::string& row : floorInserts())
        exec(h, row);
    SQLEndTran(SQL_HANDLE_DBC, h.dbc, SQL_COMMIT);
    std::vector<char> buffer(49152);
    for (auto _ : state) {
        // One select per object, as a restore reads them.
        for (int i = 0; i < kObjects; ++i) {
            const std::string sql = "select * from floor where froid = " + std::to_string(i);
            SQLExecDirect(h.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS);
            if (SQLFetch(h.stmt) != SQL_SUCCESS)
                state.SkipWithError("row missing");
            for (SQLUSMALLINT c = 1; c <= 9; ++c) {
                SQLLEN indicator = 0;
                SQLGetData(h.stmt, c, SQL_C_CHAR, buffer.data(), static_cast<SQLLEN>(buffer.size()), &indicator);
            }
            SQLFreeStmt(h.stmt, SQL_CLOSE);
        }
    }
    VantoDb_disconnect(h);
    state.SetItemsProcessed(state.iterations() * kObjects);
}
BENCHMARK(BM_FloorPlainSelect)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
