#pragma once
// Trace group of the platform's transaction client.

#include "ose/Trace.h"

inline ose::TraceGroupId vtpGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysVtpIf");
    return id;
}
