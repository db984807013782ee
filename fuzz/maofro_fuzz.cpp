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
#include "fuzz/ObjectProcessFuzz.h"
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




} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    fuzzDatabase("maofro");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const bool commit = (input.byte() & 1) != 0;
    emptyFuzzDatabase();
    DatabaseFacade::configure(fuzzDatabase());
    ose::ClockConfig clock;
    clock.mode = ose::ClockMode::Virtual;
    ose::World world(clock);
    ose::Node& node = world.defaultNode();
    createTransactionServer(world, node, fuzzDatabase());
    createNameServer(world, node);
    createRpuServer(world, node, VantoRpuConfig{});
    startCoreStandIns(world, node);
    startFuzzProcess(world, node, kSupSysProcessName, supSysMain);
    startFuzzProcess(world, node, "maofro_fuzz_client", [&input, commit] {
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
