#include "froBl/froMgmtSwU/export/RestoreHandlerGenericBase.h"

#include "froBl/froMgmtSwU/export/fRO.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/ldn.h"
#include "froBl/froMgmtSwU/export/transMgr.h"

using namespace fro_trace;

void RestoreHandlerGenericBase::beforeCreate(std::int32_t, std::uint32_t, const std::string&,
                                             std::vector<std::string>&, std::vector<std::string>&,
                                             std::vector<std::string>&)
{
}

void RestoreHandlerGenericBase::afterAllCreated(fRO&) {}

void RestoreHandlerGenericBase::sort(std::vector<froRecord>&) {}

void RestoreHandlerGenericBase::restore(std::uint32_t typeFrom, std::uint32_t typeTo)
{
    // A database that cannot be opened is not asked again for the list: the
    // start would wait for a second round of reconnections for nothing.
    const bool opened = m_database.init();
    SSC_TRACE(mgmtGroup(), kFlow, "Checking the database for stored fros to recreate at startup");
    std::vector<froRecord> records;
    if (!opened || !m_database.retrieveFros(typeFrom, typeTo, records)) {
        SSC_TRACE(mgmtGroup(), kUnexpected,
                  "Couldn't get list of FROs from the database, maybe no fro's were stored");
        m_database.close();
        return;
    }
    sort(records);
    SSC_TRACE(mgmtGroup(), kFlow, "found %d fros to recreate at startup", static_cast<int>(records.size()));

    std::vector<const froRecord*> created;
    for (const froRecord& record : records)
        if (recreate(record) != nullptr)
            created.push_back(&record);

    // By name, not by the pointers of the creation: a controller's restore
    // may delete or replace objects that come after it.
    for (const froRecord* record : created)
        if (fRO* fro = m_table.getFro(record->ldn))
            afterAllCreated(*fro);

    m_database.close();
}

fRO* RestoreHandlerGenericBase::recreate(const froRecord& record)
{
    std::vector<std::string> names, values, types;
    const bool read = m_database.retrieveFroAttributes(record.froId, record.froType, names, values, types);
    if (!read) {
        names.clear();
        values.clear();
        types.clear();
    }
    beforeCreate(record.froId, record.froType, record.ldn, names, values, types);

    // A negative id would make froMgr hand out a new one: the object would
    // no longer be the one stored. A class that is not known, or an ldn that
    // names another class, would give an object that no create could make.
    const bool known = !Ldn::moType(record.ldn).empty() &&
                       fro_types::className(record.froType) == Ldn::moType(record.ldn);
    fRO* fro = record.froId < 0 || !known ? nullptr : m_table.createMO(record.ldn, record.froType, record.froId);
    if (fro == nullptr) {
        SSC_TRACE(mgmtGroup(), kError, "Failed to recreate the fro in the fro manager, type: 0x%08x, id: %d, ldn: %s",
                  record.froType, record.froId, record.ldn.c_str());
        return nullptr;
    }
    SSC_TRACE(mgmtGroup(), kFlow, "recreated fro type: 0x%08x, id: %d, ldn: %s at startup", record.froType,
              record.froId, record.ldn.c_str());
    if (!read || !applyAttributes(*fro, names, values, types))
        SSC_TRACE(mgmtGroup(), kUnexpected, "Couldnt recreate the attributes for type: 0x%08x, id: %d, ldn: %s",
                  record.froType, record.froId, record.ldn.c_str());
    return fro;
}

bool RestoreHandlerGenericBase::applyAttributes(fRO& fro, const std::vector<std::string>& names,
                                                const std::vector<std::string>& values,
                                                const std::vector<std::string>& types)
{
    if (values.size() != names.size() || types.size() != names.size())
        return false;
    // A stored attribute that the class defaults do not have is kept, with
    // its stored type; the transaction state of the shadow that stored the
    // object is not the object's (rows written before it was left out carry
    // it).
    for (std::size_t i = 0; i < names.size(); ++i)
        if (names[i] != transMgr::kTransState && !fro.setAttribute(names[i], values[i]))
            fro.addAttribute(names[i], values[i], types[i]);
    return true;
}
