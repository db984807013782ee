#pragma once
// Trace groups of the object layer used by the object model, the XML format
// and the object database.

#include "ose/Trace.h"

namespace fro_trace {

inline ose::TraceGroupId froGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysFroLU");
    return id;
}

inline ose::TraceGroupId xmlGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysXmlLU");
    return id;
}

inline ose::TraceGroupId dbGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysFroDbLU");
    return id;
}

inline ose::TraceGroupId mgmtGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysFroMgmtSwU");
    return id;
}

// Levels of the object process.
inline constexpr unsigned kError = 1;
inline constexpr unsigned kInfo = 4;
inline constexpr unsigned kUnexpected = 5;
inline constexpr unsigned kFlow = 7;

} // namespace fro_trace
