#pragma once
// The equipment management interface: the object layer configures units
// and external nodes through it and subscribes their status and faults.
// Reachable from other processes by the name "ssc_equipment_management_server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/AdapterBase.h"

class EmiAdapter : public AdapterBase {
public:
    explicit EmiAdapter(SignalDispatcherIf* dispatcher);
    ~EmiAdapter() override;
    EmiAdapter(const EmiAdapter&) = delete;
    EmiAdapter& operator=(const EmiAdapter&) = delete;

    const char* getProcessName() const override { return "ssc_equipment_management_server"; }
    const char* getServerName() const override { return "EmiAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
