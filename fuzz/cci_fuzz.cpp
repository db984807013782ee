// Climate control requests from anywhere: a client process sends the real
// core signals of the CCI numbers made of the input (any length, any count,
// any group), with a little time between them. The core must refuse or drop
// what makes no sense, read nothing beyond a signal, and go on serving.

#include "climate/CciSignals.h"
#include "fuzz/FuzzSignals.h"
#include "fuzz/FuzzTrace.h"
#include "platform/LoadModule.h"

#include "ose/Kernel.h"
#include "ose/World.h"

namespace {

using namespace cci;

constexpr ose::SIGSELECT kNumbers[] = {CCI_CONN_ESTABLISH_REQ, CCI_CAPABILITY_REQ, CCI_REGISTER_TEMP_MEAS_REQ,
                                       CCI_DEREGISTER_TEMP_MEAS_REQ, CCI_TEMP_MEAS_FWD};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ose::World world;
    createCoreProcess(world, world.defaultNode());
    ose::ProcessSpec client;
    client.name = "cci_fuzz_client";
    client.entry = [data, size] {
        ose::delay(10);
        ose::PROCESS server = 0;
        if (!ose::hunt(kServerName, 0, &server, nullptr)) return;
        FuzzInput input(data, size);
        while (!input.empty()) {
            ose::Signal* signal = nextSignal(input, kNumbers);
            ose::send(&signal, server);
            ose::delay(input.byte() * 20U);
        }
        dropAnswersForever();
    };
    world.start(world.createProcess(world.defaultNode(), client));
    world.runFor(20'000);
    return 0;
}
