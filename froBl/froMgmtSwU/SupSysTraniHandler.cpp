#include "froBl/froMgmtSwU/export/SupSysTraniHandler.h"

#include "froBl/froMgmtSwU/export/elibDbFroDatabase.h"
#include "froBl/froMgmtSwU/export/fRO.h"
#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/traniInterface.h"
#include "froBl/froMgmtSwU/export/transMgr.h"
#include "platform/VantoTransactionApi.h"
#include "platform/VantoTransactionSignals.h"

#include "ose/Kernel.h"

using namespace fro_trace;
using namespace vanto_trans;

namespace {

// Only controllers have something to do at a commit.
traniInterface* controllerOf(fRO* fro)
{
    if (fro == nullptr)
        return nullptr;
    const std::string name = fro->className();
    if (name != "SupSysFroCtrlIf" && name != "SupSysGenericFroCtrlApi")
        return nullptr;
    return dynamic_cast<traniInterface*>(fro);
}

} // namespace

const SupSysTraniHandler::Entry SupSysTraniHandler::kTable[] = {
    {VANTO_TRANS_COMMIT_IND, "VANTO_TRANS_COMMIT_IND", &SupSysTraniHandler::onCommitInd},
    {VANTO_TRANS_SERVER_DOWN_IND, "VANTO_TRANS_SERVER_DOWN_IND", &SupSysTraniHandler::onServerDownInd},
    {VANTO_TRANS_ROLLBACK_IND, "VANTO_TRANS_ROLLBACK_IND", &SupSysTraniHandler::onRollbackInd},
};

SupSysTraniHandler::SupSysTraniHandler(SignalDistributorAPI& distributor, transMgr& transactions, froMgr& table,
                                       VantoTransactionApi& platform, ElibDbFroDatabase* database)
    : TraniGenericBase(transactions, table), m_distributor(distributor), m_platform(platform), m_pDatabase(database)
{
}

SupSysTraniHandler::~SupSysTraniHandler()
{
    if (!m_subscribed)
        return;
    for (const Entry& entry : kTable)
        if (m_distributor.unsubscribe(entry.sigNo, this) == 0)
            SSC_TRACE(mgmtGroup(), kError, "Failed to unsubscribe to signal: 0x%08x", entry.sigNo);
}

void SupSysTraniHandler::init()
{
    const int attached = m_platform.serviceAttach_e();
    if (attached != 0)
        SSC_TRACE(mgmtGroup(), kError, "VantoTransaction_serviceAttach_e() returned %d", attached);
    for (const Entry& entry : kTable)
        if (m_distributor.subscribe(entry.sigNo, this) == 0)
            SSC_TRACE(mgmtGroup(), kError, "Failed to subscribe to signal: 0x%08x", entry.sigNo);
    m_subscribed = true;
}

void SupSysTraniHandler::handleSignal(ose::Signal* signal)
{
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    for (const Entry& entry : kTable) {
        if (entry.sigNo == sigNo) {
            SSC_TRACE(mgmtGroup(), 11, "%s", entry.name);
            (this->*entry.handler)(signal);
            return;
        }
    }
    SSC_TRACE(mgmtGroup(), kError, "Unknown signal number: 0x%x", sigNo);
}

void SupSysTraniHandler::onCommitInd(ose::Signal* signal)
{
    commit(signal, m_pCallback);
    databaseShare(signal, true);
}

void SupSysTraniHandler::onRollbackInd(ose::Signal* signal)
{
    rollback(signal);
    databaseShare(signal, false);
}

void SupSysTraniHandler::onServerDownInd(ose::Signal*)
{
    SSC_TRACE(mgmtGroup(), kInfo, "Transaction server down, roll back all transactions");
    m_transactions.rollbackAll();
    // The database hears of it through its own subscription.
    const int attached = m_platform.serviceAttach_e();
    if (attached != 0)
        SSC_TRACE(mgmtGroup(), kError, "VantoTransaction_serviceAttach_e() returned %d", attached);
}

void SupSysTraniHandler::databaseShare(ose::Signal* signal, bool committed)
{
    if (m_pDatabase == nullptr)
        return;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(signal);
    const std::size_t size = ose::sigsize(&signal);
    m_pDatabase->init();
    if (committed)
        m_pDatabase->handleCommitInd(bytes, size);
    else
        m_pDatabase->handleRollbackInd(bytes, size);
    m_pDatabase->close();
}

void SupSysTraniHandler::preDelete(fRO* fro)
{
    if (traniInterface* controller = controllerOf(fro))
        controller->preDelete();
}

void SupSysTraniHandler::postCreate(std::int32_t, fRO* fro)
{
    if (traniInterface* controller = controllerOf(fro))
        controller->postCreate();
}

void SupSysTraniHandler::postSet(std::int32_t, fRO* fro)
{
    if (traniInterface* controller = controllerOf(fro))
        controller->postSet();
}
