#pragma once
// Trace groups of the object process's frame: its engine, signal
// distribution, timers, the way to the core and the name server.

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "ose/Trace.h"

namespace sup_sys_trace {

inline ose::TraceGroupId engineGroup() { return ose::traceGroup<"supSysEngineSwU">(); }
inline ose::TraceGroupId timerGroup() { return ose::traceGroup<"supSysTimerLU">(); }
inline ose::TraceGroupId communicationGroup() { return ose::traceGroup<"supSysCommunicationSwU">(); }
inline ose::TraceGroupId nameServerGroup() { return ose::traceGroup<"supSysNsiSwU">(); }
inline ose::TraceGroupId managementGroup() { return ose::traceGroup<"supSysMgmtSwU">(); }
inline ose::TraceGroupId froCtrlGroup() { return ose::traceGroup<"supSysFroCtrlSwU">(); }

// Levels of the object process: those of the object layer, and the signal
// levels of the frame.
using fro_trace::kError;
using fro_trace::kFlow;
using fro_trace::kInfo;
using fro_trace::kUnexpected;
inline constexpr unsigned kSent = 15;
inline constexpr unsigned kReceived = 16;

} // namespace sup_sys_trace
