#pragma once
// The cabinet management interface: cabinet, fan groups and the node's
// role, configured by the object layer, with status and faults back to it.
// Reachable from other processes by the name "ssc_cabinet_management_server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to. The equipment support function's configuration
// makes this node the primary or a secondary of the site.

#include "adapters/CmiSignals.h"
#include "adapters/SecondaryNodeNotifyIf.h"
#include "cabinet/CabinetEventIf.h"
#include "cabinet/NodeEventIf.h"
#include "cabinet/NodeRecord.h"
#include "climate/ClimateEventIf.h"
#include "climate/FanGroupEventIf.h"
#include "frame/AdapterBase.h"
#include "hwu/HdlcAddressEventIf.h"

#include <string>

class ApcInciClientIf;
class ApcInciServerIf;
class CabinetFacadeIf;
class ClimateFacadeIf;
class FanGroupFacadeIf;
class HdlcAddressFacadeIf;
class NodeFacadeIf;
struct ClimateReport;

class CmiAdapter : public AdapterBase,
                   public FanGroupEventIf,
                   public CabinetEventIf,
                   public ClimateEventIf,
                   public NodeEventIf,
                   public HdlcAddressEventIf,
                   public SecondaryNodeNotifyIf {
public:
    // Not owned; the inter-node ends may be NIL until they exist.
    struct Facades {
        FanGroupFacadeIf* fanGroups = nullptr;
        CabinetFacadeIf* cabinet = nullptr;
        ClimateFacadeIf* climate = nullptr;
        ApcInciServerIf* apcInciServer = nullptr;
        ApcInciClientIf* apcInciClient = nullptr;
        NodeFacadeIf* node = nullptr;
        HdlcAddressFacadeIf* hubPositions = nullptr;
    };
    enum NodeRole : std::uint32_t { kNoRole = 0, kPrimary = 1, kSecondary = 2 };

    CmiAdapter(SignalDispatcherIf* dispatcher, const Facades& facades);
    ~CmiAdapter() override;
    CmiAdapter(const CmiAdapter&) = delete;
    CmiAdapter& operator=(const CmiAdapter&) = delete;

    const char* getProcessName() const override { return "ssc_cabinet_management_server"; }
    const char* getServerName() const override { return "CmiAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;
    NodeRole nodeRole() const { return m_nodeRole; }

    // FanGroupEventIf
    void fanGroupState(std::uint32_t funcInst, std::uint32_t state, std::uint32_t funcType) override;
    void disconnectFaultRaised(std::uint32_t funcInst) override;
    void hwFaultRaised(std::uint32_t funcInst) override;
    void disconnectFaultCeased(std::uint32_t funcInst) override;
    void hwFaultCeased(std::uint32_t funcInst) override;
    // CabinetEventIf
    void cabinetPidUpdated(const ProductData& pid) override;
    void cabinetIdentifierUpdated(std::uint32_t funcInst) override;
    void productDataUpdated(const ProductData& pid, std::uint32_t funcInst) override;
    void smokeDetectorStatusUpdated(std::uint32_t funcInst) override;
    void raiseSmokeDetectorDisconnected(const FuncId_t& funcId) override;
    void ceaseSmokeDetectorDisconnected(const FuncId_t& funcId) override;
    void raiseDoorAlarm(const FuncId_t& funcId) override;
    void ceaseDoorAlarm(const FuncId_t& funcId) override;
    void raiseCabinetPidMismatch(const FuncId_t& funcId) override;
    void ceaseCabinetPidMismatch(const FuncId_t& funcId) override;
    void raiseSmokeDetectorAlarm(const FuncId_t& funcId) override;
    void ceaseSmokeDetectorAlarm(const FuncId_t& funcId) override;
    void raiseSmokeDetectorHwFailure(const FuncId_t& funcId) override;
    void ceaseSmokeDetectorHwFailure(const FuncId_t& funcId) override;
    void raiseNumberOfHwEntitiesMismatch(const FuncId_t& funcId, const std::string& hubPosition) override;
    void ceaseNumberOfHwEntitiesMismatch(const FuncId_t& funcId, const std::string& hubPosition) override;
    // ClimateEventIf
    void climateReport(std::int32_t timerHandle) override;
    // NodeEventIf
    void raiseEquipSupFuncFault() override;
    void ceaseEquipSupFuncFault() override;
    // HdlcAddressEventIf
    void raiseFaultyHubPosition(const FuncId_t& funcId) override;
    void ceaseFaultyHubPosition(const FuncId_t& funcId) override;
    void raiseConflictingHubPosition(const FuncId_t& funcId) override;
    void ceaseConflictingHubPosition(const FuncId_t& funcId) override;
    // SecondaryNodeNotifyIf
    void climateSystemUpdated(std::uint32_t climateSystem, std::uint32_t funcInst) override;
    void primaryProductDataUpdated(const std::string& productionDate, const std::string& productName,
                                   const std::string& productNumber, const std::string& productRevision,
                                   const std::string& serialNumber, std::uint32_t funcInst) override;
    void primaryIdentifierUpdated(const std::string& identifier, std::uint32_t funcInst) override;

private:
    struct LedRow {
        std::uint32_t objectId;
        std::uint32_t state;
    };
    struct ReportClient {
        ose::PROCESS pid;
        std::uint32_t clientRef;
        std::uint32_t objectId;
        std::uint16_t objectType;
        std::int32_t timerHandle;
    };

    void handleSetConfigReq(ose::Signal* signal);
    void handleDeleteConfigReq(ose::Signal* signal);
    void handleSubscribeResourceDataReq(ose::Signal* signal);
    void handleUnsubscribeResourceDataReq(ose::Signal* signal);
    void handleGetResourceDataReq(ose::Signal* signal);
    void handleActionReq(ose::Signal* signal);
    void handleUpdateProductDataReq(ose::Signal* signal);

    void configureCabinet(const ObjectSubscriber& client, const cmi::CMI_CABINET_CONFIG_S& config);
    void configureFanGroup(const ObjectSubscriber& client, const cmi::CMI_FAN_GROUP_CONFIG_S& config);
    void configureEquipmentSupportFunction(const ObjectSubscriber& client,
                                           const cmi::CMI_EQUIPMENT_SUPPORT_FUNCTION_CONFIG_S& config);
    void changeRole(const NodeRecord& record);

    const cmi::CMI_HEADER_S* receive(ose::Signal* signal, const char* name, ObjectSubscriber& client);
    void sendHeader(ose::SIGSELECT sigNo, const ObjectSubscriber& client, std::uint16_t word14 = 0);
    void sendResource(ose::SIGSELECT sigNo, const ObjectSubscriber& client, const void* data, std::size_t size);
    void sendReport(const ObjectSubscriber& client);
    void sendFault(ose::SIGSELECT sigNo, std::uint16_t faultType, std::uint16_t objectType, std::uint32_t objectId,
                   std::uint16_t hwType = 0, const std::string& hubPosition = {});
    cmi::CMI_CABINET_RESOURCE_S cabinetResource(std::uint32_t funcInst);
    void resourceUpdate(std::uint32_t funcInst, const cmi::CMI_CABINET_RESOURCE_S& resource);
    void ledStatus(std::uint32_t objectId, std::uint32_t state);
    void mismatch(ose::SIGSELECT sigNo, const FuncId_t& funcId, const std::string& hubPosition);
    void hubPositionFault(ose::SIGSELECT sigNo, std::uint16_t faultType, const FuncId_t& funcId);
    LedRow* findLed(std::uint32_t objectId);

    Facades m_facades;
    std::uint32_t m_nodeObjectId = 0;
    EC_LinkedList<LedRow> m_fanGroupLeds;
    NodeRole m_nodeRole = kNoRole;
    EC_LinkedList<ReportClient> m_algorithmDataSubscribers;
    std::uint32_t m_smokeDetectorLatched = 0;
};
