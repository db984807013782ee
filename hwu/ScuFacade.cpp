#include "hwu/ScuFacade.h"

#include "frame/SscTrace.h"
#include "hwu/ScuIf.h"

using namespace ssc_trace;

namespace {
std::uint8_t groupFlags(const std::array<bool, 4>& groups)
{
    std::uint8_t flags = 0;
    for (unsigned group = 0; group < groups.size(); ++group)
        if (groups[group]) flags = static_cast<std::uint8_t>(flags | (1U << group));
    return flags;
}
} // namespace

bool ScuFacade::getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record)
{
    const auto* scu = dynamic_cast<ScuIf*>(measurableUnit(funcInst, "ScuFacade", "SCU", "Scu"));
    if (scu == nullptr) return false;
    if (record != nullptr) *record = {1, {static_cast<float>(scu->getTemperature()), 0, 0, 0}};
    return true;
}

bool ScuFacade::getClimateParams(std::uint32_t funcInst, ScuClimateParams* record)
{
    auto* scu = dynamic_cast<ScuIf*>(unitOf(funcInst));
    if (scu == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "pScu was not set");
        return false;
    }
    if (!scu->isAvailable()) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Scu with FuncType: %d, FuncInst: %d is not operational.",
                  getFuncType(), funcInst);
        return false;
    }
    if (record == nullptr) return true;
    const PpScuCapabilities& capabilities = scu->getCapabilities();
    const ScuStatus& status = scu->getStatus();
    record->availableHw = static_cast<std::uint8_t>(capabilities.availableHw & 0x7F);
    record->scuFlags = status.scu;
    record->availableExternalInputs = capabilities.availableExternalInputs;
    record->availableFanGroups = static_cast<std::uint8_t>(capabilities.availableFanGroups & 0x0F);
    // The control outputs and the 22 limits, in the order the unit gave them.
    const PpScuCapabilities& c = capabilities;
    record->controlOutputsAndLimits = {static_cast<std::int8_t>(c.availableControlOutputs),
                                       c.heater1MinOnTemp,    c.heater1MaxOnTemp,    c.heater1MinOffTemp,
                                       c.heater1MaxOffTemp,   c.heater2MinOnTemp,    c.heater2MaxOnTemp,
                                       c.heater2MinOffTemp,   c.heater2MaxOffTemp,   c.intFanMinLoTemp,
                                       c.intFanMaxLoTemp,     c.intFanMinHiTemp,     c.intFanMaxHiTemp,
                                       c.extFanMinLoUpTemp,   c.extFanMaxLoUpTemp,   c.extFanMinHiUpTemp,
                                       c.extFanMaxHiUpTemp,   c.extFanMinLoDownTemp, c.extFanMaxLoDownTemp,
                                       c.extFanMinHiDownTemp, c.extFanMaxHiDownTemp, c.extFanMinSpeedFault,
                                       c.extFanMaxSpeedFault};
    record->temperature = scu->getTemperature();
    record->connectedFans = groupFlags(status.connectedFans);
    record->fanGroupFailure = groupFlags(status.fanGroupFailure);
    return true;
}
