#pragma once
// The object process's receiver of the platform's transaction signals: the
// commit indication plays a transaction into froMgr and runs the
// controllers, the rollback indication drops it, and the server going down
// drops every open transaction. After a commit or rollback the object
// database does its share.

#include "froBl/froMgmtSwU/export/SignalDistributorAPI.h"
#include "froBl/froMgmtSwU/export/SignalSubscriber.h"
#include "froBl/froMgmtSwU/export/TraniGenericBase.h"

class ElibDbFroDatabase;
class VantoTransactionApi;

class SupSysTraniHandler : public TraniGenericBase, public SignalSubscriber {
public:
    // database may be null: then there is no database share.
    SupSysTraniHandler(SignalDistributorAPI& distributor, transMgr& transactions, froMgr& table,
                       VantoTransactionApi& platform, ElibDbFroDatabase* database);
    ~SupSysTraniHandler() override;

    void setCallback(TransMgrCallbackIf* callback) { m_pCallback = callback; }
    // Attaches to the transaction service and subscribes to its signals.
    void init();

    void handleSignal(ose::Signal* signal) override;

    void preDelete(fRO* fro) override;
    void postCreate(std::int32_t transactionId, fRO* fro) override;
    void postSet(std::int32_t transactionId, fRO* fro) override;

private:
    using Handler = void (SupSysTraniHandler::*)(ose::Signal*);
    struct Entry {
        ose::SIGSELECT sigNo;
        const char* name;
        Handler handler;
    };
    static const Entry kTable[];

    void onCommitInd(ose::Signal* signal);
    void onServerDownInd(ose::Signal* signal);
    void onRollbackInd(ose::Signal* signal);
    void databaseShare(ose::Signal* signal, bool committed);

    SignalDistributorAPI& m_distributor;
    VantoTransactionApi& m_platform;
    ElibDbFroDatabase* m_pDatabase;              // not owned
    TransMgrCallbackIf* m_pCallback = nullptr;  // not owned
    bool m_subscribed = false;
};
