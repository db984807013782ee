#include "froBl/froMgmtSwU/export/SupSysMaoFroIfHandler.h"

#include "froBl/froMgmtSwU/export/MaoFroSignals.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/ldn.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"
#include "froBl/froMgmtSwU/export/transMgr.h"
#include "platform/NameServerSignals.h"

#include "ose/Kernel.h"

#include <algorithm>
#include <array>

using namespace maofro;
using namespace sup_sys_trace;

namespace {

ose::TraceGroupId maoGroup() { return ose::traceGroup<"supSysMaoFroIfSwU">(); }

constexpr std::array<ose::SIGSELECT, 8> kSubscriptions = {
    name_server::NS_ADD_SERVICE_REPLY, MAOFRO_CREATE_REQ,     MAOFRO_DELETE_REQ,        MAOFRO_SET_REQ,
    MAOFRO_GET_REQ,                    MAOFRO_IN_SERVICE_REQ, MAOFRO_ACTION_NO_CFM_REQ, MAOFRO_ACTION_REQ};

// The classes a unit of each type needs before it can be created.
struct UnitNeeds {
    const char* unitType;
    std::array<const char*, 2> classes; // nullptr: none
};
constexpr UnitNeeds kUnitNeeds[] = {
    {"SAU", {"Cabinet", nullptr}},
    {"CLU", {"Cabinet", nullptr}},
    {"SCU", {nullptr, nullptr}},
    {"SUP", {nullptr, nullptr}},
    {"PSU", {"PowerSupply", nullptr}},
    {"PDU", {"PowerSupply", "PowerDistribution"}},
    {"BFU", {"BatteryBackup", "PowerDistribution"}},
};

// The units that keep a power object from being deleted, in the order asked.
struct DeleteGuard {
    const char* moType;
    std::array<const char*, 2> unitTypes;
};
constexpr DeleteGuard kDeleteGuards[] = {
    {"PowerSupply", {"PSU", "PDU"}},
    {"PowerDistribution", {"PDU", "BFU"}},
    {"BatteryBackup", {"PDU", "BFU"}},
};

// The value of a named attribute in a request; empty when it has none.
std::string requested(const MaoFroGenericBase::Request& request, const std::string& name)
{
    const auto& names = request.record.names;
    auto it = std::find(names.begin(), names.end(), name);
    return it == names.end() ? std::string() : request.record.values[static_cast<std::size_t>(it - names.begin())];
}

} // namespace

SupSysMaoFroIfHandler::SupSysMaoFroIfHandler(SignalDistributorAPI& distributor, transMgr& transactions,
                                             froMgr& table, ElibDbFroDatabase& database,
                                             CtrlCommunicationIfApi& communication)
    : MaoFroGenericBase(transactions, table, database, communication), m_distributor(distributor)
{
}

SupSysMaoFroIfHandler::~SupSysMaoFroIfHandler()
{
    for (ose::SIGSELECT sigNo : kSubscriptions) m_distributor.unsubscribe(sigNo, this);
}

void SupSysMaoFroIfHandler::subscribe()
{
    for (ose::SIGSELECT sigNo : kSubscriptions)
        if (m_distributor.subscribe(sigNo, this) == 0)
            SSC_TRACE(maoGroup(), kError, "Subscription of 0x%x failed", sigNo);
}

bool SupSysMaoFroIfHandler::publish()
{
    return m_nameServer.publish(kServiceName);
}

void SupSysMaoFroIfHandler::handleSignal(ose::Signal* signal)
{
    const ose::PROCESS sender = ose::sender(&signal);
    switch (ose::signalNumber(signal)) {
    case MAOFRO_CREATE_REQ: handleCreate(signal, sender); break;
    case MAOFRO_DELETE_REQ: handleDelete(signal, sender); break;
    case MAOFRO_GET_REQ: handleGet(signal, sender); break;
    case MAOFRO_SET_REQ: handleSet(signal, sender); break;
    case MAOFRO_IN_SERVICE_REQ: handleInServReq(signal, sender); break;
    case MAOFRO_ACTION_NO_CFM_REQ: handleActionNoCfm(signal, sender); break;
    case MAOFRO_ACTION_REQ: handleActionCfm(signal, sender); break;
    case name_server::NS_ADD_SERVICE_REPLY: m_nameServer.handleSignal(signal); break;
    default:
        SSC_TRACE(maoGroup(), kError, "Support system control maoFroIfHandler: BAD SIGNAL RECEIVED, signo: 0x%08x",
                  ose::signalNumber(signal));
        break;
    }
}

