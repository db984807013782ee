// The node platform's name server and RPU server and the object process's
// start, fed signals of their numbers made of the input (any length, any
// field) from a process that may be anyone: the handshake must take what
// the platform says or drop it, restarts must leave nothing behind, and no
// server may read beyond a signal or stop serving.

#include "froBl/froMgmtSwU/export/SupSysCtrlEngine.h"
#include "froBl/froMgmtSwU/export/SupSysDiagnosisSignals.h"
#include "froBl/froMgmtSwU/export/TimerSignals.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "fuzz/FuzzSignals.h"
#include "fuzz/FuzzTrace.h"
#include "fuzz/ObjectProcessFuzz.h"
#include "platform/NameServerSignals.h"
#include "platform/VantoCliSignals.h"
#include "vanto/VantoNameServer.h"
#include "vanto/VantoRpuServer.h"
#include "vanto/VantoTransactionServer.h"

#include "ose/World.h"

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

using namespace vanto_cli;
using namespace name_server;

constexpr ose::SIGSELECT kNameServerNumbers[] = {NS_ADD_SERVICE, NS_FIND_SERVICE, 31604, NS_HUNT_SIG};
constexpr ose::SIGSELECT kRpuServerNumbers[] = {VANTO_CLI_GET_RPU_REQ, VANTO_CLI_REGISTER_RPU_REQ,
                                                VANTO_CLI_RESTART_PGM_REQ, VANTO_RPU_STATUS_REQ,
                                                VANTO_RPU_SET_ROLE_REQ, VANTO_RPU_SHUTDOWN_REQ,
                                                VANTO_RPU_ADD_REQ, VANTO_RPU_CLIENT_DOWN_IND};
constexpr ose::SIGSELECT kObjectProcessNumbers[] = {
    VANTO_CLI_GET_RPU_CFM,  VANTO_CLI_ACTIVE_RPU,   VANTO_CLI_PASSIVE_RPU, VANTO_CLI_ADD_RPU_IND,
    VANTO_CLI_REMOVE_RPU_IND, VANTO_CLI_SHUTDOWN_RPU, SUP_SYS_TIMER_SIG,    SUP_SYS_DIAG_TIMER_REQ,
    NS_ADD_SERVICE_REPLY,   0x4711};





} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    fuzzDatabase("platform");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    emptyFuzzDatabase();
    DatabaseFacade::configure(fuzzDatabase());
    ose::ClockConfig clock;
    clock.mode = ose::ClockMode::Virtual;
    ose::World world(clock);
    ose::Node& node = world.defaultNode();
    createTransactionServer(world, node, fuzzDatabase());
    createNameServer(world, node);
    startCoreStandIns(world, node);
    ose::PROCESS objects = 0;
    VantoRpuConfig rpu;
    rpu.rpuKnown = (input.byte() & 1) != 0;
    rpu.restartLoadModule = [&world, &node, &objects] {
        world.kill(objects);
        objects = startFuzzProcess(world, node, kSupSysProcessName, supSysMain);
    };
    createRpuServer(world, node, rpu);
    objects = startFuzzProcess(world, node, kSupSysProcessName, supSysMain);

    ose::ProcessSpec sender;
    sender.name = "platform_fuzz_client";
    sender.entry = [&input, &objects] {
        while (!input.empty()) {
            const std::uint8_t target = input.byte() % 3;
            ose::Signal* signal = nullptr;
            ose::PROCESS to = 0;
            if (target == 0) {
                signal = nextSignal(input, kNameServerNumbers);
                ose::hunt(name_server::kServerName, 0, &to, nullptr);
            } else if (target == 1) {
                signal = nextSignal(input, kRpuServerNumbers);
                ose::hunt(vanto_cli::kServerName, 0, &to, nullptr);
            } else {
                signal = nextSignal(input, kObjectProcessNumbers);
                to = objects;
            }
            ose::send(&signal, to);
            ose::delay(input.byte() * 50u);
        }
        dropAnswersForever();
    };
    world.start(world.createProcess(node, sender));
    world.runFor(30000);
    return 0;
}
