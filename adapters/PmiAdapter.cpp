#include "adapters/PmiAdapter.h"

#include "adapters/PmiConverter.h"
#include "adapters/SignalTrace.h"
#include "frame/EC_LinkedListIterator.h"
#include "frame/OsService.h"
#include "frame/SscTrace.h"
#include "power/BatteryBackupEventIf.h"
#include "power/BatteryBackupFacadeIf.h"
#include "power/PowerCtrlManagerIf.h"
#include "power/PowerDistributionFacadeIf.h"
#include "power/PowerSupplyFacadeIf.h"

#include <algorithm>
#include <cstring>
#include <string>

using namespace pmi;
using namespace ssc_trace;

namespace {

// faultType of the power distribution's and the power supply's faults.
constexpr std::uint16_t kFaultMainLoadDisconnected = 7;
constexpr std::uint16_t kFaultPriorityLoadDisconnected = 8;
constexpr std::uint16_t kFaultPduMainTemperatureHigh = 9;
constexpr std::uint16_t kFaultNoPsuUsable = 10;
constexpr std::uint16_t kFaultSystemOvervoltage = 11;
constexpr std::uint16_t kFaultSystemUndervoltage = 12;

// A battery test's error that means the request was taken although no test
// runs: it is confirmed, with a started event behind it.
constexpr std::uint32_t kErrorTakenWithoutTest = 5;
// The initiation of a test the operator asked for.
constexpr std::uint32_t kInitiationOnDemand = 4;
constexpr std::uint32_t kInitiationOnDemandForced = 5;

constexpr std::uint32_t kObjectId = 0; // the core's power objects are one each

std::string headline(const char* name, const char* what) { return std::string(name) + what; }

// The smallest request that holds its object's configuration.
std::size_t configSize(std::uint16_t objectType)
{
    switch (objectType) {
    case kBatteryBackup: return sizeof(PMI_HEADER_S) + sizeof(PMI_BATTERY_BACKUP_CONFIG_S);
    case kPowerDistribution: return sizeof(PMI_HEADER_S) + sizeof(PMI_POWER_DISTRIBUTION_CONFIG_S);
    default: return sizeof(PMI_HEADER_S) + sizeof(PMI_POWER_SUPPLY_CONFIG_S);
    }
}

template <typename T>
T configOf(ose::Signal* signal)
{
    T config;
    std::memcpy(&config, reinterpret_cast<const char*>(signal) + sizeof(PMI_HEADER_S), sizeof config);
    return config;
}

} // namespace

PmiAdapter::PmiAdapter(SignalDispatcherIf* dispatcher, const Facades& facades)
    : AdapterBase(dispatcher), m_facades(facades)
{
}

PmiAdapter::~PmiAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> PmiAdapter::createSignalIterator()
{
    static constexpr SignalTableRow<PmiAdapter> kSignalTable[] = {
        {PMI_SET_CONFIG_REQ, "PMI_SET_CONFIG_REQ", &PmiAdapter::handleSetConfigReq},
        {PMI_DELETE_CONFIG_REQ, "PMI_DELETE_CONFIG_REQ", &PmiAdapter::handleDeleteConfigReq},
        {PMI_SUBSCRIBE_RESOURCE_DATA_REQ, "PMI_SUBSCRIBE_RESOURCE_DATA_REQ",
         &PmiAdapter::handleSubscribeResourceDataReq},
        {PMI_UNSUBSCRIBE_RESOURCE_DATA_REQ, "PMI_UNSUBSCRIBE_RESOURCE_DATA_REQ",
         &PmiAdapter::handleUnsubscribeResourceDataReq},
        {PMI_GET_RESOURCE_DATA_REQ, "PMI_GET_RESOURCE_DATA_REQ", &PmiAdapter::handleGetResourceDataReq},
        {PMI_ACTION_REQ, "PMI_ACTION_REQ", &PmiAdapter::handleActionReq},
    };
    return makeSignalIterator(*this, kSignalTable);
}

// ---- receiving and sending ----

