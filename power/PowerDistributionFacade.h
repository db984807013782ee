#pragma once
// The outward face of the power distribution: its load disconnect limits in,
// to the power control; its faults out, to its event handler.

#include "frame/FaultsRegisterReportIf.h"
#include "power/PowerDistributionFacadeIf.h"

class FaultsRegisterIf;
class PowerCtrlManagerIf;

class PowerDistributionFacade : public PowerDistributionFacadeIf, public FaultsRegisterReportIf {
public:
    // `manager` may be NIL: the limits are then traced and dropped.
    PowerDistributionFacade(FaultsRegisterIf& faults, PowerCtrlManagerIf* manager);
    ~PowerDistributionFacade() override;
    PowerDistributionFacade(const PowerDistributionFacade&) = delete;
    PowerDistributionFacade& operator=(const PowerDistributionFacade&) = delete;

    // The core makes the facades before the power manager.
    void setManager(PowerCtrlManagerIf* manager) { m_pManager = manager; }
    void setEventHandler(PowerDistributionEventIf* handler) override { m_pPowerDistributionAdapter = handler; }
    void updatePowerDistribution(const PowerDistributionCfg& cfg) override;
    void deletePowerDistribution() override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

private:
    void report(const FaultId_t& faultId, const FuncId_t& funcId, bool raise);

    FaultsRegisterIf* m_pFaults;
    PowerCtrlManagerIf* m_pManager;
    PowerDistributionEventIf* m_pPowerDistributionAdapter = nullptr;
};
