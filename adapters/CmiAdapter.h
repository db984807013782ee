#pragma once
// The cabinet management interface: cabinet, fan groups and the node's
// role, configured by the object layer, with status and faults back to it.
// Reachable from other processes by the name "ssc_cabinet_management_server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/AdapterBase.h"

class CmiAdapter : public AdapterBase {
public:
    explicit CmiAdapter(SignalDispatcherIf* dispatcher);
    ~CmiAdapter() override;
    CmiAdapter(const CmiAdapter&) = delete;
    CmiAdapter& operator=(const CmiAdapter&) = delete;

    const char* getProcessName() const override { return "ssc_cabinet_management_server"; }
    const char* getServerName() const override { return "CmiAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
