#include "froBl/froMgmtSwU/export/TraniGenericBase.h"

#include "froBl/froMgmtSwU/export/commitLists.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/transMgr.h"
#include "platform/VantoTransactionSignals.h"

#include "ose/Kernel.h"

#include <vector>

using namespace fro_trace;

void TraniGenericBase::preDelete(fRO*) {}
void TraniGenericBase::postDelete(std::int32_t, const std::string&) {}
void TraniGenericBase::postCreate(std::int32_t, fRO*) {}
void TraniGenericBase::postSet(std::int32_t, fRO*) {}
void TraniGenericBase::preCommit(std::int32_t) {}
void TraniGenericBase::commitDone(std::int32_t) {}
void TraniGenericBase::commitFailed(std::int32_t) {}
void TraniGenericBase::rollbackFailed(std::int32_t) {}
void TraniGenericBase::rollbackDone(std::int32_t) {}

bool TraniGenericBase::transactionIdOf(ose::Signal* signal, std::int32_t& transactionId)
{
    const auto* indication = ose::signal_cast<vanto_trans::VANTO_TRANS_IND_S>(signal);
    if (indication == nullptr) {
        SSC_TRACE(mgmtGroup(), kError, "Transaction indication 0x%x of %u bytes is too short",
                  ose::signalNumber(signal), signal ? ose::sigsize(&signal) : 0u);
        return false;
    }
    transactionId = indication->transactionId;
    return true;
}

bool TraniGenericBase::commit(ose::Signal* signal, TransMgrCallbackIf* callback)
{
    std::int32_t transactionId = 0;
    if (!transactionIdOf(signal, transactionId))
        return false;
    const auto id = static_cast<unsigned>(transactionId);
    commitLists::begin();
    const std::vector<std::string> toDelete = m_transactions.getDeleted(transactionId);
    commitLists::add(commitLists::Deleted, toDelete);
    for (const std::string& ldn : toDelete)
        if (fRO* fro = m_table.getFro(ldn))
            preDelete(fro);
    // An object deleted and created again in one transaction is replaced by
    // the commit: the old one goes as a delete would, or what it configured
    // and the faults kept for it would outlive it.
    for (const std::string& ldn : m_transactions.getReplaced(transactionId))
        if (fRO* fro = m_table.getFro(ldn))
            preDelete(fro);

    SSC_TRACE(mgmtGroup(), kFlow, "Calling transMgr to commit transaction %u", id);
    std::vector<std::string> created, set, deleted;
    const bool ok = m_transactions.commit(transactionId, created, set, deleted, callback);
    if (ok) {
        SSC_TRACE(mgmtGroup(), kFlow, "Postprocessing of fROs changed in transaction %u starting", id);
        commitLists::add(commitLists::Created, created);
        commitLists::add(commitLists::Set, set);
        commitLists::add(commitLists::Deleted, deleted);
        for (const std::string& ldn : created)
            postCreate(transactionId, m_table.getFro(ldn));
        for (const std::string& ldn : set)
            postSet(transactionId, m_table.getFro(ldn));
        for (const std::string& ldn : deleted)
            postDelete(transactionId, ldn);
        SSC_TRACE(mgmtGroup(), kFlow, "Postprocessing of fROs changed in transaction %u finished", id);
        commitDone(transactionId);
    } else {
        SSC_TRACE(mgmtGroup(), kError, "Commit of transaction %u failed, transMgr failed to update froMgr (might be "
                  "nothing in transaction)", id);
        commitFailed(transactionId);
    }
    commitLists::end();
    return ok;
}

bool TraniGenericBase::rollback(ose::Signal* signal)
{
    std::int32_t transactionId = 0;
    if (!transactionIdOf(signal, transactionId))
        return false;
    if (!m_transactions.rollback(transactionId)) {
        SSC_TRACE(mgmtGroup(), kFlow, "transMgr failed to rollback transaction %u (might be nothing in transaction)",
                  static_cast<unsigned>(transactionId));
        rollbackFailed(transactionId);
        return false;
    }
    rollbackDone(transactionId);
    return true;
}
