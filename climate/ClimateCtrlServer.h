#pragma once
// The climate control interface: other software registers temperature
// sensors and sends their measurements; secondary nodes send their air
// flow demand; the units of the core reach the climate manager through
// ClimateCtrlIf.
// Reachable from other processes by the name "ssc_climate_control_server". It stands in the
// core's object graph with its name and phantom; its signals come with the
// interface they belong to.

#include "climate/ClimateCtrlIf.h"
#include "frame/EC_LinkedList.h"
#include "frame/SSC_Server.h"

class ClimateCtrlServer : public ClimateCtrlIf, public SSC_Server {
public:
    explicit ClimateCtrlServer(SignalDispatcherIf* dispatcher);
    ~ClimateCtrlServer() override;
    ClimateCtrlServer(const ClimateCtrlServer&) = delete;
    ClimateCtrlServer& operator=(const ClimateCtrlServer&) = delete;

    const char* getProcessName() const override { return "ssc_climate_control_server"; }
    const char* getServerName() const override { return "ClimateCtrlServer"; }
    std::unique_ptr<SignalIterator> createSignalIterator() override;

    void setSensorFault(std::uint32_t id) override;
    void clearSensorFault(std::uint32_t id) override;
    void addTempSensor(std::uint32_t funcType, std::int32_t setPoint, std::int32_t gain, std::int32_t tau,
                       std::uint32_t* id) override;
    void removeTempSensor(std::uint32_t id) override;
    void updateTemperature(std::uint32_t id, std::int32_t degrees) override;
    bool isFanGroupConfigured(std::uint32_t cabinetFuncInst, std::uint32_t group) override;
    void fanGroupsConnected(std::uint32_t cabinetFuncInst, std::uint8_t statusByte, bool secondScu,
                            std::uint32_t funcType) override;
    void cluPresent(bool present) override;
    void fanGroupsFailure(std::uint32_t cabinetFuncInst, std::uint8_t statusByte, bool secondScu,
                          std::uint32_t funcType) override;
    void fanGroupState(std::uint32_t cabinetFuncInst, std::uint32_t group, std::uint32_t state,
                       std::uint32_t funcType) override;

    // To each secondary that subscribed: whether the cabinet has a climate
    // system (0 or 1).
    void sendClimateSystem(bool isZero);

private:
    // Secondary nodes subscribed to the climate system: pid, clientRef (word1), serverRef (word2).
    EC_LinkedList<Subscriber> m_climateSubscribers;

    void handleConnEstablishReq(ose::Signal* signal);
    void handleCapabilityReq(ose::Signal* signal);
    void handleRegisterTempMeasReq(ose::Signal* signal);
    void handleDeregisterTempMeasReq(ose::Signal* signal);
    void handleTempMeasFwd(ose::Signal* signal);
    void handleClimateSubscribeReq(ose::Signal* signal);
    void handleClimateSubscribeCfm(ose::Signal* signal);
    void handleClimateSystemConfigInd(ose::Signal* signal);
    void handleAirflowReq(ose::Signal* signal);
    void handleAirflowCfm(ose::Signal* signal);
    void sendClimateSystemTo(const Subscriber& subscriber, std::uint16_t climateSystem);
    template <typename T>
    void reply(T& body, ose::SIGSELECT sigNo, std::uint32_t clientRef, ose::PROCESS to);
    void replyRej(ose::SIGSELECT sigNo, std::uint32_t clientRef, std::uint32_t reason, ose::PROCESS to);

    // The id the sensor got.
    static std::uint32_t storeSensor(std::uint32_t funcType, std::int32_t setPoint, std::int32_t gain, std::int32_t tau);
};
