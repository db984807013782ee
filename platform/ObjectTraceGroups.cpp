#include "platform/ObjectTraceGroups.h"

#include "ose/Trace.h"

void registerObjectTraceGroups()
{
    static constexpr const char* kGroups[] = {
        "CONFIG",
        "RESTART",
        "FRO",
        "supSysAlarmFilterSwU",
        "supSysCommunicationSwU",
        "supSysEngineSwU",
        "supSysFroCtrlClassSwU",
        "supSysFroDbLU",
        "supSysFroMgmtSwU",
        "supSysFroRoIfSwU",
        "supSysFroToRoMappingSwU",
        "supSysIndHandlerLU",
        "supSysMaoFroIfSwU",
        "supSysNsiSwU",
        "supSysSigSubscrLU",
        "supSysTimerLU",
        "supSysTraceLU",
        "supSysXmlLU",
        "supSysVtpIf",
        "supSysMelvoLU",
        "supSysFroCtrlSwU",
        "supSysFroLU",
        "supSysHwuFroSwU",
        "supSysMgmtSwU",
        "supSysCtrlIfSwU",
        "supSysBatteryLogSwU",
        "supSysNcIfSwU",
        "CLIMATE",
    };
    for (const char* group : kGroups) ose::Trace::registerGroup(group);
}
