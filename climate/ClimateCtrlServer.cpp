#include "climate/ClimateCtrlServer.h"

#include "climate/ClimateCtrlManager.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"

using namespace ssc_trace;

namespace {

// Every registered sensor takes the next id; every registration (here one
// sensor of a unit) the next group id, which is the sensor's client.
std::uint32_t s_nextSensorId = 1;
std::uint16_t s_nextGroupId = 1;

ClimateCtrlManager* manager()
{
    ClimateCtrlManager* instance = ClimateCtrlManager::getInstance();
    if (instance == nullptr) SSC_TRACE(climateGroup(), kUnexpected, "ClimateCtrlServer: ClimateCtrlManager is not created");
    return instance;
}

} // namespace

ClimateCtrlServer::ClimateCtrlServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}

ClimateCtrlServer::~ClimateCtrlServer() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> ClimateCtrlServer::createSignalIterator()
{
    return makeSignalIterator<ClimateCtrlServer>(*this, {});
}

std::uint32_t ClimateCtrlServer::storeSensor(std::uint32_t funcType, std::int32_t setPoint, std::int32_t gain,
                                             std::int32_t tau)
{
    if (funcType == func_type::kScu)
        SSC_TRACE(climateGroup(), kFlow, "Storing TempSensor SCU");
    else
        SSC_TRACE(climateGroup(), kFlow,
                  "Storing TempSensor on %s, setpoint (max desired temp Tr*10) = %d, cooling gain (uI*100) = %d, time "
                  "const (tau*10) = %d",
                  func_type::text(funcType), setPoint, gain, tau);
    const std::uint32_t id = s_nextSensorId;
    if (ClimateCtrlManager* climate = manager())
        climate->addTempSensor(funcType, setPoint, static_cast<std::int16_t>(gain), static_cast<std::int16_t>(tau), id,
                               s_nextGroupId);
    ++s_nextSensorId;
    return id;
}

void ClimateCtrlServer::addTempSensor(std::uint32_t funcType, std::int32_t setPoint, std::int32_t gain, std::int32_t tau,
                                      std::uint32_t* id)
{
    const std::uint32_t stored = storeSensor(funcType, setPoint, gain, tau);
    ++s_nextGroupId;
    if (id != nullptr) *id = stored;
}

void ClimateCtrlServer::setSensorFault(std::uint32_t id)
{
    if (ClimateCtrlManager* climate = manager()) climate->setSensorFault(id);
}

void ClimateCtrlServer::clearSensorFault(std::uint32_t id)
{
    if (ClimateCtrlManager* climate = manager()) climate->clearSensorFault(id);
}

void ClimateCtrlServer::removeTempSensor(std::uint32_t id)
{
    if (ClimateCtrlManager* climate = manager()) climate->removeTempSensor(id);
}

// Units measure whole degrees; the sensors keep tenths.
void ClimateCtrlServer::updateTemperature(std::uint32_t id, std::int32_t degrees)
{
    if (ClimateCtrlManager* climate = manager()) climate->updateTemperature(id, degrees * 10);
}

bool ClimateCtrlServer::isFanGroupConfigured(std::uint32_t cabinetFuncInst, std::uint32_t group)
{
    ClimateCtrlManager* climate = ClimateCtrlManager::getInstance();
    return climate != nullptr && climate->isFanGroupConfigured(cabinetFuncInst, group);
}

void ClimateCtrlServer::fanGroupsConnected(std::uint32_t cabinetFuncInst, std::uint8_t statusByte, bool secondScu,
                                           std::uint32_t funcType)
{
    if (ClimateCtrlManager* climate = manager()) climate->fanGroupsConnected(cabinetFuncInst, statusByte, secondScu, funcType);
}

void ClimateCtrlServer::cluPresent(bool present)
{
    if (ClimateCtrlManager* climate = manager()) climate->cluPresent(present);
}

void ClimateCtrlServer::fanGroupsFailure(std::uint32_t cabinetFuncInst, std::uint8_t statusByte, bool secondScu,
                                         std::uint32_t funcType)
{
    if (ClimateCtrlManager* climate = manager()) climate->fanGroupsFailure(cabinetFuncInst, statusByte, secondScu, funcType);
}

void ClimateCtrlServer::fanGroupState(std::uint32_t cabinetFuncInst, std::uint32_t group, std::uint32_t state,
                                      std::uint32_t funcType)
{
    if (ClimateCtrlManager* climate = manager()) climate->fanGroupState(cabinetFuncInst, group, state, funcType);
}
