#pragma once
// The own node: its record, and with it whether this node runs the support
// system. Taking or losing that role switches the hardware side on or off.

#include "cabinet/NodeFacadeIf.h"
#include "cabinet/NodeIf.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FaultsRegisterReportIf.h"
#include "frame/Noncopyable.h"
#include "frame/SscHandleIf.h"

class NodeFacade : public NodeFacadeIf, public FaultsRegisterReportIf, public NodeIf, private Noncopyable {
public:
    NodeFacade(SscHandleIf& ssc, FaultsRegisterIf& faults);
    ~NodeFacade() override;

    void setEventHandler(NodeEventIf* handler) override { m_pEventHandler = handler; }
    void setNodeRecord(const NodeRecord& record) override;
    const NodeRecord& getNodeRecord() const override { return m_record; }
    void ceaseCommunicationFault() override;
    void raiseCommunicationFault() override;
    void setDualBoxSupported(bool supported) override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

private:
    SscHandleIf* m_pSsc;
    FaultsRegisterIf* m_pFaults;
    NodeEventIf* m_pEventHandler = nullptr;
    NodeRecord m_record;
};
