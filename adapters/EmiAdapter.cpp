#include "adapters/EmiAdapter.h"

#include "adapters/HwuConverter.h"
#include "adapters/SignalTrace.h"
#include "frame/EC_LinkedListIterator.h"
#include "frame/OsService.h"
#include "frame/SscTrace.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

using namespace emi;
using namespace ssc_trace;

namespace {

constexpr std::uint16_t kErrorRefused = 0;
constexpr std::uint16_t kErrorNotConfigured = 1;
constexpr std::uint16_t kErrorNoData = 2;

// The interface's faultType of each unit fault, in the order of HwuFault.
constexpr std::array<std::uint16_t, 13> kFaultTypes{10, 11, 13, 1, 3, 0, 2, 2, 5, 6, 7, 8, 4};
// The faultType of each node fault, in the order of ExternalNodeFault.
constexpr std::array<std::uint16_t, 4> kNodeFaultTypes{0, 10, 11, 13};

std::string headline(const char* name, const char* what) { return std::string(name) + what; }

template <std::size_t N>
std::string_view fieldText(const char (&field)[N])
{
    return {field, strnlen(field, N)};
}

template <std::size_t N, std::size_t M>
void copyField(char (&to)[N], const std::array<char, M>& from)
{
    static_assert(N == M);
    std::memcpy(to, from.data(), N);
}

} // namespace

EmiAdapter::EmiAdapter(SignalDispatcherIf* dispatcher, const Facades& facades)
    : AdapterBase(dispatcher), m_facades(facades)
{
}

EmiAdapter::~EmiAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> EmiAdapter::createSignalIterator()
{
    static constexpr SignalTableRow<EmiAdapter> kSignalTable[] = {
        {EMI_SET_CONFIG_REQ, "EMI_SET_CONFIG_REQ", &EmiAdapter::handleSetConfigReq},
        {EMI_DELETE_CONFIG_REQ, "EMI_DELETE_CONFIG_REQ", &EmiAdapter::handleDeleteConfigReq},
        {EMI_SUBSCRIBE_RESOURCE_DATA_REQ, "EMI_SUBSCRIBE_RESOURCE_DATA_REQ",
         &EmiAdapter::handleSubscribeResourceDataReq},
        {EMI_UNSUBSCRIBE_RESOURCE_DATA_REQ, "EMI_UNSUBSCRIBE_RESOURCE_DATA_REQ",
         &EmiAdapter::handleUnsubscribeResourceDataReq},
        {EMI_GET_RESOURCE_DATA_REQ, "EMI_GET_RESOURCE_DATA_REQ", &EmiAdapter::handleGetResourceDataReq},
        {EMI_GET_UNIT_PRODUCT_DATA_REQ, "EMI_GET_UNIT_PRODUCT_DATA_REQ", &EmiAdapter::handleGetUnitProductDataReq},
        {EMI_GET_UNIT_MEASUREMENT_DATA_REQ, "EMI_GET_UNIT_MEASUREMENT_DATA_REQ",
         &EmiAdapter::handleGetUnitMeasurementDataReq},
        {EMI_ACTION_REQ, "EMI_ACTION_REQ", &EmiAdapter::handleActionReq},
    };
    return makeSignalIterator(*this, kSignalTable);
}

// ---- receiving and sending ----

const EMI_HEADER_S* EmiAdapter::receive(ose::Signal* signal, const char* name, ObjectSubscriber& client)
{
    const auto* header = OsService::view<EMI_HEADER_S>(signal);
    if (header == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "%s too short, dropped", name);
        return nullptr;
    }
    client = ObjectSubscriber{header->objectId, header->objectType, header->clientRef, m_pDispatcher->getSender(signal)};
    signal_trace::emi(headline(name, " signal is received.").c_str(), client.pid, client.clientRef,
                      client.objectType, client.objectId);
    return header;
}

