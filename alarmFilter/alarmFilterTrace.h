#pragma once
// Trace group of the fault and alarm filters of the object process. The
// levels are those of the object process (supSysTrace.h).

#include "ose/Trace.h"

namespace alarm_filter_trace {

inline ose::TraceGroupId alarmFilterGroup() { return ose::traceGroup<"supSysAlarmFilterSwU">(); }

} // namespace alarm_filter_trace
