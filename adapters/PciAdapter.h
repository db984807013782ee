#pragma once
// The power control interface: other software on the node follows the
// battery backup's state and is asked to hold or release load.
// Reachable from other processes by the name "ssc_power_control_server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/AdapterBase.h"

class PciAdapter : public AdapterBase {
public:
    explicit PciAdapter(SignalDispatcherIf* dispatcher);
    ~PciAdapter() override;
    PciAdapter(const PciAdapter&) = delete;
    PciAdapter& operator=(const PciAdapter&) = delete;

    const char* getProcessName() const override { return "ssc_power_control_server"; }
    const char* getServerName() const override { return "PciAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