template <typename T>
void EmiAdapter::send(T& body, ose::SIGSELECT sigNo, const ObjectSubscriber& client, const char* name)
{
    EMI_HEADER_S& header = reinterpret_cast<EMI_HEADER_S&>(body);
    header.sigNo = sigNo;
    header.clientRef = client.clientRef;
    header.objectType = client.objectType;
    header.objectId = client.objectId;
    ose::Signal* signal = OsService::alloc(sizeof(T), sigNo);
    std::memcpy(static_cast<void*>(signal), &body, sizeof(T));
    signal_trace::emi(headline(name, " signal is sent.").c_str(), client.pid, client.clientRef, client.objectType,
                      client.objectId);
    m_pDispatcher->sendSignal(signal, client.pid);
}

void EmiAdapter::sendHeader(ose::SIGSELECT sigNo, const ObjectSubscriber& client, const char* name)
{
    EMI_HEADER_S body{};
    send(body, sigNo, client, name);
}

void EmiAdapter::sendRej(ose::SIGSELECT sigNo, const ObjectSubscriber& client, std::uint16_t errorCode,
                         const char* name)
{
    EMI_REJ_S body{};
    body.errorCode = errorCode;
    send(body, sigNo, client, name);
}

void EmiAdapter::sendActionRej(const ObjectSubscriber& client, std::uint16_t actionType, std::uint16_t errorCode)
{
    EMI_ACTION_REJ_S body{};
    body.actionType = actionType;
    body.errorCode = errorCode;
    send(body, EMI_ACTION_REJ, client, "EMI_ACTION_REJ");
}

HwuFacadeIf* EmiAdapter::facadeOf(std::uint16_t objectType) const
{
    switch (objectType) {
    case kScu: return m_facades.scu;
    case kSau: return m_facades.sau;
    case kPsu: return m_facades.psu;
    case kPdu:
    case kEfuse: return m_facades.pdu;
    case kBfu: return m_facades.bfu;
    case kClu: return m_facades.clu;
    default: SSC_TRACE(swuGroup(), kUnexpected, "Unknown object type received: %d", objectType); return nullptr;
    }
}

// ---- configuration ----

void EmiAdapter::handleSetConfigReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "EMI_SET_CONFIG_REQ", client) == nullptr) return;
    const auto* request = OsService::view<EMI_SET_CONFIG_HWU_REQ_S>(signal);
    // A port group holds no row and is not checked for a second time.
    if (request != nullptr && client.objectType == kAlarmPortGroup) {
        configurePortGroup(signal);
        sendHeader(EMI_SET_CONFIG_CFM, client, "EMI_SET_CONFIG_CFM");
        return;
    }
    if (request == nullptr || !isServed(client.objectType) || findConfigHolder(client)) {
        if (request == nullptr) SSC_TRACE(swuGroup(), kUnexpected, "EMI_SET_CONFIG_REQ too short, rejected");
        sendRej(EMI_SET_CONFIG_REJ, client, kErrorRefused, "EMI_SET_CONFIG_REJ");
        return;
    }
    // The client hears first; a failure of the configuration reaches it as
    // a fault.
    sendHeader(EMI_SET_CONFIG_CFM, client, "EMI_SET_CONFIG_CFM");
    addConfigHolder(client);
    if (client.objectType == kExternalNode)
        configureNode(signal, client.objectId);
    else
        configure(*request, client.objectType, client.objectId);
}

// Types with a row in the configuration list; external nodes need their
// facade.
bool EmiAdapter::isServed(std::uint16_t objectType) const
{
    if (objectType == kExternalNode) return m_facades.externalNode != nullptr;
    return objectType <= kClu && objectType != kAlarmPortGroup;
}

