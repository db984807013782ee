#include "froBl/froMgmtSwU/export/MaoFroGenericBase.h"

#include "froBl/froMgmtSwU/export/elibDbFroDatabase.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/ldn.h"
#include "froBl/froMgmtSwU/export/maoFroCodec.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"
#include "froBl/froMgmtSwU/export/transMgr.h"

#include "ose/Kernel.h"

#include <algorithm>

using namespace maofro;
using namespace sup_sys_trace;

namespace {

ose::TraceGroupId maoGroup() { return ose::traceGroup<"supSysMaoFroIfSwU">(); }

constexpr std::uint32_t kActionNotStarted = 0x1040001;

// The words of a failed extract, by request.
void traceExtractFailure(const char* what, ExtractResult result, std::uint32_t count)
{
    const std::string request = what;
    if (result == ExtractResult::WrongCount) {
        if (request == "MaoFroDeleteReq")
            SSC_TRACE(maoGroup(), kError, "Wrong number of attributes in MAO_FRO_DELETE_REQ, should be 2, is %u", count);
        else if (request == "maoFroActionReq")
            SSC_TRACE(maoGroup(), kError, "The number of attributes %u!= 2 in the MaoFroActionReq signal", count);
        else
            SSC_TRACE(maoGroup(), kError, "More than one attribute in the %s signal, should only be the XML string", what);
    } else if (result == ExtractResult::NotXml) {
        SSC_TRACE(maoGroup(), kError, "The attribute in the %s signal isn't in XML format", what);
    } else {
        SSC_TRACE(maoGroup(), kError, "The %s signal is too short or its text is not terminated", what);
    }
}

} // namespace

MaoFroGenericBase::MaoFroGenericBase(transMgr& transactions, froMgr& table, ElibDbFroDatabase& database,
                                     CtrlCommunicationIfApi& communication)
    : m_transactions(transactions), m_table(table), m_database(database), m_communication(communication)
{
}

bool MaoFroGenericBase::createAllowed(const Request&, std::string&) { return true; }
bool MaoFroGenericBase::setAllowed(const Request&, std::string&) { return true; }
bool MaoFroGenericBase::deleteAllowed(const Request&, const std::string&, std::string&) { return true; }
bool MaoFroGenericBase::deleteFroAllowed(fRO*) { return true; }

bool MaoFroGenericBase::performAction(fRO*, const std::string&, const SupSysFroCtrlIf::ActionLists&,
                                      std::string& errorText)
{
    errorText = "action was not performed";
    return false;
}

bool MaoFroGenericBase::extract(ose::Signal* signal, ose::PROCESS sender, const char* what, Request& request)
{
    RequestFields fields;
    const ExtractResult result = extractRequest(signal, fields);
    if (result != ExtractResult::Done) {
        traceExtractFailure(what, result, fields.attributeCount);
        return false;
    }
    request.transactionId = static_cast<std::int32_t>(fields.transactionId);
    request.froType = fields.froType;
    request.externalId = static_cast<std::int32_t>(fields.froId);
    request.sender = sender;
    request.xml = fields.text;
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    if (sigNo == MAOFRO_CREATE_REQ) request.internalId = -1;
    else if (sigNo == MAOFRO_ACTION_REQ || sigNo == MAOFRO_ACTION_NO_CFM_REQ) request.internalId = 0;
    else request.internalId = froIdHandler::toInternalId(fields.froType, request.externalId);
    return true;
}

void MaoFroGenericBase::send(ose::Signal* signal, ose::PROCESS to, bool fullStop)
{
    if (to == 0) {
        SSC_TRACE(maoGroup(), kError, fullStop ? "The process sendToPid is not positive, unable to send."
                                               : "The process sendToPid is not positive, unable to send");
        ose::free_buf(&signal);
        return;
    }
    if (m_communication.sendSignal(&signal, to) == 0)
        SSC_TRACE(maoGroup(), kError, "sendSignal in CtrlCommunication returns false when trying to send");
}

// ---- create ------------------------------------------------------------------

