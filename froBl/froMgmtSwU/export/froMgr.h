#pragma once
// The table of the real managed objects, keyed by ldn. It owns them.

#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/listenerSubject.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

class froMgr : public listener::Subject {
public:
    explicit froMgr(fROFactory& factory) : m_factory(factory) {}
    ~froMgr() override;
    froMgr(const froMgr&) = delete;
    froMgr& operator=(const froMgr&) = delete;

    // The table of the process, on the process's factory.
    static froMgr& instance();

    std::string className() const override { return "froMgr"; }

    fRO* createMO(const std::string& ldn, std::uint32_t froType, std::int32_t externalId);
    bool deleteMO(const std::string& ldn);
    bool setAttribute(const std::string& ldn, const std::string& name, const std::string& value);
    std::string getAttribute(const std::string& ldn, const std::string& name) const;
    fRO* getFro(const std::string& ldn) const;
    bool exists(const std::string& ldn) const;
    std::string getLdn(std::int32_t internalId) const;
    int getAllLdns(std::vector<std::string>& list) const;
    int getLdnsOfType(std::vector<std::string>& list, const std::string& moType) const;
    bool getChildren(const std::string& ldn, std::vector<std::string>& list, int maxDepth,
                     const std::string& moType) const;
    void clearChanged();
    bool registerType(const std::string& key, FroAllocCallback callback);
    void clear();

private:
    fROFactory& m_factory;
    std::map<std::string, std::unique_ptr<fRO>> m_objects;
    // The same objects by id, for getLdn without a walk of the table. The id
    // of an object in the table never changes (only shadows are given new
    // ids); an id entered twice finds the first of its names, as a walk would.
    std::set<std::pair<std::int32_t, std::string>> m_ldnsById;
};
