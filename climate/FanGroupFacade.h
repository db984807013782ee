#pragma once
// The outward face of the fan groups: configuration in, to the climate
// manager; fan group faults out, to the cabinet adapter.

#include "climate/FanGroupFacadeIf.h"
#include "frame/FaultsRegisterReportIf.h"

class FaultsRegisterIf;

class FanGroupFacade : public FanGroupFacadeIf, public FaultsRegisterReportIf {
public:
    explicit FanGroupFacade(FaultsRegisterIf& faults);
    ~FanGroupFacade() override;
    FanGroupFacade(const FanGroupFacade&) = delete;
    FanGroupFacade& operator=(const FanGroupFacade&) = delete;

    void setEventHandler(FanGroupEventIf* handler) override { m_pEventHandler = handler; }
    FanGroupEventIf* getEventHandler() const { return m_pEventHandler; }
    void configureFanGroup(std::uint32_t funcInst, std::uint32_t fanGroupNumber, std::uint32_t cabinetId) override;
    void deleteFanGroup(std::uint32_t funcInst) override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

private:
    FaultsRegisterIf* m_pFaults;
    FanGroupEventIf* m_pEventHandler = nullptr;
};
