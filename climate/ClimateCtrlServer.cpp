#include "climate/ClimateCtrlServer.h"

#include "climate/ApcClimateSignals.h"
#include "climate/CciSignals.h"
#include "climate/TemperatureRegulator.h"
#include "climate/ClimateCtrlManager.h"
#include "frame/FuncType.h"
#include "frame/EC_LinkedListIterator.h"
#include "frame/OsService.h"
#include "frame/SscTrace.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace ssc_trace;
using namespace cci;

namespace {

// An air flow truncated into the signal's 16 bits; a value the regulator
// should never give (beyond the word, not a number) is held, not undefined.
std::int16_t airflowWord(float airflow)
{
    if (!(airflow == airflow)) return 0;
    return static_cast<std::int16_t>(std::clamp(airflow, -32767.0F, 32767.0F));
}

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
    static constexpr SignalTableRow<ClimateCtrlServer> kSignalTable[] = {
        {CCI_CONN_ESTABLISH_REQ, "CCI_CONN_ESTABLISH_REQ", &ClimateCtrlServer::handleConnEstablishReq},
        {CCI_CAPABILITY_REQ, "CCI_CAPABILITY_REQ", &ClimateCtrlServer::handleCapabilityReq},
        {CCI_REGISTER_TEMP_MEAS_REQ, "CCI_REGISTER_TEMP_MEAS_REQ", &ClimateCtrlServer::handleRegisterTempMeasReq},
        {CCI_DEREGISTER_TEMP_MEAS_REQ, "CCI_DEREGISTER_TEMP_MEAS_REQ", &ClimateCtrlServer::handleDeregisterTempMeasReq},
        {CCI_TEMP_MEAS_FWD, "CCI_TEMP_MEAS_FWD", &ClimateCtrlServer::handleTempMeasFwd},
        {apc::APC_AIRFLOW_CFM, "APC_AIRFLOW_CFM", &ClimateCtrlServer::handleAirflowCfm},
        {apc::APC_CLIMATE_SUBSCRIBE_REQ, "APC_CLIMATE_SUBSCRIBE_REQ", &ClimateCtrlServer::handleClimateSubscribeReq},
        {apc::APC_CLIMATE_SUBSCRIBE_CFM, "APC_CLIMATE_SUBSCRIBE_CFM", &ClimateCtrlServer::handleClimateSubscribeCfm},
        {apc::APC_CLIMATE_SYSTEM_CONFIG_IND, "APC_CLIMATE_SYSTEM_CONFIG_IND",
         &ClimateCtrlServer::handleClimateSystemConfigInd},
        {apc::APC_AIRFLOW_REQ, "APC_AIRFLOW_REQ", &ClimateCtrlServer::handleAirflowReq},
    };
    return makeSignalIterator(*this, kSignalTable);
}

namespace {

// The rows of `rowSize` bytes that follow a layout of `headSize` and that
// the signal really holds, at most `announced`.
std::size_t rowsHeld(ose::Signal* signal, std::size_t headSize, std::size_t rowSize, std::size_t announced)
{
    const std::size_t size = OsService::sigsize(signal);
    return size <= headSize ? 0 : std::min(announced, (size - headSize) / rowSize);
}

const std::uint8_t* bytesOf(ose::Signal* signal) { return reinterpret_cast<const std::uint8_t*>(signal); }

std::uint16_t u16At(const std::uint8_t* bytes) { return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]); }

} // namespace

// ---- the climate control interface ----

template <typename T>
void ClimateCtrlServer::reply(T& body, ose::SIGSELECT sigNo, std::uint32_t clientRef, ose::PROCESS to)
{
    auto& header = reinterpret_cast<CCI_HEADER_S&>(body);
    header.sigNo = sigNo;
    header.clientRef = clientRef;
    ose::Signal* signal = OsService::alloc(sizeof(T), sigNo);
    std::memcpy(static_cast<void*>(signal), &body, sizeof(T));
    m_pDispatcher->sendSignal(signal, to);
}

void ClimateCtrlServer::replyRej(ose::SIGSELECT sigNo, std::uint32_t clientRef, std::uint32_t reason, ose::PROCESS to)
{
    CCI_REJ_S rej{};
    rej.reason = reason;
    reply(rej, sigNo, clientRef, to);
}

