#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/ldn.h"

#include <algorithm>
#include <strings.h>

using namespace fro_trace;

froMgr::~froMgr()
{
    clear();
}

froMgr& froMgr::instance()
{
    return SupSysSingletons::get<froMgr>([] { return std::make_unique<froMgr>(fROFactory::instance()); });
}

fRO* froMgr::createMO(const std::string& ldn, std::uint32_t froType, std::int32_t externalId)
{
    if (exists(ldn)) {
        SSC_TRACE(froGroup(), kFlow, "createMO: fRO already exists fRO={%s}", ldn.c_str());
        return nullptr;
    }
    std::unique_ptr<fRO> object = m_factory.createFro(ldn, froType, externalId, false, true, true);
    if (!object) {
        SSC_TRACE(froGroup(), kFlow, "fRO %s NOT created", ldn.c_str());
        return nullptr;
    }
    fRO* created = object.get();
    m_objects.emplace(ldn, std::move(object));
    m_ldnsById.emplace(created->getInternalId(), ldn);
    created->connectStates(*this);
    SSC_TRACE(froGroup(), kFlow, "fRO %s created", ldn.c_str());
    setChanged(Created);
    notify(1);
    return created;
}

bool froMgr::deleteMO(const std::string& ldn)
{
    const auto it = m_objects.find(ldn);
    if (it == m_objects.end()) {
        SSC_TRACE(froGroup(), kFlow, "deleteMO: fRO does not exist fRO={%s}", ldn.c_str());
        return false;
    }
    it->second->clearListeners();
    m_ldnsById.erase({it->second->getInternalId(), ldn});
    m_factory.deleteFro(std::move(it->second));
    m_objects.erase(it);
    SSC_TRACE(froGroup(), kFlow, "fRO %s deleted", ldn.c_str());
    setChanged(Deleted);
    notify(1);
    return true;
}

bool froMgr::setAttribute(const std::string& ldn, const std::string& name, const std::string& value)
{
    fRO* object = getFro(ldn);
    if (!object) {
        SSC_TRACE(froGroup(), kFlow, "setAttribute: MO={%s} not found", ldn.c_str());
        return false;
    }
    const std::string oldValue = object->getAttribute(name);
    if (!object->setAttribute(name, value)) {
        SSC_TRACE(froGroup(), kFlow, "setAttribute: Attribute=%s could not be set in MO={%s}", name.c_str(),
                  ldn.c_str());
        return false;
    }
    object->attributeChanged(name, oldValue, value);
    setChanged(IsChanged);
    notify(1);
    return true;
}

std::string froMgr::getAttribute(const std::string& ldn, const std::string& name) const
{
    const fRO* object = getFro(ldn);
    return object ? object->getAttribute(name) : std::string();
}

fRO* froMgr::getFro(const std::string& ldn) const
{
    const auto it = m_objects.find(ldn);
    return it == m_objects.end() ? nullptr : it->second.get();
}

bool froMgr::exists(const std::string& ldn) const
{
    return m_objects.count(ldn) != 0;
}

std::string froMgr::getLdn(std::int32_t internalId) const
{
    const auto found = m_ldnsById.lower_bound({internalId, std::string()});
    return found != m_ldnsById.end() && found->first == internalId ? found->second : std::string();
}

int froMgr::getAllLdns(std::vector<std::string>& list) const
{
    for (const auto& entry : m_objects)
        list.push_back(entry.first);
    return static_cast<int>(m_objects.size());
}

int froMgr::getLdnsOfType(std::vector<std::string>& list, const std::string& moType) const
{
    int count = 0;
    const auto addOnce = [&](const std::string& ldn) {
        if (std::find(list.begin(), list.end(), ldn) == list.end()) {
            list.push_back(ldn);
            ++count;
        }
    };
    for (const auto& entry : m_objects) {
        // The object itself or its nearest ancestor of the type.
        for (std::string ldn = entry.first; !ldn.empty(); ldn = Ldn::parent(ldn)) {
            if (Ldn::moType(ldn) == moType) {
                addOnce(ldn);
                break;
            }
        }
    }
    return count;
}

bool froMgr::getChildren(const std::string& ldn, std::vector<std::string>& list, int maxDepth,
                         const std::string& moType) const
{
    if (moType.empty() && exists(ldn))
        list.push_back(ldn);
    const int baseDepth = Ldn::depth(ldn);
    for (const auto& entry : m_objects) {
        const std::string& candidate = entry.first;
        if (!Ldn::isBelow(candidate, ldn) || Ldn::depth(candidate) - baseDepth > maxDepth)
            continue;
        if (!moType.empty() && strcasecmp(Ldn::moType(candidate).c_str(), moType.c_str()) != 0)
            continue;
        list.push_back(candidate);
    }
    return !list.empty();
}

void froMgr::clearChanged()
{
    for (auto& entry : m_objects)
        entry.second->clearChanged();
    notify(0);
    setChanged(Nothing);
}

bool froMgr::registerType(const std::string& key, FroAllocCallback callback)
{
    return m_factory.registerType(key, std::move(callback));
}

void froMgr::clear()
{
    for (auto& [ldn, object] : m_objects) {
        SSC_TRACE(froGroup(), kFlow, "Clearing fRO-listener for fRO with ldn = %s", ldn.c_str());
        object->clearListeners();
    }
    // Children before parents: the deepest names sort last within a subtree.
    while (!m_objects.empty()) {
        auto last = std::prev(m_objects.end());
        SSC_TRACE(froGroup(), kFlow, "Clearing fRO with ldn = %s", last->first.c_str());
        m_ldnsById.erase({last->second->getInternalId(), last->first});
        m_factory.deleteFro(std::move(last->second));
        m_objects.erase(last);
    }
}
