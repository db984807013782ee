#pragma once
// The power management interface: battery backup, power distribution and
// power supply, configured by the object layer, with status, faults, battery
// actions, test events and log data back to it. Reachable from other
// processes by the name "ssc_power_management_server". The adapter keeps no
// power state of its own: it translates between the signals and the three
// power facades, and addresses what the core tells to the clients that
// configured or subscribed the object.

#include "adapters/PmiSignals.h"
#include "frame/AdapterBase.h"
#include "power/PowerDistributionEventIf.h"
#include "power/PowerSupplyEventIf.h"

#include <cstddef>
#include <cstdint>

class BatteryBackupFacadeIf;
class PowerDistributionFacadeIf;
class PowerSupplyFacadeIf;
struct BatteryLogExtra;
struct BatteryLogRecord;
struct BatteryTestRecord;

class PmiAdapter : public AdapterBase, public PowerDistributionEventIf, public PowerSupplyEventIf {
public:
    // Not owned.
    struct Facades {
        BatteryBackupFacadeIf* batteryBackup = nullptr;
        PowerSupplyFacadeIf* powerSupply = nullptr;
        PowerDistributionFacadeIf* powerDistribution = nullptr;
    };
    // faultType of the battery backup's faults, as the object side's fault
    // table numbers them.
    enum BatteryFault : std::uint16_t {
        kNoBatteryPresent = 0,
        kIntermittentConnectedTooOften = 1,
        kBatteryBackupTimeTooShort = 2,
        kRechargeTooLong = 3,
        kBatteryOverTemperature = 4,
        kRunningOnBatteries = 5,
        kBatteryTempSensorFaulty = 6,
        kLowBatteryCapacity = 13,
        kConsumedCapacityNotCovered = 14,
        kMultiplePowerSubracks = 15,
    };

    PmiAdapter(SignalDispatcherIf* dispatcher, const Facades& facades);
    ~PmiAdapter() override;
    PmiAdapter(const PmiAdapter&) = delete;
    PmiAdapter& operator=(const PmiAdapter&) = delete;

    const char* getProcessName() const override { return pmi::kServerName; }
    const char* getServerName() const override { return "PmiAdapter"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;

    // PowerDistributionEventIf
    void raiseMainLoadDisconnected() override;
    void raisePriorityLoadDisconnected() override;
    void raisePduMainTemperatureHigh() override;
    void ceaseMainLoadDisconnected() override;
    void ceasePriorityLoadDisconnected() override;
    void ceasePduMainTemperatureHigh() override;
    // PowerSupplyEventIf
    void raiseNoPsuUsable() override;
    void raiseSystemOvervoltage() override;
    void raiseSystemUndervoltage() override;
    void ceaseNoPsuUsable() override;
    void ceaseSystemOvervoltage() override;
    void ceaseSystemUndervoltage() override;
    void systemVoltageUpdated(float volts) override;

    // The battery backup's events, handed on by its event handler.
    void batteryBackupFault(BatteryFault faultType, bool raised);
    void batteryBackupStatusChanged();
    void batteryTestStarted(std::uint32_t initiation);
    void batteryTestFinished(const BatteryTestRecord& record);
    void batteryLogData(const BatteryLogRecord& log, const BatteryLogExtra& extra);

private:
    void handleSetConfigReq(ose::Signal* signal);
    void handleDeleteConfigReq(ose::Signal* signal);
    void handleSubscribeResourceDataReq(ose::Signal* signal);
    void handleUnsubscribeResourceDataReq(ose::Signal* signal);
    void handleGetResourceDataReq(ose::Signal* signal);
    void handleActionReq(ose::Signal* signal);

    void configure(const ObjectSubscriber& client, ose::Signal* signal);
    void startBatteryTest(const ObjectSubscriber& client, std::uint16_t parameter);
    void stopBatteryTest(const ObjectSubscriber& client);
    void readBatteryTestStatus(const ObjectSubscriber& client);

    // The header of a request from a known sender, traced; NIL when it is
    // too short, or when its object is no power object and it is not an
    // action.
    const pmi::PMI_HEADER_S* receive(ose::Signal* signal, const char* name, ObjectSubscriber& client,
                                     bool anyObject = false);
    void send(const void* body, std::size_t size, ose::SIGSELECT sigNo, const ObjectSubscriber& to, const char* name);
    void sendHeader(ose::SIGSELECT sigNo, const ObjectSubscriber& to, const char* name, std::uint16_t word14 = 0);
    void sendResource(ose::SIGSELECT sigNo, const ObjectSubscriber& to, const char* name);
    void sendActionRej(const ObjectSubscriber& to, std::uint16_t actionType, std::uint16_t errorCode);
    void sendBatteryEvent(const ObjectSubscriber& to, std::uint16_t eventType, const void* data, std::size_t size);
    // To every configuration of the battery backup.
    void distributeBatteryEvent(std::uint16_t eventType, const void* data, std::size_t size);
    void sendFault(ose::SIGSELECT sigNo, std::uint16_t faultType, std::uint16_t objectType);
    void resourceUpdate(std::uint16_t objectType);

    Facades m_facades;
};
