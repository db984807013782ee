// Cabinet management requests from anywhere: a client process sends the
// real core, with the default site's cabinet on the bus, signals of the CMI
// numbers made of the input (any length, any object type, any
// configuration), with a little time between them. The core must refuse or
// drop what makes no sense, read nothing beyond a signal, and go on serving,
// whatever role the input gives the node.

#include "adapters/CmiSignals.h"
#include "fuzz/FuzzTrace.h"
#include "fuzz/ServerFuzz.h"

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
    const ServerFuzz fuzz{kServerName, "cmi_fuzz_client", kNumbers,
                          {{sim::UnitType::SCU, 32},
                           {sim::UnitType::PSU, 48}},
                          20'000};
    runServerFuzz(fuzz, data, size);
    return 0;
}
