// Management requests from anyone: a client opens a transaction and sends
// the object process signals of the MAOFRO numbers made of the input (any
// length, any block, any XML body), then commits or rolls back. The object
// process must refuse what makes no sense, read nothing beyond a signal,
// keep its transaction and database in step, and go on serving.

#include "froBl/froMgmtSwU/export/MaoFroSignals.h"
#include "froBl/froMgmtSwU/export/SupSysCtrlEngine.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosisSignals.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "fuzz/FuzzSignals.h"
#include "fuzz/FuzzTrace.h"
#include "platform/VantoTransactionClient.h"
#include "vanto/VantoNameServer.h"
#include "vanto/VantoRpuServer.h"
#include "vanto/VantoTransactionServer.h"

#include "ose/World.h"

#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

using namespace maofro;

constexpr ose::SIGSELECT kNumbers[] = {MAOFRO_CREATE_REQ,       MAOFRO_SET_REQ,    MAOFRO_GET_REQ,
                                       MAOFRO_DELETE_REQ,       MAOFRO_ACTION_REQ, MAOFRO_ACTION_NO_CFM_REQ,
                                       MAOFRO_IN_SERVICE_REQ,   MAOFRO_NOTIFY_SUBSCRIBE_REQ2};

constexpr const char* kCoreServers[] = {"ssc_cabinet_management_server", "ssc_equipment_management_server",
                                        "ssc_power_management_server", "ssc_alarm_control_server"};

VantoDbConfig& database()
{
    static VantoDbConfig config;
    return config;
}

void startProcess(ose::World& world, ose::Node& node, const char* name, std::function<void()> entry)
{
    ose::ProcessSpec spec;
    spec.name = name;
    spec.entry = std::move(entry);
    world.start(world.createProcess(node, spec));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    const std::string dir = std::filesystem::temp_directory_path() / ("ssc_maofro_fuzz_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    database().connectionString = VantoDb_defaultConnectionString(dir);
    database().wait = [](std::chrono::milliseconds) {};
    database().maxConnectAttempts = 3;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const bool commit = (input.byte() & 1) != 0;
    DatabaseFacade::configure(database());
    ose::ClockConfig clock;
    clock.mode = ose::ClockMode::Virtual;
    ose::World world(clock);
    ose::Node& node = world.defaultNode();
    createTransactionServer(world, node, database());
    createNameServer(world, node);
    createRpuServer(world, node, VantoRpuConfig{});
    for (const char* name : kCoreServers) startProcess(world, node, name, dropAnswersForever);
    startProcess(world, node, kSupSysProcessName, supSysMain);
    startProcess(world, node, "maofro_fuzz_client", [&input, commit] {
        ose::delay(6000); // the object layer is up after its hunts for the core
        ose::PROCESS objects = 0;
        ose::hunt(kSupSysProcessName, 0, &objects, nullptr);
        VantoTransactionClient transactions;
        std::int32_t transactionId = 0;
        transactions.create_e(0, transactionId, 0);
        while (!input.empty()) {
            ose::Signal* signal = nextSignal(input, kNumbers);
            ose::send(&signal, objects);
            ose::delay(10);
        }
        if (commit) transactions.commit_e(transactionId, 1);
        else transactions.rollBack_e(transactionId, 1);
        dropAnswersForever();
    });
    world.runFor(120000);
    return 0;
}
