#pragma once
// The primary node's end of the inter-node link. It is not brought up with
// a phantom at start: it publishes itself when the node takes the primary
// role.
// Reachable from other processes by the name "APC_INCI_Server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/SSC_Server.h"

class ApcInciServer : public SSC_Server {
public:
    explicit ApcInciServer(SignalDispatcherIf* dispatcher);
    ~ApcInciServer() override;
    ApcInciServer(const ApcInciServer&) = delete;
    ApcInciServer& operator=(const ApcInciServer&) = delete;

    const char* getProcessName() const override { return "APC_INCI_Server"; }
    const char* getServerName() const override { return "ApcInciServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
