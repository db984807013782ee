#pragma once
// Trace group of the platform servers of the node.

#include "ose/Trace.h"

inline ose::TraceGroupId vantoGroup() { return ose::traceGroup<"vanto">(); }
