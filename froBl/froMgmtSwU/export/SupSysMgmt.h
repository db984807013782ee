#pragma once
// Brings up the management side of the object process: the management
// client's interface first (the controllers of the classes, the objects of
// the last run from the database, the signals, then the name at the name
// server), then the transaction interface, which attaches to the platform's
// transaction server and takes its signals.

#include "froBl/froMgmtSwU/export/FroCtrlApi.h"
#include "froBl/froMgmtSwU/export/SupSysMaoFroIfHandler.h"
#include "froBl/froMgmtSwU/export/SupSysMgmtApi.h"
#include "froBl/froMgmtSwU/export/SupSysTraniHandler.h"
#include "froBl/froMgmtSwU/export/dbiAPI.h"

class SupSysMgmt : public SupSysMgmtApi {
public:
    SupSysMgmt(SignalDistributorAPI& distributor, transMgr& transactions, froMgr& table,
               VantoTransactionApi& platform, DbiAPI& database, CtrlCommunicationIfApi& communication,
               const FroCtrlServices& controllers);

    static SupSysMgmt& instance();

    void init() override;

    SupSysMaoFroIfHandler& managementHandler() { return m_maoFroHandler; }
    SupSysTraniHandler& transactionHandler() { return m_traniHandler; }

private:
    froMgr& m_table;
    DbiAPI& m_database;
    FroCtrlApi m_controllers;
    SupSysMaoFroIfHandler m_maoFroHandler;
    SupSysTraniHandler m_traniHandler;
};