void EmiAdapter::configurePortGroup(ose::Signal* signal)
{
    const auto* request = OsService::view<EMI_SET_CONFIG_ALARM_PORT_GROUP_REQ_S>(signal);
    const std::uint16_t typeOfUnit = request->typeOfUnit;
    const std::uint16_t unitInstance = request->unitInstance;
    FuncId_t funcId;
    switch (typeOfUnit) {
    case 0: funcId = FuncId_t{5, request->parentObjectId}; break;
    case 1: funcId = FuncId_t{6, request->parentObjectId}; break;
    case 2: funcId = FuncId_t{18, unitInstance}; break;
    default: SSC_TRACE(swuGroup(), kUnexpected, "Unknown TypeOfUnit: %d", typeOfUnit); return;
    }
    if (m_facades.alarms == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "Alarm port group of unit %d: no alarm control in this node", unitInstance);
        return;
    }
    m_facades.alarms->setPortGroupUnit(funcId, request->groupOfPort, unitInstance);
    if (typeOfUnit == 2 && m_facades.rru != nullptr)
        m_facades.rru->setupAlarmPort(unitInstance, fieldText(request->huntPath));
}

void EmiAdapter::configureNode(ose::Signal* signal, std::uint32_t objectId)
{
    const auto* request = OsService::view<EMI_SET_CONFIG_NODE_REQ_S>(signal);
    HubPositionList positions;
    // At most six positions, whatever the count says.
    const std::size_t count = std::min<std::size_t>(request->numberOfHubPositions, kMaxHubPositions);
    positions.count = static_cast<std::uint16_t>(count);
    for (std::size_t index = 0; index < count; ++index)
        std::memcpy(positions.positions[index].data(), request->hubPositions[index], kHubPositionSize);
    m_facades.externalNode->addNode(static_cast<std::int32_t>(objectId), positions);
    subscribeAtPrimary();
}

void EmiAdapter::subscribeAtPrimary()
{
    if (m_facades.node == nullptr || m_facades.node->getNodeRecord().supportSystemControl != 0) return;
    if (m_facades.apcInciClient != nullptr) m_facades.apcInciClient->generalSubscribe();
}

void EmiAdapter::nodeAdded(const ExternalNode& node)
{
    if (m_facades.apcInciServer != nullptr) m_facades.apcInciServer->addExternalNode(node);
}

void EmiAdapter::nodeRemoved(std::int32_t objectId, std::int32_t nin)
{
    if (m_facades.apcInciServer != nullptr) m_facades.apcInciServer->removeClient(objectId, nin);
}

void EmiAdapter::nodeData(std::uint32_t objectId, EMI_RESOURCE_DATA_S& data)
{
    NodeRecord record;
    if (m_facades.externalNode != nullptr) m_facades.externalNode->getNodeRecord(static_cast<std::int32_t>(objectId), &record);
    EMI_RESOURCE_DATA_NODE_S node{};
    std::memcpy(node.logicalName, record.logicalName.data(), sizeof node.logicalName);
    std::memcpy(node.fullDistinguishedName, record.fullDistinguishedName.data(), sizeof node.fullDistinguishedName);
    node.radioAccessTechnology = static_cast<std::uint16_t>(record.radioAccessTechnology);
    node.supportSystemControl = record.supportSystemControl;
    std::memcpy(data.words, reinterpret_cast<const char*>(&node) + sizeof(EMI_HEADER_S), sizeof data.words);
}

void EmiAdapter::configure(const EMI_SET_CONFIG_HWU_REQ_S& request, std::uint16_t objectType, std::uint32_t objectId)
{
    HwuFacadeIf* facade = facadeOf(objectType);
    if (facade == nullptr) return;
    if (objectType == kEfuse) {
        const auto& efuse = reinterpret_cast<const EMI_SET_CONFIG_EFUSE_REQ_S&>(request);
        facade->configureEfuse(efuse.pduObjectId, objectId);
        return;
    }
    const std::uint32_t cabinet = objectType == kScu ? static_cast<std::uint32_t>(request.cabinetFuncInst) : 0;
    facade->setConfiguration(objectId, fieldText(request.hubPosition), request.cascadingOrder, cabinet);
}

