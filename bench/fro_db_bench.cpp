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
#include "bench/StoredObjects.h"
#include "froBl/froMgmtSwU/testSupport/localTransactionServer.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace stored_objects;

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
