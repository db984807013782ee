#pragma once
// The cabinet's climate parameters as the SCU's configuration: each value is
// checked against the limits that the SCU publishes, and a value it cannot
// take becomes "not applicable" (-127 for a temperature, 0 for a speed).

#include <cstdint>

class ClimateConfigurationIf;
class ScuIf;
struct PpScuAddConfig;
struct PpScuAddCapabilities;

class ScuConfigurator {
public:
    static constexpr std::int8_t kTemperatureNotApplicable = -127;
    static constexpr std::uint8_t kSpeedNotApplicable = 0;

    explicit ScuConfigurator(ClimateConfigurationIf* configuration) : m_pConfiguration(configuration) {}

    void configureScu(ScuIf* scu, bool doorSwitch);

    static std::int8_t checkTemperature(const char* name, std::int8_t value, std::int8_t min, std::int8_t max);
    static std::uint8_t checkSpeed(const char* name, std::uint8_t value, std::uint8_t min, std::uint8_t max);

private:
    bool sendConfig(ScuIf* scu, bool doorSwitch);
    bool sendAddConfig(ScuIf* scu);
    static void checkColdOperation(PpScuAddConfig& config, const PpScuAddCapabilities& caps);

    ClimateConfigurationIf* m_pConfiguration;
};
