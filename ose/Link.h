#pragma once
// A link between two nodes, as each end names it. Proxies of processes on the
// far side live at the end of the node that uses them.

#include "ose/Types.h"

#include <cstdint>
#include <map>
#include <string>

namespace ose {

class Link;
class Node;

struct LinkEnd {
    Link* pLink = nullptr;
    Node* pNode = nullptr;      // the node this end belongs to
    std::string path;           // how this node names the link, e.g. "port_0_dev_12/"
    LinkEnd* pOther = nullptr;
    std::map<PROCESS, PROCESS> proxies; // far pid -> local proxy pid
};

class Link {
public:
    std::uint32_t id = 0;
    bool up = true;
    LinkEnd ends[2];
};

} // namespace ose
