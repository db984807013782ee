#pragma once
// Traces are formatted but dropped while fuzzing; SSC_FUZZ_TRACE=CONFIG
// prints them instead, to see what one input does.

#include "ose/Trace.h"

#include <cstdlib>

inline void fuzzTraceSetUp()
{
    if (const char* config = std::getenv("SSC_FUZZ_TRACE"))
        ose::Trace::configure(config);
    else
        ose::Trace::setSink([](const ose::TraceRecord&) {});
}