void EmiAdapter::handleDeleteConfigReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "EMI_DELETE_CONFIG_REQ", client) == nullptr) return;
    sendHeader(EMI_DELETE_CONFIG_CFM, client, "EMI_DELETE_CONFIG_CFM");
    if (client.objectType == kAlarmPortGroup) {
        if (m_facades.rru != nullptr) m_facades.rru->removeAlarmPort(client.objectId & 0xFFFFU);
        return;
    }
    if (isServed(client.objectType) && findConfigHolder(client)) {
        if (client.objectType == kExternalNode) {
            m_facades.externalNode->removeNode(static_cast<std::int32_t>(client.objectId));
            subscribeAtPrimary();
        } else if (HwuFacadeIf* facade = facadeOf(client.objectType)) {
            if (client.objectType == kEfuse)
                facade->deleteEfuse(client.objectId);
            else
                facade->deleteConfiguration(client.objectId);
        }
    }
    removeConfigHolder(client);
    removeDataSubscriber(client);
}

// ---- resource data ----

bool EmiAdapter::resourceData(std::uint16_t objectType, std::uint32_t objectId, EMI_RESOURCE_DATA_S& data,
                              bool& operational)
{
    operational = false;
    if (objectType == kExternalNode) {
        nodeData(objectId, data);
        operational = true; // a node has no operational flag to wait for
        return true;
    }
    HwuFacadeIf* facade = facadeOf(objectType);
    if (facade == nullptr) return false;
    if (objectType == kEfuse) {
        std::uint32_t state = 1;
        facade->getEfuseStatus(objectId, &state);
        data.words[0] = hwu_converter::ledOnWire(state);
        operational = true;
        return true;
    }
    HwuStatusRecord status;
    status.operationalLed = 2; // off, until the unit says otherwise
    facade->getStatusData(objectId, &status);
    operational = status.available != 0;
    return hwu_converter::createEmiResourceStatusDataUnionU(objectType, status, data.words);
}

void EmiAdapter::handleSubscribeResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "EMI_SUBSCRIBE_RESOURCE_DATA_REQ", client) == nullptr) return;
    if (client.objectType == kAlarmPortGroup || client.objectType > kClu) {
        sendRej(EMI_SUBSCRIBE_RESOURCE_DATA_REJ, client, kErrorRefused, "EMI_SUBSCRIBE_RESOURCE_DATA_REJ");
        return;
    }
    if (!findConfigHolder(client)) {
        SSC_TRACE(swuGroup(), kUnexpected, "Could not fetch data for, objectId: %d, objectType: %d", client.objectId,
                  client.objectType);
        sendRej(EMI_SUBSCRIBE_RESOURCE_DATA_REJ, client, kErrorNotConfigured, "EMI_SUBSCRIBE_RESOURCE_DATA_REJ");
        return;
    }
    addDataSubscriber(client);
    sendHeader(EMI_SUBSCRIBE_RESOURCE_DATA_CFM, client, "EMI_SUBSCRIBE_RESOURCE_DATA_CFM");
    // The present data at once, operational or not: no separate read needed.
    EMI_RESOURCE_DATA_S data{};
    bool operational = false;
    resourceData(client.objectType, client.objectId, data, operational);
    send(data, EMI_RESOURCE_DATA_UPDATE_IND, client, "EMI_RESOURCE_DATA_UPDATE_IND");
}

void EmiAdapter::handleUnsubscribeResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "EMI_UNSUBSCRIBE_RESOURCE_DATA_REQ", client) == nullptr) return;
    removeDataSubscriber(client);
    sendHeader(EMI_UNSUBSCRIBE_RESOURCE_DATA_CFM, client, "EMI_UNSUBSCRIBE_RESOURCE_DATA_CFM");
}

