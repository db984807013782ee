#include "froBl/froMgmtSwU/export/transMgr.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"

#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/ldn.h"
#include "platform/VantoTransactionApi.h"
#include "platform/VantoTransactionClient.h"

#include <algorithm>

using namespace fro_trace;

namespace {

bool isState(const std::string& state, const char* word)
{
    return state == word;
}

} // namespace

transMgr::transMgr(froMgr& table, fROFactory& factory, VantoTransactionApi& platform)
    : m_table(table), m_factory(factory), m_platform(platform)
{
}

transMgr::~transMgr()
{
    rollbackAll();
}

transMgr& transMgr::instance()
{
    return SupSysSingletons::get<transMgr>([] {
        return std::make_unique<transMgr>(froMgr::instance(), fROFactory::instance(),
                                          SupSysSingletons::get<VantoTransactionClient>());
    });
}

// ---- dictionaries -------------------------------------------------------------

bool transMgr::registerWithPlatform(std::int32_t transactionId)
{
    const auto id = static_cast<unsigned>(transactionId);
    SSC_TRACE(mgmtGroup(), kFlow, "Registering transaction %u with VTP", id);
    const int sent = m_platform.registerResource_e(transactionId, 0, 0);
    SSC_TRACE(mgmtGroup(), kFlow, "Registration done of transaction %u", id);
    if (sent != 0) {
        SSC_TRACE(mgmtGroup(), kError, "Resource registration to TRANI failed. Failure code %u",
                  static_cast<unsigned>(sent));
        return false;
    }
    std::uint32_t result = 0;
    const int answered = m_platform.awaitRegisterRsp(transactionId, result);
    if (answered != 0) {
        SSC_TRACE(mgmtGroup(), kError, "Resource registration to TRANI failed. Failure code %u",
                  static_cast<unsigned>(answered));
        return false;
    }
    SSC_TRACE(mgmtGroup(), kFlow, "VANTO_TRANS_REGISTER_RSP, txId=(0x%x), result= (0x%x)", id, result);
    if (result != 0) {
        SSC_TRACE(mgmtGroup(), kError, "Resource registration to TRANI failed. Failure code %u", result);
        return false;
    }
    SSC_TRACE(mgmtGroup(), kFlow, "Registration response: VANTO_TRANSACTION_OK");
    return true;
}

transMgr::LdnDict* transMgr::dictionary(std::int32_t transactionId)
{
    auto it = m_transactions.find(transactionId);
    if (it != m_transactions.end())
        return &it->second;
    // A transaction the platform does not know would hold its objects for
    // ever: without a registration there is no dictionary.
    if (!registerWithPlatform(transactionId))
        return nullptr;
    return &m_transactions[transactionId];
}

void transMgr::dropDictionary(std::map<std::int32_t, LdnDict>::iterator it)
{
    for (auto& entry : it->second)
        m_factory.deleteFro(std::move(entry.second));
    m_transactions.erase(it);
}

transMgr::Found transMgr::findInAny(const std::string& ldn) const
{
    SSC_TRACE(mgmtGroup(), kFlow, "Getting fRO %s in any transaction", ldn.c_str());
    for (const auto& [transactionId, dict] : m_transactions) {
        const auto it = dict.find(ldn);
        if (it != dict.end()) {
            SSC_TRACE(mgmtGroup(), kFlow, "Found the fRO with ldn %s in transaction %d", ldn.c_str(), transactionId);
            return {it->second.get(), transactionId};
        }
    }
    SSC_TRACE(mgmtGroup(), kFlow, "Could not find fRO ldn %s", ldn.c_str());
    return {};
}

