#pragma once
// The power management interface: battery backup, power distribution and
// power supply, configured by the object layer, with status back to it.
// Reachable from other processes by the name "ssc_power_management_server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/AdapterBase.h"

class PmiAdapter : public AdapterBase {
public:
    explicit PmiAdapter(SignalDispatcherIf* dispatcher);
    ~PmiAdapter() override;
    PmiAdapter(const PmiAdapter&) = delete;
    PmiAdapter& operator=(const PmiAdapter&) = delete;

    const char* getProcessName() const override { return "ssc_power_management_server"; }
    const char* getServerName() const override { return "PmiAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
