#pragma once
// The power facades' event handlers as a test sees them: every call kept as
// one line with its virtual time.

#include "hwu/testSupport/HwuNodeHarness.h"
#include "power/BatteryBackupEventIf.h"
#include "power/PowerSupplyEventIf.h"

#include <string>
#include <vector>

class PowerEventRecorder : public BatteryBackupEventIf, public PowerSupplyEventIf {
public:
    void raiseNoBatteryPresent() override { log("raise noBattery"); }
    void raiseIntermittentConnectedTooOften() override { log("raise intermittent"); }
    void raiseLowBatteryCapacity() override { log("raise lowCapacity"); }
    void raiseConsumedCapacityNotCovered() override { log("raise notCovered"); }
    void raiseRechargeTooLong() override { log("raise rechargeTooLong"); }
    void raiseBatteryOverTemperature() override { log("raise overTemperature"); }
    void raiseRunningOnBatteries() override { log("raise onBatteries"); }
    void raiseBatteryTempSensorFaulty() override { log("raise sensor"); }
    void raiseBatteryBackupTimeTooShort() override { log("raise backupTime"); }
    void raiseMultiplePowerSubracks() override { log("raise subracks"); }
    void ceaseNoBatteryPresent() override { log("cease noBattery"); }
    void ceaseIntermittentConnectedTooOften() override { log("cease intermittent"); }
    void ceaseLowBatteryCapacity() override { log("cease lowCapacity"); }
    void ceaseConsumedCapacityNotCovered() override { log("cease notCovered"); }
    void ceaseRechargeTooLong() override { log("cease rechargeTooLong"); }
    void ceaseBatteryOverTemperature() override { log("cease overTemperature"); }
    void ceaseRunningOnBatteries() override { log("cease onBatteries"); }
    void ceaseBatteryTempSensorFaulty() override { log("cease sensor"); }
    void ceaseBatteryBackupTimeTooShort() override { log("cease backupTime"); }
    void ceaseMultiplePowerSubracks() override { log("cease subracks"); }
    void batteryModeChanged(bool onBatteries) override { log(onBatteries ? "on batteries" : "off batteries"); }
    void batteryTestStarted(std::uint32_t initiation) override { log("test " + std::to_string(initiation)); }
    void statusChanged() override { ++m_statusChanges; }
    void batteryTestFinished(const BatteryTestRecord& record) override
    {
        log("test finished " + std::to_string(record.outcome));
    }
    void batteryLogData(const BatteryLogRecord& /*log*/, const BatteryLogExtra& /*extra*/) override { log("log data"); }

    void raiseNoPsuUsable() override { log("raise noPsu"); }
    void raiseSystemOvervoltage() override { log("raise overvoltage"); }
    void raiseSystemUndervoltage() override { log("raise undervoltage"); }
    void ceaseNoPsuUsable() override { log("cease noPsu"); }
    void ceaseSystemOvervoltage() override { log("cease overvoltage"); }
    void ceaseSystemUndervoltage() override { log("cease undervoltage"); }
    void systemVoltageUpdated(float volts) override { m_lastSystemVoltage = volts; }

    std::vector<std::string> m_events;
    float m_lastSystemVoltage = 999.0F;
    // Kept apart: every BFU status makes one, too many for the event lines.
    int m_statusChanges = 0;

private:
    void log(const std::string& what) { m_events.push_back(at(what)); }
};
