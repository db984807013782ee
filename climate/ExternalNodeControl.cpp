#include "climate/ExternalNodeControl.h"

#include "climate/ExternalNodeControlCallbackIf.h"
#include "frame/EC_LinkedListIterator.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "ose/Format.h"

using namespace ssc_trace;

ExternalNodeControl::~ExternalNodeControl() { TimerService::stopAllTimers(this); }

ExternalNodeControl::Entry* ExternalNodeControl::find(std::uint32_t id)
{
    return m_nodes.find([id](const Entry& entry) { return entry.id == id; });
}

void ExternalNodeControl::nodeAdded(const ExternalNode& node)
{
    const auto id = static_cast<std::uint32_t>(node.objectId);
    if (find(id) != nullptr) {
        SSC_TRACE(climateGroup(), kFlow, "The external node is already added id: %d", static_cast<int>(id));
        m_pCallback->updateBasicFanSpeed();
        return;
    }
    m_nodes.addLast({id, 0.0f, false});
    SSC_TRACE(climateGroup(), kInfo, "Added a new external node with id: %d", static_cast<int>(id));
}

void ExternalNodeControl::nodeRemoved(const ExternalNode& node)
{
    const auto id = static_cast<std::uint32_t>(node.objectId);
    TimerService::stopTimer(kSilenceTimer, this, id);
    if (m_nodes.removeFirst([id](const Entry& entry) { return entry.id == id; }))
        SSC_TRACE(climateGroup(), kInfo, "Removed an external node with id %d", static_cast<int>(id));
    m_pCallback->updateBasicFanSpeed();
}

void ExternalNodeControl::airflowDemand(std::uint32_t id, float demand)
{
    Entry* entry = find(id);
    if (entry == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "Received an air flow demand (%s) for a non configured external node with id: %d",
                  ose::floatToString(demand).c_str(), static_cast<int>(id));
        return;
    }
    entry->demand = demand;
    entry->updated = true;
    SSC_TRACE(climateGroup(), kFlow, "New airflow demand from pid %d is %s", static_cast<int>(id),
              ose::floatToString(demand).c_str());
    m_pCallback->updateBasicFanSpeed();
    TimerService::startTimer(kSilenceMs, kSilenceTimer, this, id);
}

void ExternalNodeControl::getMaxAirflow(float* maxDemand)
{
    EC_LinkedListIterator<Entry> walk(m_nodes);
    while (const Entry* entry = walk.next())
        if (entry->demand > *maxDemand) *maxDemand = entry->demand;
}

bool ExternalNodeControl::hasNodeWithoutDemand()
{
    SSC_TRACE(climateGroup(), kFlow, "Number of secondary nodes: %d", static_cast<int>(m_nodes.count()));
    return m_nodes.find([](const Entry& entry) { return entry.demand == 0.0f; }) != nullptr;
}

// One step up, and no more until the next demand: a silent node's cabinet
// gets a little more air, not an ever growing amount.
void ExternalNodeControl::timeout(TimerId timerId)
{
    if (timerId.timerType != kSilenceTimer) return;
    Entry* entry = find(timerId.argument);
    if (entry == nullptr) return;
    const float flowFactor = m_pCallback->getFlowFactor();
    const float old = entry->demand;
    entry->demand = old + kSilenceStep / (flowFactor != 0.0f ? flowFactor : 1.0f);
    entry->updated = false;
    SSC_TRACE(climateGroup(), kInfo, "No airflow demand from pid %d for 3 min. Airflow adjusted from %s to %s.",
              static_cast<int>(entry->id), ose::floatToString(old).c_str(), ose::floatToString(entry->demand).c_str());
}
