#include "frame/Ssc.h"

#include "adapters/AlarmCtrlServer.h"
#include "adapters/AlmAdapter.h"
#include "adapters/ApcInciAdapter.h"
#include "adapters/ApcInciClient.h"
#include "adapters/ApcInciServer.h"
#include "adapters/BatteryBackupEventHandler.h"
#include "adapters/CmiAdapter.h"
#include "adapters/EmiAdapter.h"
#include "adapters/PciAdapter.h"
#include "adapters/PmiAdapter.h"
#include "cabinet/ExternalNodeFacade.h"
#include "cabinet/NodeFacade.h"
#include "cabinet/CabinetFacade.h"
#include "climate/ClimateCtrlManager.h"
#include "climate/ClimateCtrlServer.h"
#include "climate/ClimateFacade.h"
#include "climate/FanGroupFacade.h"
#include "frame/ActiveFaultsRegister.h"
#include "frame/SscTrace.h"
#include "hwu/BfuFacade.h"
#include "hwu/CluFacade.h"
#include "hwu/EquipmentCtrlManager.h"
#include "hwu/HWU_Broker.h"
#include "hwu/HdlcAddressFacade.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/PduFacade.h"
#include "hwu/PsuFacade.h"
#include "hwu/SauFacade.h"
#include "hwu/ScuFacade.h"
#include "power/BatteryBackupFacade.h"
#include "power/PowerCtrlManager.h"
#include "power/PowerDistributionFacade.h"
#include "power/PowerSupplyFacade.h"

using namespace ssc_trace;

Ssc::Ssc() = default;

Ssc::~Ssc()
{
    // The climate manager watches the broker and the cabinet; the cabinet
    // and the broker watch each other.
    m_pClimateFacade.reset();
    ClimateCtrlManager::destroy();
    // The power manager watches the broker, its units and the cabinet.
    PowerCtrlManager::destroy();
    if (m_pBroker != nullptr) m_pBroker->detachCabinet();
    m_pCabinetFacade.reset();
}

void Ssc::setDispatcher(std::unique_ptr<SignalDispatcher> dispatcher) { m_pDispatcher = std::move(dispatcher); }

void Ssc::createEquipmentManager()
{
    m_pEquipmentCtrlManager = std::make_unique<EquipmentCtrlManager>(*this, ActiveFaultsRegister::instance());
    m_pEquipmentManager = m_pEquipmentCtrlManager.get();
}

SSC_Server* Ssc::getServer(ServerType type)
{
    for (const ServerPair& pair : m_servers)
        if (pair.type == type) return pair.pServer;
    SSC_TRACE(swuGroup(), kUnexpected, "Ssc::getServer: Invalid ServerType: %d", static_cast<int>(type));
    return nullptr;
}

void Ssc::bringUp(SSC_Server& server)
{
    server.registerSignals();
    server.startProcess();
}

