#pragma once
// The battery backup's events, handed on to the interfaces that tell them:
// faults, status, battery tests and log data to the power management
// interface. The change of battery mode belongs to the power control
// interface and the inter-node link, which take it from here once they
// serve it; until then it is traced and goes no further.

#include "power/BatteryBackupEventIf.h"

class PmiAdapter;

class BatteryBackupEventHandler : public BatteryBackupEventIf {
public:
    // Not owned.
    explicit BatteryBackupEventHandler(PmiAdapter* pmiAdapter);

    void raiseNoBatteryPresent() override;
    void raiseIntermittentConnectedTooOften() override;
    void raiseLowBatteryCapacity() override;
    void raiseConsumedCapacityNotCovered() override;
    void raiseRechargeTooLong() override;
    void raiseBatteryOverTemperature() override;
    void raiseRunningOnBatteries() override;
    void raiseBatteryTempSensorFaulty() override;
    void raiseBatteryBackupTimeTooShort() override;
    void raiseMultiplePowerSubracks() override;

    void ceaseNoBatteryPresent() override;
    void ceaseIntermittentConnectedTooOften() override;
    void ceaseLowBatteryCapacity() override;
    void ceaseConsumedCapacityNotCovered() override;
    void ceaseRechargeTooLong() override;
    void ceaseBatteryOverTemperature() override;
    void ceaseRunningOnBatteries() override;
    void ceaseBatteryTempSensorFaulty() override;
    void ceaseBatteryBackupTimeTooShort() override;
    void ceaseMultiplePowerSubracks() override;

    void batteryModeChanged(bool onBatteries) override;
    void batteryTestStarted(std::uint32_t initiation) override;
    void statusChanged() override;
    void batteryTestFinished(const BatteryTestRecord& record) override;
    void batteryLogData(const BatteryLogRecord& log, const BatteryLogExtra& extra) override;

private:
    void fault(std::uint16_t faultType, bool raised);

    PmiAdapter* m_pPmiAdapter;
};
