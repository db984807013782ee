#pragma once
// The equipment management interface: clients configure units through it,
// subscribe their status, read product data and measurements, reset them,
// and are told of their faults. It holds no unit state: only who configured
// and who subscribed what. Reachable by the name
// "ssc_equipment_management_server".

#include "adapters/AlarmCtrlIf.h"
#include "adapters/ApcInciClientIf.h"
#include "adapters/ApcInciServerIf.h"
#include "cabinet/NodeIf.h"
#include "adapters/EmiSignals.h"
#include "adapters/RruConfigurationIf.h"
#include "cabinet/ExternalNodeEventIf.h"
#include "cabinet/ExternalNodeFacadeIf.h"
#include "frame/AdapterBase.h"
#include "hwu/HwuEventIf.h"
#include "hwu/HwuFacadeIf.h"

#include <cstdint>

class EmiAdapter : public AdapterBase, public HwuEventIf, public ExternalNodeEventIf {
public:
    // The unit facades, not owned.
    struct Facades {
        HwuFacadeIf* scu = nullptr;
        HwuFacadeIf* sau = nullptr;
        HwuFacadeIf* psu = nullptr;
        HwuFacadeIf* pdu = nullptr;
        HwuFacadeIf* bfu = nullptr;
        HwuFacadeIf* clu = nullptr;
        ExternalNodeFacadeIf* externalNode = nullptr;
        // The alarm side; NIL until it exists, and alarm port groups are
        // then taken without effect.
        AlarmCtrlIf* alarms = nullptr;
        RruConfigurationIf* rru = nullptr;
        // The inter-node link and the own node; NIL while they do not exist.
        ApcInciServerIf* apcInciServer = nullptr;
        ApcInciClientIf* apcInciClient = nullptr;
        const NodeIf* node = nullptr;
    };

    EmiAdapter(SignalDispatcherIf* dispatcher, const Facades& facades);
    ~EmiAdapter() override;
    EmiAdapter(const EmiAdapter&) = delete;
    EmiAdapter& operator=(const EmiAdapter&) = delete;

    const char* getProcessName() const override { return emi::kServerName; }
    const char* getServerName() const override { return "EmiAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;

    // HwuEventIf
    void restartFinished(const FuncId_t& funcId) override;
    void statusChanged(const FuncId_t& funcId, const HwuStatusRecord& record) override;
    void efuseStatusChanged(std::uint32_t pduFuncInst, std::uint32_t efuseFuncInst, std::uint32_t state) override;
    void raiseFault(HwuFault fault, const FuncId_t& funcId) override;
    void ceaseFault(HwuFault fault, const FuncId_t& funcId) override;

    // ExternalNodeEventIf. Adding and removing a node is news for the
    // inter-node server.
    void nodeAdded(const ExternalNode& node) override;
    void nodeRemoved(std::int32_t objectId, std::int32_t nin) override;
    void nodeChanged(const ExternalNode& node) override;
    void raiseFault(ExternalNodeFault fault, std::uint32_t funcInst) override;
    void ceaseFault(ExternalNodeFault fault, std::uint32_t funcInst) override;

private:
    void handleSetConfigReq(ose::Signal* signal);
    void handleDeleteConfigReq(ose::Signal* signal);
    void handleSubscribeResourceDataReq(ose::Signal* signal);
    void handleUnsubscribeResourceDataReq(ose::Signal* signal);
    void handleGetResourceDataReq(ose::Signal* signal);
    void handleGetUnitProductDataReq(ose::Signal* signal);
    void handleGetUnitMeasurementDataReq(ose::Signal* signal);
    void handleActionReq(ose::Signal* signal);

    // The request's header, traced as received; NIL (and a trace) when the
    // signal is shorter than the header.
    const emi::EMI_HEADER_S* receive(ose::Signal* signal, const char* name, ObjectSubscriber& client);
    HwuFacadeIf* facadeOf(std::uint16_t objectType) const;
    void configure(const emi::EMI_SET_CONFIG_HWU_REQ_S& request, std::uint16_t objectType, std::uint32_t objectId);
    // The present resource data of an object; false when it has none.
    bool resourceData(std::uint16_t objectType, std::uint32_t objectId, emi::EMI_RESOURCE_DATA_S& data,
                      bool& operational);
    void reportClimate(const ObjectSubscriber& client);

    template <typename T>
    void send(T& body, ose::SIGSELECT sigNo, const ObjectSubscriber& client, const char* name);
    void sendRej(ose::SIGSELECT sigNo, const ObjectSubscriber& client, std::uint16_t errorCode, const char* name);
    void sendHeader(ose::SIGSELECT sigNo, const ObjectSubscriber& client, const char* name);
    void sendActionRej(const ObjectSubscriber& client, std::uint16_t actionType, std::uint16_t errorCode);
    void sendFault(ose::SIGSELECT sigNo, std::uint16_t faultType, std::uint16_t objectType, std::uint32_t objectId);
    bool isServed(std::uint16_t objectType) const;
    void configureNode(ose::Signal* signal, std::uint32_t objectId);
    void configurePortGroup(ose::Signal* signal);
    // A secondary node asks the primary for its news again.
    void subscribeAtPrimary();
    void nodeData(std::uint32_t objectId, emi::EMI_RESOURCE_DATA_S& data);

    Facades m_facades;
};