// Only revision 1 is served; a client may offer several, of which the
// first five are looked at.
void ClimateCtrlServer::handleConnEstablishReq(ose::Signal* signal)
{
    const auto* request = OsService::view<CCI_CONN_ESTABLISH_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "CCI_CONN_ESTABLISH_REQ too short, dropped");
        return;
    }
    const std::uint32_t clientRef = request->header.clientRef;
    const ose::PROCESS sender = m_pDispatcher->getSender(signal);
    const std::size_t offered = rowsHeld(signal, sizeof *request, 2, std::min<std::size_t>(request->count, kMaxRevisionsLooked));
    for (std::size_t index = 0; index < offered; ++index) {
        if (u16At(bytesOf(signal) + sizeof *request + 2 * index) != kRevision) continue;
        CCI_CONN_ESTABLISH_CFM_S cfm{};
        cfm.revision = kRevision;
        reply(cfm, CCI_CONN_ESTABLISH_CFM, clientRef, sender);
        return;
    }
    SSC_TRACE(climateGroup(), kUnexpected, "Protocol revision %d not supported by clientRef %d", kRevision,
              static_cast<int>(clientRef));
    replyRej(CCI_CONN_ESTABLISH_REJ, clientRef, kRevisionNotSupported, sender);
}

// The capabilities are not read, only their size is weighed: 10 bytes and
// each row's length plus 2. A row the signal does not hold is not counted.
void ClimateCtrlServer::handleCapabilityReq(ose::Signal* signal)
{
    const auto* request = OsService::view<CCI_CAPABILITY_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "CCI_CAPABILITY_REQ too short, dropped");
        return;
    }
    constexpr std::size_t kRowSize = 6;
    const std::size_t rows = rowsHeld(signal, sizeof *request, kRowSize, request->count);
    if (rows < request->count)
        SSC_TRACE(climateGroup(), kUnexpected, "CCI_CAPABILITY_REQ holds %d of its %d rows", static_cast<int>(rows),
                  static_cast<int>(request->count));
    std::size_t size = 10;
    for (std::size_t index = 0; index < rows; ++index) size += u16At(bytesOf(signal) + 12 + kRowSize * index) + 2U;
    const ose::PROCESS sender = m_pDispatcher->getSender(signal);
    if (size > kMaxCapabilitySize) {
        SSC_TRACE(climateGroup(), kUnexpected, "CCI_CAPABILITY_REQ signal size is too big");
        replyRej(CCI_CAPABILITY_REJ, request->header.clientRef, kCapabilitiesTooBig, sender);
        return;
    }
    CCI_CAPABILITY_CFM_S cfm{};
    reply(cfm, CCI_CAPABILITY_CFM, request->header.clientRef, sender);
}

void ClimateCtrlServer::handleRegisterTempMeasReq(ose::Signal* signal)
{
    const auto* request = OsService::view<CCI_REGISTER_TEMP_MEAS_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "CCI_REGISTER_TEMP_MEAS_REQ too short, dropped");
        return;
    }
    const std::uint32_t clientRef = request->header.clientRef;
    const ose::PROCESS sender = m_pDispatcher->getSender(signal);
    if (request->hwType > kMaxHwType) {
        SSC_TRACE(climateGroup(), kUnexpected, "Trying to configure unsuppored HW type");
        replyRej(CCI_REGISTER_TEMP_MEAS_REJ, clientRef, kHwTypeNotSupported, sender);
        return;
    }
    if (request->count > kMaxSensors) {
        SSC_TRACE(climateGroup(), kUnexpected, "Trying to configure too many hotspot sensors");
        replyRej(CCI_REGISTER_TEMP_MEAS_REJ, clientRef, kTooManySensors, sender);
        return;
    }
    const std::size_t rows = rowsHeld(signal, sizeof *request, sizeof(CCI_SENSOR_S), request->count);
    if (rows < request->count) {
        SSC_TRACE(climateGroup(), kUnexpected, "CCI_REGISTER_TEMP_MEAS_REQ holds %d of its %d sensors, dropped",
                  static_cast<int>(rows), static_cast<int>(request->count));
        return;
    }
    static constexpr std::array<std::uint32_t, kMaxHwType + 1> kFuncTypes{func_type::kCbu, func_type::kRax,
                                                                          func_type::kRu, func_type::kTx, func_type::kDu};
    const std::uint32_t funcType = kFuncTypes[request->hwType];
    const auto* sensors = reinterpret_cast<const CCI_SENSOR_S*>(bytesOf(signal) + sizeof *request);
    for (std::size_t index = 0; index < rows; ++index)
        storeSensor(funcType, sensors[index].maxTemp / 10, sensors[index].gain, sensors[index].tau);
    CCI_REGISTER_TEMP_MEAS_CFM_S cfm{};
    cfm.sampleTime = static_cast<std::uint16_t>(ClimateCtrlManager::getSampleTime());
    cfm.groupId = s_nextGroupId;
    reply(cfm, CCI_REGISTER_TEMP_MEAS_CFM, clientRef, sender);
    ++s_nextGroupId;
}

