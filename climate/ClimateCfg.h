#pragma once
// The climate part of the cabinet's parameters: how this cabinet's fans,
// heaters and external fans are run. A plain value, copied whole; the
// fall-backs that keep a half-configured cabinet from running its fans too
// slow are applied when it is filled. Speeds in percent, temperatures in
// whole degrees.

#include <array>
#include <cstdint>

struct ClimateCfg {
    // How many numbers the cabinet parameters carry, in the order of the
    // fields below from numberOfBlowers to externalFanMaxTemp.
    static constexpr std::size_t kNumbers = 43;
    static constexpr std::uint32_t kUnknownClimateSystem = 2;
    static constexpr std::uint32_t kModeBeforeFill = 2;
    static constexpr std::int16_t kExternalFanGroup = 2;
    static constexpr std::int16_t kInternalFanGroup = 1;

    bool valid = false;
    std::int16_t numberOfBlowers = 0;
    std::int16_t flowFactor = 0;
    std::int16_t nominalFanSpeed = 0;
    std::int16_t basicFanSpeed = 0;
    std::int16_t minimumExternalFanSpeed = 0;
    std::int16_t hysteresis = 0;
    std::int16_t startingPoint = 0;
    std::int16_t externalFanStartTemp = 0;
    std::int16_t externalFanStopTemp = 0;
    std::int16_t placementFactorCBU = 0;
    std::int16_t placementFactorPSU = 0;
    std::int16_t placementFactorRAX = 0;
    std::int16_t placementFactorRU = 0;
    std::int16_t placementFactorTX = 0;
    std::int16_t placementFactorDU = 0;
    std::int16_t fanGroup1Control = 0;
    std::int16_t fanGroup2Control = 0;
    std::int16_t fanGroup3Control = 0;
    std::int16_t fanGroup4Control = 0;
    std::int16_t internalFanGroupsAutonomousOperation = 0;
    std::int16_t externalFanGroupsAutonomousOperation = 0;
    std::int16_t heater1OnTemp = 0;
    std::int16_t heater1OffTemp = 0;
    std::int16_t heater2OnTemp = 0;
    std::int16_t heater2OffTemp = 0;
    std::int16_t intFanLoTemp = 0;
    std::int16_t intFanHiTemp = 0;
    std::int16_t extFanLoUpTemp = 0;
    std::int16_t extFanHiUpTemp = 0;
    std::int16_t extFanLoDownTemp = 0;
    std::int16_t extFanHiDownTemp = 0;
    std::int16_t extFanSpeedFault = 0;
    std::int16_t intFanLoTempSpeed = 0;
    std::int16_t concurrentFanControl = 0;
    std::int16_t missingNodeBasicFanSpeed = 0;
    std::int16_t coldOperationOnTemp = 0;
    std::int16_t coldOperationOffTemp = 0;
    std::int16_t coldOperationInitialFanGroup1Speed = 0;
    std::int16_t coldOperationInitialFanGroup3Speed = 0;
    std::int16_t heater2FanGroup1Fan1Speed = 0;
    std::int16_t heater2FanGroup1Fan2Speed = 0;
    std::int16_t externalFanRampUpTemp = 0;
    std::int16_t externalFanMaxTemp = 0;
    std::uint32_t climateSystem = kUnknownClimateSystem;
    std::uint32_t climateControlMode = kModeBeforeFill;

    // Fills the record from the cabinet parameters and applies the fall-backs.
    void setCabinetParameters(std::uint32_t system, std::uint32_t mode, const std::array<std::int16_t, kNumbers>& numbers);
    // Traces every field, one line each.
    void printCabinetParameters() const;

    // The use of fan group 1 to 4 (1 internal, 2 external); 0 for another number.
    std::int16_t fanGroupControl(std::uint32_t group) const;
    bool anyExternalFanGroup() const;

    // How the configuration signal's values become the record's: a climate
    // system other than 0 or 1 is not known; only a mode of 1 turns the SCU
    // temperature ramp on.
    static std::uint32_t climateSystemOf(std::uint32_t signalled) { return signalled <= 1 ? signalled : kUnknownClimateSystem; }
    static std::uint32_t climateControlModeOf(std::uint32_t signalled) { return signalled == 1 ? 1 : 0; }

private:
    void applyFallBacks();
};
