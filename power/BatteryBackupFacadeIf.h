#pragma once
// The battery backup as the power interface adapters reach it: its
// configuration, its status and the battery actions of the operator.

#include <cstdint>

class BatteryBackupCfg;
class BatteryBackupEventIf;
struct BatteryBackupStatus;

class BatteryBackupFacadeIf {
public:
    virtual ~BatteryBackupFacadeIf() = default;

    virtual void setEventHandler(BatteryBackupEventIf* handler) = 0;
    virtual void updateBatteryParameters(const BatteryBackupCfg& cfg) = 0;
    // Ceases the battery backup's faults; the record stays as it was but no
    // longer counts as configured.
    virtual void deleteBatteryBackup() = 0;
    virtual void getBatteryBackupStatus(BatteryBackupStatus* status) = 0;
    // 0 when the charger took the request; anything else is a refusal.
    virtual std::uint32_t startEqualizeCharging() = 0;
    virtual void stopEqualizeCharging() = 0;
    // A false answer leaves the battery test's reason in `error`.
    virtual bool startBatteryTest(bool forced, std::uint32_t* error) = 0;
    virtual bool stopBatteryTest(std::uint32_t* error) = 0;
    // Four words: state, elapsed minutes, consumed ampere hours, estimated
    // remaining minutes; false while no test runs.
    virtual bool getBatteryTestProgress(std::int32_t words[4]) = 0;
    // Who started the present test; 0 when none.
    virtual std::uint32_t getBatteryTestResults() = 0;
    virtual bool isRunningOnBatteries() const = 0;
};
