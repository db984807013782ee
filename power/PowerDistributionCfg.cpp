#include "power/PowerDistributionCfg.h"

#include "frame/SscTrace.h"

using namespace ssc_trace;

void PowerDistributionCfg::print() const
{
    SSC_TRACE(powerGroup(), kInfo, " mainLoadUndervoltageDisconnect = %d", mainLoadUndervoltageDisconnect);
    SSC_TRACE(powerGroup(), kInfo, " priorityLoadUndervoltageDisconnect = %d", priorityLoadUndervoltageDisconnect);
    SSC_TRACE(powerGroup(), kInfo, " undervoltageDisconnectCeaseOffset = %d", undervoltageDisconnectCeaseOffset);
}
