#pragma once
// Keeps the restarts that were asked for, so that a unit's restart is
// reported as finished only when somebody asked for it, and forwards the
// units' published status.

#include "frame/EC_LinkedList.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/Noncopyable.h"
#include "frame/SscHandleIf.h"
#include "hwu/EquipmentManagerIf.h"

class EquipmentCtrlManager : public EquipmentManagerIf, private Noncopyable {
public:
    EquipmentCtrlManager(SscHandleIf& ssc, FaultsRegisterIf& faults);

    void setEventHandler(HwuEventIf* handler) override { m_pHwuEventHandler = handler; }
    void start() override {}
    void statusChanged(const FuncId_t& funcId, const HwuStatusRecord& record) override;
    void restartDone(const FuncId_t& funcId) override;
    void requestRestart(const FuncId_t& funcId) override;

private:
    EC_LinkedList<FuncId_t> m_requestedRestarts;
    SscHandleIf* m_pSsc;
    FaultsRegisterIf* m_pFaults;
    HwuEventIf* m_pHwuEventHandler = nullptr;
};