int transMgr::removeFro(std::int32_t transactionId, const std::string& ldn)
{
    const auto it = m_transactions.find(transactionId);
    if (it == m_transactions.end()) {
        SSC_TRACE(mgmtGroup(), kError, "removeFRO: Couldn't find transaction %d", transactionId);
        return 0;
    }
    const auto shadow = it->second.find(ldn);
    if (shadow == it->second.end()) {
        SSC_TRACE(mgmtGroup(), kError,
                  "Tried to remove fRO with ldn \"%s\" in transaction %d though it does not exist in this transaction",
                  ldn.c_str(), transactionId);
        return 0;
    }
    m_factory.deleteFro(std::move(shadow->second));
    it->second.erase(shadow);
    return 1;
}

std::string transMgr::stateOf(const fRO* shadow)
{
    if (shadow == nullptr) {
        SSC_TRACE(mgmtGroup(), kError, "Pointer to fRO is NULL, cannot read TransState");
        return {};
    }
    return shadow->getAttribute(kTransState);
}

void transMgr::setState(fRO& shadow, const char* state)
{
    if (!shadow.setAttribute(kTransState, std::string(state)))
        shadow.addAttribute(kTransState, state, "STRING");
}

// ---- shadows ------------------------------------------------------------------

int transMgr::newShadow(std::int32_t transactionId, const std::string& ldn, const std::vector<std::string>& names,
                        const std::vector<std::string>& values, const std::vector<std::string>& types,
                        std::uint32_t froType, std::int32_t& externalId, const char* state)
{
    const bool create = isState(state, kCreate);
    std::unique_ptr<fRO> shadow = m_factory.createFro(ldn, froType, externalId, true, create, create);
    if (!shadow) {
        SSC_TRACE(mgmtGroup(), kError, "TR: Could not create fro in FroFactory for %s", ldn.c_str());
        return 0;
    }
    setState(*shadow, state);
    if (names.size() != types.size() || names.size() != values.size()) {
        SSC_TRACE(mgmtGroup(), kError, "Cannot add attributes, vectors of unequal lengths (|names|=%u, |types|=%u, "
                  "|values|=%u)", static_cast<unsigned>(names.size()), static_cast<unsigned>(types.size()),
                  static_cast<unsigned>(values.size()));
    } else {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (names[i] == kTransState)
                continue; // the state is the transaction's own
            // Given values replace the class defaults.
            if (!shadow->setAttribute(names[i], values[i]))
                shadow->addAttribute(names[i], values[i], types[i]);
        }
    }
    const std::int32_t givenId = shadow->getExternalId();
    if (!insertShadow(transactionId, ldn, std::move(shadow)))
        return 0;
    externalId = givenId;
    SSC_TRACE(mgmtGroup(), kFlow, "Creation of fRO in state %s went OK", state);
    return 1;
}

int transMgr::insertShadow(std::int32_t transactionId, const std::string& ldn, std::unique_ptr<fRO> shadow)
{
    const Found found = findInAny(ldn);
    const auto it = m_transactions.find(transactionId);
    if (found.shadow != nullptr)
        SSC_TRACE(mgmtGroup(), kError, "Cannot insert fRO %s into transaction, it is already in an transaction with ID %d",
                  ldn.c_str(), found.transactionId);
    else if (it == m_transactions.end())
        SSC_TRACE(mgmtGroup(), kError, "Could not get Ldn Dictionary");
    if (found.shadow != nullptr || it == m_transactions.end()) {
        SSC_TRACE(mgmtGroup(), kError, "Creation of fRO: FAILED - Could not insert fRO into dictionary");
        m_factory.deleteFro(std::move(shadow));
        return 0;
    }
    it->second.emplace(ldn, std::move(shadow));
    return 1;
}

// ---- create, delete, set ------------------------------------------------------

int transMgr::createMO(std::int32_t transactionId, const std::string& ldn, const std::vector<std::string>& names,
                       const std::vector<std::string>& values, const std::vector<std::string>& types,
                       std::uint32_t froType, std::int32_t& externalId)
{
    SSC_TRACE(mgmtGroup(), kFlow, "Creating fRO %s in transaction %d", ldn.c_str(), transactionId);
    if (dictionary(transactionId) == nullptr)
        return 0;
    const Found found = findInAny(ldn);
    if (found.shadow != nullptr)
        return createWithShadow(transactionId, found, ldn, names, values, types, froType, externalId);
    SSC_TRACE(mgmtGroup(), kFlow, "createMO(): %s was not part of a transaction", ldn.c_str());
    if (m_table.exists(ldn)) {
        SSC_TRACE(mgmtGroup(), kError, "fRO with ldn \"%s\" exists, it cannot be created", ldn.c_str());
        return 0;
    }
    return newShadow(transactionId, ldn, names, values, types, froType, externalId, kCreate);
}