const PMI_HEADER_S* PmiAdapter::receive(ose::Signal* signal, const char* name, ObjectSubscriber& client, bool anyObject)
{
    const auto* header = OsService::view<PMI_HEADER_S>(signal);
    if (header == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "%s too short, dropped", name);
        return nullptr;
    }
    client = ObjectSubscriber{header->objectId, header->objectType, header->clientRef, m_pDispatcher->getSender(signal)};
    signal_trace::pmi(headline(name, " signal is received.").c_str(), client.pid, client.clientRef, client.objectType,
                      client.objectId);
    // Only the three power objects exist; the arrival trace is all that
    // another object type leaves.
    if (!anyObject && client.objectType > kPowerSupply) return nullptr;
    return header;
}

void PmiAdapter::send(const void* body, std::size_t size, ose::SIGSELECT sigNo, const ObjectSubscriber& to,
                      const char* name)
{
    ose::Signal* signal = OsService::alloc(static_cast<ose::OSBUFSIZE>(size), sigNo);
    std::memcpy(static_cast<void*>(signal), body, size);
    signal_trace::pmi(name, to.pid, to.clientRef, to.objectType, to.objectId);
    m_pDispatcher->sendSignal(signal, to.pid);
}

namespace {

PMI_HEADER_S headerFor(ose::SIGSELECT sigNo, const ObjectSubscriber& to, std::uint16_t word14)
{
    PMI_HEADER_S header{};
    header.sigNo = sigNo;
    header.clientRef = to.clientRef;
    header.objectId = to.objectId;
    header.objectType = to.objectType;
    header.word14 = word14;
    return header;
}

} // namespace

void PmiAdapter::sendHeader(ose::SIGSELECT sigNo, const ObjectSubscriber& to, const char* name, std::uint16_t word14)
{
    const PMI_HEADER_S header = headerFor(sigNo, to, word14);
    send(&header, sizeof header, sigNo, to, headline(name, " signal is sent.").c_str());
}

// The object's present values: the battery backup's status, the power
// supply's system voltage; the power distribution has none.
void PmiAdapter::sendResource(ose::SIGSELECT sigNo, const ObjectSubscriber& to, const char* name)
{
    PMI_RESOURCE_DATA_S body{};
    body.header = headerFor(sigNo, to, 0);
    if (to.objectType == kBatteryBackup && m_facades.batteryBackup != nullptr) {
        BatteryBackupStatus status;
        m_facades.batteryBackup->getBatteryBackupStatus(&status);
        const PMI_BATTERY_BACKUP_RESOURCE_S resource = pmi_converter::batteryBackupResourceOf(status);
        std::memcpy(body.data, &resource, sizeof resource);
    } else if (to.objectType == kPowerSupply) {
        const std::int32_t voltage = m_facades.powerSupply != nullptr ? m_facades.powerSupply->getSystemVoltage()
                                                                       : PowerSupplyFacadeIf::kNoSystemVoltage;
        const PMI_POWER_SUPPLY_RESOURCE_S resource = pmi_converter::powerSupplyResourceOf(voltage);
        std::memcpy(body.data, &resource, sizeof resource);
    }
    send(&body, sizeof body, sigNo, to, headline(name, " signal is sent.").c_str());
}

void PmiAdapter::sendActionRej(const ObjectSubscriber& to, std::uint16_t actionType, std::uint16_t errorCode)
{
    PMI_ACTION_REJ_S body{};
    body.header = headerFor(PMI_ACTION_REJ, to, actionType);
    body.errorCode = errorCode;
    send(&body, sizeof body, PMI_ACTION_REJ, to, "PMI_ACTION_REJ signal is sent.");
}

void PmiAdapter::sendBatteryEvent(const ObjectSubscriber& to, std::uint16_t eventType, const void* data, std::size_t size)
{
    PMI_BATTERY_EVENT_IND_S body{};
    body.header = headerFor(PMI_BATTERY_EVENT_IND, to, eventType);
    std::memcpy(body.data, data, std::min(size, sizeof body.data));
    SSC_TRACE(swuGroup(), kFlow, "eventType = %d", static_cast<int>(eventType));
    send(&body, sizeof body, PMI_BATTERY_EVENT_IND, to, "PMI_BATTERY_EVENT_IND signal is sent.");
}

