#pragma once
// The facade of the power distribution units and of their e-fuses.

#include "frame/FuncType.h"
#include "hwu/EFuseCtrlIf.h"
#include "hwu/EfuseMap.h"
#include "hwu/HwuFacade.h"

class PduFacade : public HwuFacade, public EFuseCtrlIf {
public:
    static constexpr std::uint32_t kEfuseFuncType = 19;

    PduFacade(SscHandleIf& ssc, FaultsRegisterIf& faults) : HwuFacade(ssc, faults, func_type::kPdu) {}

    // With the power distribution fault indicator.
    bool getStatusData(std::uint32_t funcInst, HwuStatusRecord* status) override;
    // The system voltage in hundredths of a volt.
    bool getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record) override;
    bool configureEfuse(std::uint32_t parentFuncInst, std::uint32_t efuseFuncInst) override;
    bool deleteEfuse(std::uint32_t efuseFuncInst) override;
    bool getEfuseStatus(std::uint32_t efuseFuncInst, std::uint32_t* state) override;

    void efuseStatusChanged(const FuncId_t& pduId, std::uint32_t number, std::uint32_t state) override;

protected:
    const char* statusTraceEnd() const override { return " from HWU_Broker"; }

private:
    EfuseMap m_efuses;
};