void EmiAdapter::handleGetResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "EMI_GET_RESOURCE_DATA_REQ", client) == nullptr) return;
    if (client.objectType == kAlarmPortGroup || client.objectType > kClu) {
        sendRej(EMI_GET_RESOURCE_DATA_REJ, client, kErrorRefused, "EMI_GET_RESOURCE_DATA_REJ");
        return;
    }
    if (!findConfigHolder(client)) {
        SSC_TRACE(swuGroup(), kUnexpected, "No configured HwU found with objectType=%d, id=%d", client.objectType,
                  client.objectId);
        sendRej(EMI_GET_RESOURCE_DATA_REJ, client, kErrorNotConfigured, "EMI_GET_RESOURCE_DATA_REJ");
        return;
    }
    EMI_RESOURCE_DATA_S data{};
    bool operational = false;
    if (!resourceData(client.objectType, client.objectId, data, operational) || !operational) {
        SSC_TRACE(swuGroup(), kUnexpected, "HwU with objectType=%d, id=%d is not operational.", client.objectType,
                  client.objectId);
        sendRej(EMI_GET_RESOURCE_DATA_REJ, client, kErrorNoData, "EMI_GET_RESOURCE_DATA_REJ");
        return;
    }
    send(data, EMI_GET_RESOURCE_DATA_CFM, client, "EMI_GET_RESOURCE_DATA_CFM");
}

void EmiAdapter::handleGetUnitProductDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    // The headline of this one has always been the shorter name.
    if (receive(signal, "EMI_GET_UNIT_DATA_REQ", client) == nullptr) return;
    if (!findConfigHolder(client)) {
        SSC_TRACE(swuGroup(), kUnexpected, "Could not fetch data for objectType: %d, objectId: %d", client.objectType,
                  client.objectId);
        sendRej(EMI_GET_UNIT_PRODUCT_DATA_REJ, client, kErrorNotConfigured, "EMI_GET_UNIT_PRODUCT_DATA_REJ");
        return;
    }
    HwuFacadeIf* facade = client.objectType == kEfuse ? nullptr : facadeOf(client.objectType);
    HwuProductRecord product{};
    if (facade == nullptr || !facade->getUnitProductData(client.objectId, &product)) {
        SSC_TRACE(swuGroup(), kUnexpected, "Unable to get unit product data (objectType = %u, objectId = %u)",
                  client.objectType, client.objectId);
        sendRej(EMI_GET_UNIT_PRODUCT_DATA_REJ, client, facade == nullptr ? kErrorRefused : kErrorNoData,
                "EMI_GET_UNIT_PRODUCT_DATA_REJ");
        return;
    }
    EMI_GET_UNIT_PRODUCT_DATA_CFM_S cfm{};
    copyField(cfm.productionDate, product.productionDate);
    copyField(cfm.productName, product.productName);
    copyField(cfm.productNumber, product.productNumber);
    copyField(cfm.productRevision, product.revState);
    copyField(cfm.serialNumber, product.serialNumber);
    send(cfm, EMI_GET_UNIT_PRODUCT_DATA_CFM, client, "EMI_GET_UNIT_PRODUCT_DATA_CFM");
}

void EmiAdapter::handleGetUnitMeasurementDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "EMI_GET_UNIT_MEASUREMENT_DATA_REQ", client) == nullptr) return;
    if (!findConfigHolder(client)) {
        SSC_TRACE(swuGroup(), kUnexpected,
                  "EmiAdapter::handleGetUnitMeasurementDataReq: Failed to fetch data for objectType: %d, objectId: %d",
                  client.objectType, client.objectId);
        sendRej(EMI_GET_UNIT_MEASUREMENT_DATA_REJ, client, kErrorNotConfigured, "EMI_GET_UNIT_MEASUREMENT_DATA_REJ");
        return;
    }
    HwuFacadeIf* facade = client.objectType == kEfuse ? nullptr : facadeOf(client.objectType);
    HwuMeasurementRecord record;
    EMI_GET_UNIT_MEASUREMENT_DATA_CFM_S cfm{};
    if (facade == nullptr || !facade->getUnitMeasurementData(client.objectId, &record) ||
        !hwu_converter::createEmiMeasuredStatusDataUnionU(client.objectType, record, cfm.words)) {
        SSC_TRACE(swuGroup(), kUnexpected,
                  "EmiAdapter::handleGetUnitMeasurementDataReq: Failed to get unit measurement data (objectType = "
                  "%u, objectId = %u)",
                  client.objectType, client.objectId);
        sendRej(EMI_GET_UNIT_MEASUREMENT_DATA_REJ, client, facade == nullptr ? kErrorRefused : kErrorNoData,
                "EMI_GET_UNIT_MEASUREMENT_DATA_REJ");
        return;
    }
    send(cfm, EMI_GET_UNIT_MEASUREMENT_DATA_CFM, client, "EMI_GET_UNIT_MEASUREMENT_DATA_CFM");
}

