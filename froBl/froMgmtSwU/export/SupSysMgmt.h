#pragma once
// Brings up the management side of the object process: the management
// client's interface first, then the transaction interface, which attaches
// to the platform's transaction server and takes its signals.

#include "froBl/froMgmtSwU/export/SupSysMgmtApi.h"
#include "froBl/froMgmtSwU/export/SupSysTraniHandler.h"

class SupSysMgmt : public SupSysMgmtApi {
public:
    SupSysMgmt(SignalDistributorAPI& distributor, transMgr& transactions, froMgr& table,
               VantoTransactionApi& platform, ElibDbFroDatabase* database);

    static SupSysMgmt& instance();

    void init() override;

    SupSysTraniHandler& transactionHandler() { return m_traniHandler; }

private:
    SupSysTraniHandler m_traniHandler;
};