void PmiAdapter::distributeBatteryEvent(std::uint16_t eventType, const void* data, std::size_t size)
{
    EC_LinkedListIterator<ObjectSubscriber> walk(m_configHolders);
    while (const ObjectSubscriber* row = walk.next())
        if (row->objectType == kBatteryBackup && row->objectId == kObjectId) sendBatteryEvent(*row, eventType, data, size);
}

// ---- configuration ----

void PmiAdapter::handleSetConfigReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "PMI_SET_CONFIG_REQ", client) == nullptr) return;
    if (OsService::sigsize(signal) < configSize(client.objectType)) {
        SSC_TRACE(swuGroup(), kUnexpected, "PMI_SET_CONFIG_REQ shorter than the configuration of objectType %d, dropped",
                  static_cast<int>(client.objectType));
        return;
    }
    configure(client, signal);
}

// The battery backup is confirmed before it is converted: its record is the
// largest and its client waits on nothing that the conversion changes.
void PmiAdapter::configure(const ObjectSubscriber& client, ose::Signal* signal)
{
    switch (client.objectType) {
    case kPowerDistribution: {
        const PowerDistributionCfg cfg = pmi_converter::powerDistributionCfgOf(configOf<PMI_POWER_DISTRIBUTION_CONFIG_S>(signal));
        cfg.print();
        if (m_facades.powerDistribution != nullptr) m_facades.powerDistribution->updatePowerDistribution(cfg);
        addConfigHolder(client);
        sendHeader(PMI_SET_CONFIG_CFM, client, "PMI_SET_CONFIG_CFM");
        break;
    }
    case kPowerSupply: {
        const auto values = pmi_converter::powerSupplyValuesOf(configOf<PMI_POWER_SUPPLY_CONFIG_S>(signal));
        SSC_TRACE(swuGroup(), kFlow, "nominalVoltage = %d, overvoltage cease %d raise %d, undervoltage cease %d raise %d",
                  values[4], values[5], values[6], values[7], values[8]);
        if (m_facades.powerSupply != nullptr) m_facades.powerSupply->updatePowerSupply(values.data());
        addConfigHolder(client);
        sendHeader(PMI_SET_CONFIG_CFM, client, "PMI_SET_CONFIG_CFM");
        break;
    }
    default: {
        addConfigHolder(client);
        sendHeader(PMI_SET_CONFIG_CFM, client, "PMI_SET_CONFIG_CFM");
        const BatteryBackupCfg cfg = pmi_converter::batteryBackupCfgOf(configOf<PMI_BATTERY_BACKUP_CONFIG_S>(signal));
        cfg.print();
        if (m_facades.batteryBackup != nullptr) m_facades.batteryBackup->updateBatteryParameters(cfg);
        break;
    }
    }
}

// Each object's delete goes to its own facade: the power supply's or the
// power distribution's delete must not cease the battery backup's faults.
void PmiAdapter::handleDeleteConfigReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "PMI_DELETE_CONFIG_REQ", client) == nullptr) return;
    if (client.objectType == kBatteryBackup && m_facades.batteryBackup != nullptr)
        m_facades.batteryBackup->deleteBatteryBackup();
    if (client.objectType == kPowerDistribution && m_facades.powerDistribution != nullptr)
        m_facades.powerDistribution->deletePowerDistribution();
    if (client.objectType == kPowerSupply && m_facades.powerSupply != nullptr) m_facades.powerSupply->deletePowerSupply();
    removeDataSubscriber(client);
    removeConfigHolder(client);
    sendHeader(PMI_DELETE_CONFIG_CFM, client, "PMI_DELETE_CONFIG_CFM");
}

// ---- resource data ----

