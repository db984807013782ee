#pragma once
// The battery backup's configuration as the power management interface
// sends it, with the figures that the power control keeps beside it. A plain
// value: a copy takes every field, the texts by their full length, so that a
// text without its NUL is copied whole as well.

#include <array>
#include <cstddef>
#include <cstdint>

class BatteryBackupCfg {
public:
    static constexpr std::uint32_t kChargingModeAutomatic = 1;
    static constexpr std::uint32_t kChargingModeUserDefined = 2;
    // Test modes: from a schedule of its own, in the configured months, none.
    static constexpr std::uint32_t kTestModeAutomatic = 1;
    static constexpr std::uint32_t kTestModeConfigured = 2;
    static constexpr std::uint32_t kTestModeNone = 3;
    static constexpr std::int32_t kNotSet = INT32_MIN;
    static constexpr std::size_t kDateSize = 12;
    static constexpr std::size_t kTimeSize = 8;
    static constexpr std::size_t kMonths = 12;

    struct Date {
        int year = 0;
        int month = 0;
        int day = 0;
    };

    BatteryBackupCfg() = default;
    BatteryBackupCfg(const BatteryBackupCfg&) = default;
    BatteryBackupCfg& operator=(const BatteryBackupCfg&) = default;
    virtual ~BatteryBackupCfg() = default;

    // Traces the record, one line a field, chargingMode first; the twelve
    // test start months go on one line, joined by commas.
    void print() const;

    // A date of eight digits, year, month and day; false for anything else,
    // the empty text of a date never set included. Reads no further than the
    // field, which need not hold a NUL.
    static bool parseDate(const char (&text)[kDateSize], Date& date);
    bool installationDate(Date& date) const { return parseDate(batteryInstallationDate, date); }

    std::uint16_t chargeMaxCurrent = 0;                 // amperes
    std::int8_t batteryDisconnectTemp = 0;              // degrees
    std::uint8_t batteryDisconnectTempCeaseOffset = 0;  // degrees
    float chargingVoltage = 0.0F;                       // volts
    float tempCompVoltageSlope = 0.0F;                  // volts per degree
    float nominalTemp = 0.0F;                           // degrees
    float tempCompMinVoltage = 0.0F;                    // volts
    float tempCompMaxVoltage = 0.0F;                    // volts
    float increasedChargeVoltage = 0.0F;                // volts
    std::uint32_t boostChargeTime = 0;                  // hours
    float boostChargeTriggerVoltage = 0.0F;             // volts
    std::uint32_t equalizeChargeTime = 0;               // hours
    std::uint16_t equalizeChargeCyclicInterval = 0;     // days
    float intermittentChargeConnectVoltage = 0.0F;      // volts
    std::uint32_t intermittentChargeConnectTime = 0;    // hours
    std::uint16_t intermittentChargeDisconnectTime = 0; // hours
    std::uint32_t testMode = kTestModeNone;
    std::uint32_t testStartDay = 0;
    std::uint32_t numberOfTestMonths = 0;
    std::array<std::uint32_t, kMonths> testStartMonths{};
    std::int32_t lastNominalBatteryCapacity = kNotSet; // ampere hours
    char batteryInstallationDate[kDateSize] = {};       // "yyyymmdd"
    std::uint16_t sharedBattery = 0;
    std::uint32_t minimumStateOfHealth = 0; // percent
    std::uint32_t minimumBackupTime = 0;    // minutes
    char testStartTime[kTimeSize] = {};     // "hh:mm"
    std::int32_t referenceBatteryCapacity = kNotSet; // ampere hours
    char nextScheduledBatteryTestDate[kDateSize] = {};
    std::uint32_t estimatedRemainingBatteryBackup = 0; // minutes
    float totalDischargeCapacity = 0.0F;               // ampere hours
    std::uint32_t rechargeTime = 0;                    // minutes of recharging, accumulated
    std::uint32_t chargingMode = kChargingModeUserDefined;
    char lastBatteryTestDate[kDateSize] = {};
    std::uint32_t timeOfMainLoadDisconnect = 0; // minutes since 1970
    bool configured = false;
};
