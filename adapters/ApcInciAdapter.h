#pragma once
// The power part of the inter-node protocol on the primary node: secondary
// nodes subscribe the battery backup's state through it.
// Reachable from other processes by the name "APC_INCI_Server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/AdapterBase.h"

class ApcInciAdapter : public AdapterBase {
public:
    explicit ApcInciAdapter(SignalDispatcherIf* dispatcher);
    ~ApcInciAdapter() override;
    ApcInciAdapter(const ApcInciAdapter&) = delete;
    ApcInciAdapter& operator=(const ApcInciAdapter&) = delete;

    const char* getProcessName() const override { return "APC_INCI_Server"; }
    const char* getServerName() const override { return "ApcInciAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