// ---- actions ----

void EmiAdapter::handleActionReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "EMI_ACTION_REQ", client) == nullptr) return;
    const auto* request = OsService::view<EMI_ACTION_REQ_S>(signal);
    const std::uint16_t action = request != nullptr ? static_cast<std::uint16_t>(request->actionType) : 0xFFFF;
    HwuFacadeIf* facade = client.objectType == kEfuse ? nullptr : facadeOf(client.objectType);
    if (request == nullptr || facade == nullptr || !findConfigHolder(client)) {
        SSC_TRACE(swuGroup(), kUnexpected, "Action rejected. No configured HwU found with objectType: %d, id: %d",
                  client.objectType, client.objectId);
        sendActionRej(client, action, kErrorRefused);
        return;
    }
    if (action == kReset) {
        if (!facade->restartUnit(client.objectId)) {
            sendActionRej(client, kReset, kErrorNoData);
            return;
        }
        EMI_ACTION_CFM_S cfm{};
        cfm.actionType = kReset;
        send(cfm, EMI_ACTION_CFM, client, "EMI_ACTION_CFM");
        return;
    }
    if (action == kReportScuClimateParams) {
        reportClimate(client);
        return;
    }
    SSC_TRACE(swuGroup(), kUnexpected, "Unknown action type: %d", action);
    sendActionRej(client, action, kErrorRefused);
}

void EmiAdapter::reportClimate(const ObjectSubscriber& client)
{
    if (client.objectType != kScu) {
        SSC_TRACE(swuGroup(), kUnexpected,
                  "Action REPORT_SCU_CLIMATE_PARAMS rejected. Not correct objectType: %d, id: %d", client.objectType,
                  client.objectId);
        sendActionRej(client, kReportScuClimateParams, kErrorRefused);
        return;
    }
    ScuClimateParams params;
    if (!m_facades.scu->getClimateParams(client.objectId, &params)) {
        sendActionRej(client, kReportScuClimateParams, kErrorNoData);
        return;
    }
    EMI_ACTION_CFM_S cfm{};
    cfm.actionType = kReportScuClimateParams;
    send(cfm, EMI_ACTION_CFM, client, "EMI_ACTION_CFM");
    EMI_ACTION_IND_S ind{};
    ind.actionType = kReportScuClimateParams;
    hwu_converter::createClimateReport(params, ind.result);
    send(ind, EMI_ACTION_IND, client, "EMI_ACTION_IND");
}

// ---- events of the units ----

void EmiAdapter::restartFinished(const FuncId_t& funcId)
{
    const std::uint16_t objectType = hwu_converter::objectTypeOf(funcId.FuncType);
    EC_LinkedListIterator<ObjectSubscriber> it(m_configHolders);
    while (const ObjectSubscriber* holder = it.next()) {
        if (holder->objectType != objectType || holder->objectId != funcId.FuncInst) continue;
        EMI_ACTION_IND_S ind{};
        ind.actionType = kReset;
        send(ind, EMI_ACTION_IND, *holder, "EMI_ACTION_IND");
    }
}