void MaoFroGenericBase::handleCreate(ose::Signal* signal, ose::PROCESS sender)
{
    Request request;
    std::string errorText;
    std::int32_t externalId = -1;
    bool ok = extract(signal, sender, "MaoFroCreateReq", request);
    if (!ok) errorText = "Failed to extract XML data.";
    if (ok) {
        SSC_TRACE(maoGroup(), kFlow, "xmlstr for create: %s", request.xml.c_str());
        ok = xmlHandler::instance().parse(request.xml, request.record);
        if (!ok) errorText = "Failed to read XML data.";
    }
    ok = ok && createAllowed(request, errorText) && createAndSave(request, externalId, errorText);
    if (!ok) SSC_TRACE(maoGroup(), kError, "%s", errorText.c_str());
    if (ok) SSC_TRACE(maoGroup(), kFlow, "Create success");
    else SSC_TRACE(maoGroup(), kFlow, "Create failure, sending errortext: %s", errorText.c_str());
    send(makeCreateCfm(static_cast<std::uint32_t>(request.transactionId), static_cast<std::uint32_t>(externalId), ok,
                       errorText),
         sender, false);
}

namespace {

// The shadow's transaction state is the transaction's, not the object's:
// it is never stored.
bool withoutTransState(std::vector<std::string>& names, std::vector<std::string>& values,
                       std::vector<std::string>& types)
{
    if (names.size() != values.size() || names.size() != types.size()) return false;
    for (std::size_t i = names.size(); i-- > 0;)
        if (names[i] == transMgr::kTransState) {
            const auto at = static_cast<std::ptrdiff_t>(i);
            names.erase(names.begin() + at);
            values.erase(values.begin() + at);
            types.erase(types.begin() + at);
        }
    return true;
}

} // namespace

// Only an object of a known class whose ldn names that class is made: any
// other would live in memory without a table to be stored in.
bool MaoFroGenericBase::createAndSave(const Request& request, std::int32_t& externalId, std::string& errorText)
{
    const xmlDocumentRecord& record = request.record;
    externalId = -1;
    const bool known = fro_types::className(request.froType) == Ldn::moType(record.ldn) &&
                       !Ldn::moType(record.ldn).empty();
    if (!known || m_transactions.createMO(request.transactionId, record.ldn, record.names, record.values,
                                          record.types, request.froType, externalId) != 1) {
        errorText = "Failed to create FRO  " + record.ldn;
        return false;
    }
    // The row holds what the object holds: the request's attributes and the
    // class defaults of those it left out.
    std::vector<std::string> names, values, types;
    std::string xml = request.xml;
    std::string complete;
    if (m_transactions.getMoAttributes(request.transactionId, record.ldn, names, values, types) == 1 &&
        withoutTransState(names, values, types) &&
        xmlHandler::instance().build(record.ldn, record.version.empty() ? "1.0" : record.version, names, types,
                                     values, complete))
        xml = complete;
    m_database.init();
    SSC_TRACE(maoGroup(), kFlow, "Creating fRO %s in database", record.ldn.c_str());
    const bool saved = m_database.saveFRO(request.transactionId, externalId, request.froType, xml);
    m_database.close();
    if (!saved) {
        errorText = "Couldn not save fRO " + record.ldn + " to the database.";
        // The transaction must not make in memory what it cannot store.
        m_transactions.deleteMO(request.transactionId, record.ldn);
    }
    return saved;
}

// ---- set ---------------------------------------------------------------------

void MaoFroGenericBase::handleSet(ose::Signal* signal, ose::PROCESS sender)
{
    Request request;
    std::string errorText;
    bool ok = extract(signal, sender, "MaoFroSetReq", request);
    if (!ok) errorText = "Failed to extract XML data.";
    if (ok) {
        SSC_TRACE(maoGroup(), kFlow, "xmlstr for set: %s", request.xml.c_str());
        ok = xmlHandler::instance().parse(request.xml, request.record);
        if (!ok) errorText = "Failed to read XML data. Received xmlString:\n" + request.xml;
    }
    if (ok && !setAllowed(request, errorText)) {
        SSC_TRACE(maoGroup(), kFlow, "Not ok to set fro");
        ok = false;
    }
    ok = ok && setAndSave(request, errorText);
    if (ok) SSC_TRACE(maoGroup(), kFlow, "Set success");
    else SSC_TRACE(maoGroup(), kFlow, "Set failure, sending errortext: %s", errorText.c_str());
    send(makeSetOrDeleteCfm(MAOFRO_SET_CFM, static_cast<std::uint32_t>(request.transactionId), ok, errorText), sender,
         false);
}

