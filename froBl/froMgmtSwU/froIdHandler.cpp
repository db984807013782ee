#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"

#include "froBl/froMgmtSwU/export/froTrace.h"

#include <algorithm>

using namespace fro_trace;

froIdHandler& froIdHandler::instance()
{
    return SupSysSingletons::get<froIdHandler>();
}

froIdHandler::TypeIds* froIdHandler::find(std::uint32_t froType)
{
    for (auto& type : m_types)
        if (type->froType == froType)
            return type.get();
    return nullptr;
}

const froIdHandler::TypeIds* froIdHandler::find(std::uint32_t froType) const
{
    return const_cast<froIdHandler*>(this)->find(froType);
}

void froIdHandler::createNewFroTypeList(std::uint32_t froType)
{
    if (find(froType))
        return;
    auto type = std::make_unique<TypeIds>();
    type->froType = froType;
    m_types.push_back(std::move(type));
    SSC_TRACE(froGroup(), kFlow, "createNewFroTypeList: created new type vector, froType: 0x%08x", froType);
}

void froIdHandler::allocateFroId(std::uint32_t froType, std::int32_t externalId)
{
    createNewFroTypeList(froType);
    TypeIds* type = find(froType);
    const std::int32_t id = toExternalId(externalId);
    type->ids.push_back(id);
    type->inUse.set(static_cast<std::size_t>(id));
    SSC_TRACE(froGroup(), kFlow, "allocateFroId: allocated froId: %d for froType: 0x%08x", id, froType);
}

bool froIdHandler::reserveFroId(std::uint32_t froType, std::int32_t externalId)
{
    createNewFroTypeList(froType);
    if (find(froType)->inUse.test(static_cast<std::size_t>(toExternalId(externalId)))) {
        SSC_TRACE(froGroup(), kError, "Failed to reserve froId: %d for froType: 0x%08x (already taken)",
                  externalId, froType);
        return false;
    }
    allocateFroId(froType, externalId);
    SSC_TRACE(froGroup(), kFlow, "reserveFroId: reserved froId: %d for froType: 0x%08x", externalId, froType);
    return true;
}

bool froIdHandler::freeFroId(std::uint32_t froType, std::int32_t id)
{
    TypeIds* type = find(froType);
    const std::int32_t externalId = toExternalId(id);
    if (!type || !type->inUse.test(static_cast<std::size_t>(externalId)))
        return false;
    type->ids.erase(std::find(type->ids.begin(), type->ids.end(), externalId));
    // allocateFroId enters an id without a test, so it may stand twice: it
    // stays in use until its last entry goes.
    if (std::find(type->ids.begin(), type->ids.end(), externalId) == type->ids.end())
        type->inUse.reset(static_cast<std::size_t>(externalId));
    SSC_TRACE(froGroup(), kFlow, "freeFroId: freed froId: %d for froType: 0x%08x ", externalId, froType);
    return true;
}

std::int32_t froIdHandler::findLowestFreeFroId(std::uint32_t froType) const
{
    const TypeIds* type = find(froType);
    if (!type) {
        SSC_TRACE(froGroup(), kFlow, "findLowestFreeFroId: found lowest froId: %d for froType: 0x%08x", 0, froType);
        return 0;
    }
    for (std::int32_t candidate = 0; candidate <= kMaxExternalId; ++candidate) {
        if (!type->inUse.test(static_cast<std::size_t>(candidate))) {
            SSC_TRACE(froGroup(), kFlow, "findLowestFreeFroId: found lowest froId: %d for froType: 0x%08x",
                      candidate, froType);
            return candidate;
        }
    }
    SSC_TRACE(froGroup(), kError, "findLowestFreeFroId: no free froId left for froType: 0x%08x", froType);
    return kNoFreeId;
}

std::int32_t froIdHandler::generateCompleteFroId(std::uint32_t froType, std::int32_t externalId) const
{
    const std::int32_t internalId = toInternalId(froType, externalId);
    SSC_TRACE(froGroup(), kFlow,
              "generateCompleteFroId: generated completeFroId (internalId): 0x%08x from froType: 0x%08x and "
              "external froId: 0x%08x",
              static_cast<unsigned>(internalId), froType, static_cast<unsigned>(externalId));
    return internalId;
}

std::int32_t froIdHandler::getNewFroId(std::uint32_t froType)
{
    const std::int32_t externalId = findLowestFreeFroId(froType);
    if (externalId == kNoFreeId)
        return kNoFreeId;
    allocateFroId(froType, externalId);
    return generateCompleteFroId(froType, externalId);
}

void froIdHandler::clear()
{
    m_types.clear();
}
