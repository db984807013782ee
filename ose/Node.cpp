#include "ose/Node.h"

#include <algorithm>

namespace ose {

void Node::addName(const std::string& name, PROCESS pid)
{
    m_names[name].push_back(pid);
}

void Node::removeName(const std::string& name, PROCESS pid)
{
    auto it = m_names.find(name);
    if (it == m_names.end()) return;
    auto& pids = it->second;
    pids.erase(std::remove(pids.begin(), pids.end(), pid), pids.end());
    if (pids.empty()) m_names.erase(it);
}

PROCESS Node::find(std::string_view name) const
{
    auto it = m_names.find(name);
    return it == m_names.end() ? 0 : it->second.front();
}

LinkEnd* Node::linkEnd(std::string_view path) const
{
    auto it = m_links.find(path);
    return it == m_links.end() ? nullptr : it->second;
}

} // namespace ose
