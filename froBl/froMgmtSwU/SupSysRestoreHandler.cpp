#include "froBl/froMgmtSwU/export/SupSysRestoreHandler.h"

#include "froBl/froMgmtSwU/export/SupSysFroCtrlIf.h"
#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/ldn.h"

#include <algorithm>
#include <cstddef>

using namespace fro_trace;

namespace {

// Every move takes a record out and puts it at the very front, so that a
// later move lands before an earlier one.
void moveToFront(std::vector<froRecord>& records, std::size_t index)
{
    const auto at = records.begin() + static_cast<std::ptrdiff_t>(index);
    std::rotate(records.begin(), at, at + 1);
}

// Moving each match to the front in list order leaves the matches in
// reverse order ahead of the others; built at once, as thousands of units
// moved one by one would cost a move of the whole list each.
void moveEachToFront(std::vector<froRecord>& records, std::uint32_t froType)
{
    const auto others = std::stable_partition(records.begin(), records.end(), [froType](const froRecord& record) {
        return record.froType == froType;
    });
    std::reverse(records.begin(), others);
}

void moveFirstToFront(std::vector<froRecord>& records, std::uint32_t froType)
{
    const auto first = std::find_if(records.begin(), records.end(),
                                    [froType](const froRecord& record) { return record.froType == froType; });
    if (first != records.end())
        moveToFront(records, static_cast<std::size_t>(first - records.begin()));
}

bool isUnit(const froRecord& record, const char* instance)
{
    return record.froType == fro_types::kHwUnit && Ldn::instance(record.ldn) == instance;
}

// SUP1 must come before SUP2 whatever order the database gave them in.
void putSup1BeforeSup2(std::vector<froRecord>& records)
{
    bool sup2Seen = false;
    for (std::size_t i = 0; i < records.size(); ++i) {
        sup2Seen = sup2Seen || isUnit(records[i], "SUP2");
        if (!isUnit(records[i], "SUP1"))
            continue;
        if (sup2Seen) {
            SSC_TRACE(mgmtGroup(), kFlow, "%s was placed first in the recreation order as there are multiple SUP MOs",
                      records[i].ldn.c_str());
            moveToFront(records, i);
        }
        return;
    }
}

} // namespace

void SupSysRestoreHandler::sortForRecreation(std::vector<froRecord>& records)
{
    moveEachToFront(records, fro_types::kHwUnit);
    putSup1BeforeSup2(records);
    moveEachToFront(records, fro_types::kExternalNode);
    moveFirstToFront(records, fro_types::kCabinet);
    moveFirstToFront(records, fro_types::kEquipmentSupportFunction);
}

void SupSysRestoreHandler::beforeCreate(std::int32_t, std::uint32_t, const std::string&, std::vector<std::string>&,
                                        std::vector<std::string>&, std::vector<std::string>&)
{
}

void SupSysRestoreHandler::afterAllCreated(fRO& fro)
{
    if (fro.className() != "SupSysFroCtrlIf")
        return;
    if (auto* controller = dynamic_cast<SupSysFroCtrlIf*>(&fro))
        controller->restore();
}

void SupSysRestoreHandler::sort(std::vector<froRecord>& records)
{
    sortForRecreation(records);
}
