#pragma once
// The root of the core's object graph as its objects see it: plain getters.
// Nobody deletes the graph through this interface.

class EquipmentManagerIf;
class PowerCtrlManager;
class ClimateCtrlServer;
class AlarmCtrlServer;
class HWU_Broker;
class FanGroupEventIf;
class CabinetCtrlIf;
class CabinetObserverIf;
class CabinetFacade;
class EFuseCtrlIf;

class SscHandleIf {
public:
    virtual EquipmentManagerIf* getEquipmentManager() = 0;
    virtual PowerCtrlManager* getPowerCtrlManager() = 0;
    virtual ClimateCtrlServer* getClimateCtrlServer() = 0;
    virtual AlarmCtrlServer* getAlarmCtrlServer() = 0;
    virtual HWU_Broker* getHwuBroker() = 0;
    virtual FanGroupEventIf* getFanGroupEventHandler() = 0;
    virtual CabinetCtrlIf* getCabinetCtrl() = 0;
    virtual CabinetObserverIf* getCabinetObserver() = 0;
    virtual CabinetFacade* getCabinetFacade() = 0;
    virtual EFuseCtrlIf* getEFuseCtrl() = 0;

protected:
    ~SscHandleIf() = default;
};
