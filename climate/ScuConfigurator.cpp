#include "climate/ScuConfigurator.h"

#include "climate/ClimateConfigurationIf.h"
#include "climate/FanGroupBits.h"
#include "frame/SscTrace.h"
#include "hwu/HWU_SC.h"
#include "hwu/ScuIf.h"

using namespace ssc_trace;

namespace {

constexpr const char* kOutOfRange = "SCU configuration parameter %s = %d is not within SCU capabilities [%d..%d]. Value "
                                    "changed to NA (%d).";

std::uint8_t flagIf(bool set, unsigned bit) { return set ? static_cast<std::uint8_t>(1U << bit) : 0; }

std::int8_t signedByte(std::int16_t value) { return static_cast<std::int8_t>(value); }
std::uint8_t unsignedByte(std::int16_t value) { return static_cast<std::uint8_t>(value); }

} // namespace

std::int8_t ScuConfigurator::checkTemperature(const char* name, std::int8_t value, std::int8_t min, std::int8_t max)
{
    if (value == kTemperatureNotApplicable || (value >= min && value <= max)) return value;
    SSC_TRACE(climateGroup(), kError, kOutOfRange, name, value, min, max, kTemperatureNotApplicable);
    return kTemperatureNotApplicable;
}

std::uint8_t ScuConfigurator::checkSpeed(const char* name, std::uint8_t value, std::uint8_t min, std::uint8_t max)
{
    if (value == kSpeedNotApplicable || (value >= min && value <= max)) return value;
    SSC_TRACE(climateGroup(), kError, kOutOfRange, name, value, min, max, kSpeedNotApplicable);
    return kSpeedNotApplicable;
}

void ScuConfigurator::configureScu(ScuIf* scu, bool doorSwitch)
{
    if (scu == nullptr || !scu->isAvailable()) {
        SSC_TRACE(climateGroup(), kFlow, "configureScu is waiting for SCU to get operational");
        return;
    }
    if (!m_pConfiguration->getClimateCfg().valid) {
        SSC_TRACE(climateGroup(), kFlow, "configureScu is waiting for cabinet parameters");
        return;
    }
    if (sendConfig(scu, doorSwitch)) SSC_TRACE(climateGroup(), kFlow, "Configuration of SCU done OK");
    else SSC_TRACE(climateGroup(), kUnexpected, "Configuration of SCU failed.");
    if (sendAddConfig(scu)) SSC_TRACE(climateGroup(), kFlow, "Additional Configuration of SCU done OK");
    else SSC_TRACE(climateGroup(), kUnexpected, "Additional Configuration of SCU failed.");
}

bool ScuConfigurator::sendConfig(ScuIf* scu, bool doorSwitch)
{
    if (scu == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "NULL pointer in sendSCUConfig");
        return false;
    }
    const ClimateCfg& cfg = m_pConfiguration->getClimateCfg();
    const PpScuCapabilities& caps = scu->getCapabilities();
    PpScuConfig config;
    for (std::uint32_t group = 1; group <= 4; ++group)
        config.scuConfigFanGroup |= flagIf(cfg.fanGroupControl(group) == ClimateCfg::kExternalFanGroup, 8 - group);
    config.scuConfigFanControl = static_cast<std::uint8_t>(flagIf(cfg.internalFanGroupsAutonomousOperation == 2, 7) |
                                                           flagIf(cfg.externalFanGroupsAutonomousOperation == 2, 6));
    config.scuConfigOtherPorts = flagIf(doorSwitch, 7);
    // Built in the climate order (group 1, internal groups, the door switch
    // in the top bit); the SCU reads flag k in bit k.
    config.scuConfigFanGroup = fan_group::toUnitFlags(config.scuConfigFanGroup);
    config.scuConfigFanControl = fan_group::toUnitFlags(config.scuConfigFanControl);
    config.scuConfigOtherPorts = fan_group::toUnitFlags(config.scuConfigOtherPorts);
    const bool doorSwitchPort = ((caps.availableHw >> HWU_SC::kDoorSwitchPort) & 1U) != 0;
    if (doorSwitch && !doorSwitchPort)
        SSC_TRACE(climateGroup(), kError,
                  "Configured with Door Switch = 1, but the SCU do not support Door Switch, "
                  "capabilities.availableHw.doorSwitchPort: %d",
                  0);
    // Temperatures are compared as signed bytes, the speed as an unsigned one.
    const auto temperature = [](const char* name, std::int16_t value, std::int8_t min, std::int8_t max) {
        return static_cast<std::uint8_t>(checkTemperature(name, signedByte(value), min, max));
    };
    config.scuHeater1OnTemp = temperature("heater1OnTemp", cfg.heater1OnTemp, caps.heater1MinOnTemp, caps.heater1MaxOnTemp);
    config.scuHeater1OffTemp = temperature("heater1OffTemp", cfg.heater1OffTemp, caps.heater1MinOffTemp, caps.heater1MaxOffTemp);
    config.scuHeater2OnTemp = temperature("heater2OnTemp", cfg.heater2OnTemp, caps.heater2MinOnTemp, caps.heater2MaxOnTemp);
    config.scuHeater2OffTemp = temperature("heater2OffTemp", cfg.heater2OffTemp, caps.heater2MinOffTemp, caps.heater2MaxOffTemp);
    config.scuIntFanLoTemp = temperature("intFanLoTemp", cfg.intFanLoTemp, caps.intFanMinLoTemp, caps.intFanMaxLoTemp);
    config.scuIntFanHiTemp = temperature("intFanHiTemp", cfg.intFanHiTemp, caps.intFanMinHiTemp, caps.intFanMaxHiTemp);
    config.scuExtFanLoUpTemp = temperature("extFanLoUpTemp", cfg.extFanLoUpTemp, caps.extFanMinLoUpTemp, caps.extFanMaxLoUpTemp);
    config.scuExtFanHiUpTemp = temperature("extFanHiUpTemp", cfg.extFanHiUpTemp, caps.extFanMinHiUpTemp, caps.extFanMaxHiUpTemp);
    config.scuExtFanLoDownTemp =
        temperature("extFanLoDownTemp", cfg.extFanLoDownTemp, caps.extFanMinLoDownTemp, caps.extFanMaxLoDownTemp);
    config.scuExtFanHiDownTemp =
        temperature("extFanHiDownTemp", cfg.extFanHiDownTemp, caps.extFanMinHiDownTemp, caps.extFanMaxHiDownTemp);
    config.scuExtFanSpeedFault =
        checkSpeed("extFanSpeedFault", unsignedByte(cfg.extFanSpeedFault), static_cast<std::uint8_t>(caps.extFanMinSpeedFault),
                   static_cast<std::uint8_t>(caps.extFanMaxSpeedFault));
    return scu->setConfig(config);
}