void ClimateCtrlServer::handleDeregisterTempMeasReq(ose::Signal* signal)
{
    const auto* request = OsService::view<CCI_DEREGISTER_TEMP_MEAS_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "CCI_DEREGISTER_TEMP_MEAS_REQ too short, dropped");
        return;
    }
    if (ClimateCtrlManager* climate = manager()) climate->removeTempSensorsOfClient(request->groupId);
    CCI_GROUP_S cfm{};
    cfm.groupId = request->groupId;
    reply(cfm, CCI_DEREGISTER_TEMP_MEAS_CFM, request->header.clientRef, m_pDispatcher->getSender(signal));
}

// Hundredths become tenths by truncation; no more temperatures are read
// than a registration can have.
void ClimateCtrlServer::handleTempMeasFwd(ose::Signal* signal)
{
    const auto* request = OsService::view<CCI_TEMP_MEAS_FWD_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "CCI_TEMP_MEAS_FWD too short, dropped");
        return;
    }
    const std::size_t count =
        rowsHeld(signal, sizeof *request, 2, std::min<std::size_t>(request->count, kMaxSensors));
    std::array<std::int32_t, kMaxSensors> tenths{};
    for (std::size_t index = 0; index < count; ++index)
        tenths[index] = static_cast<std::int16_t>(u16At(bytesOf(signal) + sizeof *request + 2 * index)) / 10;
    ClimateCtrlManager* climate = manager();
    TempSensorList* sensors = climate != nullptr ? &climate->getTempSensorList() : nullptr;
    // A group without sensors, or a measurement that does not match its
    // registration, is refused.
    const bool known = sensors != nullptr && sensors->countOfClient(request->groupId) != 0;
    const bool taken = known && sensors->updateTemperatures(request->groupId, std::span(tenths.data(), count));
    if (taken && count == request->count) return;
    CCI_GROUP_S rej{};
    rej.groupId = request->groupId;
    reply(rej, CCI_TEMP_MEAS_REJ, request->header.clientRef, m_pDispatcher->getSender(signal));
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

// ---- the secondary nodes' climate, on the primary ----

void ClimateCtrlServer::sendClimateSystemTo(const Subscriber& subscriber, std::uint16_t climateSystem)
{
    apc::APC_CLIMATE_SYSTEM_CONFIG_IND_S ind{};
    ind.sigNo = apc::APC_CLIMATE_SYSTEM_CONFIG_IND;
    ind.clientRef = subscriber.word1;
    ind.serverRef = subscriber.word2;
    ind.climateSystem = climateSystem;
    ose::Signal* signal = OsService::alloc(sizeof ind, apc::APC_CLIMATE_SYSTEM_CONFIG_IND);
    std::memcpy(static_cast<void*>(signal), &ind, sizeof ind);
    m_pDispatcher->sendSignal(signal, subscriber.pid);
}

void ClimateCtrlServer::sendClimateSystem(bool isZero)
{
    EC_LinkedListIterator<Subscriber> walk(m_climateSubscribers);
    while (const Subscriber* subscriber = walk.next()) sendClimateSystemTo(*subscriber, isZero ? 0 : 1);
}

