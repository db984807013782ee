#include "froBl/froMgmtSwU/export/supSysSingletons.h"

#include "ose/Kernel.h"

#include <algorithm>

namespace {

std::map<ose::PROCESS, SupSysSingletons*>& scopes()
{
    static std::map<ose::PROCESS, SupSysSingletons*> s_scopes;
    return s_scopes;
}

} // namespace

SupSysSingletons::SupSysSingletons() : m_process(ose::current_process())
{
    scopes()[m_process] = this;
}

SupSysSingletons::~SupSysSingletons()
{
    // Later singletons may use earlier ones while they go, never the reverse.
    while (!m_made.empty()) {
        std::function<void()> destroy = std::move(m_made.back().destroy);
        m_made.pop_back();
        destroy();
    }
    auto it = scopes().find(m_process);
    if (it != scopes().end() && it->second == this) scopes().erase(it);
}

SupSysSingletons& SupSysSingletons::current()
{
    auto it = scopes().find(ose::current_process());
    if (it != scopes().end()) return *it->second;
    static SupSysSingletons* const s_pShared = new SupSysSingletons(Shared{});
    return *s_pShared;
}

void* SupSysSingletons::find(std::type_index type) const
{
    auto it = std::find_if(m_made.begin(), m_made.end(), [&](const Entry& e) { return e.type == type; });
    return it != m_made.end() ? it->object : nullptr;
}

void SupSysSingletons::keep(std::type_index type, void* object, std::function<void()> destroy)
{
    m_made.push_back({type, object, std::move(destroy)});
}