int transMgr::createWithShadow(std::int32_t transactionId, const Found& found, const std::string& ldn,
                               const std::vector<std::string>& names, const std::vector<std::string>& values,
                               const std::vector<std::string>& types, std::uint32_t froType,
                               std::int32_t& externalId)
{
    const std::string state = stateOf(found.shadow);
    if (!isState(state, kDelete)) {
        SSC_TRACE(mgmtGroup(), kError, "Could not add fRO %s, it already exists and is not in state DELETE but state %s",
                  ldn.c_str(), state.c_str());
        return 0;
    }
    // The deleted shadow goes only when its successor has been made, so that
    // a failure leaves the transaction as it was.
    std::unique_ptr<fRO> deleted;
    auto& dict = m_transactions[found.transactionId];
    if (found.transactionId == transactionId) {
        deleted = std::move(dict[ldn]);
        dict.erase(ldn);
    } else {
        removeFro(transactionId, ldn); // traces why
    }
    const int made = deleted ? newShadow(transactionId, ldn, names, values, types, froType, externalId, kCreate) : 0;
    if (made == 0) {
        SSC_TRACE(mgmtGroup(), kError, "Recreation of deleted fRO: FAILED - Could not insert recreated fRO");
        if (deleted)
            dict.emplace(ldn, std::move(deleted));
        return 0;
    }
    m_factory.deleteFro(std::move(deleted));
    return made;
}

int transMgr::deleteMO(std::int32_t transactionId, const std::string& ldn)
{
    SSC_TRACE(mgmtGroup(), kFlow, "Deleting fRO %s in transaction %d", ldn.c_str(), transactionId);
    if (dictionary(transactionId) == nullptr)
        return 0;
    const Found found = findInAny(ldn);
    if (found.shadow != nullptr)
        return deleteWithShadow(transactionId, found, ldn);
    const fRO* real = m_table.getFro(ldn);
    if (real == nullptr) {
        SSC_TRACE(mgmtGroup(), kError, "Cannot delete fRO with ldn \"%s\", it does not exist", ldn.c_str());
        return 0;
    }
    std::int32_t externalId = real->getExternalId();
    return newShadow(transactionId, ldn, {}, {}, {}, real->getFroType(), externalId, kDelete);
}

int transMgr::deleteWithShadow(std::int32_t transactionId, const Found& found, const std::string& ldn)
{
    if (found.transactionId != transactionId) {
        SSC_TRACE(mgmtGroup(), kError,
                  "Cannot delete fRO with ldn \"%s\" in transaction %d, fro is already part of transaction %d",
                  ldn.c_str(), transactionId, found.transactionId);
        return 0;
    }
    const std::string state = stateOf(found.shadow);
    if (isState(state, kSet)) {
        setState(*found.shadow, kDelete);
        SSC_TRACE(mgmtGroup(), kFlow, "Deleting of fRO already existing in transMgr: OK");
        return 1;
    }
    if (isState(state, kCreate) && m_table.exists(ldn)) {
        setState(*found.shadow, kDelete);
        SSC_TRACE(mgmtGroup(), kFlow, "Reset fRO to state DELETE");
        return 1;
    }
    if (isState(state, kCreate)) {
        SSC_TRACE(mgmtGroup(), kFlow, "Canceling creation of fRO already existing in transMgr by deleting it");
        return removeFro(transactionId, ldn);
    }
    if (isState(state, kDelete))
        SSC_TRACE(mgmtGroup(), kError,
                  "Cannot delete fRO with ldn \"%s\" in transaction %d, fro is already deleted in the same transaction",
                  ldn.c_str(), transactionId);
    else
        SSC_TRACE(mgmtGroup(), kError, "State not recognized: %s", state.c_str());
    return 0;
}

