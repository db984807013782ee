#include "cabinet/ExternalNodeFacade.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/EcbLinxService.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"

#include <array>

using namespace ssc_trace;

namespace {

FuncId_t nodeFuncId(std::int32_t objectId)
{
    return FuncId_t{func_type::kExternalNode, static_cast<std::uint32_t>(objectId)};
}

} // namespace

ExternalNodeFacade::ExternalNodeFacade(FaultsRegisterIf& faults, const NodeIf& ownNode)
    : m_pFaults(&faults), m_pNode(&ownNode)
{
    m_pFaults->addReporter(this);
}

ExternalNodeFacade::~ExternalNodeFacade() { m_pFaults->removeReporter(this); }

void ExternalNodeFacade::linkAll(std::int32_t objectId, const HubPositionList& hubPositions,
                                 ExternalNodeList::Addresses& addresses)
{
    std::array<HdlcAddress, HubPositionList::kMaxPositions> found;
    if (!Hdlc::getHdlcAddresses(hubPositions, found))
        m_pFaults->raiseFault(fault_id::kFaultyHubPosition, nodeFuncId(objectId));
    const std::size_t count = std::min<std::size_t>(hubPositions.count, HubPositionList::kMaxPositions);
    for (std::size_t index = 0; index < count; ++index) {
        if (!found[index].isValid()) continue;
        addresses[index] = found[index].address;
        if (EcbLinxService::createLink(objectId, true, found[index].address)) continue;
        m_pFaults->raiseFault(index == 0 ? fault_id::kConflictingHubPosition : fault_id::kHubPositionConflict,
                              nodeFuncId(objectId));
    }
}

void ExternalNodeFacade::addNode(std::int32_t objectId, const HubPositionList& hubPositions)
{
    const bool primary = isPrimary();
    if (primary && hubPositions.count == 0) {
        SSC_TRACE(priSecGroup(), kUnexpected,
                  "Parameter noOfHubPositions is zero in EMI_SET_CONFIG_REQ, unable to map hub position to hdlc "
                  "address, therefore unable to add external node object");
        return;
    }
    ExternalNodeList::Addresses addresses{};
    if (primary) linkAll(objectId, hubPositions, addresses);
    SSC_TRACE(priSecGroup(), kFlow, "Adding external node: objectId %d", objectId);
    m_nodes.addNode(objectId, addresses, primary);
    ExternalNode* node = nullptr;
    if (!primary || !m_nodes.findNode(objectId, &node)) return;
    EC_LinkedListIterator<ExternalNodeObserver*> it(m_observers);
    while (ExternalNodeObserver** observer = it.next()) (*observer)->nodeAdded(*node);
    if (m_pExternalNodeEventHandler != nullptr) m_pExternalNodeEventHandler->nodeAdded(*node);
}

void ExternalNodeFacade::removeNode(std::int32_t objectId)
{
    m_pFaults->removeFaults(nodeFuncId(objectId));
    const bool primary = isPrimary();
    ExternalNode* node = nullptr;
    std::int32_t nin = 0;
    if (m_nodes.findNode(objectId, &node)) {
        EC_LinkedListIterator<ExternalNodeObserver*> it(m_observers);
        while (ExternalNodeObserver** observer = it.next()) (*observer)->nodeRemoved(*node);
        nin = m_nodes.removeNode(objectId, primary);
    }
    if (!primary) return;
    EcbLinxService::deleteLink(objectId);
    if (m_pExternalNodeEventHandler != nullptr) m_pExternalNodeEventHandler->nodeRemoved(objectId, nin);
}

bool ExternalNodeFacade::getNodeRecord(std::int32_t objectId, NodeRecord* record)
{
    ExternalNode* node = nullptr;
    if (!m_nodes.findNode(objectId, &node)) return false;
    if (record != nullptr) *record = *node;
    return true;
}

bool ExternalNodeFacade::getNode(std::int32_t objectId, ExternalNode* copy)
{
    ExternalNode* node = nullptr;
    if (!m_nodes.findNode(objectId, &node)) return false;
    if (copy != nullptr) *copy = *node;
    return true;
}

void ExternalNodeFacade::updateNode(std::int32_t objectId, const NodeRecord& record)
{
    ExternalNode* node = nullptr;
    if (!m_nodes.updateByObjectId(objectId, record, &node)) {
        SSC_TRACE(priSecGroup(), kUnexpected,
                  "External node with funcInst %d not found, unable to send EMI_RESOURCE_DATA_UPDATE_IND", objectId);
        return;
    }
    SSC_TRACE(priSecGroup(), kFlow,
              "External node information updated for node with funcInst %d, sending EMI_RESOURCE_DATA_UPDATE_IND",
              objectId);
    if (m_pExternalNodeEventHandler != nullptr) m_pExternalNodeEventHandler->nodeChanged(*node);
}

void ExternalNodeFacade::updateNodeByNin(std::int32_t nin, const NodeRecord& record)
{
    ExternalNode* node = nullptr;
    if (!m_nodes.updateByNin(nin, record, &node)) {
        SSC_TRACE(priSecGroup(), kUnexpected,
                  "External node with NiN %d not found, unable to send EMI_RESOURCE_DATA_UPDATE_IND", nin);
        return;
    }
    SSC_TRACE(priSecGroup(), kFlow,
              "External node information updated for node with NiN %d, sending EMI_RESOURCE_DATA_UPDATE_IND", nin);
    if (m_pExternalNodeEventHandler != nullptr) m_pExternalNodeEventHandler->nodeChanged(*node);
}

void ExternalNodeFacade::addObserver(ExternalNodeObserver* observer)
{
    if (observer != nullptr && !m_observers.contains(observer)) m_observers.add(observer);
}

void ExternalNodeFacade::removeObserver(ExternalNodeObserver* observer) { m_observers.remove(observer); }

void ExternalNodeFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) { forward(faultId, funcId, true); }

void ExternalNodeFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) { forward(faultId, funcId, false); }

void ExternalNodeFacade::forward(const FaultId_t& faultId, const FuncId_t& funcId, bool raise)
{
    if (m_pExternalNodeEventHandler == nullptr) {
        SSC_TRACE(priSecGroup(), kError,
                  raise ? "raiseFault: m_pExternalNodeEventHandler is not set"
                        : "ceaseFault: m_pExternalNodeEventHandler is not set");
        return;
    }
    if (funcId.FuncType != func_type::kExternalNode) return;
    ExternalNodeFault fault{};
    switch (faultId.id) {
    case fault_id::kHwuMissing: fault = ExternalNodeFault::Missing; break;
    case fault_id::kFaultyHubPosition: fault = ExternalNodeFault::FaultyHubPosition; break;
    case fault_id::kConflictingHubPosition: fault = ExternalNodeFault::ConflictingHubPosition; break;
    case fault_id::kHubPositionConflict: fault = ExternalNodeFault::HubPositionConflict; break;
    default: return;
    }
    if (raise)
        m_pExternalNodeEventHandler->raiseFault(fault, funcId.FuncInst);
    else
        m_pExternalNodeEventHandler->ceaseFault(fault, funcId.FuncInst);
}
