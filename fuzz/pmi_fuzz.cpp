// Power management requests from anywhere: a client process sends the real
// core, with a PSU and a BFU of the default cabinet on the bus, signals of
// the PMI numbers made of the input (any length, any object type, any
// configuration or action), with a little time between them. The core must
// refuse or drop what makes no sense, read nothing beyond a signal, and go
// on serving.

#include "adapters/PmiSignals.h"
#include "fuzz/FuzzTrace.h"
#include "fuzz/ServerFuzz.h"

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
    const ServerFuzz fuzz{kServerName, "pmi_fuzz_client", kNumbers,
                          {{sim::UnitType::PSU, 48},
                           {sim::UnitType::BFU, 64}},
                          20'000};
    runServerFuzz(fuzz, data, size);
    return 0;
}
