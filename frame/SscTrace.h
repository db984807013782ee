#pragma once
// Trace groups and levels of the core process. The groups are registered in
// their fixed order at load (registerCoreTraceGroups); the accessors register
// on first use as well, so that unit tests need no start-up.

#include "ose/Trace.h"

namespace ssc_trace {

inline ose::TraceGroupId swuGroup() { return ose::traceGroup<"supSysCtrlSWU">(); }
inline ose::TraceGroupId climateGroup() { return ose::traceGroup<"supSysCtrlClimate">(); }
inline ose::TraceGroupId powerGroup() { return ose::traceGroup<"supSysCtrlPower">(); }
inline ose::TraceGroupId batteryGroup() { return ose::traceGroup<"supSysCtrlBattery">(); }
inline ose::TraceGroupId battLogGroup() { return ose::traceGroup<"supSysCtrlBattLog">(); }
inline ose::TraceGroupId alarmGroup() { return ose::traceGroup<"supSysCtrlAlarm">(); }
inline ose::TraceGroupId equipmentGroup() { return ose::traceGroup<"supSysCtrlEquipment">(); }
inline ose::TraceGroupId priSecGroup() { return ose::traceGroup<"supSysCtrlPriSec">(); }
inline ose::TraceGroupId a4ciGroup() { return ose::traceGroup<"supSysCtrlA4ci">(); }

// Levels of the core.
inline constexpr unsigned kError = 1;
inline constexpr unsigned kInfo = 4;
inline constexpr unsigned kUnexpected = 5;
inline constexpr unsigned kDetail = 6;
inline constexpr unsigned kFlow = 7;
inline constexpr unsigned kSignalName = 11;
inline constexpr unsigned kSignalSent = 15;
inline constexpr unsigned kSignalReceived = 16;

} // namespace ssc_trace