void PmiAdapter::handleSubscribeResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "PMI_SUBSCRIBE_RESOURCE_DATA_REQ", client) == nullptr) return;
    if (!findConfigHolder(client)) {
        SSC_TRACE(swuGroup(), kUnexpected,
                  "handleSubscribeResourceDataReq, Could not find configuration data for, objectId: %d, objectType: %d",
                  static_cast<int>(client.objectId), static_cast<int>(client.objectType));
        sendHeader(PMI_SUBSCRIBE_RESOURCE_DATA_REJ, client, "PMI_SUBSCRIBE_RESOURCE_DATA_REJ", kNotConfigured);
        return;
    }
    sendHeader(PMI_SUBSCRIBE_RESOURCE_DATA_CFM, client, "PMI_SUBSCRIBE_RESOURCE_DATA_CFM");
    // The first update reaches the new subscriber before its row exists, so
    // that an event in between cannot send it twice.
    sendResource(PMI_RESOURCE_DATA_UPDATE_IND, client, "PMI_RESOURCE_DATA_UPDATE_IND");
    addDataSubscriber(client);
}

void PmiAdapter::handleUnsubscribeResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "PMI_UNSUBSCRIBE_RESOURCE_DATA_REQ", client) == nullptr) return;
    removeDataSubscriber(client);
    sendHeader(PMI_UNSUBSCRIBE_RESOURCE_DATA_CFM, client, "PMI_UNSUBSCRIBE_RESOURCE_DATA_CFM");
}

void PmiAdapter::handleGetResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "PMI_GET_RESOURCE_DATA_REQ", client) == nullptr) return;
    if (!findConfigHolder(client)) {
        SSC_TRACE(swuGroup(), kUnexpected,
                  "handleGetResourceDataReq, Could not find configuration data for, objectId: %d, objectType: %d",
                  static_cast<int>(client.objectId), static_cast<int>(client.objectType));
        sendHeader(PMI_GET_RESOURCE_DATA_REJ, client, "PMI_GET_RESOURCE_DATA_REJ", kNotConfigured);
        return;
    }
    sendResource(PMI_GET_RESOURCE_DATA_CFM, client, "PMI_GET_RESOURCE_DATA_CFM");
}

void PmiAdapter::resourceUpdate(std::uint16_t objectType)
{
    EC_LinkedListIterator<ObjectSubscriber> walk(m_dataSubscribers);
    while (const ObjectSubscriber* row = walk.next())
        if (row->objectType == objectType && row->objectId == kObjectId)
            sendResource(PMI_RESOURCE_DATA_UPDATE_IND, *row, "PMI_RESOURCE_DATA_UPDATE_IND");
}

// ---- actions ----

// Actions are the battery backup's whatever object the request names: the
// answers echo the request's address.
void PmiAdapter::handleActionReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "PMI_ACTION_REQ", client, true) == nullptr) return;
    const auto* request = OsService::view<PMI_ACTION_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "PMI_ACTION_REQ shorter than its parameter, dropped");
        return;
    }
    const std::uint16_t action = request->header.word14;
    BatteryBackupFacadeIf* battery = m_facades.batteryBackup;
    if (battery == nullptr) {
        SSC_TRACE(swuGroup(), kError, "actionType = %d, no battery backup facade", static_cast<int>(action));
        sendActionRej(client, action, kActionErrorOther);
        return;
    }
    switch (action) {
    case kStartEqualizeCharging: {
        const std::uint32_t result = battery->startEqualizeCharging();
        SSC_TRACE(swuGroup(), kFlow, "actionType = %d, startEqualizeCharging: %d", action, static_cast<int>(result));
        if (result != 0) sendActionRej(client, action, kActionErrorEqualizeRefused);
        else sendHeader(PMI_ACTION_CFM, client, "PMI_ACTION_CFM", action);
        break;
    }
    case kStopEqualizeCharging:
        SSC_TRACE(swuGroup(), kFlow, "actionType = %d, stopEqualizeCharging", action);
        battery->stopEqualizeCharging();
        sendHeader(PMI_ACTION_CFM, client, "PMI_ACTION_CFM", action);
        break;
    case kStartBatteryTest: startBatteryTest(client, request->parameter); break;
    case kStopBatteryTest: stopBatteryTest(client); break;
    case kReadBatteryTestStatus: readBatteryTestStatus(client); break;
    default:
        SSC_TRACE(swuGroup(), kUnexpected, "actionType = %d, unknown action", static_cast<int>(action));
        sendActionRej(client, action, kActionErrorOther);
        break;
    }
}