void ScuConfigurator::checkColdOperation(PpScuAddConfig& config, const PpScuAddCapabilities& caps)
{
    const auto temperature = [](const char* name, std::uint8_t value, std::uint8_t min, std::uint8_t max) {
        return static_cast<std::uint8_t>(checkTemperature(name, static_cast<std::int8_t>(value),
                                                          static_cast<std::int8_t>(min), static_cast<std::int8_t>(max)));
    };
    config.scuColdopOnTemp =
        temperature("ColdOperationOnTemp", config.scuColdopOnTemp, caps.scuColdopMinOnTemp, caps.scuColdopMaxOnTemp);
    config.scuColdopOffTemp =
        temperature("ColdOperationOffTemp", config.scuColdopOffTemp, caps.scuColdopMinOffTemp, caps.scuColdopMaxOffTemp);
    config.scuHeater1Fg1Speed = checkSpeed("ColdOperationInitialFanGroup1Speed", config.scuHeater1Fg1Speed,
                                           caps.scuHeater1Fg1MinSpeed, caps.scuHeater1Fg1MaxSpeed);
    config.scuHeaterFg3Speed = checkSpeed("ColdOperationInitialFanGroup3Speed", config.scuHeaterFg3Speed,
                                          caps.scuHeaterFg3MinSpeed, caps.scuHeaterFg3MaxSpeed);
    config.scuHeater2Fg1Fan1Speed = checkSpeed("Heater2FanGroup1Fan1Speed", config.scuHeater2Fg1Fan1Speed,
                                               caps.scuHeater2Fg1Fan1MinSpeed, caps.scuHeater2Fg1Fan1MaxSpeed);
    config.scuHeater2Fg1Fan2Speed = checkSpeed("Heater2FanGroup1Fan2Speed", config.scuHeater2Fg1Fan2Speed,
                                               caps.scuHeater2Fg1Fan2MinSpeed, caps.scuHeater2Fg1Fan2MaxSpeed);
}

bool ScuConfigurator::sendAddConfig(ScuIf* scu)
{
    if (scu == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "NULL pointer in sendScuAddConfig");
        return false;
    }
    const ClimateCfg& cfg = m_pConfiguration->getClimateCfg();
    PpScuAddConfig config;
    config.scuIntFanLoTempSpeed = unsignedByte(cfg.intFanLoTempSpeed);
    config.scuColdopOnTemp = unsignedByte(cfg.coldOperationOnTemp);
    config.scuColdopOffTemp = unsignedByte(cfg.coldOperationOffTemp);
    config.scuHeater1Fg1Speed = unsignedByte(cfg.coldOperationInitialFanGroup1Speed);
    config.scuHeaterFg3Speed = unsignedByte(cfg.coldOperationInitialFanGroup3Speed);
    config.scuHeater2Fg1Fan1Speed = unsignedByte(cfg.heater2FanGroup1Fan1Speed);
    config.scuHeater2Fg1Fan2Speed = unsignedByte(cfg.heater2FanGroup1Fan2Speed);
    PpScuAddCapabilities caps;
    if (scu->getAddCapabilities(&caps)) {
        if (caps.intFanSpeedAtLowTemp)
            config.scuIntFanLoTempSpeed = checkSpeed("IntFanLoTempSpeed", config.scuIntFanLoTempSpeed,
                                                     caps.intFanMinLoTempSpeed, caps.intFanMaxLoTempSpeed);
        if (caps.coldOperation) checkColdOperation(config, caps);
    }
    return scu->setAddConfig(config);
}