int transMgr::setMoAttribute(std::int32_t transactionId, const std::string& ldn, const std::string& name,
                             const std::string& value)
{
    SSC_TRACE(mgmtGroup(), kFlow, "Setting attribute %s to value %s in fRO %s in transaction %d", name.c_str(),
              value.c_str(), ldn.c_str(), transactionId);
    if (name == kTransState) {
        SSC_TRACE(mgmtGroup(), kError, "Could not set attribute in fRO with ldn %s, attribute does not exist",
                  ldn.c_str());
        return 0;
    }
    if (dictionary(transactionId) == nullptr)
        return 0;
    const Found found = findInAny(ldn);
    if (found.shadow != nullptr) {
        if (found.transactionId != transactionId) {
            SSC_TRACE(mgmtGroup(), kError, "Cannot set attribute of fRO, fRO part of another transaction");
            return 0;
        }
        return setWithShadow(found, ldn, name, value);
    }
    const fRO* real = m_table.getFro(ldn);
    if (real == nullptr) {
        SSC_TRACE(mgmtGroup(), kFlow, "setMoAttribute(): %s was not found in transMgr", ldn.c_str());
        SSC_TRACE(mgmtGroup(), kError, "Could not set attribute in fRO with ldn %s, fro does not exist", ldn.c_str());
        return 0;
    }
    if (!real->hasAttribute(name)) {
        SSC_TRACE(mgmtGroup(), kError, "Could not set attribute in fRO with ldn %s, attribute does not exist",
                  ldn.c_str());
        return 0;
    }
    std::int32_t externalId = real->getExternalId();
    return newShadow(transactionId, ldn, {name}, {value}, {real->getAttributeType(name)}, real->getFroType(),
                     externalId, kSet);
}

int transMgr::setWithShadow(const Found& found, const std::string& ldn, const std::string& name,
                            const std::string& value)
{
    const std::string state = stateOf(found.shadow);
    if (isState(state, kDelete)) {
        SSC_TRACE(mgmtGroup(), kError,
                  "Could not set attribute in fRO with ldn %s, fRO is deleted in the same transaction", ldn.c_str());
        return 0;
    }
    if (!isState(state, kCreate) && !isState(state, kSet)) {
        SSC_TRACE(mgmtGroup(), kError, "fRO state is not recognized: %s", state.c_str());
        return 0;
    }
    if (found.shadow->setAttribute(name, value)) {
        SSC_TRACE(mgmtGroup(), kFlow, "Updating attribute of fRO already existing in transMgr: %s=%s", name.c_str(),
                  value.c_str());
        return 1;
    }
    const fRO* real = m_table.getFro(ldn);
    if (real == nullptr) {
        SSC_TRACE(mgmtGroup(), kError, "Could not set attribute in fRO with ldn %s, fRO was not found in froMgr, "
                  "transaction inconsistant", ldn.c_str());
        return 0;
    }
    if (!real->hasAttribute(name)) {
        SSC_TRACE(mgmtGroup(), kError, "Could not set attribute in fRO with ldn %s, attribute does not exist",
                  ldn.c_str());
        return 0;
    }
    found.shadow->addAttribute(name, value, real->getAttributeType(name));
    SSC_TRACE(mgmtGroup(), kFlow, "Setting attribute of fRO already existing in transMgr: %s=%s", name.c_str(),
              value.c_str());
    return 1;
}

// ---- reading ------------------------------------------------------------------