void PmiAdapter::startBatteryTest(const ObjectSubscriber& client, std::uint16_t parameter)
{
    const bool forced = parameter != 0;
    std::uint32_t error = 0;
    const bool started = m_facades.batteryBackup->startBatteryTest(forced, &error);
    SSC_TRACE(swuGroup(), kFlow, "actionType = %d, startBatteryTest forced %d: %d, error %d", kStartBatteryTest,
              static_cast<int>(forced), static_cast<int>(started), static_cast<int>(error));
    if (started) {
        sendHeader(PMI_ACTION_CFM, client, "PMI_ACTION_CFM", kStartBatteryTest);
        return;
    }
    if (error != kErrorTakenWithoutTest) {
        sendActionRej(client, kStartBatteryTest, pmi_converter::actionErrorOf(error));
        return;
    }
    sendHeader(PMI_ACTION_CFM, client, "PMI_ACTION_CFM", kStartBatteryTest);
    // To the requester alone: the others hear of a test when one starts.
    const ose::be_u32 initiation = forced ? kInitiationOnDemandForced : kInitiationOnDemand;
    ObjectSubscriber requester = client;
    requester.objectType = kBatteryBackup;
    sendBatteryEvent(requester, kTestStarted, &initiation, sizeof initiation);
}

void PmiAdapter::stopBatteryTest(const ObjectSubscriber& client)
{
    std::uint32_t error = 0;
    const bool stopped = m_facades.batteryBackup->stopBatteryTest(&error);
    SSC_TRACE(swuGroup(), kFlow, "actionType = %d, stopBatteryTest: %d, error %d", kStopBatteryTest,
              static_cast<int>(stopped), static_cast<int>(error));
    if (stopped) {
        sendHeader(PMI_ACTION_CFM, client, "PMI_ACTION_CFM", kStopBatteryTest);
        return;
    }
    if (error != kErrorTakenWithoutTest) {
        sendActionRej(client, kStopBatteryTest, pmi_converter::actionErrorOf(error));
        return;
    }
    sendHeader(PMI_ACTION_CFM, client, "PMI_ACTION_CFM", kStopBatteryTest);
    batteryTestStarted(m_facades.batteryBackup->getBatteryTestResults());
}

void PmiAdapter::readBatteryTestStatus(const ObjectSubscriber& client)
{
    std::int32_t words[4] = {};
    if (!m_facades.batteryBackup->getBatteryTestProgress(words)) {
        SSC_TRACE(swuGroup(), kFlow, "actionType = %d, no battery test is running", kReadBatteryTestStatus);
        sendActionRej(client, kReadBatteryTestStatus, kActionErrorTestNotRunning);
        return;
    }
    SSC_TRACE(swuGroup(), kFlow, "actionType = %d, progress %d %d %d %d", kReadBatteryTestStatus, words[0], words[1],
              words[2], words[3]);
    sendHeader(PMI_ACTION_CFM, client, "PMI_ACTION_CFM", kReadBatteryTestStatus);
    PMI_ACTION_IND_S body{};
    ObjectSubscriber to = client;
    to.objectId = 0;
    to.objectType = 0;
    body.header = headerFor(PMI_ACTION_IND, to, kReadBatteryTestStatus);
    for (std::size_t i = 0; i < 4; ++i) body.words[i] = words[i];
    send(&body, sizeof body, PMI_ACTION_IND, to, "PMI_ACTION_IND signal is sent.");
}

// ---- events of the core ----

