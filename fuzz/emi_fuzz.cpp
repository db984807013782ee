// Equipment management requests from anywhere: a client process sends the
// real core, with its simulated cabinet on the bus, signals of the EMI
// numbers made of the input (any length, any header, any configuration),
// with a little time between them. The core must refuse or drop what makes
// no sense and go on serving.

#include "adapters/EmiSignals.h"
#include "fuzz/FuzzTrace.h"
#include "fuzz/ServerFuzz.h"

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
    const ServerFuzz fuzz{kServerName, "emi_fuzz_client", kNumbers,
                          {{sim::UnitType::SCU, 32},
                           {sim::UnitType::PSU, 48},
                           {sim::UnitType::PDU, 80},
                           {sim::UnitType::BFU, 64}},
                          15'000};
    runServerFuzz(fuzz, data, size);
    return 0;
}
