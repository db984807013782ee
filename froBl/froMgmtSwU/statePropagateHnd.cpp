#include "froBl/froMgmtSwU/export/statePropagateHnd.h"

void StatePropagateHnd::observerEvent(listener::Subject* subject)
{
    const auto* other = dynamic_cast<const StateHnd*>(subject);
    if (m_pCallback && other && other->changed() == IsChanged)
        m_pCallback->propagate(other->data());
}
