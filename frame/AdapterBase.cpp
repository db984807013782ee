#include "frame/AdapterBase.h"

namespace {

void addOnce(EC_LinkedList<ObjectSubscriber>& list, const ObjectSubscriber& row)
{
    if (!list.contains(row)) list.add(row);
}

} // namespace

AdapterBase::AdapterBase(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}

AdapterBase::~AdapterBase() = default;

void AdapterBase::addDataSubscriber(const ObjectSubscriber& subscriber) { addOnce(m_dataSubscribers, subscriber); }
bool AdapterBase::removeDataSubscriber(const ObjectSubscriber& subscriber) { return m_dataSubscribers.remove(subscriber); }
bool AdapterBase::findDataSubscriber(const ObjectSubscriber& subscriber) const
{
    return m_dataSubscribers.contains(subscriber);
}

void AdapterBase::addConfigHolder(const ObjectSubscriber& holder) { addOnce(m_configHolders, holder); }
bool AdapterBase::removeConfigHolder(const ObjectSubscriber& holder) { return m_configHolders.remove(holder); }
bool AdapterBase::findConfigHolder(const ObjectSubscriber& holder) const { return m_configHolders.contains(holder); }
