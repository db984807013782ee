// Climate control requests from anywhere: a client process sends the real
// core signals of the CCI numbers made of the input (any length, any count,
// any group), with a little time between them. The core must refuse or drop
// what makes no sense, read nothing beyond a signal, and go on serving.

#include "climate/CciSignals.h"
#include "fuzz/FuzzTrace.h"
#include "fuzz/ServerFuzz.h"

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
    runServerFuzz({kServerName, "cci_fuzz_client", kNumbers, {}, 20'000}, data, size);
    return 0;
}
