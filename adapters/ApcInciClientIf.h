#pragma once
// The inter-node client as the equipment and cabinet interfaces reach it: on
// a secondary node it links to the primary and subscribes to its news.

#include "cabinet/NodeRecord.h"
#include "hwu/HdlcAddressBroker.h"

#include <cstdint>

class SecondaryNodeNotifyIf;

class ApcInciClientIf {
public:
    virtual ~ApcInciClientIf() = default;
    virtual void createLink(std::int32_t objectId, const HubPositionList& hubPositions) = 0;
    virtual void deleteLink(std::int32_t objectId) = 0;
    virtual void generalSubscribe() = 0;
    virtual void setSecondaryNodeNotify(SecondaryNodeNotifyIf* notify) = 0;
    virtual void sendNodeInfo(const NodeRecord& record) = 0;
};
