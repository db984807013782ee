#pragma once
// The root of the core's object graph. It lives on the stack of the core
// process's entry and builds the graph in one fixed order: the order in
// which objects are made, wired and brought up is the order in which their
// signals and events can first reach each other.

#include "frame/SSC_Server.h"
#include "frame/ServerType.h"
#include "frame/SignalDispatcher.h"
#include "frame/SscHandleIf.h"

#include <array>
#include <memory>

class AlarmCtrlServer;
class AlmAdapter;
class ApcInciAdapter;
class ApcInciClient;
class ApcInciServer;
class CabinetFacade;
class ClimateCtrlServer;
class ClimateFacade;
class FanGroupFacade;
class CmiAdapter;
class BfuFacade;
class CluFacade;
class EmiAdapter;
class EquipmentCtrlManager;
class ExternalNodeCtrlIf;
class ExternalNodeFacade;
class NodeFacade;
class HdlcAddressFacade;
class HwuUnitFactory;
class PduFacade;
class PsuFacade;
class SauFacade;
class ScuFacade;
class PciAdapter;
class PmiAdapter;
class BatteryBackupEventHandler;
class BatteryBackupFacade;
class PowerDistributionFacade;
class PowerSupplyFacade;

class Ssc : public SscHandleIf {
public:
    Ssc();
    ~Ssc();
    Ssc(const Ssc&) = delete;
    Ssc& operator=(const Ssc&) = delete;

    // Made by the process entry after the OS handler; Ssc keeps it.
    void setDispatcher(std::unique_ptr<SignalDispatcher> dispatcher);
    // Made by the process entry before the graph, which reaches it.
    void createEquipmentManager();
    SignalDispatcher* getDispatcher() { return m_pDispatcher.get(); }

    // Constructs the core's objects, wires them and brings up the servers:
    // each server registers its signals and gets its phantom, so that its
    // name can be hunted from then on.
    void initialize();
    // The managers, which need the broker and the facades made before them.
    void createManagers();

    HdlcAddressFacade* getHdlcAddressFacade() { return m_pHdlcAddressFacade.get(); }
    NodeFacade* getNodeFacade() { return m_pNodeFacade.get(); }
    ExternalNodeFacade* getExternalNodeFacade() { return m_pExternalNodeFacade.get(); }
    ExternalNodeCtrlIf* getExternalNodeCtrl() { return m_pExternalNodeCtrl; }
    ScuFacade* getScuFacade() { return m_pScuFacade.get(); }
    SauFacade* getSauFacade() { return m_pSauFacade.get(); }
    BfuFacade* getBfuFacade() { return m_pBfuFacade.get(); }
    PduFacade* getPduFacade() { return m_pPduFacade.get(); }
    PsuFacade* getPsuFacade() { return m_pPsuFacade.get(); }
    CluFacade* getCluFacade() { return m_pCluFacade.get(); }
    BatteryBackupFacade* getBatteryBackupFacade() { return m_pBatteryBackupFacade.get(); }
    PowerSupplyFacade* getPowerSupplyFacade() { return m_pPowerSupplyFacade.get(); }
    PowerDistributionFacade* getPowerDistributionFacade() { return m_pPowerDistributionFacade.get(); }

    // The server of that type; NIL (and a trace) for a type that does not exist.
    SSC_Server* getServer(ServerType type);

    EquipmentManagerIf* getEquipmentManager() override { return m_pEquipmentManager; }
    PowerCtrlManager* getPowerCtrlManager() override { return m_pPowerCtrlManager; }
    ClimateCtrlServer* getClimateCtrlServer() override { return m_pClimateCtrlServer.get(); }
    AlarmCtrlServer* getAlarmCtrlServer() override { return m_pAlarmCtrlServer.get(); }
    HWU_Broker* getHwuBroker() override { return m_pHwuBroker; }
    FanGroupEventIf* getFanGroupEventHandler() override { return m_pFanGroupEventHandler; }
    CabinetCtrlIf* getCabinetCtrl() override { return m_pCabinetCtrl; }
    CabinetObserverIf* getCabinetObserver() override { return m_pCabinetObserver; }
    CabinetFacade* getCabinetFacade() override { return m_pCabinetFacade.get(); }
    EFuseCtrlIf* getEFuseCtrl() override { return m_pEFuseCtrl; }

private:
    struct ServerPair {
        ServerType type;
        SSC_Server* pServer; // owned by the member that made it
    };

