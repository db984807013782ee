#include "hwu/HwuSubscriptions.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/SscTrace.h"

using namespace ssc_trace;

bool HwuSubscriptions::subscribeStatus(std::uint32_t id, Observer* observer)
{
    const Subscriber row{id, observer};
    if (m_subscribers.contains(row)) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "HwuSubscriptions::subscribeStatus: %d, %p has already subscribed",
                  id, static_cast<void*>(observer));
        return false;
    }
    m_subscribers.add(row);
    if (observer != nullptr) observer->update(id);
    return true;
}

bool HwuSubscriptions::unsubscribeStatus(std::uint32_t id, Observer* observer)
{
    const Subscriber row{id, observer};
    m_subscribers.removeIf([&row](const Subscriber& candidate) { return candidate == row; });
    return true;
}

void HwuSubscriptions::notifySubscribers(std::uint32_t id)
{
    EC_LinkedListIterator<Subscriber> it(m_subscribers);
    while (Subscriber* row = it.next())
        if (row->id == id && row->observer != nullptr) row->observer->update(id);
}