// ---- create ------------------------------------------------------------------

bool SupSysMaoFroIfHandler::createAllowed(const Request& request, std::string& errorText)
{
    const std::string moType = Ldn::moType(request.record.ldn);
    if (moType == "HwUnit") return hwUnitAllowed(request, errorText);
    if (moType == "EcPort") return ecPortAllowed(request, errorText);
    return true;
}

bool SupSysMaoFroIfHandler::classExists(std::int32_t transactionId, const std::string& moType) const
{
    std::vector<std::string> found;
    m_table.getLdnsOfType(found, moType);
    return !found.empty() || m_transactions.isInTransaction(transactionId, moType);
}

bool SupSysMaoFroIfHandler::hwUnitAllowed(const Request& request, std::string& errorText) const
{
    const std::string unitType = requested(request, "unitType");
    auto needs = std::find_if(std::begin(kUnitNeeds), std::end(kUnitNeeds),
                              [&](const UnitNeeds& n) { return unitType == n.unitType; });
    if (needs == std::end(kUnitNeeds)) {
        errorText = "Unknown Unit Type.";
        return false;
    }
    for (const char* moType : needs->classes) {
        if (moType != nullptr && !classExists(request.transactionId, moType)) {
            errorText = "Create requirements not fulfilled for HwUnit";
            return false;
        }
    }
    return true;
}

bool SupSysMaoFroIfHandler::ecPortAllowed(const Request& request, std::string& errorText) const
{
    const std::string hubPosition = requested(request, "hubPosition");
    std::vector<std::string> ldns;
    m_table.getAllLdns(ldns);
    for (const std::string& ldn : ldns) {
        if (Ldn::moType(ldn) != "EcPort") continue;
        const fRO* port = m_table.getFro(ldn);
        if (port != nullptr && port->getAttribute("hubPosition") == hubPosition) {
            errorText = "The hubPosition is used by " + ldn;
            return false;
        }
    }
    return true;
}

// ---- set ---------------------------------------------------------------------

bool SupSysMaoFroIfHandler::setAllowed(const Request& request, std::string& errorText)
{
    const fRO* fro = m_table.getFro(request.record.ldn);
    if (fro == nullptr || Ldn::moType(request.record.ldn) != "AlarmPort") return true;
    const auto& names = request.record.names;
    const bool onlyLocking = std::all_of(names.begin(), names.end(), [&](const std::string& n) {
        return n == "administrativeState" && requested(request, n) == "0";
    });
    if (!onlyLocking && fro->getAttribute("administrativeState") == "1") {
        errorText = "Unable to modify an unlocked AlarmPort";
        return false;
    }
    return true;
}

// ---- delete ------------------------------------------------------------------

std::string SupSysMaoFroIfHandler::unitInUse(std::int32_t transactionId, const std::string& unitType) const
{
    const std::vector<std::string> deleted = m_transactions.getDeleted(transactionId);
    std::vector<std::string> units;
    m_table.getLdnsOfType(units, "HwUnit");
    for (const std::string& ldn : units) {
        const fRO* unit = m_table.getFro(ldn);
        if (unit == nullptr || unit->getAttribute("unitType") != unitType) continue;
        if (std::find(deleted.begin(), deleted.end(), ldn) == deleted.end()) return ldn;
    }
    return {};
}

bool SupSysMaoFroIfHandler::deleteAllowed(const Request& request, const std::string& ldn, std::string& errorText)
{
    const std::string moType = Ldn::moType(ldn);
    for (const DeleteGuard& guard : kDeleteGuards) {
        if (moType != guard.moType) continue;
        for (const char* unitType : guard.unitTypes) {
            const std::string user = unitInUse(request.transactionId, unitType);
            if (!user.empty()) {
                errorText = ldn + " is in use by " + user;
                return false;
            }
        }
    }
    return true;
}

// ---- action ------------------------------------------------------------------

bool SupSysMaoFroIfHandler::performAction(fRO* fro, const std::string& actionName,
                                          const SupSysFroCtrlIf::ActionLists& lists, std::string& errorText)
{
    auto* controller = fro->className() == "SupSysFroCtrlIf" ? dynamic_cast<SupSysFroCtrlIf*>(fro) : nullptr;
    if (controller == nullptr) {
        errorText = "action was not performed";
        return false;
    }
    return controller->performAction(actionName, lists, errorText, this);
}
