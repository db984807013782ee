// The node's start, both processes and the platform beside them, on the
// virtual clock: from an empty world until the object process takes a
// request through its receive loop (its object layer is then up, the stored
// objects restored and the core's servers found). Once with an empty
// database and once with 10,000 stored objects. Floors: the start of the
// core process alone, until its servers can be found; and the 10,000 stored
// rows read with one plain select on the same driver.

#include "bench/StoredObjects.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosisSignals.h"
#include "platform/LoadModule.h"
#include "vanto/VantoNameServer.h"
#include "vanto/VantoRpuServer.h"
#include "vanto/VantoTransactionServer.h"

#include "ose/Kernel.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

namespace {

ose::ClockConfig virtualClock()
{
    ose::ClockConfig clock;
    clock.mode = ose::ClockMode::Virtual;
    return clock;
}

// Sends the object process a 0 ms timer request and stops the world at the
// answer; gives the world time at which the request was taken.
void probeObjectProcess(ose::World& world, ose::Node& node, std::uint32_t& readyAtMs)
{
    ose::ProcessSpec probe;
    probe.name = "probe";
    probe.entry = [&world, &readyAtMs] {
        ose::PROCESS objects = 0;
        if (!ose::hunt(kSupSysProcessName, 0, &objects, nullptr)) return;
        auto* request = ose::alloc_as<SUP_SYS_DIAG_TIMER_REQ_S>(SUP_SYS_DIAG_TIMER_REQ);
        ose::Signal* signal = reinterpret_cast<ose::Signal*>(request);
        ose::send(&signal, objects);
        static constexpr ose::SIGSELECT kAnswer[] = {1, SUP_SYS_DIAG_TIMER_CFM};
        ose::Signal* answer = ose::receive(kAnswer);
        readyAtMs = ose::signal_cast<SUP_SYS_DIAG_TIMER_CFM_S>(answer)->requestedAtMs;
        ose::free_buf(&answer);
        world.stop();
    };
    probe.priority = 20;
    world.start(world.createProcess(node, probe));
}

// Counts what the restore could not make or read: a start that restored
// less than was stored must not pass for a fast one.
class RestoreFailures {
public:
    RestoreFailures()
    {
        ose::Trace::configure("supSysFroMgmtSwU:5");
        ose::Trace::setSink([this](const ose::TraceRecord& record) {
            // The restore's own failures, and the rows the database could
            // not read back.
            if ((record.group == "supSysFroMgmtSwU" && record.level <= 5) ||
                (record.group == "supSysFroDbLU" && record.level == 1))
                ++m_count;
        });
    }
    ~RestoreFailures()
    {
        ose::Trace::setSink({});
        ose::Trace::reset();
    }
    int count() const { return m_count; }

private:
    int m_count = 0;
};

void startNode(benchmark::State& state, const VantoDbConfig& database)
{
    std::uint32_t readyAtMs = 0;
    RestoreFailures failures;
    for (auto _ : state) {
        DatabaseFacade::configure(database);
        ose::World world(virtualClock());
        ose::Node& node = world.defaultNode();
        createTransactionServer(world, node, database);
        createNameServer(world, node);
        LoadModule loadModule(world, node);
        VantoRpuConfig rpu;
        rpu.restartLoadModule = [&loadModule] { loadModule.restart(); };
        createRpuServer(world, node, rpu);
        loadModule.start();
        probeObjectProcess(world, node, readyAtMs);
        world.runFor(60000);
        if (readyAtMs == 0) state.SkipWithError("the object process did not come up");
    }
    state.counters["ready_at_node_ms"] = readyAtMs;
    if (failures.count() != 0) state.SkipWithError("the restore traced failures");
}

void BM_NodeStartEmptyDatabase(benchmark::State& state)
{
    stored_objects::Database database;
    startNode(state, database.config());
}
BENCHMARK(BM_NodeStartEmptyDatabase)->Unit(benchmark::kMillisecond);

void BM_NodeStart10000StoredObjects(benchmark::State& state)
{
    stored_objects::Database database;
    if (!database.saveAll()) {
        state.SkipWithError("storing the objects failed");
        return;
    }
    startNode(state, database.config());
}
BENCHMARK(BM_NodeStart10000StoredObjects)->Unit(benchmark::kMillisecond);

// The floor of the restore: the stored rows read with one plain select,
// every column of every row, on the same driver.
void BM_FloorReadStoredRows(benchmark::State& state)
{
    stored_objects::Database database;
    if (!database.saveAll()) {
        state.SkipWithError("storing the objects failed");
        return;
    }
    VantoDbHandles h;
    h.config = database.config();
    VantoDb_init(h);
    std::vector<char> buffer(49152);
    for (auto _ : state) {
        const char* sql = "select * from apc_frodata_HwUnit_INITIAL";
        SQLExecDirect(h.stmt, (SQLCHAR*)sql, SQL_NTS);
        SQLSMALLINT columns = 0;
        SQLNumResultCols(h.stmt, &columns);
        int rows = 0;
        while (SQLFetch(h.stmt) == SQL_SUCCESS) {
            ++rows;
            for (SQLUSMALLINT c = 1; c <= static_cast<SQLUSMALLINT>(columns); ++c) {
                SQLLEN indicator = 0;
                SQLGetData(h.stmt, c, SQL_C_CHAR, buffer.data(), static_cast<SQLLEN>(buffer.size()), &indicator);
            }
        }
        SQLFreeStmt(h.stmt, SQL_CLOSE);
        if (rows != stored_objects::kObjects) state.SkipWithError("rows missing");
    }
    VantoDb_disconnect(h);
}
BENCHMARK(BM_FloorReadStoredRows)->Unit(benchmark::kMillisecond);

// The floor: the core process alone, until its equipment server is there.
void BM_FloorCoreStart(benchmark::State& state)
{
    for (auto _ : state) {
        ose::World world(virtualClock());
        ose::Node& node = world.defaultNode();
        createCoreProcess(world, node);
        ose::ProcessSpec probe;
        probe.name = "probe";
        probe.priority = 20;
        probe.entry = [&world] {
            ose::Signal* found = ose::alloc(4, 0x4711);
            ose::PROCESS pid = 0;
            ose::hunt("ssc_power_management_server", 0, &pid, &found);
            static constexpr ose::SIGSELECT kFound[] = {1, 0x4711};
            ose::Signal* signal = ose::receive(kFound);
            ose::free_buf(&signal);
            world.stop();
        };
        world.start(world.createProcess(node, probe));
        world.runFor(60000);
    }
}
BENCHMARK(BM_FloorCoreStart)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