bool MaoFroGenericBase::setAndSave(const Request& request, std::string& errorText)
{
    const xmlDocumentRecord& record = request.record;
    std::vector<std::string> names = record.names, before, types;
    m_transactions.getMoAttributes(request.transactionId, record.ldn, names, before, types);
    for (std::size_t i = 0; i < record.names.size(); ++i) {
        if (m_transactions.setMoAttribute(request.transactionId, record.ldn, record.names[i], record.values[i]) != 1) {
            errorText = "Failed to set fRO attribute " + record.names[i] + " in transMgr for fRO " + record.ldn;
            return false;
        }
    }
    m_database.init();
    SSC_TRACE(maoGroup(), kFlow, "Setting attributes for fRO %s in database", record.ldn.c_str());
    const bool saved =
        m_database.saveAttributes(request.transactionId, request.externalId, request.froType, request.xml, true);
    m_database.close();
    if (!saved) {
        errorText = "Database failure in setting fRO attributes for fRO " + record.ldn;
        // What the database refused is taken back, so that the commit does
        // not keep in memory what it does not store.
        for (std::size_t i = 0; i < names.size() && i < before.size(); ++i)
            m_transactions.setMoAttribute(request.transactionId, record.ldn, names[i], before[i]);
    }
    return saved;
}

// ---- get ---------------------------------------------------------------------

void MaoFroGenericBase::handleGet(ose::Signal* signal, ose::PROCESS sender)
{
    Request request;
    std::string errorText;
    bool ok = extract(signal, sender, "MaoFroGetReq", request);
    if (!ok) errorText = "Failed to extract XML data.";
    if (ok && !xmlHandler::instance().parse(request.xml, request.record)) {
        ok = false;
        errorText = "Failed to read XML data.";
    }
    fRO* fro = ok ? m_table.getFro(request.record.ldn) : nullptr;
    if (ok && fro == nullptr) {
        ok = false;
        errorText = "Fro does not exist in froMgr, returning false for getfRO().";
    }
    if (!ok) {
        SSC_TRACE(maoGroup(), kFlow, "Get failure, sending errortext: %s", errorText.c_str());
        send(makeTextCfm(MAOFRO_GET_CFM, static_cast<std::uint32_t>(request.transactionId), 1, errorText), sender,
             true);
        return;
    }
    m_getRequests.push_back({fro, request.transactionId, request.record.names, sender, request.xml});
    auto* controller = fro->className() == "SupSysFroCtrlIf" ? dynamic_cast<SupSysFroCtrlIf*>(fro) : nullptr;
    if (controller != nullptr && controller->snapshotRequest(this)) {
        SSC_TRACE(maoGroup(), kFlow, "Snapshot parameters exists for this fro");
        return;
    }
    SSC_TRACE(maoGroup(), kFlow, "Snapshot parameters do not exists for this fro");
    snapshotDone(fro);
}

