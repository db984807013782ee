#pragma once
// The outward face of the power supply: its voltage limits in, to the power
// control, and the system voltage read back; its faults out, to its event
// handler.

#include "frame/FaultsRegisterReportIf.h"
#include "power/PowerSupplyFacadeIf.h"

class FaultsRegisterIf;
class PowerCtrlManagerIf;

class PowerSupplyFacade : public PowerSupplyFacadeIf, public FaultsRegisterReportIf {
public:
    // `manager` may be NIL: the limits are then traced and dropped and no
    // system voltage is known.
    PowerSupplyFacade(FaultsRegisterIf& faults, PowerCtrlManagerIf* manager);
    ~PowerSupplyFacade() override;
    PowerSupplyFacade(const PowerSupplyFacade&) = delete;
    PowerSupplyFacade& operator=(const PowerSupplyFacade&) = delete;

    // The core makes the facades before the power manager.
    void setManager(PowerCtrlManagerIf* manager) { m_pManager = manager; }
    void setEventHandler(PowerSupplyEventIf* handler) override { m_pPowerSupplyAdapter = handler; }
    void updatePowerSupply(const std::int16_t values[]) override;
    void deletePowerSupply() override;
    std::int32_t getSystemVoltage() const override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

private:
    void report(const FaultId_t& faultId, const FuncId_t& funcId, bool raise);

    FaultsRegisterIf* m_pFaults;
    PowerCtrlManagerIf* m_pManager;
    PowerSupplyEventIf* m_pPowerSupplyAdapter = nullptr;
};
