#pragma once
// The generic handling of the management client's requests: create, set,
// get, delete and action on managed objects, each with an XML body, in the
// client's transaction. Changes go to transMgr and their SQL to the
// transaction's statements; every request but an action without
// confirmation is answered to its sender. Applications add their rules in
// the hooks.

#include "froBl/froMgmtSwU/export/CtrlCommunicationIfApi.h"
#include "froBl/froMgmtSwU/export/SupSysFroCallbackIf.h"
#include "froBl/froMgmtSwU/export/SupSysFroCtrlIf.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"

#include "ose/Signal.h"

#include <cstdint>
#include <string>
#include <vector>

class ElibDbFroDatabase;
class froMgr;
class transMgr;

class MaoFroGenericBase : public SupSysFroCallbackIf {
public:
    // What the extract step reads from a request.
    struct Request {
        std::int32_t transactionId = 0;
        std::uint32_t froType = 0;
        std::int32_t internalId = -1;
        std::int32_t externalId = -1;
        ose::PROCESS sender = 0;
        std::string xml;
        xmlDocumentRecord record;
    };

    MaoFroGenericBase(transMgr& transactions, froMgr& table, ElibDbFroDatabase& database,
                      CtrlCommunicationIfApi& communication);

    void snapshotDone(fRO* fro) override;
    void actionDone(fRO* fro, const ActionResult& result) override;

    void handleCreate(ose::Signal* signal, ose::PROCESS sender);
    void handleSet(ose::Signal* signal, ose::PROCESS sender);
    void handleGet(ose::Signal* signal, ose::PROCESS sender);
    void handleDelete(ose::Signal* signal, ose::PROCESS sender);
    void handleActionCfm(ose::Signal* signal, ose::PROCESS sender) { handleAction(signal, sender, true); }
    void handleActionNoCfm(ose::Signal* signal, ose::PROCESS sender) { handleAction(signal, sender, false); }
    void handleInServReq(ose::Signal* signal, ose::PROCESS sender) { handleInServReq(signal, sender, ""); }
    void handleInServReq(ose::Signal* signal, ose::PROCESS sender, const std::string& wanted);

    std::size_t pendingGets() const { return m_getRequests.size(); }
    std::size_t pendingActions() const { return m_actionRequests.size(); }

protected:
    // Object-level rules; false stops the request with errorText.
    virtual bool createAllowed(const Request& request, std::string& errorText);
    virtual bool setAllowed(const Request& request, std::string& errorText);
    virtual bool deleteAllowed(const Request& request, const std::string& ldn, std::string& errorText);
    // False: the delete is confirmed without doing anything.
    virtual bool deleteFroAllowed(fRO* fro);
    virtual bool performAction(fRO* fro, const std::string& actionName, const SupSysFroCtrlIf::ActionLists& lists,
                               std::string& errorText);

    transMgr& m_transactions;
    froMgr& m_table;

private:
    struct GetRequest {
        fRO* fro;
        std::int32_t transactionId;
        std::vector<std::string> names;
        ose::PROCESS sender;
        std::string xml;
    };
    struct ActionRequest {
        fRO* fro;
        std::string actionName;
        std::string version;
        std::int32_t transactionId;
        bool wantConfirm;
        ose::PROCESS sender;
    };

    void handleAction(ose::Signal* signal, ose::PROCESS sender, bool wantConfirm);
    bool extract(ose::Signal* signal, ose::PROCESS sender, const char* what, Request& request);
    bool createAndSave(const Request& request, std::int32_t& externalId, std::string& errorText);
    bool setAndSave(const Request& request, std::string& errorText);
    bool deleteAndSave(const Request& request, const std::string& ldn, std::string& errorText);
    bool startAction(const Request& request, bool wantConfirm, std::string& errorText);
    void send(ose::Signal* signal, ose::PROCESS to, bool fullStop);

    ElibDbFroDatabase& m_database;
    CtrlCommunicationIfApi& m_communication;
    std::vector<GetRequest> m_getRequests;
    std::vector<ActionRequest> m_actionRequests;
};
