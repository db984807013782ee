#include "froBl/froMgmtSwU/export/stateHnd.h"

#include "froBl/froMgmtSwU/export/froTrace.h"

void StateHnd::stateChanged(const stateUserData& data)
{
    if (&data != &m_data)
        m_data = data;
    setChanged(IsChanged);
    notify(1);
    SSC_TRACE(fro_trace::froGroup(), fro_trace::kFlow, "Observer is notified.");
}
