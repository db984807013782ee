#pragma once
// The other nodes of the site, in the order they were added. On a primary
// their Nin numbers are dense: 1 to the number of nodes.

#include "cabinet/ExternalNode.h"
#include "frame/EC_LinkedList.h"

#include <array>
#include <cstdint>
#include <memory>

class ExternalNodeList {
public:
    using Addresses = std::array<std::uint32_t, ExternalNode::kMaxAddresses>;

    // The node's Nin. A known node takes the new addresses it lacks.
    std::int32_t addNode(std::int32_t objectId, const Addresses& addresses, bool assignNin);
    // The removed node's Nin (0 when unknown); with `renumber` the nodes
    // behind it move down by one.
    std::int32_t removeNode(std::int32_t objectId, bool renumber);
    bool updateByNin(std::int32_t nin, const NodeRecord& record, ExternalNode** node);
    bool updateByObjectId(std::int32_t objectId, const NodeRecord& record, ExternalNode** node);
    bool findNode(std::int32_t objectId, ExternalNode** node);
    std::uint32_t count() const { return m_nodes.count(); }

private:
    ExternalNode* find(std::int32_t objectId);
    static void merge(ExternalNode& node, const Addresses& addresses);

    EC_LinkedList<std::unique_ptr<ExternalNode>> m_nodes;
};
