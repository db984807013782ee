#pragma once
// The core's client towards the alarm servers of the radio units: it
// subscribes their external alarm ports and passes the alarms on.
// Reachable from other processes by the name "ALM_Server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/AdapterBase.h"

class AlmAdapter : public AdapterBase {
public:
    explicit AlmAdapter(SignalDispatcherIf* dispatcher);
    ~AlmAdapter() override;
    AlmAdapter(const AlmAdapter&) = delete;
    AlmAdapter& operator=(const AlmAdapter&) = delete;

    const char* getProcessName() const override { return "ALM_Server"; }
    const char* getServerName() const override { return "AlmAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
