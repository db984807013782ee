#pragma once
// Trace group of the platform servers of the node.

#include "ose/Trace.h"

inline ose::TraceGroupId vantoGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("vanto");
    return id;
}
