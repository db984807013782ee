#pragma once
// The other nodes of the site as the equipment and inter-node interfaces
// configure and update them.

#include "cabinet/ExternalNodeEventIf.h"
#include "cabinet/ExternalNodeList.h"
#include "hwu/HdlcAddressBroker.h"

#include <cstdint>

class ExternalNodeFacadeIf {
public:
    virtual ~ExternalNodeFacadeIf() = default;
    virtual void setEventHandler(ExternalNodeEventIf* handler) = 0;
    virtual void addNode(std::int32_t objectId, const HubPositionList& hubPositions) = 0;
    virtual void removeNode(std::int32_t objectId) = 0;
    virtual bool getNodeRecord(std::int32_t objectId, NodeRecord* record) = 0;
    virtual void updateNode(std::int32_t objectId, const NodeRecord& record) = 0;
    virtual void updateNodeByNin(std::int32_t nin, const NodeRecord& record) = 0;
    virtual bool getNode(std::int32_t objectId, ExternalNode* node) = 0;
    virtual ExternalNodeList& getNodeList() = 0;
};