int transMgr::readAttributes(const fRO* first, const fRO* second, std::vector<std::string>& names,
                             std::vector<std::string>& values, std::vector<std::string>& types)
{
    if (first == nullptr) {
        SSC_TRACE(mgmtGroup(), kError, "No primary fRO given");
        return 0;
    }
    if (names.empty())
        names = (second != nullptr ? second : first)->getAttributeNames();
    int result = 1;
    for (const std::string& name : names) {
        const fRO* holder = first->hasAttribute(name) ? first
                            : second != nullptr && second->hasAttribute(name) ? second
                                                                              : nullptr;
        if (holder == nullptr) {
            SSC_TRACE(mgmtGroup(), kError, "Could not find attribute with name: %s", name.c_str());
            result = 0;
            continue;
        }
        const std::string value = holder->getAttribute(name);
        SSC_TRACE(mgmtGroup(), kFlow, "Retrieval of attribute %s with value \"%s\"", name.c_str(), value.c_str());
        values.push_back(value);
        types.push_back(holder->getAttributeType(name));
    }
    return result;
}

int transMgr::getMoAttributes(std::int32_t transactionId, const std::string& ldn, std::vector<std::string>& names,
                              std::vector<std::string>& values, std::vector<std::string>& types)
{
    SSC_TRACE(mgmtGroup(), kFlow, "Getting attributes for fRO %s in transaction %d", ldn.c_str(), transactionId);
    const fRO* real = m_table.getFro(ldn);
    if (transactionId == 0) {
        SSC_TRACE(mgmtGroup(), kFlow, "We are not in a transaction, looking for fRO: %s in froMgr", ldn.c_str());
        return readAttributes(real, nullptr, names, values, types);
    }
    if (dictionary(transactionId) == nullptr)
        return 0;
    const Found found = findInAny(ldn);
    if (found.shadow == nullptr) {
        SSC_TRACE(mgmtGroup(), kFlow, "fRO not found in any transaction, looking for fRO in froMgr");
        return readAttributes(real, nullptr, names, values, types);
    }
    if (found.transactionId != transactionId) {
        SSC_TRACE(mgmtGroup(), kFlow, "fRO found in a transaction");
        SSC_TRACE(mgmtGroup(), kFlow, "fRO not found in the current transaction, looking for fRO in froMgr");
        return readAttributes(real, nullptr, names, values, types);
    }
    const std::string state = stateOf(found.shadow);
    if (isState(state, kCreate)) {
        SSC_TRACE(mgmtGroup(), kFlow, "fRO is in state CREATE");
        return readAttributes(found.shadow, nullptr, names, values, types);
    }
    if (isState(state, kSet)) {
        SSC_TRACE(mgmtGroup(), kFlow, "fRO is in state SET");
        return readAttributes(found.shadow, real, names, values, types);
    }
    SSC_TRACE(mgmtGroup(), kError, isState(state, kDelete) ? "Cannot get attributes, fRO in state DELETE"
                                                           : "Cannot get attributes, fRO in unknown state");
    return 0;
}

fRO* transMgr::getFro(std::int32_t transactionId, const std::string& ldn)
{
    if (LdnDict* dict = dictionary(transactionId)) {
        const auto it = dict->find(ldn);
        if (it != dict->end())
            return it->second.get();
    }
    SSC_TRACE(mgmtGroup(), kFlow, "fRO does not exist in the right transaction, searching froMgr...");
    if (fRO* real = m_table.getFro(ldn)) {
        SSC_TRACE(mgmtGroup(), kFlow, "fRO found in froMgr");
        return real;
    }
    SSC_TRACE(mgmtGroup(), kError,
              "Could not get get fRO with ldn %s, fRO was found in neither transMgr nor froMgr", ldn.c_str());
    return nullptr;
}

std::string transMgr::getLdn(std::int32_t transactionId, std::int32_t internalId)
{
    if (LdnDict* dict = dictionary(transactionId)) {
        for (const auto& [ldn, shadow] : *dict) {
            if (shadow->getInternalId() == internalId) {
                SSC_TRACE(mgmtGroup(), kFlow, "Found ldn %s in transMgr", ldn.c_str());
                return isState(stateOf(shadow.get()), kDelete) ? std::string() : ldn;
            }
        }
    }
    SSC_TRACE(mgmtGroup(), kFlow, "Could not find ldn of fRO with internal ID %d in transaction %d", internalId,
              transactionId);
    const std::string ldn = m_table.getLdn(internalId);
    if (ldn.empty())
        SSC_TRACE(mgmtGroup(), kFlow, "Could not find ldn of fRO with internal ID %d in froMgr", internalId);
    else
        SSC_TRACE(mgmtGroup(), kFlow, "Found ldn %s in froMgr", ldn.c_str());
    return ldn;
}