void EmiAdapter::statusChanged(const FuncId_t& funcId, const HwuStatusRecord& record)
{
    const std::uint16_t objectType = hwu_converter::objectTypeOf(funcId.FuncType);
    EMI_RESOURCE_DATA_S data{};
    if (!hwu_converter::createEmiResourceStatusDataUnionU(objectType, record, data.words)) return;
    EC_LinkedListIterator<ObjectSubscriber> it(m_dataSubscribers);
    while (const ObjectSubscriber* subscriber = it.next()) {
        if (subscriber->objectType != objectType || subscriber->objectId != funcId.FuncInst) continue;
        EMI_RESOURCE_DATA_S copy = data;
        send(copy, EMI_RESOURCE_DATA_UPDATE_IND, *subscriber, "EMI_RESOURCE_DATA_UPDATE_IND");
    }
}

void EmiAdapter::efuseStatusChanged(std::uint32_t, std::uint32_t efuseFuncInst, std::uint32_t state)
{
    EC_LinkedListIterator<ObjectSubscriber> it(m_dataSubscribers);
    while (const ObjectSubscriber* subscriber = it.next()) {
        if (subscriber->objectType != kEfuse || subscriber->objectId != efuseFuncInst) continue;
        EMI_RESOURCE_DATA_S data{};
        data.words[0] = hwu_converter::ledOnWire(state);
        send(data, EMI_RESOURCE_DATA_UPDATE_IND, *subscriber, "EMI_RESOURCE_DATA_UPDATE_IND");
    }
}

void EmiAdapter::raiseFault(HwuFault fault, const FuncId_t& funcId)
{
    sendFault(EMI_FAULT_IND, kFaultTypes.at(static_cast<std::size_t>(fault)),
              hwu_converter::objectTypeOf(funcId.FuncType), funcId.FuncInst);
}

void EmiAdapter::ceaseFault(HwuFault fault, const FuncId_t& funcId)
{
    sendFault(EMI_FAULT_CEASE_IND, kFaultTypes.at(static_cast<std::size_t>(fault)),
              hwu_converter::objectTypeOf(funcId.FuncType), funcId.FuncInst);
}

void EmiAdapter::raiseFault(ExternalNodeFault fault, std::uint32_t funcInst)
{
    sendFault(EMI_FAULT_IND, kNodeFaultTypes.at(static_cast<std::size_t>(fault)), kExternalNode, funcInst);
}

void EmiAdapter::ceaseFault(ExternalNodeFault fault, std::uint32_t funcInst)
{
    sendFault(EMI_FAULT_CEASE_IND, kNodeFaultTypes.at(static_cast<std::size_t>(fault)), kExternalNode, funcInst);
}

void EmiAdapter::nodeChanged(const ExternalNode& node)
{
    EC_LinkedListIterator<ObjectSubscriber> it(m_dataSubscribers);
    while (const ObjectSubscriber* subscriber = it.next()) {
        if (subscriber->objectType != kExternalNode || subscriber->objectId != static_cast<std::uint32_t>(node.objectId))
            continue;
        EMI_RESOURCE_DATA_S data{};
        nodeData(subscriber->objectId, data);
        send(data, EMI_RESOURCE_DATA_UPDATE_IND, *subscriber, "EMI_RESOURCE_DATA_UPDATE_IND");
    }
}

void EmiAdapter::sendFault(ose::SIGSELECT sigNo, std::uint16_t faultType, std::uint16_t objectType,
                           std::uint32_t objectId)
{
    // Whoever configured the object hears its faults, subscribed or not.
    EC_LinkedListIterator<ObjectSubscriber> it(m_configHolders);
    while (const ObjectSubscriber* holder = it.next()) {
        if (holder->objectType != objectType || holder->objectId != objectId) continue;
        EMI_FAULT_IND_S ind{};
        ind.faultType = faultType;
        send(ind, sigNo, *holder, sigNo == EMI_FAULT_IND ? "EMI_FAULT_IND" : "EMI_FAULT_CEASE_IND");
    }
}
