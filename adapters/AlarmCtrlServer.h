#pragma once
// The alarm control interface of the core: other software and the object
// layer register alarm ports and are told of external alarms.
// Reachable from other processes by the name "ssc_alarm_control_server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/SSC_Server.h"

class AlarmCtrlServer : public SSC_Server {
public:
    explicit AlarmCtrlServer(SignalDispatcherIf* dispatcher);
    ~AlarmCtrlServer() override;
    AlarmCtrlServer(const AlarmCtrlServer&) = delete;
    AlarmCtrlServer& operator=(const AlarmCtrlServer&) = delete;

    const char* getProcessName() const override { return "ssc_alarm_control_server"; }
    const char* getServerName() const override { return "AlarmCtrlServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
