#pragma once
// A unit just large enough to exercise the unit base: it polls the status of
// its kind, reads its capabilities and (for a PSU) its measurements, and
// takes the fault and start flags from the status word. It records what the
// base asked of it.

#include "frame/FuncType.h"
#include "frame/TimerService.h"
#include "hwu/HWU_ImplBase.h"
#include "hwu/HwuFactoryIf.h"

#include <variant>
#include <vector>

class TestUnit : public HWU_ImplBase, public HwuStatusIf {
public:
    static constexpr unsigned kFaultBit = 0;
    static constexpr unsigned kStartBit = 7;

    explicit TestUnit(const HwuUnitArgs& args)
        : HWU_ImplBase(args.funcId, args.hubPosition, args.hdlcAddress, args.broker, args.listener, args.faults)
    {
        initObject();
    }
    ~TestUnit() override { TimerService::stopAllTimers(this); }

    bool isAvailable() const override { return HWU_ImplBase::isAvailable(); }
    const FuncId_t& getFuncId() const override { return HWU_ImplBase::getFuncId(); }
    std::uint32_t getPort() const override { return HWU_ImplBase::getPort(); }
    std::uint32_t getHdlcAddress() const override { return HWU_ImplBase::getHdlcAddress(); }
    const std::string& getHubPosition() const override { return HWU_ImplBase::getHubPosition(); }
    bool isSameFuncId(const FuncId_t& funcId) const override { return HWU_ImplBase::isSameFuncId(funcId); }
    void reset() override { HWU_ImplBase::reset(); }
    bool getProductData(HwuProductRecord* record) override { return HWU_ImplBase::getProductData(record); }
    std::uint32_t getOperationalLedState() const override { return HWU_ImplBase::getOperationalLedState(); }
    std::uint32_t getFaultLedState() const override { return HWU_ImplBase::getFaultLedState(); }
    bool isCommunicating() const override { return HWU_ImplBase::isCommunicating(); }

    using HWU_ImplBase::setLed;

    std::vector<bool> m_faultReports; // each fault flag reported as changed
    std::uint32_t m_capabilityReads = 0;

protected:
    pp::MessageNo getStatusMsg() const override { return messages().status; }
    pp::MessageNo getCapabilityMsg() const override { return messages().capabilities; }
    void parseStatus(const PpDeviceData& data) override
    {
        m_old = m_status;
        std::visit(
            [this](const auto& record) {
                if constexpr (std::is_base_of_v<PpStatusWord, std::decay_t<decltype(record)>>) m_status = record;
            },
            data);
    }
    bool isStartFlagSet() const override { return m_status.test(kStartBit); }
    bool fetchMeasurements() override
    {
        if (m_funcId.FuncType != func_type::kPsu) return m_measuredOk = true;
        PpDeviceData measurements;
        return m_measuredOk = sendGet(pp::PSU_GET_MEASUREMENTS_REQ, nextSequence(), measurements);
    }
    void storeCapabilities(const PpDeviceData&) override { ++m_capabilityReads; }
    void clearCapabilities() override {}
    void handleStatus(bool) override
    {
        const bool fault = m_status.test(kFaultBit);
        if (!isChanged(fault, m_old.test(kFaultBit))) return;
        m_faultReports.push_back(fault);
        setHwFault(fault);
    }
    void clearStatus() override
    {
        m_status = {};
        m_old = {};
        HWU_ImplBase::clearStatus();
    }

private:
    struct Messages {
        pp::MessageNo status;
        pp::MessageNo capabilities;
    };
    Messages messages() const
    {
        switch (m_funcId.FuncType) {
        case func_type::kScu: return {pp::SCU_GET_STATUS_REQ, pp::SCU_GET_CAPABILITIES_REQ};
        case func_type::kSau: return {pp::SAU_GET_STATUS_REQ, pp::SAU_GET_CAPABILITIES_REQ};
        case func_type::kClu: return {pp::CLU_GET_STATUS_REQ, pp::CLU_GET_CAPABILITIES_REQ};
        case func_type::kBfu: return {pp::BFU_GET_STATUS_REQ, pp::BFU_GET_CAPABILITIES_REQ};
        case func_type::kPdu: return {pp::PDU_GET_STATUS_REQ, pp::PDU_GET_CAPABILITIES_REQ};
        default: return {pp::PSU_GET_STATUS_REQ, pp::PSU_GET_CAPABILITIES_REQ};
        }
    }

    PpStatusWord m_status;
    PpStatusWord m_old;
};

// Makes a TestUnit for each of the six kinds and keeps a view of each.
class TestUnitFactory : public HwuFactoryIf {
public:
    std::unique_ptr<HwuStatusIf> createUnit(const HwuUnitArgs& args) override
    {
        auto unit = std::make_unique<TestUnit>(args);
        m_made.push_back(unit.get());
        return unit;
    }
    std::vector<TestUnit*> m_made; // not owned; gone when the broker deletes them
};
