#pragma once
// Trace groups and levels of the core process. The groups are registered in
// their fixed order at load (registerCoreTraceGroups); the accessors register
// on first use as well, so that unit tests need no start-up.

#include "ose/Trace.h"

namespace ssc_trace {

inline ose::TraceGroupId swuGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlSWU");
    return id;
}
inline ose::TraceGroupId climateGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlClimate");
    return id;
}
inline ose::TraceGroupId powerGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlPower");
    return id;
}
inline ose::TraceGroupId batteryGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlBattery");
    return id;
}
inline ose::TraceGroupId battLogGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlBattLog");
    return id;
}
inline ose::TraceGroupId alarmGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlAlarm");
    return id;
}
inline ose::TraceGroupId equipmentGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlEquipment");
    return id;
}
inline ose::TraceGroupId priSecGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlPriSec");
    return id;
}
inline ose::TraceGroupId a4ciGroup()
{
    static const ose::TraceGroupId id = ose::Trace::registerGroup("supSysCtrlA4ci");
    return id;
}

// Levels of the core.
inline constexpr unsigned kError = 1;
inline constexpr unsigned kInfo = 4;
inline constexpr unsigned kUnexpected = 5;
inline constexpr unsigned kFlow = 7;
inline constexpr unsigned kSignalName = 11;
inline constexpr unsigned kSignalSent = 15;
inline constexpr unsigned kSignalReceived = 16;

} // namespace ssc_trace
