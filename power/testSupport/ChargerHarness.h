#pragma once
// The battery charger in a core process on the virtual clock: a fake BFU
// summary and battery control, the real faults register, a configuration
// of a plain -48 V battery, and steps that run inside the process at given
// virtual times.

#include "frame/ActiveFaultsRegister.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/TimerService.h"
#include "frame/testSupport/TraceCapture.h"
#include "hwu/BfuStatusIf.h"
#include "platform/testSupport/CoreHarness.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryCharger.h"
#include "power/BatteryControlIf.h"
#include "power/PowerDistributionCfg.h"

#include "ose/TestWorld.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class ChargerHarness : public ose::testing::TestWorld {
protected:
    static constexpr std::uint32_t kMinuteMs = 60'000;
    static constexpr std::uint32_t kHourMs = 3'600'000;
    static constexpr std::uint64_t kDayMs = 86'400'000;
    static constexpr FuncId_t kBatteryBackup{func_type::kBatteryBackup, 0};

    // What the BFUs report; all fine, connected, 25 degrees, no current.
    struct Bfus : BfuStatusIf {
        bool anyBfuSlowCharging() override { return slow; }
        bool anyBfuOperational() override { return operational; }
        bool allBfusOperational() override { return operational; }
        bool allTempSensorsOk() override { return sensorsOk; }
        float getBatteryCurrent() override { return current; }
        float getLowestCurrent() override { return current; }
        float getHighestCurrent() override { return current; }
        float getAverageTemperature() override { return (lowestTemp + highestTemp) / 2.0F; }
        float getLowestTemperature() override { return lowestTemp; }
        float getHighestTemperature() override { return highestTemp; }
        bool anyBfuConnected() override { return connected; }
        bool allBfusConnected() override { return connected; }
        bool anyBatteryPresent() override { return true; }
        float getBatteryVoltage() override { return batteryVoltage; }
        float getLowestBatteryVoltage() override { return batteryVoltage; }
        bool isChargeCurrentHigh(float limit, float* result) override
        {
            if (current > limit) *result = limit;
            else if (current > 0.96F * capability) *result = capability;
            else return false;
            return true;
        }
        bool anyHwFault() override { return false; }
        bool anyMainLoadDisconnected() override { return false; }
        bool anyBatteryOverTemperature() override { return overTemperature; }
        bool anyCircuitBreakerFault() override { return false; }
        bool anyExtFlag12Clear() override { return false; }
        bool isBatteryVoltageBelowLimits() override { return belowConnectLimit; }
        bool allBfusHaveVoltageConnect() override { return voltageConnect; }
        bool isDischargeOverload() override { return false; }

        bool slow = false;
        bool operational = true;
        bool sensorsOk = true;
        bool connected = true;
        bool overTemperature = false;
        bool belowConnectLimit = false;
        bool voltageConnect = false;
        float current = 0.0F;
        float capability = 100.0F;
        float lowestTemp = 25.0F;
        float highestTemp = 25.0F;
        float batteryVoltage = -54.0F;
    };

    struct Control : BatteryControlIf {
        void connectBattery(bool connect, bool extended) override { connects.emplace_back(connect, extended); }
        void batteryFullyCharged() override { ++fullyCharged; }
        std::vector<std::pair<bool, bool>> connects;
        int fullyCharged = 0;
    };

    // Steps inside the core process.
    class Script : public TimerObserverIf {
    public:
        void add(std::uint64_t timeMs, std::function<void()> step) { m_steps.emplace_back(timeMs, std::move(step)); }
        void start()
        {
            for (std::uint32_t index = 0; index < m_steps.size(); ++index)
                TimerService::startTimer(static_cast<std::uint32_t>(m_steps[index].first), 1, this, index);
        }
        void timeout(TimerId timerId) override { m_steps.at(timerId.argument).second(); }

    private:
        std::vector<std::pair<std::uint64_t, std::function<void()>>> m_steps;
    };

    ChargerHarness()
    {
        cfg.chargeMaxCurrent = 50;
        cfg.batteryDisconnectTemp = 55;
        cfg.batteryDisconnectTempCeaseOffset = 5;
        cfg.chargingVoltage = -54.5F;
        cfg.tempCompVoltageSlope = -0.1F;
        cfg.nominalTemp = 25.0F;
        cfg.tempCompMinVoltage = -52.0F;
        cfg.tempCompMaxVoltage = -56.0F;
        cfg.increasedChargeVoltage = -56.5F;
        cfg.boostChargeTime = 2;
        cfg.boostChargeTriggerVoltage = -47.0F;
        cfg.equalizeChargeTime = 4;
        cfg.equalizeChargeCyclicInterval = 30;
        cfg.intermittentChargeConnectVoltage = -50.0F;
        cfg.intermittentChargeConnectTime = 24;
        distribution.mainLoadUndervoltageDisconnect = -430;
        distribution.undervoltageDisconnectCeaseOffset = 20;
    }

    void TearDown() override
    {
        TimerService::setHandler(nullptr);
        m_pCharger.reset();
        TestWorld::TearDown();
    }

    ChargerHarness& at(std::uint64_t timeMs, std::function<void()> step)
    {
        m_script.add(timeMs, std::move(step));
        return *this;
    }
    void play(std::uint64_t untilMs)
    {
        m_pCharger = std::make_unique<BatteryCharger>(&control, &faults, &cfg, &distribution, &bfus, nullptr);
        spawn("SSC_THREAD", core_harness::coreBody([this](SignalDispatcher&) { m_script.start(); }));
        world().runFor(untilMs);
    }

    BatteryCharger& charger() { return *m_pCharger; }
    std::uint32_t state() { return m_pCharger->getChargingStateId(); }
    // One voltage control pass with the system at the wanted voltage.
    void pass(float batteryVoltage, float current)
    {
        bfus.batteryVoltage = batteryVoltage;
        bfus.current = current;
        charger().updateCharging(charger().getWantedVoltage(), batteryVoltage, current);
    }
    // Begins charging and brings the machine to Float through SoftStart.
    void toFloat()
    {
        charger().handleEvent(BatteryChargerIf::kBeginCharging);
        for (int i = 0; i < 20 && state() != charging_state::kFloat; ++i) pass(-53.0F, 10.0F);
    }
    bool active(std::int32_t faultId) { return faults.isFaultActive(faultId, kBatteryBackup); }

    TraceCapture trace{"supSysCtrlBattery:all"};
    Bfus bfus;
    Control control;
    ActiveFaultsRegister faults;
    BatteryBackupCfg cfg;
    PowerDistributionCfg distribution;
    Script m_script;
    std::unique_ptr<BatteryCharger> m_pCharger;
};
