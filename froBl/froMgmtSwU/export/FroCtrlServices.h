#pragma once
// Where an object controller tells its object's changes. None is owned. The
// adaption interfaces are absent until the process has the configuration
// flow, the actions and the snapshot reads; a controller then leaves that
// step out, so an object is stored and its faults filtered but nothing is
// configured in the core.

class ActionIfApi;
class AlarmHandlerApi;
class ConfigIfApi;
class SnapshotParamIfApi;
class froMgr;

struct FroCtrlServices {
    froMgr* pTable = nullptr;
    AlarmHandlerApi* pAlarms = nullptr;
    ConfigIfApi* pConfig = nullptr;
    ActionIfApi* pActions = nullptr;
    SnapshotParamIfApi* pSnapshots = nullptr;
};
