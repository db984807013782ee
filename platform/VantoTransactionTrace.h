#pragma once
// Trace group of the platform's transaction client.

#include "ose/Trace.h"

inline ose::TraceGroupId vtpGroup() { return ose::traceGroup<"supSysVtpIf">(); }
