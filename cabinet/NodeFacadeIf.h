#pragma once
// The own node as the cabinet interface configures it.

#include "cabinet/NodeEventIf.h"
#include "cabinet/NodeRecord.h"

class NodeFacadeIf {
public:
    virtual ~NodeFacadeIf() = default;
    virtual void setEventHandler(NodeEventIf* handler) = 0;
    virtual void setNodeRecord(const NodeRecord& record) = 0;
    virtual const NodeRecord& getNodeRecord() const = 0;
    virtual void ceaseCommunicationFault() = 0;
    virtual void raiseCommunicationFault() = 0;
    virtual void setDualBoxSupported(bool supported) = 0;
};
