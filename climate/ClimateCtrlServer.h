#pragma once
// The climate control interface: other software registers temperature
// sensors and sends their measurements; secondary nodes send their air
// flow demand.
// Reachable from other processes by the name "ssc_climate_control_server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/SSC_Server.h"

class ClimateCtrlServer : public SSC_Server {
public:
    explicit ClimateCtrlServer(SignalDispatcherIf* dispatcher);
    ~ClimateCtrlServer() override;
    ClimateCtrlServer(const ClimateCtrlServer&) = delete;
    ClimateCtrlServer& operator=(const ClimateCtrlServer&) = delete;

    const char* getProcessName() const override { return "ssc_climate_control_server"; }
    const char* getServerName() const override { return "ClimateCtrlServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