    // Each server: its signals, then its phantom.
    static void bringUp(SSC_Server& server);
    void bringUpServers();

    // Declared in the order of the graph; destroyed the other way round, so
    // the dispatcher outlives every server that deregisters from it.
    std::unique_ptr<SignalDispatcher> m_pDispatcher;
    std::array<ServerPair, 3> m_servers{{{ServerType::AlarmControl, nullptr},
                                         {ServerType::ApcInci, nullptr},
                                         {ServerType::ClimateControl, nullptr}}};
    EquipmentManagerIf* m_pEquipmentManager = nullptr;
    std::unique_ptr<EquipmentCtrlManager> m_pEquipmentCtrlManager;
    std::unique_ptr<NodeFacade> m_pNodeFacade;
    std::unique_ptr<ExternalNodeFacade> m_pExternalNodeFacade;
    std::unique_ptr<FanGroupFacade> m_pFanGroupFacade;
    std::unique_ptr<HdlcAddressFacade> m_pHdlcAddressFacade;
    std::unique_ptr<ClimateCtrlServer> m_pClimateCtrlServer;
    std::unique_ptr<AlarmCtrlServer> m_pAlarmCtrlServer;
    std::unique_ptr<ApcInciClient> m_pApcInciClient;
    std::unique_ptr<ApcInciServer> m_pApcInciServer;
    std::unique_ptr<BatteryBackupEventHandler> m_pBatteryBackupEventHandler;
    // The facades, in the order in which they are made.
    std::unique_ptr<BatteryBackupFacade> m_pBatteryBackupFacade;
    std::unique_ptr<PowerSupplyFacade> m_pPowerSupplyFacade;
    std::unique_ptr<PowerDistributionFacade> m_pPowerDistributionFacade;
    std::unique_ptr<ScuFacade> m_pScuFacade;
    std::unique_ptr<SauFacade> m_pSauFacade;
    std::unique_ptr<BfuFacade> m_pBfuFacade;
    std::unique_ptr<PduFacade> m_pPduFacade;
    std::unique_ptr<PsuFacade> m_pPsuFacade;
    std::unique_ptr<CluFacade> m_pCluFacade;
    std::unique_ptr<AlmAdapter> m_pAlmAdapter;
    std::unique_ptr<PmiAdapter> m_pPmiAdapter;
    std::unique_ptr<EmiAdapter> m_pEmiAdapter;
    std::unique_ptr<CmiAdapter> m_pCmiAdapter;
    std::unique_ptr<PciAdapter> m_pPciAdapter;
    std::unique_ptr<ApcInciAdapter> m_pApcInciAdapter;
    // The unit broker and what it makes units with; its units go first when
    // the graph is taken down.
    std::unique_ptr<HwuUnitFactory> m_pUnitFactory;
    std::unique_ptr<HWU_Broker> m_pBroker;
    // The cabinet watches the broker and the broker the cabinet: the root
    // takes the two apart before either goes.
    std::unique_ptr<CabinetFacade> m_pCabinetFacade;
    std::unique_ptr<ClimateFacade> m_pClimateFacade;
    // Views handed out by the getters; each is set where its object is made.
    PowerCtrlManager* m_pPowerCtrlManager = nullptr;
    HWU_Broker* m_pHwuBroker = nullptr;
    FanGroupEventIf* m_pFanGroupEventHandler = nullptr;
    CabinetObserverIf* m_pCabinetObserver = nullptr;
    CabinetCtrlIf* m_pCabinetCtrl = nullptr;
    EFuseCtrlIf* m_pEFuseCtrl = nullptr;
    ExternalNodeCtrlIf* m_pExternalNodeCtrl = nullptr;
};
