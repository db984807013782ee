#pragma once
// Which PDU each configured e-fuse belongs to, and its number there. The
// number only says in what order the e-fuses of one PDU were configured.

#include "frame/EC_LinkedList.h"
#include "frame/FuncId.h"

#include <cstdint>

struct Efuse {
    FuncId_t efuseId;
    FuncId_t parentId;
    std::uint32_t number = 0; // from 1
};

class EfuseMap {
public:
    // False, and nothing changes, for an e-fuse configured already.
    bool addEfuse(const FuncId_t& efuseId, const FuncId_t& parentId);
    bool removeEfuse(const FuncId_t& efuseId);
    bool findEfuse(const FuncId_t& efuseId, FuncId_t* parentId, std::uint32_t* number);
    bool findEfuseId(const FuncId_t& parentId, std::uint32_t number, FuncId_t* efuseId);
    std::uint32_t count() const { return m_efuses.count(); }

private:
    EC_LinkedList<Efuse> m_efuses;
};