bool transMgr::isInTransaction(std::int32_t transactionId, const std::string& moType)
{
    const LdnDict* dict = dictionary(transactionId);
    if (dict == nullptr)
        return false;
    for (const auto& [ldn, shadow] : *dict) {
        if (isState(stateOf(shadow.get()), kDelete))
            continue;
        for (std::string at = ldn; !at.empty(); at = Ldn::parent(at))
            if (Ldn::moType(at) == moType)
                return true;
    }
    return false;
}

std::vector<std::string> transMgr::getDeleted(std::int32_t transactionId) const
{
    return listed(transactionId, false);
}

std::vector<std::string> transMgr::getReplaced(std::int32_t transactionId) const
{
    return listed(transactionId, true);
}

std::vector<std::string> transMgr::listed(std::int32_t transactionId, bool replaced) const
{
    std::vector<std::string> deleted;
    const auto it = m_transactions.find(transactionId);
    if (it == m_transactions.end())
        return deleted;
    for (const auto& [name, shadow] : it->second) {
        const std::string state = stateOf(shadow.get());
        if (replaced ? !isState(state, kCreate) || !m_table.exists(name) : !isState(state, kDelete))
            continue;
        const std::string& ldn = name; // clang 14 cannot capture a structured binding
        // In front of an ancestor already listed; names sort parents first.
        const auto ancestor = std::find_if(deleted.begin(), deleted.end(),
                                           [&](const std::string& other) { return Ldn::isBelow(ldn, other); });
        deleted.insert(ancestor, ldn);
    }
    return deleted;
}

// ---- commit and rollback ------------------------------------------------------

bool transMgr::copyAttributes(const fRO& from, fRO& to, bool withAdding)
{
    bool copied = true;
    for (const AttrNameValue& attribute : from.attributes()) {
        const std::string& name = attribute.name();
        if (name == kTransState)
            continue;
        if (to.hasAttribute(name)) {
            const std::string goalType = to.getAttributeType(name);
            if (goalType == attribute.type()) {
                copied = to.setAttribute(name, attribute.value()) && copied;
            } else {
                SSC_TRACE(mgmtGroup(), kError, "Cannot copy attribute %s of type %s, goal attribute is of type %s",
                          name.c_str(), attribute.type().c_str(), goalType.c_str());
                copied = false;
            }
        } else if (withAdding) {
            to.addAttribute(name, attribute.value(), attribute.type());
        } else {
            SSC_TRACE(mgmtGroup(), kError,
                      "Attribute did not exist in goal fRO, and withAdding==false, will not add attribute");
            copied = false;
        }
    }
    return copied;
}