void MaoFroGenericBase::snapshotDone(fRO* fro)
{
    auto it = std::find_if(m_getRequests.begin(), m_getRequests.end(), [&](const GetRequest& r) { return r.fro == fro; });
    if (it == m_getRequests.end()) {
        SSC_TRACE(maoGroup(), kError, "Could not find the fro data in getRequests vector.");
        SSC_TRACE(maoGroup(), kError, "Ldn: %s and id: %d", fro != nullptr ? m_table.getLdn(fro->getInternalId()).c_str() : "",
                  fro != nullptr ? fro->getInternalId() : -1);
        return;
    }
    const GetRequest request = *it;
    m_getRequests.erase(it);
    const std::string ldn = m_table.getLdn(fro->getInternalId());
    std::vector<std::string> names = request.names, values, types;
    std::string text;
    xmlDocumentRecord asked;
    xmlHandler::instance().parse(request.xml, asked);
    const bool ok = m_transactions.getMoAttributes(request.transactionId, ldn, names, values, types) == 1 &&
                    xmlHandler::instance().build(ldn, asked.version.empty() ? "1.0" : asked.version, names, types,
                                                 values, text);
    if (!ok) {
        text = "Failed to retrieve fRO attributes.";
        SSC_TRACE(maoGroup(), kError, "Failed to retrieve fRO attributes for ldn (%s).", ldn.c_str());
        SSC_TRACE(maoGroup(), kFlow, "Get failure, sending errortext: %s", text.c_str());
    } else {
        SSC_TRACE(maoGroup(), kFlow, "Get success");
    }
    send(makeTextCfm(MAOFRO_GET_CFM, static_cast<std::uint32_t>(request.transactionId), ok ? 0 : 1, text),
         request.sender, true);
}

// ---- delete ------------------------------------------------------------------

void MaoFroGenericBase::handleDelete(ose::Signal* signal, ose::PROCESS sender)
{
    Request request;
    std::string errorText;
    std::string ldn;
    bool ok = extract(signal, sender, "MaoFroDeleteReq", request);
    if (!ok) errorText = "Failed to extract XML data.";
    if (ok) {
        ldn = m_transactions.getLdn(request.transactionId, request.internalId);
        ok = deleteAllowed(request, ldn, errorText) && deleteAndSave(request, ldn, errorText);
    }
    if (ok) SSC_TRACE(maoGroup(), kFlow, "Delete success");
    else SSC_TRACE(maoGroup(), kFlow, "Delete failure, sending errortext: %s", errorText.c_str());
    send(makeSetOrDeleteCfm(MAOFRO_DELETE_CFM, static_cast<std::uint32_t>(request.transactionId), ok, errorText),
         sender, false);
}

// An object that is gone already, or that its rules keep, is confirmed as
// deleted without more.
bool MaoFroGenericBase::deleteAndSave(const Request& request, const std::string& ldn, std::string& errorText)
{
    SSC_TRACE(maoGroup(), kFlow, "handleDelete: internalFroId: %d, ldn: %s", request.internalId, ldn.c_str());
    fRO* fro = m_transactions.getFro(request.transactionId, ldn);
    if (fro == nullptr || !deleteFroAllowed(fro)) return true;
    if (m_transactions.deleteMO(request.transactionId, ldn) != 1) {
        errorText = "Failed to delete fRO in database " + ldn;
        return false;
    }
    m_database.init();
    SSC_TRACE(maoGroup(), kFlow, "Deleting fRO %s in database", ldn.c_str());
    m_database.deleteFRO(request.transactionId, request.externalId, request.froType);
    m_database.close();
    return true;
}

// ---- action ------------------------------------------------------------------

void MaoFroGenericBase::handleAction(ose::Signal* signal, ose::PROCESS sender, bool wantConfirm)
{
    Request request;
    std::string errorText;
    bool ok = extract(signal, sender, "maoFroActionReq", request);
    if (!ok) errorText = "Failed to extract XML data.";
    if (ok) {
        SSC_TRACE(maoGroup(), kFlow, "xmlstr for Action: %s", request.xml.c_str());
        ok = xmlHandler::instance().parse(request.xml, request.record);
        if (!ok) errorText = "Failed to read XML data.";
    }
    if (ok) {
        SSC_TRACE(maoGroup(), kFlow, "handleAction: %s", request.record.ldn.c_str());
        ok = startAction(request, wantConfirm, errorText);
    }
    if (ok) return;
    SSC_TRACE(maoGroup(), kError, "%s", errorText.c_str());
    SSC_TRACE(maoGroup(), kFlow, "handleActionReq result: %u", kActionNotStarted);
    if (wantConfirm)
        send(makeTextCfm(MAOFRO_ACTION_CFM, static_cast<std::uint32_t>(request.transactionId), kActionNotStarted,
                         errorText),
             sender, true);
}

