#pragma once
// Base of the adapters of the management interfaces: a server with two lists
// of clients, those that subscribed to an object's data and those that
// configured an object. New rows go to the head.

#include "frame/EC_LinkedList.h"
#include "frame/ObjectSubscriber.h"
#include "frame/SSC_Server.h"

class AdapterBase : public SSC_Server {
public:
    explicit AdapterBase(SignalDispatcherIf* dispatcher);
    ~AdapterBase() override;

    // Nothing happens when an equal row is there already.
    void addDataSubscriber(const ObjectSubscriber& subscriber);
    // Drops the first equal row; false when there is none.
    bool removeDataSubscriber(const ObjectSubscriber& subscriber);
    bool findDataSubscriber(const ObjectSubscriber& subscriber) const;

    void addConfigHolder(const ObjectSubscriber& holder);
    bool removeConfigHolder(const ObjectSubscriber& holder);
    bool findConfigHolder(const ObjectSubscriber& holder) const;

protected:
    EC_LinkedList<ObjectSubscriber> m_dataSubscribers;
    EC_LinkedList<ObjectSubscriber> m_configHolders;
};
