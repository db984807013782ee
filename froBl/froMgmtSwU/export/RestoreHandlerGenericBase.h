#pragma once
// Makes the managed objects of the last run again from the database at the
// start of the object process, before any management signal is served.
// Objects go straight into froMgr, without a transaction, with the external
// ids they were stored with; those ids are taken as they come, so that no
// new object can get one of them later. A derived handler decides the order
// of recreation and what each object does once all exist.

#include "froBl/froMgmtSwU/export/dbiAPI.h"

#include <cstdint>
#include <string>
#include <vector>

class fRO;
class froMgr;

class RestoreHandlerGenericBase {
public:
    // Neither is owned.
    RestoreHandlerGenericBase(DbiAPI& database, froMgr& table) : m_database(database), m_table(table) {}
    virtual ~RestoreHandlerGenericBase() = default;
    RestoreHandlerGenericBase(const RestoreHandlerGenericBase&) = delete;
    RestoreHandlerGenericBase& operator=(const RestoreHandlerGenericBase&) = delete;

    // Every stored object of the classes typeFrom <= froType < typeTo. A
    // record that cannot be made is traced and skipped; the rest goes on.
    // The database is closed at the end, whatever happened.
    void restore(std::uint32_t typeFrom, std::uint32_t typeTo);

protected:
    // Before the object of a record is made, with its stored attributes; a
    // derived handler may adjust them. The lists are empty when they could
    // not be read.
    virtual void beforeCreate(std::int32_t froId, std::uint32_t froType, const std::string& ldn,
                              std::vector<std::string>& names, std::vector<std::string>& values,
                              std::vector<std::string>& types);
    // Once every object exists, for each object made, in recreation order.
    virtual void afterAllCreated(fRO& fro);
    // The order of recreation; the records come in froType and id order.
    virtual void sort(std::vector<froRecord>& records);

private:
    // The object of one record, or null when it could not be made.
    fRO* recreate(const froRecord& record);
    static bool applyAttributes(fRO& fro, const std::vector<std::string>& names,
                                const std::vector<std::string>& values, const std::vector<std::string>& types);

    DbiAPI& m_database;
    froMgr& m_table;
};