// A fault goes to every configuration of its object. Its sending is traced
// with the words of its arrival at the object side, so that one search in
// the traces finds both ends.
void PmiAdapter::sendFault(ose::SIGSELECT sigNo, std::uint16_t faultType, std::uint16_t objectType)
{
    const char* name = sigNo == PMI_FAULT_IND ? "PMI_FAULT_IND signal is received." : "PMI_FAULT_CEASE_IND signal is received.";
    EC_LinkedListIterator<ObjectSubscriber> walk(m_configHolders);
    while (const ObjectSubscriber* row = walk.next()) {
        if (row->objectType != objectType || row->objectId != kObjectId) continue;
        const PMI_HEADER_S header = headerFor(sigNo, *row, faultType);
        SSC_TRACE(swuGroup(), kFlow, "faultType = %d", static_cast<int>(faultType));
        send(&header, sizeof header, sigNo, *row, name);
    }
}

void PmiAdapter::raiseMainLoadDisconnected() { sendFault(PMI_FAULT_IND, kFaultMainLoadDisconnected, kPowerDistribution); }
void PmiAdapter::raisePriorityLoadDisconnected() { sendFault(PMI_FAULT_IND, kFaultPriorityLoadDisconnected, kPowerDistribution); }
void PmiAdapter::raisePduMainTemperatureHigh() { sendFault(PMI_FAULT_IND, kFaultPduMainTemperatureHigh, kPowerDistribution); }
void PmiAdapter::ceaseMainLoadDisconnected() { sendFault(PMI_FAULT_CEASE_IND, kFaultMainLoadDisconnected, kPowerDistribution); }
void PmiAdapter::ceasePriorityLoadDisconnected() { sendFault(PMI_FAULT_CEASE_IND, kFaultPriorityLoadDisconnected, kPowerDistribution); }
void PmiAdapter::ceasePduMainTemperatureHigh() { sendFault(PMI_FAULT_CEASE_IND, kFaultPduMainTemperatureHigh, kPowerDistribution); }

void PmiAdapter::raiseNoPsuUsable() { sendFault(PMI_FAULT_IND, kFaultNoPsuUsable, kPowerSupply); }
void PmiAdapter::raiseSystemOvervoltage() { sendFault(PMI_FAULT_IND, kFaultSystemOvervoltage, kPowerSupply); }
void PmiAdapter::raiseSystemUndervoltage() { sendFault(PMI_FAULT_IND, kFaultSystemUndervoltage, kPowerSupply); }
void PmiAdapter::ceaseNoPsuUsable() { sendFault(PMI_FAULT_CEASE_IND, kFaultNoPsuUsable, kPowerSupply); }
void PmiAdapter::ceaseSystemOvervoltage() { sendFault(PMI_FAULT_CEASE_IND, kFaultSystemOvervoltage, kPowerSupply); }
void PmiAdapter::ceaseSystemUndervoltage() { sendFault(PMI_FAULT_CEASE_IND, kFaultSystemUndervoltage, kPowerSupply); }

// The update carries the facade's reading, so that it says what a read
// would say.
void PmiAdapter::systemVoltageUpdated(float /*volts*/) { resourceUpdate(kPowerSupply); }

void PmiAdapter::batteryBackupFault(BatteryFault faultType, bool raised)
{
    sendFault(raised ? PMI_FAULT_IND : PMI_FAULT_CEASE_IND, faultType, kBatteryBackup);
}

void PmiAdapter::batteryBackupStatusChanged() { resourceUpdate(kBatteryBackup); }

void PmiAdapter::batteryTestStarted(std::uint32_t initiation)
{
    const ose::be_u32 word = initiation;
    distributeBatteryEvent(kTestStarted, &word, sizeof word);
}

void PmiAdapter::batteryTestFinished(const BatteryTestRecord& record)
{
    const PMI_TEST_RESULT_S result = pmi_converter::testResultOf(record);
    distributeBatteryEvent(kTestFinished, &result, sizeof result);
}

void PmiAdapter::batteryLogData(const BatteryLogRecord& log, const BatteryLogExtra& extra)
{
    const PMI_LOG_DATA_S data = pmi_converter::logDataOf(log, extra);
    distributeBatteryEvent(kLogData, &data, sizeof data);
}
