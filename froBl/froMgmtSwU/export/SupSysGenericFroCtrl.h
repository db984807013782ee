#pragma once
// The controller of a persistent managed object: after a commit or a
// restore it hands the object to the configuration flow and to the alarm
// filter, and it runs actions and snapshot reads for the management
// handler, answering it when the adaption layer is done.

#include "adaption/ActionIfApi.h"
#include "adaption/SnapshotParamIfApi.h"
#include "froBl/froMgmtSwU/export/FroCtrlServices.h"
#include "froBl/froMgmtSwU/export/SupSysFroCtrlIf.h"

#include <string>

class SupSysGenericFroCtrl : public ActionFroCallbackIf, public SnapshotParamCallbackIf, public SupSysFroCtrlIf {
public:
    explicit SupSysGenericFroCtrl(const FroCtrlServices& services) : m_services(services) {}

    void postCreate() override;
    void restore() override;
    void preDelete() override;
    void postSet() override;
    bool performAction(const std::string& actionName, const ActionLists& lists, std::string& errorText,
                       SupSysFroCallbackIf* callback) override;
    bool snapshotRequest(SupSysFroCallbackIf* callback) override;

    void actionDone(const SupSysFroCallbackIf::ActionResult& result) override;
    void snapshotDone() override;

protected:
    // The steps the subclasses put together in their own order.
    void setConfig();
    void restoreConfig();
    void deleteConfig(fRO& fro);
    void alarmsCreated();
    void alarmsChanged();
    void alarmsDeleted();

    std::string ownLdn() const;
    froMgr* table() const { return m_services.pTable; }

private:
    FroCtrlServices m_services;
    SupSysFroCallbackIf* m_pSnapshotCallback = nullptr;
    SupSysFroCallbackIf* m_pActionCallback = nullptr;
    // Kept while the action runs: the adaption layer reads them.
    ActionLists m_actionLists;
};
