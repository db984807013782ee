#include "froBl/froMgmtSwU/export/SupSysMgmt.h"

#include "alarmFilter/AlarmHandler.h"
#include "froBl/froMgmtSwU/export/CtrlCommunicationIf.h"
#include "froBl/froMgmtSwU/export/SupSysRestoreHandler.h"
#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"
#include "froBl/froMgmtSwU/export/transMgr.h"
#include "platform/VantoTransactionClient.h"

using namespace sup_sys_trace;

namespace {

// The classes of the support system, the only ones stored.
constexpr std::uint32_t kFirstPersistentType = 0x7040000;
constexpr std::uint32_t kLastPersistentType = 0x704FFFF;

// The configuration flow, the actions and the snapshot reads are not in the
// process yet: its objects configure nothing in the core until they are.
FroCtrlServices processControllerServices()
{
    FroCtrlServices services;
    services.pTable = &froMgr::instance();
    services.pAlarms = &AlarmHandler::instance();
    return services;
}

} // namespace

SupSysMgmt::SupSysMgmt(SignalDistributorAPI& distributor, transMgr& transactions, froMgr& table,
                       VantoTransactionApi& platform, DbiAPI& database, CtrlCommunicationIfApi& communication,
                       const FroCtrlServices& controllers)
    : m_table(table), m_database(database), m_controllers(controllers),
      m_maoFroHandler(distributor, transactions, table, database, communication),
      m_traniHandler(distributor, transactions, table, platform, &database)
{
}

SupSysMgmt& SupSysMgmt::instance()
{
    return SupSysSingletons::get<SupSysMgmt>([] {
        return std::make_unique<SupSysMgmt>(SignalDistributor::instance(), transMgr::instance(),
                                            froMgr::instance(), SupSysSingletons::get<VantoTransactionClient>(),
                                            DatabaseFacade::instance(), CtrlCommunicationIf::instance(),
                                            processControllerServices());
    });
}

void SupSysMgmt::init()
{
    SSC_TRACE(managementGroup(), kFlow, "SupSysMgmt::init: management interface");
    m_maoFroHandler.nameServer().init();
    m_controllers.registerAll(m_table);
    SupSysRestoreHandler(m_database, m_table).restore(kFirstPersistentType, kLastPersistentType);
    m_maoFroHandler.subscribe();
    m_maoFroHandler.publish();
    SSC_TRACE(managementGroup(), kFlow, "SupSysMgmt::init: transaction interface");
    m_traniHandler.setCallback(&m_maoFroHandler);
    m_traniHandler.init();
}
