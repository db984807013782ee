#include "hwu/PsuFacade.h"

#include "hwu/PsuIf.h"

bool PsuFacade::getUnitMeasurementData(std::uint32_t funcInst, HwuMeasurementRecord* record)
{
    const auto* psu = dynamic_cast<PsuIf*>(measurableUnit(funcInst, "PsuFacade", "PSU", "Psu"));
    if (psu == nullptr) return false;
    if (record != nullptr)
        *record = {4,
                   {psu->getOutputVoltage() * 100.0F, psu->getOutputCurrent() * 10.0F, psu->getLoad(),
                    psu->getUnitTemperature()}};
    return true;
}
