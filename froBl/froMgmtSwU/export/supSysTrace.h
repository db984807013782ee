#pragma once
// Trace groups of the object process's frame: its engine, signal
// distribution, timers, the way to the core and the name server.

#include "ose/Trace.h"

namespace sup_sys_trace {

inline ose::TraceGroupId engineGroup() { return ose::traceGroup<"supSysEngineSwU">(); }
inline ose::TraceGroupId timerGroup() { return ose::traceGroup<"supSysTimerLU">(); }
inline ose::TraceGroupId communicationGroup() { return ose::traceGroup<"supSysCommunicationSwU">(); }
inline ose::TraceGroupId nameServerGroup() { return ose::traceGroup<"supSysNsiSwU">(); }
inline ose::TraceGroupId managementGroup() { return ose::traceGroup<"supSysMgmtSwU">(); }

// Levels of the object process.
inline constexpr unsigned kError = 1;
inline constexpr unsigned kInfo = 4;
inline constexpr unsigned kUnexpected = 5;
inline constexpr unsigned kFlow6 = 6;
inline constexpr unsigned kFlow = 7;
inline constexpr unsigned kSignalName = 11;
inline constexpr unsigned kSent = 15;
inline constexpr unsigned kReceived = 16;

} // namespace sup_sys_trace
