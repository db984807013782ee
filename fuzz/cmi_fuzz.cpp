// Cabinet management requests from anywhere: a client process sends the
// real core, with the default site's cabinet on the bus, signals of the CMI
// numbers made of the input (any length, any object type, any
// configuration), with a little time between them. The core must refuse or
// drop what makes no sense, read nothing beyond a signal, and go on serving,
// whatever role the input gives the node.

#include "adapters/CmiSignals.h"
#include "fuzz/FuzzSignals.h"
#include "fuzz/FuzzTrace.h"
#include "platform/LoadModule.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"

#include "ose/Kernel.h"
#include "ose/World.h"

namespace {

using namespace cmi;

constexpr ose::SIGSELECT kNumbers[] = {CMI_SET_CONFIG_REQ,         CMI_DELETE_CONFIG_REQ,
                                       CMI_SUBSCRIBE_RESOURCE_DATA_REQ, CMI_UNSUBSCRIBE_RESOURCE_DATA_REQ,
                                       CMI_GET_RESOURCE_DATA_REQ,  CMI_ACTION_REQ,
                                       CMI_UPDATE_PRODUCT_DATA_REQ};

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
    for (auto [type, address] : {std::pair{sim::UnitType::SCU, 32}, {sim::UnitType::PSU, 48}})
        cabinet.addUnit(type, 1, static_cast<std::uint8_t>(address));
    ose::World world;
    sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
    createCoreProcess(world, world.defaultNode());
    ose::ProcessSpec client;
    client.name = "cmi_fuzz_client";
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
