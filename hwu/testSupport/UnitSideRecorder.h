#pragma once
// The climate and alarm sides as the units see them: every call recorded
// with its virtual time; sensors are numbered from 7 on.

#include "adapters/AlarmCtrlIf.h"
#include "cabinet/CabinetCtrlIf.h"
#include "climate/ClimateCtrlIf.h"
#include "hwu/EFuseCtrlIf.h"
#include "power/PowerCtrlManagerIf.h"
#include "hwu/testSupport/HwuNodeHarness.h"

#include <string>
#include <vector>

class UnitSideRecorder : public ClimateCtrlIf,
                         public AlarmCtrlIf,
                         public EFuseCtrlIf,
                         public PowerCtrlManagerIf,
                         public CabinetCtrlIf {
public:
    void notifySmokeDetectorStatusUpdated(std::uint32_t cabinet) override { log("smoke " + std::to_string(cabinet)); }
    void notifyCabinetIdentifierUpdated(std::uint32_t cabinet, const std::string& identifier) override
    {
        log("identifier " + std::to_string(cabinet) + " " + identifier);
    }
    void setSmokeDetectorConfigured(std::uint32_t, bool configured) override { m_smokeConfigured = configured; }
    bool getSmokeDetectorConfigured(std::uint32_t) override { return m_smokeConfigured; }
    bool m_smokeConfigured = false;
    std::array<bool, 5> m_fanGroupConfigured{false, true, true, true, true};
    void statusChanged() override { ++m_powerNews; }
    std::uint32_t m_powerNews = 0;
    // The units only ever say that their figures changed.
    void updateBatteryParameters(const BatteryBackupCfg&) override {}
    void updatePowerDistribution(const PowerDistributionCfg&) override {}
    void updatePowerSupply(const std::int16_t[kPowerSupplyValues]) override {}
    void clearBatteryBackupConfigured() override {}
    void getBatteryBackupStatus(BatteryBackupStatus*) override {}
    void startEqualizeCharging() override {}
    void stopEqualizeCharging() override {}
    bool startBatteryTest(std::uint32_t, std::uint32_t*) override { return false; }
    bool stopBatteryTest(std::uint32_t, std::uint32_t*) override { return false; }
    bool getBatteryTestProgress(std::int32_t[4]) override { return false; }
    std::uint32_t getBatteryTestInitiation() override { return 0; }
    bool isRunningOnBatteries() const override { return false; }
    float getSystemVoltage() const override { return 999.0F; }
    bool isSystemVoltageValid() const override { return false; }
    void efuseStatusChanged(const FuncId_t& pduId, std::uint32_t number, std::uint32_t state) override
    {
        log("efuse " + nameOf(pduId) + " " + std::to_string(number) + " " + std::to_string(state));
    }
    void setSensorFault(std::uint32_t id) override { log("sensorFault " + std::to_string(id)); }
    void clearSensorFault(std::uint32_t id) override { log("sensorOk " + std::to_string(id)); }
    void addTempSensor(std::uint32_t funcType, std::int32_t setPoint, std::int32_t gain, std::int32_t tau,
                       std::uint32_t* id) override
    {
        *id = m_nextSensor++;
        log("addSensor " + std::to_string(funcType) + " " + std::to_string(setPoint) + " " + std::to_string(gain) +
            " " + std::to_string(tau) + " -> " + std::to_string(*id));
    }
    void removeTempSensor(std::uint32_t id) override { log("removeSensor " + std::to_string(id)); }
    void updateTemperature(std::uint32_t id, std::int32_t degrees) override
    {
        m_lastTemperature = degrees;
        m_lastSensor = id;
    }
    bool isFanGroupConfigured(std::uint32_t, std::uint32_t group) override
    {
        return group < m_fanGroupConfigured.size() && m_fanGroupConfigured[group];
    }
    void fanGroupsConnected(std::uint32_t cabinet, std::uint8_t flags, bool, std::uint32_t funcType) override
    {
        log("connected " + std::to_string(cabinet) + " " + std::to_string(flags) + " " + std::to_string(funcType));
    }
    void cluPresent(bool present) override { log(std::string("cluPresent ") + (present ? "1" : "0")); }
    void fanGroupsFailure(std::uint32_t cabinet, std::uint8_t flags, bool, std::uint32_t funcType) override
    {
        log("failure " + std::to_string(cabinet) + " " + std::to_string(flags) + " " + std::to_string(funcType));
    }
    void fanGroupState(std::uint32_t cabinet, std::uint32_t group, std::uint32_t state,
                       std::uint32_t funcType) override
    {
        log("led " + std::to_string(cabinet) + " " + std::to_string(group) + " " + std::to_string(state) + " " +
            std::to_string(funcType));
    }

    void setPortGroupUnit(const FuncId_t&, std::uint32_t, std::uint32_t) override {}
    void setAvailablePorts(const FuncId_t& funcId, std::uint16_t a, std::uint16_t b) override
    {
        log("available " + nameOf(funcId) + " " + std::to_string(a) + " " + std::to_string(b));
    }
    void updatePorts(const FuncId_t& funcId, std::uint16_t a, std::uint16_t b) override
    {
        const std::string line = "ports " + nameOf(funcId) + " " + std::to_string(a) + " " + std::to_string(b);
        // At every poll: only changes are kept.
        if (line != m_lastPorts) log(line);
        m_lastPorts = line;
    }
    void removeUnit(const FuncId_t& funcId) override { log("removeUnit " + nameOf(funcId)); }
    void unitAdded(const FuncId_t&) override {}
    void unitRemoved(const FuncId_t&) override {}
    void allPortsDisconnected() override {}

    std::vector<std::string> m_calls;
    std::int32_t m_lastTemperature = -999;
    std::uint32_t m_lastSensor = 0;

private:
    void log(const std::string& call) { m_calls.push_back(at(call)); }

    std::uint32_t m_nextSensor = 7;
    std::string m_lastPorts;
};