// The objects are made in this order, each owned by Ssc: the order in which
// they are made and wired is the order in which their signals and events can
// first reach each other. Objects of subsystems still to come take their
// places between these.
void Ssc::initialize()
{
    SignalDispatcher* dispatcher = m_pDispatcher.get();
    ActiveFaultsRegister& faults = ActiveFaultsRegister::instance();
    // The node, external node and fan group facades come first, then the
    // hub position facade.
    m_pNodeFacade = std::make_unique<NodeFacade>(*this, faults);
    m_pExternalNodeFacade = std::make_unique<ExternalNodeFacade>(faults, *m_pNodeFacade);
    m_pExternalNodeCtrl = m_pExternalNodeFacade.get();
    m_pFanGroupFacade = std::make_unique<FanGroupFacade>(faults);
    m_pHdlcAddressFacade = std::make_unique<HdlcAddressFacade>(faults);
    m_pAlarmCtrlServer = std::make_unique<AlarmCtrlServer>(dispatcher);
    m_servers[0].pServer = m_pAlarmCtrlServer.get();
    m_pApcInciClient = std::make_unique<ApcInciClient>(dispatcher);
    m_pApcInciServer = std::make_unique<ApcInciServer>(dispatcher);
    m_servers[1].pServer = m_pApcInciServer.get();
    m_pUnitFactory = std::make_unique<HwuUnitFactory>();
    m_pBroker = std::make_unique<HWU_Broker>(faults, *m_pUnitFactory);
    m_pHwuBroker = m_pBroker.get();
    m_pCabinetFacade = std::make_unique<CabinetFacade>(*this, faults);
    m_pCabinetCtrl = m_pCabinetFacade.get();
    m_pCabinetObserver = m_pCabinetFacade.get();
    m_pClimateFacade = std::make_unique<ClimateFacade>();
    // The cabinet interface; the inter-node server and client join it as
    // they are built.
    m_pCmiAdapter = std::make_unique<CmiAdapter>(
        dispatcher, CmiAdapter::Facades{m_pFanGroupFacade.get(), m_pCabinetFacade.get(), m_pClimateFacade.get(), nullptr,
                                        nullptr, m_pNodeFacade.get(), m_pHdlcAddressFacade.get()});
    m_pHdlcAddressFacade->setEventHandler(m_pCmiAdapter.get());
    m_pNodeFacade->setEventHandler(m_pCmiAdapter.get());
    m_pClimateCtrlServer = std::make_unique<ClimateCtrlServer>(dispatcher);
    m_servers[2].pServer = m_pClimateCtrlServer.get();
    // The battery backup, power supply and power distribution facades; they
    // reach the power manager once it is made.
    m_pBatteryBackupFacade = std::make_unique<BatteryBackupFacade>(faults, nullptr);
    m_pPowerSupplyFacade = std::make_unique<PowerSupplyFacade>(faults, nullptr);
    m_pPowerDistributionFacade = std::make_unique<PowerDistributionFacade>(faults, nullptr);
    m_pPmiAdapter = std::make_unique<PmiAdapter>(
        dispatcher, PmiAdapter::Facades{m_pBatteryBackupFacade.get(), m_pPowerSupplyFacade.get(),
                                        m_pPowerDistributionFacade.get()});
    m_pPciAdapter = std::make_unique<PciAdapter>(dispatcher);
    m_pApcInciAdapter = std::make_unique<ApcInciAdapter>(dispatcher);
    // The battery backup's events reach the power interface through their
    // handler; the power supply's and distribution's reach it directly.
    m_pBatteryBackupEventHandler = std::make_unique<BatteryBackupEventHandler>(m_pPmiAdapter.get());
    m_pBatteryBackupFacade->setEventHandler(m_pBatteryBackupEventHandler.get());
    m_pPowerSupplyFacade->setEventHandler(m_pPmiAdapter.get());
    m_pPowerDistributionFacade->setEventHandler(m_pPmiAdapter.get());
    m_pScuFacade = std::make_unique<ScuFacade>(*this, faults);
    m_pSauFacade = std::make_unique<SauFacade>(*this, faults);
    m_pBfuFacade = std::make_unique<BfuFacade>(*this, faults);
    m_pPsuFacade = std::make_unique<PsuFacade>(*this, faults);
    m_pCluFacade = std::make_unique<CluFacade>(*this, faults);
    m_pPduFacade = std::make_unique<PduFacade>(*this, faults);
    m_pEFuseCtrl = m_pPduFacade.get();
    // Units made from now on reach the sides that exist; the alarm and power
    // sides join them as they are built.
    m_pUnitFactory->setSides(
        HwuUnitFactory::Sides{m_pClimateCtrlServer.get(), nullptr, m_pEFuseCtrl, nullptr, m_pCabinetCtrl});
    m_pAlmAdapter = std::make_unique<AlmAdapter>(dispatcher);
    // The alarm side (AlarmCtrlIf, RruConfigurationIf) and the inter-node
    // link (ApcInciServerIf, ApcInciClientIf) join as they are built.
    m_pEmiAdapter = std::make_unique<EmiAdapter>(
        dispatcher, EmiAdapter::Facades{m_pScuFacade.get(), m_pSauFacade.get(), m_pPsuFacade.get(),
                                        m_pPduFacade.get(), m_pBfuFacade.get(), m_pCluFacade.get(),
                                        m_pExternalNodeFacade.get(), nullptr, nullptr, nullptr, nullptr,
                                        m_pNodeFacade.get()});
    m_pExternalNodeFacade->setEventHandler(m_pEmiAdapter.get());
    // The equipment interface hears what the units and the restarts tell.
    if (m_pEquipmentManager != nullptr) m_pEquipmentManager->setEventHandler(m_pEmiAdapter.get());
    for (HwuFacade* facade : std::initializer_list<HwuFacade*>{m_pScuFacade.get(), m_pSauFacade.get(),
                                                               m_pBfuFacade.get(), m_pPduFacade.get(),
                                                               m_pPsuFacade.get(), m_pCluFacade.get()})
        facade->setEventHandler(m_pEmiAdapter.get());
    // The cabinet interface hears the fan groups, the cabinet and the climate.
    m_pFanGroupFacade->setEventHandler(m_pCmiAdapter.get());
    m_pFanGroupEventHandler = m_pCmiAdapter.get();
    m_pCabinetFacade->setEventHandler(m_pCmiAdapter.get());
    m_pClimateFacade->setEventHandler(m_pCmiAdapter.get());
    bringUpServers();
}

void Ssc::bringUpServers()
{
    bringUp(*m_pApcInciClient);
    bringUp(*m_pPmiAdapter);
    bringUp(*m_pEmiAdapter);
    bringUp(*m_pAlmAdapter);
    bringUp(*m_pCmiAdapter);
    for (const ServerPair& pair : m_servers) {
        // The inter-node server publishes itself when the node's role is
        // known: only its signals are registered here.
        if (pair.type == ServerType::ApcInci) {
            pair.pServer->registerSignals();
            continue;
        }
        bringUp(*pair.pServer);
    }
    bringUp(*m_pPciAdapter);
    bringUp(*m_pApcInciAdapter);
}

void Ssc::createManagers()
{
    // The alarm control server subscribes to the unit broker (when it is
    // built), then the power manager is made, then the climate manager.
    // Last, the broker starts and watches for the cabinet. The power
    // interface hears the battery backup and the power supply.
    PowerCtrlManager* power = PowerCtrlManager::create(
        *m_pBroker, ActiveFaultsRegister::instance(),
        {m_pBatteryBackupEventHandler.get(), m_pPmiAdapter.get(), m_pCabinetObserver});
    m_pPowerCtrlManager = power;
    m_pBatteryBackupFacade->setManager(power);
    m_pPowerSupplyFacade->setManager(power);
    m_pPowerDistributionFacade->setManager(power);
    m_pUnitFactory->setSides(
        HwuUnitFactory::Sides{m_pClimateCtrlServer.get(), nullptr, m_pEFuseCtrl, power, m_pCabinetCtrl});
    ClimateCtrlManager* climate = ClimateCtrlManager::create(*this, *m_pBroker, ActiveFaultsRegister::instance());
    CabinetFacade* cabinet = m_pCabinetFacade.get();
    climate->setDoorSwitchOf([cabinet](std::uint32_t cabinetFuncInst) { return cabinet->getDoorSwitch(cabinetFuncInst) != 0; });
    climate->attachExternalNodes(m_pExternalNodeCtrl);
    m_pBroker->start(*this);
}
