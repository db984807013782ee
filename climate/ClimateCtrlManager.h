#pragma once
// The heart of the climate subsystem: owns the regulator, the sensor list,
// the fan groups and the SCU configurator, runs a regulation pass every five
// seconds once the cabinet, its parameters and a sensor are there, and
// reacts to new units and new cabinet parameters. One per core process,
// reached through getInstance().

#include "climate/ClimateCfg.h"
#include "climate/ClimateConfigurationIf.h"
#include "climate/ClimateRegulationIf.h"
#include "climate/ExternalNodeControlCallbackIf.h"
#include "climate/TempSensorList.h"
#include "frame/Noncopyable.h"
#include "frame/Observer.h"
#include "frame/TimerObserverIf.h"
#include "hwu/BrokerObserverIf.h"

#include <cstdint>
#include <functional>
#include <memory>

class ExternalNodeControl;
class ExternalNodeCtrlIf;
class FanGroupControl;
class FaultsRegisterIf;
class HwuBrokerIf;
class ScuConfigurator;
class SscHandleIf;
class TemperatureRegulator;

class ClimateCtrlManager : public Observer,
                           public TimerObserverIf,
                           public BrokerObserverIf,
                           public ClimateRegulationIf,
                           public ClimateConfigurationIf,
                           public ExternalNodeControlCallbackIf,
                           private Noncopyable {
public:
    static constexpr TimerType kRegulationTimer = 21;
    static constexpr TimerType kSensorStatusTimer = 27;
    static constexpr std::uint32_t kRegulationPeriodMs = 5000;
    static constexpr std::uint32_t kFirstStatusCheckMs = 15000;
    static constexpr std::uint32_t kStatusCheckMs = 10000;
    // Whether a cabinet's door switch is configured, as its cabinet says.
    using DoorSwitchOf = std::function<bool(std::uint32_t cabinetFuncInst)>;

    // The one instance: made with the core's root, gone with destroy().
    static ClimateCtrlManager* create(SscHandleIf& ssc, HwuBrokerIf& broker, FaultsRegisterIf& faults);
    static ClimateCtrlManager* getInstance();
    static void destroy();
    ~ClimateCtrlManager() override;

    void update(std::uint32_t event) override;
    void timeout(TimerId timerId) override;
    void unitOperational(const FuncId_t& unit) override;
    void unitRemoved(const FuncId_t& unit) override;
    void unitRestarted(const FuncId_t&) override {}
    float getFlowFactor() const override;
    TempSensorList& getTempSensorList() override { return m_tempSensorList; }
    const ClimateCfg& getClimateCfg() override { return m_climateCfg; }
    void sendAirflowDemand(float demand) override;
    void setFanSpeeds(int internalSpeed, int externalSpeed) override;
    void getMaxAirflowDemand(float* demand) override;
    void updateBasicFanSpeed() override;
    // A secondary node's demand, as the inter-node climate brings it.
    void airflowDemandFromSecondary(std::uint32_t id, float demand);
    // The external node list tells the secondaries' air flow of its nodes.
    void attachExternalNodes(ExternalNodeCtrlIf* nodes);

    void addTempSensor(std::uint32_t funcType, std::int32_t setPointTenths, std::int16_t coolingGain,
                       std::int16_t timeConstant, std::uint32_t id, std::uint32_t hwId);
    void removeTempSensor(std::uint32_t id) { m_tempSensorList.removeTempSensor(id); }
    void removeTempSensorsOfClient(std::uint32_t hwId) { m_tempSensorList.removeTempSensorsOfClient(hwId); }
    void updateTemperature(std::uint32_t id, std::int32_t tenths) { m_tempSensorList.updateTemperature(id, tenths); }
    void setSensorFault(std::uint32_t id) { m_tempSensorList.setSensorFault(id); }
    void clearSensorFault(std::uint32_t id) { m_tempSensorList.clearSensorFault(id); }
    static std::int32_t getSampleTime() { return 5; }

    void configureFanGroup(std::uint32_t funcInst, std::uint32_t fanGroupNumber, std::uint32_t cabinetId);
    void deleteFanGroup(std::uint32_t funcInst);
    bool isFanGroupConfigured(std::uint32_t cabinetId, std::uint32_t group);
    void fanGroupsConnected(std::uint32_t cabinetId, std::uint8_t statusByte, bool secondScu, std::uint32_t funcType);
    void fanGroupsFailure(std::uint32_t cabinetId, std::uint8_t statusByte, bool secondScu, std::uint32_t funcType);
    void cluPresent(bool present);
    void fanGroupState(std::uint32_t cabinetId, std::uint32_t group, std::uint32_t state, std::uint32_t funcType);

    // A new record of cabinet parameters, in force from the next cabinet update.
    void setClimateCfg(const ClimateCfg& cfg) { m_climateCfg = cfg; }
    void setSupportSystemControl(bool primary) { m_supportSystemControl = primary; }
    bool isSupportSystemControl() const { return m_supportSystemControl; }
    void setDoorSwitchOf(DoorSwitchOf doorSwitchOf) { m_doorSwitchOf = std::move(doorSwitchOf); }
    bool isRegulationPossible();

    TemperatureRegulator& regulator() { return *m_pRegulator; }
    FanGroupControl& fanGroupControl() { return *m_pFanGroupControl; }
    ExternalNodeControl& externalNodeControl() { return *m_pExternalNodeControl; }

private:
    ClimateCtrlManager(SscHandleIf& ssc, HwuBrokerIf& broker, FaultsRegisterIf& faults);
    void performRegulation();
    void checkSensorStatus(std::uint32_t id);
    void handleClimateControlUpdate();
    std::int32_t placementFactorOf(std::uint32_t funcType) const;

    std::unique_ptr<TemperatureRegulator> m_pRegulator;
    std::unique_ptr<ExternalNodeControl> m_pExternalNodeControl;
    std::unique_ptr<FanGroupControl> m_pFanGroupControl;
    TempSensorList m_tempSensorList;
    std::unique_ptr<ScuConfigurator> m_pScuConfigurator;
    SscHandleIf* m_pSsc;
    HwuBrokerIf* m_pBroker;
    std::uint32_t m_climateSystemSent = ClimateCfg::kUnknownClimateSystem;
    bool m_tempSensorsDefined = false;
    ClimateCfg m_climateCfg;
    bool m_supportSystemControl = false;
    bool m_cabinetUpdated = false;
    DoorSwitchOf m_doorSwitchOf;
    ExternalNodeCtrlIf* m_pExternalNodes = nullptr;
};
