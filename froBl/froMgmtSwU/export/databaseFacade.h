#pragma once
// The object database with the bulk retrieval used to restore at start.
// The object process makes one at start, with its node's database.

#include "froBl/froMgmtSwU/export/dbiAPI.h"

class DatabaseFacade : public DbiAPI {
public:
    using DbiAPI::DbiAPI;

    bool retrieveFroAttributes(std::int32_t froId, std::uint32_t froType, std::vector<std::string>& names,
                               std::vector<std::string>& values, std::vector<std::string>& types) override;
    bool retrieveFros(std::uint32_t typeFrom, std::uint32_t typeTo, std::vector<froRecord>& records) override;

private:
    bool ncRetrieveFroIds(std::uint32_t typeFrom, std::uint32_t typeTo, std::vector<std::uint32_t>& froTypes);
};
