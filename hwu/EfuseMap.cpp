#include "hwu/EfuseMap.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"

#include <algorithm>

using namespace ssc_trace;

bool EfuseMap::addEfuse(const FuncId_t& efuseId, const FuncId_t& parentId)
{
    if (m_efuses.find([&efuseId](const Efuse& row) { return row.efuseId == efuseId; }) != nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "FuncType: %s, FuncInst: %d has already been configured,",
                  func_type::text(efuseId.FuncType), efuseId.FuncInst);
        return false;
    }
    std::uint32_t highest = 0;
    EC_LinkedListIterator<Efuse> it(m_efuses);
    while (const Efuse* row = it.next())
        if (row->parentId == parentId) highest = std::max(highest, row->number);
    m_efuses.add(Efuse{efuseId, parentId, highest + 1});
    return true;
}

bool EfuseMap::removeEfuse(const FuncId_t& efuseId)
{
    return m_efuses.removeFirst([&efuseId](const Efuse& row) { return row.efuseId == efuseId; });
}

bool EfuseMap::findEfuse(const FuncId_t& efuseId, FuncId_t* parentId, std::uint32_t* number)
{
    const Efuse* row = m_efuses.find([&efuseId](const Efuse& candidate) { return candidate.efuseId == efuseId; });
    if (row == nullptr) return false;
    if (parentId != nullptr) *parentId = row->parentId;
    if (number != nullptr) *number = row->number;
    return true;
}

bool EfuseMap::findEfuseId(const FuncId_t& parentId, std::uint32_t number, FuncId_t* efuseId)
{
    const Efuse* row = m_efuses.find(
        [&](const Efuse& candidate) { return candidate.parentId == parentId && candidate.number == number; });
    if (row == nullptr) return false;
    if (efuseId != nullptr) *efuseId = row->efuseId;
    return true;
}
