#pragma once
// Where a trace line comes from: the world time, the node and the process
// running on this thread. Filled in by the world that runs here; outside any
// world the fields are dashes.

#include <string>

namespace ose::detail {

using TraceContextFn = std::string (*)();

// The world sets its describer when it starts running on a thread.
void setTraceContextFn(TraceContextFn fn);
std::string traceContext();

} // namespace ose::detail