bool transMgr::commitShadow(const std::string& ldn, fRO& shadow, std::vector<std::string>& created,
                            std::vector<std::string>& set, std::vector<std::string>& deleted,
                            TransMgrCallbackIf* callback)
{
    const std::string state = stateOf(&shadow);
    const int froType = static_cast<int>(shadow.getFroType());
    const std::int32_t externalId = shadow.getExternalId();
    SSC_TRACE(mgmtGroup(), kFlow, "Dealing with fRO %s with state %s", ldn.c_str(), state.c_str());
    if (isState(state, kCreate)) {
        SSC_TRACE(mgmtGroup(), kFlow, "Creating fRO: ldn=%s, froType=%d, internalId=%d, externalId=%d", ldn.c_str(),
                  froType, shadow.getInternalId(), externalId);
        if (m_table.exists(ldn)) {
            SSC_TRACE(mgmtGroup(), kFlow, "Deleting old fRO before creating new one");
            m_table.deleteMO(ldn);
        }
        // The real object takes the id over.
        m_factory.idHandler().freeFroId(shadow.getFroType(), shadow.getInternalId());
        shadow.setInternalId(-1);
        if (callback != nullptr)
            callback->beforeCreate(shadow);
        fRO* real = m_table.createMO(ldn, shadow.getFroType(), externalId);
        if (real == nullptr || !copyAttributes(shadow, *real, true)) {
            SSC_TRACE(mgmtGroup(), kError, "Could not copy attributes to real fRO");
            return false;
        }
        created.push_back(ldn);
        return true;
    }
    if (isState(state, kSet)) {
        SSC_TRACE(mgmtGroup(), kFlow, "Setting attributes on fRO: ldn=%s, froType=%d, internalId=%d, externalId=%d",
                  ldn.c_str(), froType, shadow.getInternalId(), externalId);
        fRO* real = m_table.getFro(ldn);
        if (real == nullptr || !copyAttributes(shadow, *real, false)) {
            SSC_TRACE(mgmtGroup(), kError, "Could not copy attributes to real fRO");
            return false;
        }
        set.push_back(ldn);
        return true;
    }
    if (isState(state, kDelete)) {
        SSC_TRACE(mgmtGroup(), kFlow, "Deleting fRO: ldn=%s, froType=%d, internalId=%d, externalId=%d", ldn.c_str(),
                  froType, shadow.getInternalId(), externalId);
        if (!m_table.deleteMO(ldn)) {
            SSC_TRACE(mgmtGroup(), kError, "Could not delete fRO");
            return false;
        }
        deleted.push_back(ldn);
        return true;
    }
    SSC_TRACE(mgmtGroup(), kError, "fro transaction state not recognized: %s", state.c_str());
    return false;
}

bool transMgr::commit(std::int32_t transactionId, std::vector<std::string>& created, std::vector<std::string>& set,
                      std::vector<std::string>& deleted, TransMgrCallbackIf* callback)
{
    created.clear();
    set.clear();
    deleted.clear();
    const auto it = m_transactions.find(transactionId);
    if (it == m_transactions.end()) {
        SSC_TRACE(mgmtGroup(), kError, "Transaction %d does not exist", transactionId);
        return false;
    }
    SSC_TRACE(mgmtGroup(), kFlow, "Commiting transaction %d", transactionId);
    SSC_TRACE(mgmtGroup(), kFlow, "%d fRO(s) in transaction to deal with", static_cast<int>(it->second.size()));
    bool ok = true;
    int dealt = 0;
    for (auto& [ldn, shadow] : it->second) {
        ok = commitShadow(ldn, *shadow, created, set, deleted, callback) && ok;
        ++dealt;
    }
    // Shadows free only the ids they reserved themselves: a SET or DELETE
    // shadow leaves the real object's id alone.
    dropDictionary(it);
    SSC_TRACE(mgmtGroup(), kFlow, "Commit of transaction %d finished, %d fROs dealt with", transactionId, dealt);
    SSC_TRACE(mgmtGroup(), kFlow, ok ? "Commit of transaction %d finished in state OK"
                                     : "Commit of transaction %d finished in state NOT OK", transactionId);
    return ok;
}

bool transMgr::rollback(std::int32_t transactionId)
{
    SSC_TRACE(mgmtGroup(), kFlow, "Rolling back transaction %d", transactionId);
    const auto it = m_transactions.find(transactionId);
    if (it == m_transactions.end()) {
        SSC_TRACE(mgmtGroup(), kFlow, "Cannot remove ldnDict associated with transactionId %d, it does not exist "
                  "(either no fROs has been added in the transaction or transaction does not exist)", transactionId);
        return false;
    }
    dropDictionary(it);
    return true;
}

void transMgr::rollbackAll()
{
    while (!m_transactions.empty())
        dropDictionary(m_transactions.begin());
}
