#include "hwu/BfuFacade.h"

#include "hwu/BfuIf.h"

bool BfuFacade::getStatusData(std::uint32_t funcInst, HwuStatusRecord* status)
{
    if (!HwuFacade::getStatusData(funcInst, status)) return false;
    if (auto* bfu = dynamic_cast<BfuIf*>(unitOf(funcInst))) status->batteryFaultIndicator = bfu->getBatteryFaultIndicator();
    return true;
}

bool BfuFacade::getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record)
{
    const auto* bfu = dynamic_cast<BfuIf*>(measurableUnit(funcInst, "BfuFacade", "BFU", "Bfu"));
    if (bfu == nullptr) return false;
    if (record != nullptr)
        *record = {3, {bfu->getBatteryVoltage() * 10.0F, bfu->getBatteryCurrent() * 10.0F, bfu->getBatteryTemperature(), 0}};
    return true;
}
