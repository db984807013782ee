#pragma once
// Makes managed objects from an ldn: the class's own object when one is
// registered for it, otherwise a dummy_fRO; with identity and defaults.

#include "froBl/froMgmtSwU/export/fRO.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

class froIdHandler;

using FroAllocCallback = std::function<std::unique_ptr<fRO>()>;

class fROFactory {
public:
    explicit fROFactory(froIdHandler& ids) : m_ids(ids) {}
    // The factory of the process, on the process's id handler.
    static fROFactory& instance();

    // A key already registered is kept as it is; false then.
    bool registerType(const std::string& key, FroAllocCallback callback);

    // externalId < 0 asks for a new id; otherwise at most 65534.
    std::unique_ptr<fRO> createFro(const std::string& ldn, std::uint32_t froType, std::int32_t externalId,
                                   bool forceDummy, bool addAttributes, bool reserveId);
    void deleteFro(std::unique_ptr<fRO> object);

    froIdHandler& idHandler() { return m_ids; }

private:
    const FroAllocCallback* findCallback(const std::string& moType, const std::string& instance) const;
    bool assignId(fRO& object, std::uint32_t froType, std::int32_t externalId, bool reserveId);
    static void addDefaults(fRO& object, const std::string& moType);

    froIdHandler& m_ids;
    std::map<std::string, FroAllocCallback> m_callbacks;
};
