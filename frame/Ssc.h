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
class ClimateCtrlServer;
class CmiAdapter;
class EmiAdapter;
class HdlcAddressFacade;
class PciAdapter;
class PmiAdapter;

class Ssc : public SscHandleIf {
public:
    Ssc();
    ~Ssc();
    Ssc(const Ssc&) = delete;
    Ssc& operator=(const Ssc&) = delete;

    // Made by the process entry after the OS handler; Ssc keeps it.
    void setDispatcher(std::unique_ptr<SignalDispatcher> dispatcher);
    SignalDispatcher* getDispatcher() { return m_pDispatcher.get(); }

    // Constructs the core's objects, wires them and brings up the servers:
    // each server registers its signals and gets its phantom, so that its
    // name can be hunted from then on.
    void initialize();
    // The managers, which need the broker and the facades made before them.
    void createManagers();

    HdlcAddressFacade* getHdlcAddressFacade() { return m_pHdlcAddressFacade.get(); }

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
    CabinetFacade* getCabinetFacade() override { return m_pCabinetFacade; }
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
    std::unique_ptr<HdlcAddressFacade> m_pHdlcAddressFacade;
    std::unique_ptr<ClimateCtrlServer> m_pClimateCtrlServer;
    std::unique_ptr<AlarmCtrlServer> m_pAlarmCtrlServer;
    std::unique_ptr<ApcInciClient> m_pApcInciClient;
    std::unique_ptr<ApcInciServer> m_pApcInciServer;
    // The battery backup event handler and the facades stand here, in the
    // order in which they are made.
    std::unique_ptr<AlmAdapter> m_pAlmAdapter;
    std::unique_ptr<PmiAdapter> m_pPmiAdapter;
    std::unique_ptr<EmiAdapter> m_pEmiAdapter;
    std::unique_ptr<CmiAdapter> m_pCmiAdapter;
    std::unique_ptr<PciAdapter> m_pPciAdapter;
    std::unique_ptr<ApcInciAdapter> m_pApcInciAdapter;
    // Views handed out by the getters; each is set where its object is made.
    PowerCtrlManager* m_pPowerCtrlManager = nullptr;
    HWU_Broker* m_pHwuBroker = nullptr;
    FanGroupEventIf* m_pFanGroupEventHandler = nullptr;
    CabinetObserverIf* m_pCabinetObserver = nullptr;
    CabinetFacade* m_pCabinetFacade = nullptr;
    CabinetCtrlIf* m_pCabinetCtrl = nullptr;
    EFuseCtrlIf* m_pEFuseCtrl = nullptr;
};
