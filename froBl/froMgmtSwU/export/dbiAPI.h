#pragma once
// The named interface of the object database.

#include "froBl/froMgmtSwU/export/elibDbFroDatabase.h"

#include <cstdint>
#include <string>
#include <vector>

struct froRecord {
    std::int32_t froId = 0;
    std::uint32_t froType = 0;
    std::string ldn;
};

class DbiAPI : public ElibDbFroDatabase {
public:
    using ElibDbFroDatabase::ElibDbFroDatabase;

    virtual bool retrieveFroAttributes(std::int32_t froId, std::uint32_t froType, std::vector<std::string>& names,
                                       std::vector<std::string>& values, std::vector<std::string>& types) = 0;
    // Every stored object of the classes typeFrom <= froType < typeTo.
    virtual bool retrieveFros(std::uint32_t typeFrom, std::uint32_t typeTo, std::vector<froRecord>& records) = 0;
};
