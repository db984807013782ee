// Power management requests from anywhere: a client process sends the real
// core, with a PSU and a BFU of the default cabinet on the bus, signals of
// the PMI numbers made of the input (any length, any object type, any
// configuration or action), with a little time between them. The core must
// refuse or drop what makes no sense, read nothing beyond a signal, and go
// on serving.

#include "adapters/PmiSignals.h"
#include "fuzz/FuzzSignals.h"
#include "fuzz/FuzzTrace.h"
#include "platform/LoadModule.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"

#include "ose/Kernel.h"
#include "ose/World.h"

namespace {

using namespace pmi;

constexpr ose::SIGSELECT kNumbers[] = {PMI_SET_CONFIG_REQ,        PMI_DELETE_CONFIG_REQ,
                                       PMI_SUBSCRIBE_RESOURCE_DATA_REQ, PMI_UNSUBSCRIBE_RESOURCE_DATA_REQ,
                                       PMI_GET_RESOURCE_DATA_REQ, PMI_ACTION_REQ};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    sim::SimCabinet cabinet;
    cabinet.logCapacity = 0;
    for (auto [type, address] : {std::pair{sim::UnitType::PSU, 48}, {sim::UnitType::BFU, 64}})
        cabinet.addUnit(type, 1, static_cast<std::uint8_t>(address));
    ose::World world;
    sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
    createCoreProcess(world, world.defaultNode());
    ose::ProcessSpec client;
    client.name = "pmi_fuzz_client";
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
