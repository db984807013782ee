#include "froBl/froMgmtSwU/export/stateAggregateHnd.h"

void StateAggregateHnd::observerEvent(listener::Subject* subject)
{
    const auto* other = dynamic_cast<const StateHnd*>(subject);
    if (m_pCallback && other && other->changed() == IsChanged)
        m_pCallback->aggregate(other->data());
}
