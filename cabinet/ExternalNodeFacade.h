#pragma once
// The other nodes of the site. On the primary each one is a link to make
// over the EC bus and a node instance number to hand out; on a secondary it
// is only a row, which the primary numbers later.

#include "cabinet/ExternalNodeCtrlIf.h"
#include "cabinet/ExternalNodeFacadeIf.h"
#include "cabinet/NodeIf.h"
#include "frame/EC_LinkedList.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FaultsRegisterReportIf.h"
#include "frame/Noncopyable.h"

class ExternalNodeFacade : public ExternalNodeFacadeIf,
                           public FaultsRegisterReportIf,
                           public ExternalNodeCtrlIf,
                           private Noncopyable {
public:
    ExternalNodeFacade(FaultsRegisterIf& faults, const NodeIf& ownNode);
    ~ExternalNodeFacade() override;

    void setEventHandler(ExternalNodeEventIf* handler) override { m_pExternalNodeEventHandler = handler; }
    void addNode(std::int32_t objectId, const HubPositionList& hubPositions) override;
    void removeNode(std::int32_t objectId) override;
    bool getNodeRecord(std::int32_t objectId, NodeRecord* record) override;
    void updateNode(std::int32_t objectId, const NodeRecord& record) override;
    void updateNodeByNin(std::int32_t nin, const NodeRecord& record) override;
    bool getNode(std::int32_t objectId, ExternalNode* node) override;
    ExternalNodeList& getNodeList() override { return m_nodes; }

    void addObserver(ExternalNodeObserver* observer) override;
    void removeObserver(ExternalNodeObserver* observer) override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

private:
    bool isPrimary() const { return m_pNode->getNodeRecord().supportSystemControl != 0; }
    void linkAll(std::int32_t objectId, const HubPositionList& hubPositions, ExternalNodeList::Addresses& addresses);
    void forward(const FaultId_t& faultId, const FuncId_t& funcId, bool raise);

    ExternalNodeEventIf* m_pExternalNodeEventHandler = nullptr;
    FaultsRegisterIf* m_pFaults;
    ExternalNodeList m_nodes;
    EC_LinkedList<ExternalNodeObserver*> m_observers;
    const NodeIf* m_pNode;
};
