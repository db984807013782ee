#include "cabinet/ExternalNodeList.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/SscTrace.h"

#include <algorithm>

using namespace ssc_trace;

ExternalNode* ExternalNodeList::find(std::int32_t objectId)
{
    auto* row = m_nodes.find([objectId](const std::unique_ptr<ExternalNode>& node) { return node->objectId == objectId; });
    return row != nullptr ? row->get() : nullptr;
}

bool ExternalNodeList::findNode(std::int32_t objectId, ExternalNode** node)
{
    ExternalNode* found = find(objectId);
    if (node != nullptr) *node = found;
    return found != nullptr;
}

void ExternalNodeList::merge(ExternalNode& node, const Addresses& addresses)
{
    for (std::uint32_t address : addresses) {
        if (address == 0) break;
        auto& known = node.hdlcAddresses;
        if (std::find(known.begin(), known.end(), address) != known.end()) continue;
        auto* place = std::find(known.begin(), known.end(), 0U);
        if (place == known.end()) {
            SSC_TRACE(priSecGroup(), kUnexpected, "Not able to add HDLC address %d  to list", address);
            continue;
        }
        *place = address;
    }
}

std::int32_t ExternalNodeList::addNode(std::int32_t objectId, const Addresses& addresses, bool assignNin)
{
    if (ExternalNode* known = find(objectId)) {
        merge(*known, addresses);
        return known->nin;
    }
    SSC_TRACE(priSecGroup(), kFlow, "A new external node is added to the list with objectId: %d", objectId);
    auto node = std::make_unique<ExternalNode>(objectId);
    merge(*node, addresses);
    if (assignNin) {
        node->nin = static_cast<std::int32_t>(m_nodes.count()) + 1;
        node->ninValid = true;
    }
    const std::int32_t nin = node->nin;
    m_nodes.addLast(std::move(node));
    return nin;
}

std::int32_t ExternalNodeList::removeNode(std::int32_t objectId, bool renumber)
{
    ExternalNode* node = find(objectId);
    if (node == nullptr) return 0;
    const std::int32_t nin = node->nin;
    m_nodes.removeFirst([objectId](const std::unique_ptr<ExternalNode>& row) { return row->objectId == objectId; });
    if (!renumber) return nin;
    EC_LinkedListIterator<std::unique_ptr<ExternalNode>> it(m_nodes);
    while (auto* row = it.next())
        if ((*row)->nin > nin) --(*row)->nin;
    return nin;
}

bool ExternalNodeList::updateByNin(std::int32_t nin, const NodeRecord& record, ExternalNode** node)
{
    auto* row = m_nodes.find(
        [nin](const std::unique_ptr<ExternalNode>& candidate) { return candidate->ninValid && candidate->nin == nin; });
    if (row != nullptr) {
        static_cast<NodeRecord&>(**row) = record;
        SSC_TRACE(priSecGroup(), kFlow, "External node found and updated (node instance number %d)", nin);
    } else {
        SSC_TRACE(priSecGroup(), kFlow, "No existing external node found (node instance number %d)", nin);
        // A node added on a secondary gets its Nin from the primary here.
        row = m_nodes.find([](const std::unique_ptr<ExternalNode>& candidate) { return !candidate->ninValid; });
        if (row == nullptr) {
            SSC_TRACE(priSecGroup(), kUnexpected,
                      "Unable to update external node (node instance number %d). This means that no external node "
                      "object was created as a result of EMI_SET_CONFIG_REQ",
                      nin);
            return false;
        }
        (*row)->nin = nin;
        (*row)->ninValid = true;
        static_cast<NodeRecord&>(**row) = record;
        SSC_TRACE(priSecGroup(), kFlow, "Uninitialized external node found and updated (node instance number %d)", nin);
    }
    if (node != nullptr) *node = row->get();
    return true;
}

bool ExternalNodeList::updateByObjectId(std::int32_t objectId, const NodeRecord& record, ExternalNode** node)
{
    ExternalNode* found = find(objectId);
    if (found == nullptr) {
        SSC_TRACE(priSecGroup(), kUnexpected,
                  "Unable to update external node (object id %d). This means that no external node object was "
                  "created as a result of EMI_SET_CONFIG_REQ",
                  objectId);
        return false;
    }
    static_cast<NodeRecord&>(*found) = record;
    SSC_TRACE(priSecGroup(), kFlow, "External node found and updated (object id %d)", objectId);
    if (node != nullptr) *node = found;
    return true;
}
