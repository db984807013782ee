#include "frame/Ssc.h"

#include "frame/SscTrace.h"

using namespace ssc_trace;

Ssc::Ssc() = default;

Ssc::~Ssc() = default;

void Ssc::setDispatcher(std::unique_ptr<SignalDispatcher> dispatcher) { m_pDispatcher = std::move(dispatcher); }

SSC_Server* Ssc::getServer(ServerType type)
{
    for (const ServerPair& pair : m_servers)
        if (pair.type == type) return pair.pServer;
    SSC_TRACE(swuGroup(), kUnexpected, "Ssc::getServer: Invalid ServerType: %d", static_cast<int>(type));
    return nullptr;
}

void Ssc::bringUp(SSC_Server* server)
{
    if (server == nullptr) return;
    server->registerSignals();
    server->startProcess();
}

void Ssc::initialize()
{
    // Each object is made here, in this order, and owned by Ssc; the faults
    // register is the last argument of the facades that report faults.
    //  1. NodeFacade.
    //  2. ExternalNodeFacade, with the node facade's NodeIf.
    //  3. FanGroupFacade.
    //  4. HdlcAddressFacade.
    //  5. AlarmCtrlServer: the server of ServerType::AlarmControl.
    //  6. ApcInciClient.
    //  7. ApcInciServer: the server of ServerType::ApcInci.
    //  8. The HWU_Broker singleton.
    //  9. CabinetFacade.
    // 10. ClimateFacade.
    // 11. CmiAdapter.
    // 12. The CMI adapter as event handler of HdlcAddressFacade and NodeFacade.
    // 13. ClimateCtrlServer: the server of ServerType::ClimateControl.
    // 14. BatteryBackupFacade, PowerSupplyFacade, PowerDistributionFacade.
    // 15. PmiAdapter.
    // 16. PciAdapter.
    // 17. ApcInciAdapter.
    // 18. BatteryBackupEventHandler and the PMI adapter as event handler of the
    //     power supply and power distribution facades.
    // 19. ScuFacade, SauFacade, BfuFacade, PsuFacade, CluFacade, PduFacade.
    // 20. AlmAdapter.
    // 21. EmiAdapter.
    // 22. The EMI adapter as event handler of the equipment manager, the unit
    //     facades and ExternalNodeFacade.
    // 23. The CMI adapter as event handler of the fan group, cabinet and
    //     climate facades.

    // 24. Bring-up: ApcInciClient, PmiAdapter, EmiAdapter, AlmAdapter,
    //     CmiAdapter come first, each with bringUp().
    for (const ServerPair& pair : m_servers) {
        // ApcInciServer publishes itself later, when the node's role is known:
        // only its signals are registered here.
        if (pair.type == ServerType::ApcInci) {
            if (pair.pServer != nullptr) pair.pServer->registerSignals();
            continue;
        }
        bringUp(pair.pServer);
    }
    //     Then PciAdapter and ApcInciAdapter.
}

void Ssc::createManagers()
{
    // 1. The alarm control server subscribes to the broker.
    // 2. PowerCtrlManager.
    // 3. ClimateCtrlManager, with its external node observer.
    // 4. The broker's start.
}
