#pragma once
// The power control as the units, the power facades and the battery parts
// reach it. Voltages are volts of the -48 V system (negative); 999 is a
// value that was not measured.

#include <cstddef>
#include <cstdint>

class BatteryBackupCfg;
class PowerDistributionCfg;

// What the battery backup facade reports of the battery.
struct BatteryBackupStatus {
    float batteryCurrent = 999.0F;     // sum over the BFUs, amperes
    float batteryTemperature = 999.0F; // their mean, degrees
    float batteryVoltage = 999.0F;     // their mean, volts
    std::int32_t referenceBatteryCapacity = INT32_MIN;
    char nextScheduledBatteryTestDate[12] = {};
    bool batteryTestRunning = false;
};

class PowerCtrlManagerIf {
public:
    virtual ~PowerCtrlManagerIf() = default;
    // A BFU has new figures; the regulator reads what it needs.
    virtual void statusChanged() = 0;

    // The configuration records, from the facades.
    virtual void updateBatteryParameters(const BatteryBackupCfg& cfg) = 0;
    virtual void updatePowerDistribution(const PowerDistributionCfg& cfg) = 0;
    // 16-bit values in tenths of a volt: 4 nominal voltage, 5 overvoltage
    // cease offset, 6 overvoltage raise limit, 7 undervoltage cease offset,
    // 8 undervoltage raise limit.
    static constexpr std::size_t kPowerSupplyValues = 9;
    virtual void updatePowerSupply(const std::int16_t values[kPowerSupplyValues]) = 0;
    // The battery backup record is no longer configured; what it held stays.
    virtual void clearBatteryBackupConfigured() = 0;

    virtual void getBatteryBackupStatus(BatteryBackupStatus* status) = 0;
    // Charger events 7 and 8.
    virtual void startEqualizeCharging() = 0;
    virtual void stopEqualizeCharging() = 0;
    // The battery test: `error` takes its reason when the answer is false.
    virtual bool startBatteryTest(std::uint32_t initiation, std::uint32_t* error) = 0;
    virtual bool stopBatteryTest(std::uint32_t reason, std::uint32_t* error) = 0;
    virtual bool getBatteryTestProgress(std::int32_t words[4]) = 0;
    virtual std::uint32_t getBatteryTestInitiation() = 0;
    virtual bool isRunningOnBatteries() const = 0;

    // The last system voltage read and whether the last pass read one.
    virtual float getSystemVoltage() const = 0;
    virtual bool isSystemVoltageValid() const = 0;
};
