#include "froBl/froMgmtSwU/export/SupSysGenericFroCtrl.h"

#include "adaption/ConfigIfApi.h"
#include "alarmFilter/AlarmHandlerApi.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

using namespace sup_sys_trace;

void SupSysGenericFroCtrl::postCreate()
{
    setConfig();
    alarmsCreated();
}

void SupSysGenericFroCtrl::restore()
{
    restoreConfig();
    alarmsCreated();
}

void SupSysGenericFroCtrl::preDelete()
{
    deleteConfig(*this);
    alarmsDeleted();
}

void SupSysGenericFroCtrl::postSet()
{
    setConfig();
    alarmsChanged();
}

bool SupSysGenericFroCtrl::performAction(const std::string& actionName, const ActionLists& lists,
                                         std::string& errorText, SupSysFroCallbackIf* callback)
{
    m_pActionCallback = callback;
    m_actionLists = lists;
    const bool performed =
        m_services.pActions != nullptr && m_services.pActions->perform(this, actionName, m_actionLists, this);
    if (!performed) errorText = "action was not performed";
    return performed;
}

bool SupSysGenericFroCtrl::snapshotRequest(SupSysFroCallbackIf* callback)
{
    m_pSnapshotCallback = callback;
    return m_services.pSnapshots != nullptr && m_services.pSnapshots->update(this, this);
}

void SupSysGenericFroCtrl::actionDone(const SupSysFroCallbackIf::ActionResult& result)
{
    if (m_pActionCallback == nullptr) {
        SSC_TRACE(froCtrlGroup(), kError,
                  "actionFroCallbackIf pointer not saved, equals zero when attempting to make callback");
        return;
    }
    m_pActionCallback->actionDone(this, result);
}

void SupSysGenericFroCtrl::snapshotDone()
{
    if (m_pSnapshotCallback == nullptr) {
        SSC_TRACE(froCtrlGroup(), kError,
                  "supSysFroCallbackIf pointer not saved, equals zero when attempting to make callback");
        return;
    }
    m_pSnapshotCallback->snapshotDone(this);
}

void SupSysGenericFroCtrl::setConfig()
{
    if (m_services.pConfig != nullptr) m_services.pConfig->handleSetConfig(this);
}

void SupSysGenericFroCtrl::restoreConfig()
{
    if (m_services.pConfig != nullptr) m_services.pConfig->handleRestoreConfig(this);
}

void SupSysGenericFroCtrl::deleteConfig(fRO& fro)
{
    if (m_services.pConfig != nullptr) m_services.pConfig->handleDeleteConfig(&fro, true);
}

void SupSysGenericFroCtrl::alarmsCreated()
{
    if (m_services.pAlarms != nullptr) m_services.pAlarms->handleFroCreated(*this);
}

void SupSysGenericFroCtrl::alarmsChanged()
{
    if (m_services.pAlarms != nullptr) m_services.pAlarms->handleFroChanged(*this);
}

void SupSysGenericFroCtrl::alarmsDeleted()
{
    if (m_services.pAlarms != nullptr) m_services.pAlarms->handleFroDeleted(*this);
}

std::string SupSysGenericFroCtrl::ownLdn() const
{
    return m_services.pTable != nullptr ? m_services.pTable->getLdn(getInternalId()) : std::string();
}