bool MaoFroGenericBase::startAction(const Request& request, bool wantConfirm, std::string& errorText)
{
    const xmlDocumentRecord& record = request.record;
    if (record.kind != xmlDocumentRecord::Action) {
        errorText = "The type of thing to do in the action request was not of type ACTION, it was: " +
                    std::to_string(record.kind);
        return false;
    }
    fRO* fro = m_table.getFro(record.ldn);
    if (fro == nullptr) {
        errorText = "Failed to find the requested fro with ldn: " + record.ldn;
        return false;
    }
    m_actionRequests.push_back(
        {fro, record.actionName, record.version, request.transactionId, wantConfirm, request.sender});
    const SupSysFroCtrlIf::ActionLists lists{record.names, record.values, record.types};
    if (performAction(fro, record.actionName, lists, errorText)) return true;
    // The action may have answered already; only a record still waiting goes.
    auto it = std::find_if(m_actionRequests.begin(), m_actionRequests.end(),
                           [&](const ActionRequest& r) { return r.fro == fro && r.actionName == record.actionName; });
    if (it != m_actionRequests.end()) m_actionRequests.erase(it);
    return false;
}

void MaoFroGenericBase::actionDone(fRO* fro, const ActionResult& result)
{
    auto it = std::find_if(m_actionRequests.begin(), m_actionRequests.end(),
                           [&](const ActionRequest& r) {
                               return r.fro == fro && r.actionName == result.actionName;
                           });
    if (it == m_actionRequests.end()) {
        SSC_TRACE(maoGroup(), kError, "Failed to retrieve fRO to send action confirm for, ldn (%s).",
                  fro != nullptr ? m_table.getLdn(fro->getInternalId()).c_str() : "");
        return;
    }
    const ActionRequest request = *it;
    m_actionRequests.erase(it);
    if (!request.wantConfirm) return;
    std::string text = result.errorText;
    std::uint32_t code = result.success ? 0 : result.failureCode;
    if (result.success) {
        const std::string ldn = m_table.getLdn(fro->getInternalId());
        if (xmlHandler::instance().build(ldn, request.version, result.names, result.types, result.values, text)) {
            SSC_TRACE(maoGroup(), kFlow, "xmldata for action confirm: %s", text.c_str());
        } else {
            SSC_TRACE(maoGroup(), kError, "Failed to create xml string for MAOFRO_ACTION_CFM");
        }
        SSC_TRACE(maoGroup(), kFlow, "Action success.");
    } else {
        SSC_TRACE(maoGroup(), kFlow, "Action failure, sending errortext: %s", text.c_str());
    }
    send(makeTextCfm(MAOFRO_ACTION_CFM, static_cast<std::uint32_t>(request.transactionId), code, text),
         request.sender, true);
}

// ---- in service --------------------------------------------------------------

void MaoFroGenericBase::handleInServReq(ose::Signal* signal, ose::PROCESS sender, const std::string& wanted)
{
    const InServiceFields fields = extractInService(signal);
    bool ok = false;
    if (!fields.wellFormed) {
        SSC_TRACE(maoGroup(), kError,
                  "handleInServReq failed, sigrev: %d, noOfAttributes: %d,  attribute: %d, type: %d",
                  static_cast<int>(fields.revision), static_cast<int>(fields.attributeCount),
                  static_cast<int>(fields.type), static_cast<int>(fields.elementCount));
    } else if (wanted.empty() || wanted == fields.revisionText) {
        ok = true;
        SSC_TRACE(maoGroup(), kFlow, "handleInServReq succeeded, wanted str: %s", wanted.c_str());
    } else {
        SSC_TRACE(maoGroup(), kError, "handleInServReq failed, wanted revision: %s, received revision: %s",
                  wanted.c_str(), fields.revisionText.c_str());
    }
    send(makeInServiceCfm(fields.revision, ok, fields.revisionText), sender, true);
}
