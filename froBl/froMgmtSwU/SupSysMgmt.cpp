#include "froBl/froMgmtSwU/export/SupSysMgmt.h"

#include "froBl/froMgmtSwU/export/CtrlCommunicationIf.h"
#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"
#include "froBl/froMgmtSwU/export/transMgr.h"
#include "platform/VantoTransactionClient.h"

using namespace sup_sys_trace;

SupSysMgmt::SupSysMgmt(SignalDistributorAPI& distributor, transMgr& transactions, froMgr& table,
                       VantoTransactionApi& platform, ElibDbFroDatabase& database,
                       CtrlCommunicationIfApi& communication)
    : m_maoFroHandler(distributor, transactions, table, database, communication),
      m_traniHandler(distributor, transactions, table, platform, &database)
{
}

SupSysMgmt& SupSysMgmt::instance()
{
    return SupSysSingletons::get<SupSysMgmt>([] {
        return std::make_unique<SupSysMgmt>(SignalDistributor::instance(), transMgr::instance(),
                                            froMgr::instance(), SupSysSingletons::get<VantoTransactionClient>(),
                                            DatabaseFacade::instance(), CtrlCommunicationIf::instance());
    });
}

void SupSysMgmt::init()
{
    SSC_TRACE(managementGroup(), kFlow, "SupSysMgmt::init: management interface");
    m_maoFroHandler.nameServer().init();
    m_maoFroHandler.subscribe();
    m_maoFroHandler.publish();
    SSC_TRACE(managementGroup(), kFlow, "SupSysMgmt::init: transaction interface");
    m_traniHandler.setCallback(&m_maoFroHandler);
    m_traniHandler.init();
}
