#pragma once
// Checks hub positions for configuration and hands the two hub position
// faults, whoever raised them, to the event handler.

#include "frame/FaultsRegisterIf.h"
#include "frame/FaultsRegisterReportIf.h"
#include "frame/Noncopyable.h"
#include "hwu/HdlcAddressFacadeIf.h"

class HdlcAddressFacade : public HdlcAddressFacadeIf, public FaultsRegisterReportIf, private Noncopyable {
public:
    explicit HdlcAddressFacade(FaultsRegisterIf& faultsRegister);
    ~HdlcAddressFacade() override;

    void setEventHandler(HdlcAddressEventIf* handler) override { m_pEventHandler = handler; }
    bool checkHubPositions(std::span<const std::string_view> hubPositions, const FuncId_t& funcId) override;
    bool getHdlcAddress(std::string_view hubPosition, std::uint32_t funcType, HdlcAddress* address) override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

private:
    bool checkTwo(std::string_view first, std::string_view second, std::uint32_t funcType, const FuncId_t& funcId);
    void reportFaulty(std::string_view hubPosition, const FuncId_t& funcId);

    FaultsRegisterIf* m_pFaultsRegister;
    HdlcAddressEventIf* m_pEventHandler = nullptr;
};
