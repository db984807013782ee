#pragma once
// Allocation of object ids, one number space of external ids per class.

#include <bitset>
#include <cstdint>
#include <memory>
#include <vector>

class froIdHandler {
public:
    // External ids run from 0 to 65534; 65535 is never given.
    static constexpr std::int32_t kMaxExternalId = 65534;
    static constexpr std::int32_t kNoFreeId = -1;

    // The handler of the process (one per node when nodes share a process).
    static froIdHandler& instance();

    bool reserveFroId(std::uint32_t froType, std::int32_t externalId);
    void allocateFroId(std::uint32_t froType, std::int32_t externalId);
    // Only the low 16 bits of id count, so an internal id serves as well.
    bool freeFroId(std::uint32_t froType, std::int32_t id);
    // 0 for a type not seen yet; kNoFreeId when all ids of the type are taken.
    std::int32_t findLowestFreeFroId(std::uint32_t froType) const;
    void createNewFroTypeList(std::uint32_t froType);
    std::int32_t generateCompleteFroId(std::uint32_t froType, std::int32_t externalId) const;
    // kNoFreeId when the type has no id left.
    std::int32_t getNewFroId(std::uint32_t froType);
    void clear();

    static constexpr std::int32_t toInternalId(std::uint32_t froType, std::int32_t externalId)
    {
        return static_cast<std::int32_t>((static_cast<std::uint32_t>(externalId) & 0xFFFFu) |
                                         ((froType << 16) & 0x7FFF0000u));
    }
    static constexpr std::int32_t toExternalId(std::int32_t internalId)
    {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(internalId) & 0xFFFFu);
    }

private:
    struct TypeIds {
        std::uint32_t froType = 0;
        std::vector<std::int32_t> ids; // in order of allocation
        std::bitset<65536> inUse;      // the same ids, for a constant-time test
    };

    TypeIds* find(std::uint32_t froType);
    const TypeIds* find(std::uint32_t froType) const;

    std::vector<std::unique_ptr<TypeIds>> m_types;
};
