#pragma once
// Trace groups of the object layer used by the object model, the XML format
// and the object database.

#include "ose/Trace.h"

namespace fro_trace {

inline ose::TraceGroupId froGroup() { return ose::traceGroup<"supSysFroLU">(); }

inline ose::TraceGroupId xmlGroup() { return ose::traceGroup<"supSysXmlLU">(); }

inline ose::TraceGroupId dbGroup() { return ose::traceGroup<"supSysFroDbLU">(); }

inline ose::TraceGroupId mgmtGroup() { return ose::traceGroup<"supSysFroMgmtSwU">(); }

// Levels of the object process.
inline constexpr unsigned kError = 1;
inline constexpr unsigned kInfo = 4;
inline constexpr unsigned kUnexpected = 5;
inline constexpr unsigned kFlow = 7;

} // namespace fro_trace
