#pragma once
// The object database with the bulk retrieval used to restore at start.
// The object process has one, made at first use; tests and tools may make
// their own on a database of their choice.

#include "froBl/froMgmtSwU/export/dbiAPI.h"

class DatabaseFacade : public DbiAPI {
public:
    using DbiAPI::DbiAPI;

    // The database of the object process: made at first use with the
    // configuration given before, on the platform's transaction client and
    // the process's signal distributor; it lives as long as the process.
    static DatabaseFacade& instance();
    // Sets the database of instance(). False, with a trace, while an object
    // process's instance() lives: the connection in use is not changed
    // behind its users.
    static bool configure(VantoDbConfig config);

    bool retrieveFroAttributes(std::int32_t froId, std::uint32_t froType, std::vector<std::string>& names,
                               std::vector<std::string>& values, std::vector<std::string>& types) override;
    bool retrieveFros(std::uint32_t typeFrom, std::uint32_t typeTo, std::vector<froRecord>& records) override;

private:
    bool ncRetrieveFroIds(std::uint32_t typeFrom, std::uint32_t typeTo, std::vector<std::uint32_t>& froTypes);
};
