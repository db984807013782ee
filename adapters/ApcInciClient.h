#pragma once
// The secondary node's end of the inter-node link: it reaches the primary's
// "APC_INCI_Server" over the EC bus link.
// Reachable from other processes by the name "ApcInci_Client". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "frame/SSC_Server.h"

class ApcInciClient : public SSC_Server {
public:
    explicit ApcInciClient(SignalDispatcherIf* dispatcher);
    ~ApcInciClient() override;
    ApcInciClient(const ApcInciClient&) = delete;
    ApcInciClient& operator=(const ApcInciClient&) = delete;

    const char* getProcessName() const override { return "ApcInci_Client"; }
    const char* getServerName() const override { return "ApcInciClient"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
};
