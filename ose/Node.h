#pragma once
// A node: one name space of a world. Several processes may carry the same
// name; a hunt finds the first that took it. Links to other nodes are known
// by their path ("port_0_dev_12/").

#include "ose/Link.h"
#include "ose/Types.h"

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ose {

struct LinkEnd;

class Node {
public:
    explicit Node(std::string name) : m_name(std::move(name)) {}

    const std::string& name() const { return m_name; }

    void addName(const std::string& name, PROCESS pid);
    void removeName(const std::string& name, PROCESS pid);
    // The first process that took the name, or 0.
    PROCESS find(std::string_view name) const;

    void addLinkEnd(LinkEnd& end) { m_links[end.path] = &end; }
    LinkEnd* linkEnd(std::string_view path) const;

private:
    std::string m_name;
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    std::unordered_map<std::string, std::vector<PROCESS>, NameHash, std::equal_to<>> m_names;
    std::map<std::string, LinkEnd*, std::less<>> m_links;
};

} // namespace ose
