#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"

#include "froBl/froMgmtSwU/export/defaultAttributes.h"
#include "froBl/froMgmtSwU/export/dummy_fRO.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/ldn.h"

using namespace fro_trace;

fROFactory& fROFactory::instance()
{
    return SupSysSingletons::get<fROFactory>([] { return std::make_unique<fROFactory>(froIdHandler::instance()); });
}

bool fROFactory::registerType(const std::string& key, FroAllocCallback callback)
{
    if (m_callbacks.count(key) != 0) {
        SSC_TRACE(froGroup(), kFlow, "TR: Could not register MO-type %s", key.c_str());
        return false;
    }
    m_callbacks.emplace(key, std::move(callback));
    SSC_TRACE(froGroup(), kFlow, "Registring MO-type %s", key.c_str());
    return true;
}

const FroAllocCallback* fROFactory::findCallback(const std::string& moType, const std::string& instance) const
{
    auto it = m_callbacks.find(moType + instance);
    if (it == m_callbacks.end())
        it = m_callbacks.find(moType);
    return it == m_callbacks.end() ? nullptr : &it->second;
}

std::unique_ptr<fRO> fROFactory::createFro(const std::string& ldn, std::uint32_t froType,
                                           std::int32_t externalId, bool forceDummy, bool addAttributes,
                                           bool reserveId)
{
    SSC_TRACE(froGroup(), kFlow, "Creating fRO: ldn=%s, type=%d, externalId=%d", ldn.c_str(),
              static_cast<int>(froType), externalId);
    if (ldn.empty()) {
        SSC_TRACE(froGroup(), kFlow, "ldn is empty, cannot return new fro");
        return nullptr;
    }
    const std::string moType = Ldn::moType(ldn);
    SSC_TRACE(froGroup(), kFlow, "MO-type is %s", moType.c_str());
    if (moType.empty()) {
        SSC_TRACE(froGroup(), kFlow, "ldn does not correspond to a known MO type, cannot return new fro");
        return nullptr;
    }
    if (externalId > froIdHandler::kMaxExternalId) {
        // Would alias another id once cut to 16 bits.
        SSC_TRACE(froGroup(), kError, "External ID %d is out of range, cannot return new fro", externalId);
        return nullptr;
    }
    const FroAllocCallback* callback = findCallback(moType, Ldn::instance(ldn));
    std::unique_ptr<fRO> object;
    if (callback && !forceDummy) {
        SSC_TRACE(froGroup(), kFlow, "Calling derived allocation function for fro");
        object = (*callback)();
    }
    if (!object) {
        SSC_TRACE(froGroup(), kFlow, "Creating dummy fRO");
        object = std::make_unique<dummy_fRO>(moType);
    }
    SSC_TRACE(froGroup(), kFlow, "fRO created");
    if (!assignId(*object, froType, externalId, reserveId))
        return nullptr;
    if (addAttributes)
        addDefaults(*object, moType);
    return object;
}

bool fROFactory::assignId(fRO& object, std::uint32_t froType, std::int32_t externalId, bool reserveId)
{
    if (externalId < 0) {
        SSC_TRACE(froGroup(), kFlow, "External ID is negative, generating new internal ID");
        const std::int32_t internalId = m_ids.getNewFroId(froType);
        if (internalId == froIdHandler::kNoFreeId) {
            SSC_TRACE(froGroup(), kError, "No free ID for froType 0x%08x, cancel creation of fRO", froType);
            return false;
        }
        object.setIdentity(froType, internalId, &m_ids);
        return true;
    }
    if (reserveId) {
        SSC_TRACE(froGroup(), kFlow, "ID being reserved");
        if (!m_ids.reserveFroId(froType, externalId)) {
            SSC_TRACE(froGroup(), kFlow, "Could not reserve ID, cancel creation of fRO");
            return false;
        }
    }
    SSC_TRACE(froGroup(), kFlow, "Transform external ID to internal");
    const std::int32_t internalId = froIdHandler::toInternalId(froType, externalId);
    SSC_TRACE(froGroup(), kFlow, "Internal ID is %d", internalId);
    // An id that was not reserved here is not freed by the object either.
    object.setIdentity(froType, internalId, reserveId ? &m_ids : nullptr);
    return true;
}

void fROFactory::addDefaults(fRO& object, const std::string& moType)
{
    SSC_TRACE(froGroup(), kFlow, "Adding RO attributes to fRO");
    for (const auto& row : default_attributes::kRows)
        if (row.moType == moType)
            object.addAttribute(std::string(row.name), std::string(row.value), std::string(row.type));
}

void fROFactory::deleteFro(std::unique_ptr<fRO> object)
{
    if (!object)
        return;
    if (object->changed() != listener::Subject::Deleted)
        object->clearListeners();
    object.reset();
}
