#pragma once
// Brings up the management side of the object process: the management
// client's interface first (its signals, then its name at the name server),
// then the transaction interface, which attaches to the platform's
// transaction server and takes its signals.

#include "froBl/froMgmtSwU/export/SupSysMaoFroIfHandler.h"
#include "froBl/froMgmtSwU/export/SupSysMgmtApi.h"
#include "froBl/froMgmtSwU/export/SupSysTraniHandler.h"

class SupSysMgmt : public SupSysMgmtApi {
public:
    SupSysMgmt(SignalDistributorAPI& distributor, transMgr& transactions, froMgr& table,
               VantoTransactionApi& platform, ElibDbFroDatabase& database, CtrlCommunicationIfApi& communication);

    static SupSysMgmt& instance();

    void init() override;

    SupSysMaoFroIfHandler& managementHandler() { return m_maoFroHandler; }
    SupSysTraniHandler& transactionHandler() { return m_traniHandler; }

private:
    SupSysMaoFroIfHandler m_maoFroHandler;
    SupSysTraniHandler m_traniHandler;
};
