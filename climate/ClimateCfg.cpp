#include "climate/ClimateCfg.h"

#include "frame/SscTrace.h"

using namespace ssc_trace;

namespace {

struct Field {
    std::int16_t ClimateCfg::*member;
    const char* line;
};

// The numbers in the order in which they arrive and are printed.
constexpr std::array<Field, ClimateCfg::kNumbers> kFields{{
    {&ClimateCfg::numberOfBlowers, "numberOfBlowers         = %d"},
    {&ClimateCfg::flowFactor, "flowFactor              = %d"},
    {&ClimateCfg::nominalFanSpeed, "nominalFanSpeed         = %d"},
    {&ClimateCfg::basicFanSpeed, "basicFanSpeed           = %d"},
    {&ClimateCfg::minimumExternalFanSpeed, "minimumExternalFanSpeed = %d"},
    {&ClimateCfg::hysteresis, "hysteresis              = %d"},
    {&ClimateCfg::startingPoint, "startingPoint           = %d"},
    {&ClimateCfg::externalFanStartTemp, "externalFanStartTemp    = %d"},
    {&ClimateCfg::externalFanStopTemp, "externalFanStopTemp     = %d"},
    {&ClimateCfg::placementFactorCBU, "placementFactorCBU      = %d"},
    {&ClimateCfg::placementFactorPSU, "placementFactorPSU      = %d"},
    {&ClimateCfg::placementFactorRAX, "placementFactorRAX      = %d"},
    {&ClimateCfg::placementFactorRU, "placementFactorRU       = %d"},
    {&ClimateCfg::placementFactorTX, "placementFactorTX       = %d"},
    {&ClimateCfg::placementFactorDU, "placementFactorDU       = %d"},
    {&ClimateCfg::fanGroup1Control, "fanGroup1Control        = %d"},
    {&ClimateCfg::fanGroup2Control, "fanGroup2Control        = %d"},
    {&ClimateCfg::fanGroup3Control, "fanGroup3Control        = %d"},
    {&ClimateCfg::fanGroup4Control, "fanGroup4Control        = %d"},
    {&ClimateCfg::internalFanGroupsAutonomousOperation, "internalFanGroupsAutonomousOperation = %d"},
    {&ClimateCfg::externalFanGroupsAutonomousOperation, "externalFanGroupsAutonomousOperation = %d"},
    {&ClimateCfg::heater1OnTemp, "heater1OnTemp           = %d"},
    {&ClimateCfg::heater1OffTemp, "heater1OffTemp          = %d"},
    {&ClimateCfg::heater2OnTemp, "heater2OnTemp           = %d"},
    {&ClimateCfg::heater2OffTemp, "heater2OffTemp          = %d"},
    {&ClimateCfg::intFanLoTemp, "intFanLoTemp            = %d"},
    {&ClimateCfg::intFanHiTemp, "intFanHiTemp            = %d"},
    {&ClimateCfg::extFanLoUpTemp, "extFanLoUpTemp          = %d"},
    {&ClimateCfg::extFanHiUpTemp, "extFanHiUpTemp          = %d"},
    {&ClimateCfg::extFanLoDownTemp, "extFanLoDownTemp        = %d"},
    {&ClimateCfg::extFanHiDownTemp, "extFanHiDownTemp        = %d"},
    {&ClimateCfg::extFanSpeedFault, "extFanSpeedFault        = %d"},
    {&ClimateCfg::intFanLoTempSpeed, "intFanLoTempSpeed       = %d"},
    {&ClimateCfg::concurrentFanControl, "concurrentFanControl    = %d"},
    {&ClimateCfg::missingNodeBasicFanSpeed, "missingNodeBasicFanSpeed= %d"},
    {&ClimateCfg::coldOperationOnTemp, "coldOperationOnTemp     = %d"},
    {&ClimateCfg::coldOperationOffTemp, "coldOperationOffTemp    = %d"},
    {&ClimateCfg::coldOperationInitialFanGroup1Speed, "coldOperationInitialFanGroup1Speed = %d"},
    {&ClimateCfg::coldOperationInitialFanGroup3Speed, "coldOperationInitialFanGroup3Speed = %d"},
    {&ClimateCfg::heater2FanGroup1Fan1Speed, "heater2FanGroup1Fan1Speed = %d"},
    {&ClimateCfg::heater2FanGroup1Fan2Speed, "heater2FanGroup1Fan2Speed = %d"},
    {&ClimateCfg::externalFanRampUpTemp, "externalFanRampUpTemp   = %d"},
    {&ClimateCfg::externalFanMaxTemp, "externalFanMaxTemp      = %d"},
}};

} // namespace

void ClimateCfg::setCabinetParameters(std::uint32_t system, std::uint32_t mode,
                                      const std::array<std::int16_t, kNumbers>& numbers)
{
    climateSystem = system;
    climateControlMode = mode;
    for (std::size_t index = 0; index < kNumbers; ++index) this->*kFields[index].member = numbers[index];
    valid = true;
    applyFallBacks();
}

// The only checks made on the values: a speed or factor of 0 would stop the
// fans, so it becomes a safe value.
void ClimateCfg::applyFallBacks()
{
    if (nominalFanSpeed == 0) {
        SSC_TRACE(climateGroup(), kInfo,
                  "Nominal fan speed is configured to 0. The value 100 is used instead to avoid too low fan speed.");
        nominalFanSpeed = 100;
    }
    if (basicFanSpeed == 0) basicFanSpeed = 100;
    if (missingNodeBasicFanSpeed == 0) {
        SSC_TRACE(climateGroup(), kInfo,
                  "MissingNodeFanSpeed is configured to 0. The value 30 is used instead to avoid too low fan speed.");
        missingNodeBasicFanSpeed = 30;
    }
    if (minimumExternalFanSpeed == 0) {
        if (anyExternalFanGroup())
            SSC_TRACE(climateGroup(), kInfo,
                      "Min external fan speed is configured to 0. The value 100 is used instead to avoid too low fan "
                      "speed.");
        minimumExternalFanSpeed = 100;
    }
    if (flowFactor == 0) {
        SSC_TRACE(climateGroup(), kInfo,
                  "Flow factor is configured to 0. The value 150 is used instead to avoid too low fan speed.");
        flowFactor = 150;
    }
}

void ClimateCfg::printCabinetParameters() const
{
    for (const Field& field : kFields) SSC_TRACE(climateGroup(), kInfo, field.line, this->*field.member);
    SSC_TRACE(climateGroup(), kInfo, "climateSystem           = %d", static_cast<int>(climateSystem));
    SSC_TRACE(climateGroup(), kInfo, "climateControlMode      = %d", static_cast<int>(climateControlMode));
}

std::int16_t ClimateCfg::fanGroupControl(std::uint32_t group) const
{
    switch (group) {
    case 1: return fanGroup1Control;
    case 2: return fanGroup2Control;
    case 3: return fanGroup3Control;
    case 4: return fanGroup4Control;
    default: return 0;
    }
}

bool ClimateCfg::anyExternalFanGroup() const
{
    for (std::uint32_t group = 1; group <= 4; ++group)
        if (fanGroupControl(group) == kExternalFanGroup) return true;
    return false;
}
