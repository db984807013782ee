#pragma once
// The part of the object process that carries out the platform's commit and
// rollback indications on transMgr, with hooks for what a derived handler
// does around them. All hooks are empty here.

#include "froBl/froMgmtSwU/export/TransMgrCallbackIf.h"

#include "ose/Signal.h"

#include <cstdint>
#include <string>

class fRO;
class froMgr;
class transMgr;

class TraniGenericBase {
public:
    TraniGenericBase(transMgr& transactions, froMgr& table) : m_transactions(transactions), m_table(table) {}
    virtual ~TraniGenericBase() = default;
    TraniGenericBase(const TraniGenericBase&) = delete;
    TraniGenericBase& operator=(const TraniGenericBase&) = delete;

    virtual void preDelete(fRO* fro);
    virtual void postDelete(std::int32_t transactionId, const std::string& ldn);
    virtual void postCreate(std::int32_t transactionId, fRO* fro);
    virtual void postSet(std::int32_t transactionId, fRO* fro);
    virtual void preCommit(std::int32_t transactionId);
    virtual void commitDone(std::int32_t transactionId);
    virtual void commitFailed(std::int32_t transactionId);
    virtual void rollbackFailed(std::int32_t transactionId);
    virtual void rollbackDone(std::int32_t transactionId);

    // The commit indication: the transaction's shadows go into froMgr. False
    // when transMgr could not do it all (or the signal was malformed).
    bool commit(ose::Signal* signal, TransMgrCallbackIf* callback);
    // The rollback indication: the shadows are dropped.
    bool rollback(ose::Signal* signal);

protected:
    // The transaction id of a commit or rollback indication; false (traced)
    // when the signal is too short to hold it.
    static bool transactionIdOf(ose::Signal* signal, std::int32_t& transactionId);

    transMgr& m_transactions;
    froMgr& m_table;
};