// A second subscription of the same client gets both answers again.
void ClimateCtrlServer::handleClimateSubscribeReq(ose::Signal* signal)
{
    const auto* request = OsService::view<apc::APC_CLIMATE_SUBSCRIBE_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "APC_CLIMATE_SUBSCRIBE_REQ too short, dropped");
        return;
    }
    const Subscriber subscriber{m_pDispatcher->getSender(signal), request->clientRef, request->serverRef};
    if (!m_climateSubscribers.contains(subscriber)) m_climateSubscribers.add(subscriber);
    apc::APC_CLIMATE_SUBSCRIBE_S cfm{};
    cfm.sigNo = apc::APC_CLIMATE_SUBSCRIBE_CFM;
    cfm.clientRef = subscriber.word1;
    cfm.serverRef = subscriber.word2;
    ose::Signal* answer = OsService::alloc(sizeof cfm, apc::APC_CLIMATE_SUBSCRIBE_CFM);
    std::memcpy(static_cast<void*>(answer), &cfm, sizeof cfm);
    m_pDispatcher->sendSignal(answer, subscriber.pid);
    ClimateCtrlManager* climate = ClimateCtrlManager::getInstance();
    sendClimateSystemTo(subscriber, climate != nullptr && climate->getClimateCfg().climateSystem != 0 ? 1 : 0);
}

void ClimateCtrlServer::handleClimateSubscribeCfm(ose::Signal* /*signal*/) {}

// On a secondary node: the primary's climate system becomes this cabinet's.
void ClimateCtrlServer::handleClimateSystemConfigInd(ose::Signal* signal)
{
    const auto* ind = OsService::view<apc::APC_CLIMATE_SYSTEM_CONFIG_IND_S>(signal);
    if (ind == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "APC_CLIMATE_SYSTEM_CONFIG_IND too short, dropped");
        return;
    }
    ClimateCtrlManager* climate = manager();
    if (climate == nullptr) return;
    ClimateCfg cfg = climate->getClimateCfg();
    cfg.climateSystem = ind->climateSystem != 0 ? 1 : 0;
    climate->setClimateCfg(cfg);
}

void ClimateCtrlServer::handleAirflowReq(ose::Signal* signal)
{
    const auto* request = OsService::view<apc::APC_AIRFLOW_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "APC_AIRFLOW_REQ too short, dropped");
        return;
    }
    ClimateCtrlManager* climate = manager();
    const float previous = climate != nullptr ? climate->regulator().previousAirflow() : 0.0f;
    const std::int16_t demand = request->airflow;
    apc::APC_AIRFLOW_S answer{};
    answer.clientRef = request->clientRef;
    answer.serverRef = request->serverRef;
    if (demand >= -apc::kMaxDemand && demand <= apc::kMaxDemand && climate != nullptr) {
        climate->airflowDemandFromSecondary(request->serverRef, static_cast<float>(demand));
        answer.sigNo = apc::APC_AIRFLOW_CFM;
        answer.airflow = airflowWord(climate->isRegulationPossible() ? previous : static_cast<float>(demand));
    } else {
        answer.sigNo = apc::APC_AIRFLOW_REJ;
        answer.airflow = airflowWord(previous);
        answer.error = apc::kDemandOutOfRange;
    }
    const ose::SIGSELECT sigNo = answer.sigNo;
    ose::Signal* reply = OsService::alloc(sizeof answer, sigNo);
    std::memcpy(static_cast<void*>(reply), &answer, sizeof answer);
    m_pDispatcher->sendSignal(reply, m_pDispatcher->getSender(signal));
}

// On a secondary node: the air flow the primary runs.
void ClimateCtrlServer::handleAirflowCfm(ose::Signal* signal)
{
    const auto* cfm = OsService::view<apc::APC_AIRFLOW_S>(signal);
    if (cfm == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "APC_AIRFLOW_CFM too short, dropped");
        return;
    }
    if (ClimateCtrlManager* climate = manager()) climate->regulator().setPreviousAirflow(static_cast<float>(cfm->airflow));
}
