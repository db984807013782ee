#include "power/LoadSharing.h"

#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "hwu/HwuBrokerIf.h"
#include "ose/Format.h"
#include "power/BatteryChargerIf.h"

#include <algorithm>
#include <cmath>

using namespace ssc_trace;

namespace {

std::vector<PsuIf*> psusOf(HwuBrokerIf& broker)
{
    std::vector<PsuIf*> psus;
    for (HwuStatusIf* unit : broker.getUnits(func_type::kPsu))
        if (PsuIf* psu = broker.getPsu(unit->getFuncId())) psus.push_back(psu);
    return psus;
}

// A PSU takes part while it works and carries more than a trickle; a load
// that was not measured (999) is taken as it stands.
bool takesPart(const PsuIf& psu) { return psu.isAvailable() && psu.getLoadForSharing() > LoadSharing::kUnloaded; }

} // namespace

LoadSharing::LoadSharing(HwuBrokerIf* broker, BatteryChargerIf* charger, FaultsRegisterIf* faults)
    : m_pBroker(broker), m_pCharger(charger), m_pFaults(faults)
{
}

float LoadSharing::averageLoad() const
{
    float sum = 0.0F;
    std::uint32_t count = 0;
    for (PsuIf* psu : psusOf(*m_pBroker)) {
        if (!takesPart(*psu)) continue;
        sum += psu->getLoadForSharing();
        ++count;
    }
    return count == 0 ? 0.0F : sum / static_cast<float>(count);
}

bool LoadSharing::checkRegulationMode(float deviation)
{
    const float size = std::fabs(deviation);
    if (!m_loadSharingActive) {
        if (size > kEnterDeviation) return false;
        SSC_TRACE(powerGroup(), kFlow,
                  "System Voltage Control: deviation is less than 30mV: %s, change to Active Load sharing",
                  ose::floatToString(deviation, 5).c_str());
        m_loadSharingActive = true;
        return true;
    }
    if (averageLoad() < kMinimumAverageLoad || size > kLeaveDeviation) {
        stopSharing();
        return false;
    }
    if (m_pBroker->getBfuCount() < 2) return true;
    if (batterySideForbidsSharing()) {
        stopSharing();
        return false;
    }
    return true;
}

bool LoadSharing::batterySideForbidsSharing()
{
    BfuStatusIf& bfus = m_pBroker->getBfuStatus();
    if (m_pCharger != nullptr && m_pCharger->getChargingStateId() == BatteryChargerIf::kIntermittent) return true;
    if (!bfus.allBfusOperational()) return true;
    if (m_pFaults->isFaultActive(fault_id::kMultiplePowerSubracks, {func_type::kBatteryBackup, 0}))
        return true;
    if (bfus.anyCircuitBreakerFault()) return true;
    if (!bfus.allBfusConnected()) return true;
    if (bfus.anyMainLoadDisconnected()) return true;
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kBfu)) {
        const BfuIf* bfu = m_pBroker->getBfu(unit->getFuncId());
        if (bfu != nullptr && bfu->isPriorityLoadDisconnected()) return true;
    }
    return bfus.anyExtFlag12Clear();
}

void LoadSharing::stopSharing()
{
    m_loadSharingActive = false;
    SSC_TRACE(powerGroup(), kFlow, "System Voltage Control set to voltage regulation.");
}

void LoadSharing::balanceLoads()
{
    if (!m_loadSharingActive) {
        reset();
        SSC_TRACE(powerGroup(), kFlow, "Load sharing not performed");
        return;
    }
    const float average = averageLoad();
    SSC_TRACE(powerGroup(), kFlow, "==>Average load %s", ose::floatToString(average).c_str());
    for (PsuIf* psu : psusOf(*m_pBroker)) {
        if (!takesPart(*psu)) {
            SSC_TRACE(powerGroup(), kFlow, "Reset load sharing offset");
            psu->setSharingOff(0.0F);
            continue;
        }
        const float load = psu->getLoadForSharing();
        SSC_TRACE(powerGroup(), kFlow, "==>PSU load: %s", ose::floatToString(load).c_str());
        const float difference = average - load;
        float offset = psu->getSharingOff();
        if (std::fabs(difference) > kBalanceBand) {
            offset = std::clamp(offset + difference / kGain, -kOffsetLimit, kOffsetLimit);
        } else {
            SSC_TRACE(powerGroup(), kFlow, "Load balance %s within limits, sharingOff set to %s",
                      ose::floatToString(difference).c_str(), ose::floatToString(offset, 5).c_str());
        }
        psu->setSharingOff(offset);
    }
}

void LoadSharing::reset()
{
    m_loadSharingActive = false;
    for (PsuIf* psu : psusOf(*m_pBroker)) psu->setSharingOff(0.0F);
}
