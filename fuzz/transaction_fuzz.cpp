// Signals to the transaction server "VantoTransaction" from a client that
// may send anything: each piece of the input is one signal, its first byte
// choosing the number. The database cannot be reached, so no statement that
// the fuzzer writes is ever run.

#include "fuzz/FuzzSignals.h"
#include "fuzz/FuzzTrace.h"
#include "platform/VantoTransactionSignals.h"
#include "vanto/VantoTransactionServer.h"

#include "ose/Kernel.h"
#include "ose/World.h"


namespace {

constexpr ose::SIGSELECT kNumbers[] = {
    vanto_trans::VANTO_TRANS_CREATE_REQ,      vanto_trans::VANTO_TRANS_REGISTER_REQ,
    vanto_trans::VANTO_TRANS_COMMIT_REQ,      vanto_trans::VANTO_TRANS_ROLLBACK_REQ,
    vanto_trans::VANTO_TRANS_CONNECT_REQ,     vanto_trans::VANTO_TRANS_CLIENT_DOWN_IND,
    vanto_trans::VANTO_TRANS_SQL_PART_IND,    vanto_trans::VANTO_TRANS_SQL_IND,
    0x12345678u,
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ose::World world;
    VantoDbConfig database;
    database.connectionString = "DRIVER=ssc-fuzz-no-such-driver";
    database.maxConnectAttempts = 1;
    database.wait = [](std::chrono::milliseconds) {};
    const ose::PROCESS server = createTransactionServer(world, world.defaultNode(), database);

    ose::ProcessSpec client;
    client.name = "client";
    client.entry = [data, size, server] {
        FuzzInput input(data, size);
        while (!input.empty()) {
            ose::Signal* signal = nextSignal(input, kNumbers);
            ose::send(&signal, server);
        }
        dropAnswersForever();
    };
    world.start(world.createProcess(world.defaultNode(), client));
    world.runFor(60'000);
    return 0;
}
