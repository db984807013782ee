// Equipment management requests from anywhere: a client process sends the
// real core, with its simulated cabinet on the bus, signals of the EMI
// numbers made of the input (any length, any header, any configuration),
// with a little time between them. The core must refuse or drop what makes
// no sense and go on serving.

#include "adapters/EmiSignals.h"
#include "fuzz/FuzzSignals.h"
#include "fuzz/FuzzTrace.h"
#include "platform/LoadModule.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"

#include "ose/Kernel.h"
#include "ose/World.h"

namespace {

using namespace emi;

constexpr ose::SIGSELECT kNumbers[] = {EMI_SET_CONFIG_REQ,
                                       EMI_DELETE_CONFIG_REQ,
                                       EMI_SUBSCRIBE_RESOURCE_DATA_REQ,
                                       EMI_UNSUBSCRIBE_RESOURCE_DATA_REQ,
                                       EMI_GET_RESOURCE_DATA_REQ,
                                       EMI_GET_UNIT_PRODUCT_DATA_REQ,
                                       EMI_GET_UNIT_MEASUREMENT_DATA_REQ,
                                       EMI_ACTION_REQ};

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
    for (auto [type, address] : {std::pair{sim::UnitType::SCU, 32}, {sim::UnitType::PSU, 48},
                                 {sim::UnitType::PDU, 80}, {sim::UnitType::BFU, 64}})
        cabinet.addUnit(type, 1, static_cast<std::uint8_t>(address));
    ose::World world;
    sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
    createCoreProcess(world, world.defaultNode());
    ose::ProcessSpec client;
    client.name = "emi_fuzz_client";
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
    world.runFor(15'000);
    return 0;
}
