#pragma once
// The common part of the unit facades: configuration through the broker,
// status, product data and restarts of one kind of unit, and that kind's
// faults handed to the equipment interface.

#include "frame/FaultsRegisterIf.h"
#include "frame/FaultsRegisterReportIf.h"
#include "frame/Noncopyable.h"
#include "frame/SscHandleIf.h"
#include "hwu/HwuFacadeIf.h"
#include "hwu/HwuStatusIf.h"

class HWU_Broker;

class HwuFacade : public HwuFacadeIf, public FaultsRegisterReportIf, private Noncopyable {
public:
    HwuFacade(SscHandleIf& ssc, FaultsRegisterIf& faults, std::uint32_t funcType);
    ~HwuFacade() override;

    void setEventHandler(HwuEventIf* handler) override { m_pHwuEventHandler = handler; }
    bool setConfiguration(std::uint32_t funcInst, std::string_view hubPosition, std::uint32_t cascadingOrder,
                          std::uint32_t cabinetFuncInst) override;
    bool deleteConfiguration(std::uint32_t funcInst) override;
    bool getStatusData(std::uint32_t funcInst, HwuStatusRecord* status) override;
    bool getUnitProductData(std::uint32_t funcInst, HwuProductRecord* record) override;
    bool getUnitMeasurementData(std::uint32_t, HwuMeasurementRecord*) override { return false; }
    bool restartUnit(std::uint32_t funcInst) override;
    bool configureEfuse(std::uint32_t, std::uint32_t) override { return false; }
    bool deleteEfuse(std::uint32_t) override { return false; }
    bool getEfuseStatus(std::uint32_t, std::uint32_t*) override { return false; }
    bool getClimateParams(std::uint32_t, ScuClimateParams*) override { return false; }
    std::uint32_t getFuncType() const override { return m_funcType; }

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

protected:
    FuncId_t funcIdOf(std::uint32_t funcInst) const { return FuncId_t{m_funcType, funcInst}; }
    HWU_Broker* broker() const;
    HwuStatusIf* unitOf(std::uint32_t funcInst) const;
    // The unit, available, for a measurement; NIL with the traces of `facade`
    // ("PsuFacade") and `kind` ("PSU", "Psu").
    HwuStatusIf* measurableUnit(std::uint32_t funcInst, const char* facade, const char* kind,
                                const char* kindName) const;
    // The status trace ends so for PDUs and BFUs.
    virtual const char* statusTraceEnd() const { return ""; }

    SscHandleIf* m_pSsc;
    HwuEventIf* m_pHwuEventHandler = nullptr;
    FaultsRegisterIf* m_pFaults;

private:
    bool forward(const FaultId_t& faultId, const FuncId_t& funcId, bool raise);

    std::uint32_t m_funcType;
};
