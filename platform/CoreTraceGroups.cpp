#include "platform/CoreTraceGroups.h"

#include "ose/Trace.h"

void registerCoreTraceGroups()
{
    static constexpr const char* kGroups[] = {
        "supSysCtrlSWU",     "supSysCtrlClimate",   "supSysCtrlPower",
        "supSysCtrlBattery", "supSysCtrlBattLog",   "supSysCtrlAlarm",
        "supSysCtrlEquipment", "supSysCtrlPriSec", "supSysCtrlA4ci",
    };
    for (const char* group : kGroups) ose::Trace::registerGroup(group);
}
