#include "adapters/CmiAdapter.h"

#include "adapters/ApcInciClientIf.h"
#include "adapters/ApcInciServerIf.h"
#include "adapters/CabinetConverter.h"
#include "cabinet/CabinetFacadeIf.h"
#include "cabinet/NodeFacadeIf.h"
#include "climate/ClimateFacadeIf.h"
#include "climate/FanGroupFacadeIf.h"
#include "frame/EC_LinkedListIterator.h"
#include "frame/FuncType.h"
#include "frame/OsService.h"
#include "frame/SscTrace.h"
#include "hwu/HdlcAddressBroker.h"
#include "hwu/HdlcAddressFacadeIf.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

using namespace ssc_trace;
using namespace cmi;
using cabinet_converter::textOf;

namespace {

// Fault types of the interface.
constexpr std::uint16_t kFaultSmokeDetectorDisconnected = 0; // also a disconnected fan group, and 22500
constexpr std::uint16_t kFaultDoor = 1;
constexpr std::uint16_t kFaultCabinetPidMismatch = 2;
constexpr std::uint16_t kFaultSmokeDetectorAlarm = 3;
constexpr std::uint16_t kFaultSmokeDetectorHwFailure = 4;
constexpr std::uint16_t kFaultFanGroupHw = 5;
constexpr std::uint16_t kFaultHwEntitiesMismatch = 6;
constexpr std::uint16_t kFaultFaultyHubPosition = 7;
constexpr std::uint16_t kFaultConflictingHubPosition = 8;

constexpr std::uint32_t kClimateSystemOnPrimary = 99;

// The unit's kind in a fault record, for FuncType 1 to 20: 1 SCU, 2 SAU, 3
// PSU, 4 PDU, 5 BFU, 6 fan group, 0 not applicable.
constexpr std::array<std::uint16_t, 20> kHwTypes{3, 5, 0, 0, 1, 2, 4, 2, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2};

std::uint16_t hwTypeOf(std::uint32_t funcType)
{
    return funcType >= 1 && funcType <= kHwTypes.size() ? kHwTypes[funcType - 1] : 0;
}

template <std::size_t N>
void copyText(char (&field)[N], const std::string& text)
{
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N));
}

} // namespace

CmiAdapter::CmiAdapter(SignalDispatcherIf* dispatcher, const Facades& facades)
    : AdapterBase(dispatcher), m_facades(facades)
{
}

CmiAdapter::~CmiAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> CmiAdapter::createSignalIterator()
{
    static constexpr SignalTableRow<CmiAdapter> kSignalTable[] = {
        {CMI_SET_CONFIG_REQ, "CMI_SET_CONFIG_REQ", &CmiAdapter::handleSetConfigReq},
        {CMI_DELETE_CONFIG_REQ, "CMI_DELETE_CONFIG_REQ", &CmiAdapter::handleDeleteConfigReq},
        {CMI_SUBSCRIBE_RESOURCE_DATA_REQ, "CMI_SUBSCRIBE_RESOURCE_DATA_REQ", &CmiAdapter::handleSubscribeResourceDataReq},
        {CMI_UNSUBSCRIBE_RESOURCE_DATA_REQ, "CMI_UNSUBSCRIBE_RESOURCE_DATA_REQ",
         &CmiAdapter::handleUnsubscribeResourceDataReq},
        {CMI_GET_RESOURCE_DATA_REQ, "CMI_GET_RESOURCE_DATA_REQ", &CmiAdapter::handleGetResourceDataReq},
        {CMI_ACTION_REQ, "CMI_ACTION_REQ", &CmiAdapter::handleActionReq},
        {CMI_UPDATE_PRODUCT_DATA_REQ, "CMI_UPDATE_PRODUCT_DATA_REQ", &CmiAdapter::handleUpdateProductDataReq},
    };
    return makeSignalIterator(*this, kSignalTable);
}

// ---- receiving and sending ----

const CMI_HEADER_S* CmiAdapter::receive(ose::Signal* signal, const char* name, ObjectSubscriber& client)
{
    const auto* header = OsService::view<CMI_HEADER_S>(signal);
    if (header == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "%s too short, dropped", name);
        return nullptr;
    }
    client = ObjectSubscriber{header->objectId, header->objectType, header->clientRef, m_pDispatcher->getSender(signal)};
    SSC_TRACE(swuGroup(), kFlow, "%s signal is received. pid = %d, clientRef = %d, objectType = %d, objectId = %d",
              name, static_cast<int>(client.pid), static_cast<int>(client.clientRef),
              static_cast<int>(client.objectType), static_cast<int>(client.objectId));
    return header;
}

void CmiAdapter::sendHeader(ose::SIGSELECT sigNo, const ObjectSubscriber& client, std::uint16_t word14)
{
    CMI_HEADER_S header{};
    header.sigNo = sigNo;
    header.clientRef = client.clientRef;
    header.objectId = client.objectId;
    header.objectType = client.objectType;
    header.word14 = word14;
    ose::Signal* signal = OsService::alloc(sizeof header, sigNo);
    std::memcpy(static_cast<void*>(signal), &header, sizeof header);
    m_pDispatcher->sendSignal(signal, client.pid);
}

void CmiAdapter::sendResource(ose::SIGSELECT sigNo, const ObjectSubscriber& client, const void* data, std::size_t size)
{
    CMI_RESOURCE_DATA_S body{};
    body.header.sigNo = sigNo;
    body.header.clientRef = client.clientRef;
    body.header.objectId = client.objectId;
    body.header.objectType = client.objectType;
    std::memcpy(body.data, data, std::min(size, sizeof body.data));
    ose::Signal* signal = OsService::alloc(sizeof body, sigNo);
    std::memcpy(static_cast<void*>(signal), &body, sizeof body);
    m_pDispatcher->sendSignal(signal, client.pid);
}

// ---- configuration ----

void CmiAdapter::handleSetConfigReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "CMI_SET_CONFIG_REQ", client) == nullptr) return;
    const auto* request = OsService::view<CMI_SET_CONFIG_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "CMI_SET_CONFIG_REQ shorter than its configuration, dropped");
        return;
    }
    switch (client.objectType) {
    case kCabinet: {
        CMI_CABINET_CONFIG_S config;
        std::memcpy(&config, request->config, sizeof config);
        configureCabinet(client, config);
        break;
    }
    case kFanGroup: {
        CMI_FAN_GROUP_CONFIG_S config;
        std::memcpy(&config, request->config, sizeof config);
        configureFanGroup(client, config);
        break;
    }
    case kEquipmentSupportFunction: {
        CMI_EQUIPMENT_SUPPORT_FUNCTION_CONFIG_S config;
        std::memcpy(&config, request->config, sizeof config);
        configureEquipmentSupportFunction(client, config);
        break;
    }
    default:
        SSC_TRACE(swuGroup(), kUnexpected, "Unknown objectType %d", static_cast<int>(client.objectType));
        sendHeader(CMI_SET_CONFIG_REJ, client, kUnknownObjectType);
    }
}

void CmiAdapter::configureCabinet(const ObjectSubscriber& client, const CMI_CABINET_CONFIG_S& config)
{
    SSC_TRACE(swuGroup(), kFlow,
              "CMI_SET_CONFIG_REQ signal is received. cabinetConfigData.versionNumber = %d, .doorSwitch = %d, "
              ".productionDate = %s, .productName = %s, .productNumber = %s, .productRevision = %s, "
              ".serialNumber = %s, .smokeDetector = %d",
              static_cast<int>(config.parameters[kVersionNumberIndex]), static_cast<int>(config.parameters[kDoorSwitchIndex]),
              textOf(config.productionDate, sizeof config.productionDate).c_str(),
              textOf(config.productName, sizeof config.productName).c_str(),
              textOf(config.productNumber, sizeof config.productNumber).c_str(),
              textOf(config.productRevision, sizeof config.productRevision).c_str(),
              textOf(config.serialNumber, sizeof config.serialNumber).c_str(), static_cast<int>(config.smokeDetector));
    CabinetFacadeIf* cabinet = m_facades.cabinet;
    cabinet->addCabinet(client.objectId);
    cabinet->setDoorSwitch(client.objectId, static_cast<std::uint8_t>(config.parameters[kDoorSwitchIndex]));
    cabinet->setSmokeDetectorConfigured(client.objectId, config.smokeDetector != 0);
    const ClimateCfg cfg = cabinet_converter::climateCfgOf(config);
    // The cabinet stays known; without a known climate system it has no
    // climate configuration.
    if (cfg.climateSystem == ClimateCfg::kUnknownClimateSystem || cfg.climateControlMode == ClimateCfg::kModeBeforeFill) {
        sendHeader(CMI_SET_CONFIG_REJ, client, kClimateSystemUnknown);
        return;
    }
    addConfigHolder(client);
    sendHeader(CMI_SET_CONFIG_CFM, client);
    if (m_facades.climate != nullptr) m_facades.climate->setClimateCfg(cfg);
    if (m_facades.node != nullptr) m_facades.node->setDualBoxSupported(config.parameters[kConcurrentFanControlIndex] == 1);
    cabinet->setProductData(cabinet_converter::productDataOf(config), client.objectId);
    resourceUpdate(client.objectId, cabinetResource(client.objectId));
}

void CmiAdapter::configureFanGroup(const ObjectSubscriber& client, const CMI_FAN_GROUP_CONFIG_S& config)
{
    SSC_TRACE(swuGroup(), kFlow,
              "CMI_SET_CONFIG_REQ, pid = %d, sigNo = %d, clientRef = %d, objectType = %d, objectId = %d,"
              "fanGroupConfigData.fanGroupId = %d",
              static_cast<int>(client.pid), static_cast<int>(CMI_SET_CONFIG_REQ), static_cast<int>(client.clientRef),
              static_cast<int>(client.objectType), static_cast<int>(client.objectId), static_cast<int>(config.fanGroupId));
    if (findConfigHolder(client)) {
        sendHeader(CMI_SET_CONFIG_CFM, client);
        return;
    }
    if (config.fanGroupId < 1 || config.fanGroupId > 4) {
        SSC_TRACE(swuGroup(), kUnexpected, "Fan group could not be configured. FanGroupId = %d, but should be 1-4",
                  static_cast<int>(config.fanGroupId));
        sendHeader(CMI_SET_CONFIG_REJ, client, kFanGroupIdOutOfRange);
        return;
    }
    sendHeader(CMI_SET_CONFIG_CFM, client);
    addConfigHolder(client);
    SSC_TRACE(swuGroup(), kFlow, "funcInst: %d, parentFuncInst: %d", static_cast<int>(client.objectId),
              static_cast<int>(config.parentObjectId));
    if (m_facades.fanGroups != nullptr)
        m_facades.fanGroups->configureFanGroup(client.objectId, config.fanGroupId, config.parentObjectId);
    m_fanGroupLeds.addLast({client.objectId, 1});
}

void CmiAdapter::configureEquipmentSupportFunction(const ObjectSubscriber& client,
                                                   const CMI_EQUIPMENT_SUPPORT_FUNCTION_CONFIG_S& config)
{
    SSC_TRACE(swuGroup(), kFlow,
              "CMI_SET_CONFIG_REQ, pid = %d, sigNo = %d, clientRef = %d, objectType = %d, objectId = %d,"
              "equipmentSupportFunctionConfigData.supportSystemControl = %d",
              static_cast<int>(client.pid), static_cast<int>(CMI_SET_CONFIG_REQ), static_cast<int>(client.clientRef),
              static_cast<int>(client.objectType), static_cast<int>(client.objectId),
              static_cast<int>(config.supportSystemControl));
    sendHeader(CMI_SET_CONFIG_CFM, client);
    addConfigHolder(client);
    NodeRecord record;
    record.setLogicalName(textOf(config.logicalName, sizeof config.logicalName).c_str());
    record.setFullDistinguishedName(textOf(config.fullDistinguishedName, sizeof config.fullDistinguishedName).c_str());
    record.radioAccessTechnology = config.radioAccessTechnology;
    record.supportSystemControl = config.supportSystemControl != 0 ? 1 : 0;
    m_nodeObjectId = client.objectId;
    const std::uint16_t count = std::min<std::uint16_t>(config.numberOfHubPositions, HubPositionList::kMaxPositions);
    if (!record.supportSystemControl && m_facades.hubPositions != nullptr) {
        // The hub positions where this secondary reaches the primary.
        std::array<std::string, 2> texts{textOf(config.hubPositions[0], 12), textOf(config.hubPositions[1], 12)};
        const std::array<std::string_view, 2> views{texts[0], texts[1]};
        const std::span<const std::string_view> checked(views.data(), std::min<std::size_t>(count, views.size()));
        if (m_facades.hubPositions->checkHubPositions(checked, FuncId_t{func_type::kEquipSupFunc, client.objectId}) &&
            m_facades.apcInciClient != nullptr) {
            HubPositionList list;
            list.count = count;
            for (std::size_t index = 0; index < count; ++index)
                std::memcpy(list.positions[index].data(), config.hubPositions[index], HubPositionList::kFieldSize);
            m_facades.apcInciClient->deleteLink(static_cast<std::int32_t>(client.objectId));
            m_facades.apcInciClient->createLink(static_cast<std::int32_t>(client.objectId), list);
        }
    }
    const bool primary = record.supportSystemControl != 0;
    const bool roleChange = m_nodeRole == kNoRole || (m_nodeRole == kPrimary && !primary) || (m_nodeRole == kSecondary && primary);
    if (roleChange) {
        changeRole(record);
    } else if (m_facades.node != nullptr) {
        const NodeRecord& known = m_facades.node->getNodeRecord();
        if (known.logicalName != record.logicalName || known.fullDistinguishedName != record.fullDistinguishedName ||
            known.radioAccessTechnology != record.radioAccessTechnology) {
            if (primary && m_facades.apcInciServer != nullptr) m_facades.apcInciServer->nodeInfoUpdated(record);
            if (!primary && m_facades.apcInciClient != nullptr) m_facades.apcInciClient->sendNodeInfo(record);
            m_facades.node->setNodeRecord(record);
        }
    }
    m_facades.cabinet->setNodeConfigured();
    m_facades.cabinet->setProductNameME(textOf(config.productNameME, sizeof config.productNameME));
}

void CmiAdapter::changeRole(const NodeRecord& record)
{
    if (m_facades.node != nullptr) m_facades.node->setNodeRecord(record);
    if (record.supportSystemControl != 0) {
        m_nodeRole = kPrimary;
        if (m_facades.apcInciClient != nullptr) m_facades.apcInciClient->deleteLink(static_cast<std::int32_t>(m_nodeObjectId));
        if (m_facades.apcInciServer != nullptr) {
            m_facades.apcInciServer->publish();
            m_facades.apcInciServer->nodeInfoUpdated(record);
        }
    } else {
        if (m_facades.apcInciServer != nullptr) m_facades.apcInciServer->unpublish();
        m_nodeRole = kSecondary;
    }
}

void CmiAdapter::handleDeleteConfigReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "CMI_DELETE_CONFIG_REQ", client) == nullptr) return;
    sendHeader(CMI_DELETE_CONFIG_CFM, client);
    if (client.objectType == kFanGroup && findLed(client.objectId) != nullptr) {
        if (m_facades.fanGroups != nullptr) m_facades.fanGroups->deleteFanGroup(client.objectId);
        const std::uint32_t objectId = client.objectId;
        m_fanGroupLeds.removeFirst([objectId](const LedRow& row) { return row.objectId == objectId; });
    } else if (client.objectType == kCabinet) {
        if (m_facades.climate != nullptr) m_facades.climate->deleteClimateCfg();
        m_facades.cabinet->deleteCabinet(client.objectId);
    }
    removeConfigHolder(client);
    removeDataSubscriber(client);
}

// ---- resource data ----

void CmiAdapter::handleSubscribeResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "CMI_SUBSCRIBE_RESOURCE_DATA_REQ", client) == nullptr) return;
    if (!findConfigHolder(client)) {
        SSC_TRACE(swuGroup(), kUnexpected, "Could not fetch data for, objectId: %d, objectType: %d",
                  static_cast<int>(client.objectId), static_cast<int>(client.objectType));
        sendHeader(CMI_SUBSCRIBE_RESOURCE_DATA_REJ, client, kNotConfigured);
        return;
    }
    addDataSubscriber(client);
    sendHeader(CMI_SUBSCRIBE_RESOURCE_DATA_CFM, client);
    if (client.objectType == kCabinet) {
        const CMI_CABINET_RESOURCE_S resource = cabinetResource(client.objectId);
        sendResource(CMI_RESOURCE_DATA_UPDATE_IND, client, &resource, sizeof resource);
    } else if (client.objectType == kFanGroup) {
        SSC_TRACE(swuGroup(), kFlow, "CmiAdapter::handleSubscribeResourceDataReq Fan group, with object id %d",
                  static_cast<int>(client.objectId));
        if (const LedRow* led = findLed(client.objectId)) {
            const ose::be_u16 state = static_cast<std::uint16_t>(led->state);
            sendResource(CMI_RESOURCE_DATA_UPDATE_IND, client, &state, sizeof state);
        }
    }
}

void CmiAdapter::handleUnsubscribeResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "CMI_UNSUBSCRIBE_RESOURCE_DATA_REQ", client) == nullptr) return;
    SSC_TRACE(swuGroup(), kFlow, "CmiAdapter::handleUnsubscribeResourceDataReq, objectType %d, objectId %d",
              static_cast<int>(client.objectType), static_cast<int>(client.objectId));
    removeDataSubscriber(client);
    sendHeader(CMI_UNSUBSCRIBE_RESOURCE_DATA_CFM, client);
}

void CmiAdapter::handleGetResourceDataReq(ose::Signal* signal)
{
    ObjectSubscriber client;
    if (receive(signal, "CMI_GET_RESOURCE_DATA_REQ", client) == nullptr) return;
    if (client.objectType == kCabinet) {
        const CMI_CABINET_RESOURCE_S resource = cabinetResource(client.objectId);
        sendResource(CMI_GET_RESOURCE_DATA_CFM, client, &resource, sizeof resource);
    } else if (client.objectType == kFanGroup) {
        const LedRow* led = findLed(client.objectId);
        if (led == nullptr) {
            sendHeader(CMI_GET_RESOURCE_DATA_REJ, client, kNoLedRow);
            return;
        }
        const ose::be_u16 state = static_cast<std::uint16_t>(led->state);
        sendResource(CMI_GET_RESOURCE_DATA_CFM, client, &state, sizeof state);
    }
}

CMI_CABINET_RESOURCE_S CmiAdapter::cabinetResource(std::uint32_t funcInst)
{
    CMI_CABINET_RESOURCE_S resource{};
    std::uint32_t climateSystem = m_facades.climate != nullptr ? m_facades.climate->getClimateSystem() : 2;
    if (climateSystem > 1 || m_nodeRole == kPrimary) climateSystem = kClimateSystemOnPrimary;
    resource.climateSystem = climateSystem;
    const bool smoke = m_facades.cabinet->getSmokeDetectorStatus(funcInst);
    resource.smokeDetectorNow = smoke ? 1 : 0;
    // Once reported, the smoke detector stays reported.
    if (smoke && m_smokeDetectorLatched != 1) {
        m_smokeDetectorLatched = 1;
        m_facades.cabinet->setSmokeDetectorConfigured(funcInst, true);
    }
    resource.smokeDetector = static_cast<std::uint16_t>(m_smokeDetectorLatched);
    copyText(resource.cabinetIdentifier, m_facades.cabinet->getCabinetIdentifier(funcInst));
    const ProductData pid = m_facades.cabinet->getProductData(funcInst);
    copyText(resource.productName, pid.productName);
    copyText(resource.productNumber, pid.productNumber);
    copyText(resource.productRevision, pid.revState);
    copyText(resource.productionDate, pid.productionDate);
    copyText(resource.serialNumber, pid.serialNumber);
    return resource;
}

void CmiAdapter::resourceUpdate(std::uint32_t funcInst, const CMI_CABINET_RESOURCE_S& resource)
{
    SSC_TRACE(swuGroup(), kFlow, "Resource status data updated cabinetId: %s", std::to_string(funcInst).c_str());
    EC_LinkedListIterator<ObjectSubscriber> walk(m_dataSubscribers);
    while (const ObjectSubscriber* row = walk.next())
        if (row->objectId == funcInst && row->objectType == kCabinet)
            sendResource(CMI_RESOURCE_DATA_UPDATE_IND, *row, &resource, sizeof resource);
}

CmiAdapter::LedRow* CmiAdapter::findLed(std::uint32_t objectId)
{
    return m_fanGroupLeds.find([objectId](const LedRow& row) { return row.objectId == objectId; });
}

void CmiAdapter::ledStatus(std::uint32_t objectId, std::uint32_t state)
{
    LedRow* led = findLed(objectId);
    if (led == nullptr) return;
    SSC_TRACE(swuGroup(), kFlow, "Handle led status: %d for fanGroup: %d", static_cast<int>(state), static_cast<int>(objectId));
    if (led->state == state) return;
    SSC_TRACE(swuGroup(), kFlow, "Updated led status to: %d from %d for fanGroup: %d", static_cast<int>(state),
              static_cast<int>(led->state), static_cast<int>(objectId));
    led->state = state;
    const ose::be_u16 word = static_cast<std::uint16_t>(state);
    EC_LinkedListIterator<ObjectSubscriber> walk(m_dataSubscribers);
    while (const ObjectSubscriber* row = walk.next()) {
        if (row->objectId != objectId || row->objectType != kFanGroup) continue;
        SSC_TRACE(swuGroup(), kFlow, "Subscriber found for led status");
        sendResource(CMI_RESOURCE_DATA_UPDATE_IND, *row, &word, sizeof word);
    }
}

// ---- the climate report ----

void CmiAdapter::handleActionReq(ose::Signal* signal)
{
    const auto* request = OsService::view<CMI_ACTION_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "CMI_ACTION_REQ too short, dropped");
        return;
    }
    const ObjectSubscriber client{request->objectId, request->objectType, request->clientRef,
                                  m_pDispatcher->getSender(signal)};
    const std::uint16_t action = request->actionType;
    if (action != kStartClimateReport && action != kStopClimateReport) {
        SSC_TRACE(swuGroup(), kUnexpected, "Unknown action type: %d", static_cast<int>(action));
        return;
    }
    CMI_ACTION_CFM_S cfm{};
    cfm.sigNo = CMI_ACTION_CFM;
    cfm.clientRef = client.clientRef;
    cfm.objectId = client.objectId;
    cfm.objectType = client.objectType;
    cfm.actionType = action;
    ose::Signal* answer = OsService::alloc(sizeof cfm, CMI_ACTION_CFM);
    std::memcpy(static_cast<void*>(answer), &cfm, sizeof cfm);
    m_pDispatcher->sendSignal(answer, client.pid);
    const auto same = [&client](const ReportClient& row) {
        return row.pid == client.pid && row.clientRef == client.clientRef && row.objectId == client.objectId &&
               row.objectType == client.objectType;
    };
    ReportClient* row = m_algorithmDataSubscribers.find(same);
    if (action == kStartClimateReport) {
        if (row != nullptr) return;
        const std::int32_t handle = request->parameter != 0 && m_facades.climate != nullptr
                                        ? m_facades.climate->startAlgorithmParametersReport(request->parameter)
                                        : -1;
        m_algorithmDataSubscribers.addLast({client.pid, client.clientRef, client.objectId, client.objectType, handle});
        sendReport(client);
        return;
    }
    if (row == nullptr) return;
    if (m_facades.climate != nullptr) m_facades.climate->stopAlgorithmParametersReport(row->timerHandle);
    m_algorithmDataSubscribers.removeFirst(same);
    sendReport(client);
}

void CmiAdapter::climateReport(std::int32_t timerHandle)
{
    const ReportClient* row =
        m_algorithmDataSubscribers.find([timerHandle](const ReportClient& r) { return r.timerHandle == timerHandle; });
    if (row == nullptr) return;
    sendReport(ObjectSubscriber{row->objectId, row->objectType, row->clientRef, row->pid});
}

void CmiAdapter::sendReport(const ObjectSubscriber& client)
{
    ClimateReport report;
    if (m_facades.climate != nullptr) m_facades.climate->getClimateReport(&report);
    const std::size_t size = kReportBaseSize + kReportRowSize * report.hotSpots.size();
    std::string bytes(size, '\0');
    const auto put32 = [&bytes](std::size_t offset, std::int32_t value) {
        const ose::be_i32 word = value;
        std::memcpy(bytes.data() + offset, &word, sizeof word);
    };
    CMI_HEADER_S header{};
    header.sigNo = CMI_ACTION_IND;
    header.clientRef = client.clientRef;
    header.objectId = client.objectId;
    header.objectType = client.objectType;
    std::memcpy(bytes.data(), &header, sizeof header);
    for (std::size_t index = 0; index < ClimateReport::kWords; ++index)
        put32(kReportWordsOffset + 4 * index, report.words[index]);
    const ose::be_u16 count = static_cast<std::uint16_t>(report.hotSpots.size());
    std::memcpy(bytes.data() + kReportCountOffset, &count, sizeof count);
    for (std::size_t row = 0; row < report.hotSpots.size(); ++row)
        for (std::size_t index = 0; index < ClimateReport::kRowWords; ++index)
            put32(kReportRowsOffset + kReportRowSize * row + 4 * index, report.hotSpots[row][index]);
    ose::Signal* signal = OsService::alloc(static_cast<ose::OSBUFSIZE>(size), CMI_ACTION_IND);
    std::memcpy(static_cast<void*>(signal), bytes.data(), size);
    m_pDispatcher->sendSignal(signal, client.pid);
}

// ---- product data from the operator ----

void CmiAdapter::handleUpdateProductDataReq(ose::Signal* signal)
{
    const auto* request = OsService::view<CMI_UPDATE_PRODUCT_DATA_REQ_S>(signal);
    if (request == nullptr) {
        SSC_TRACE(swuGroup(), kUnexpected, "CMI_UPDATE_PRODUCT_DATA_REQ too short, dropped");
        return;
    }
    const ObjectSubscriber client{request->objectId, request->objectType, request->clientRef,
                                  m_pDispatcher->getSender(signal)};
    if (client.objectType != kCabinet) {
        CMI_UPDATE_PRODUCT_DATA_REJ_S rej{};
        rej.header.sigNo = CMI_UPDATE_PRODUCT_DATA_REJ;
        rej.header.clientRef = client.clientRef;
        rej.header.objectId = client.objectId;
        rej.header.objectType = client.objectType;
        ose::Signal* answer = OsService::alloc(sizeof rej, CMI_UPDATE_PRODUCT_DATA_REJ);
        std::memcpy(static_cast<void*>(answer), &rej, sizeof rej);
        m_pDispatcher->sendSignal(answer, client.pid);
        return;
    }
    sendHeader(CMI_UPDATE_PRODUCT_DATA_CFM, client);
    m_facades.cabinet->updateProductData(cabinet_converter::productDataOf(*request), client.objectId);
}

// ---- faults ----

// A fault goes to every configuration of its object; the equipment support
// function's to every configuration of one, whatever its object id.
void CmiAdapter::sendFault(ose::SIGSELECT sigNo, std::uint16_t faultType, std::uint16_t objectType,
                           std::uint32_t objectId, std::uint16_t hwType, const std::string& hubPosition)
{
    EC_LinkedListIterator<ObjectSubscriber> walk(m_configHolders);
    while (const ObjectSubscriber* row = walk.next()) {
        if (row->objectType != objectType) continue;
        if (objectType != kEquipmentSupportFunction && row->objectId != objectId) continue;
        CMI_FAULT_IND_S fault{};
        fault.header.sigNo = sigNo;
        fault.header.clientRef = row->clientRef;
        fault.header.objectId = objectId;
        fault.header.objectType = objectType;
        fault.header.word14 = faultType;
        fault.hwType = hwType;
        if (faultType == kFaultHwEntitiesMismatch && hwType != 0) copyText(fault.hubPosition, hubPosition);
        ose::Signal* signal = OsService::alloc(sizeof fault, sigNo);
        std::memcpy(static_cast<void*>(signal), &fault, sizeof fault);
        SSC_TRACE(swuGroup(), kFlow, sigNo == CMI_FAULT_IND ? "CMI_FAULT_IND signal is sent." : "CMI_FAULT_CEASE_IND signal is sent.");
        SSC_TRACE(swuGroup(), kFlow, "faultType = %d", static_cast<int>(faultType));
        m_pDispatcher->sendSignal(signal, row->pid);
    }
}

void CmiAdapter::fanGroupState(std::uint32_t funcInst, std::uint32_t state, std::uint32_t /*funcType*/)
{
    ledStatus(funcInst, state);
}
void CmiAdapter::disconnectFaultRaised(std::uint32_t funcInst)
{
    sendFault(CMI_FAULT_IND, kFaultSmokeDetectorDisconnected, kFanGroup, funcInst);
}
void CmiAdapter::hwFaultRaised(std::uint32_t funcInst) { sendFault(CMI_FAULT_IND, kFaultFanGroupHw, kFanGroup, funcInst); }
void CmiAdapter::disconnectFaultCeased(std::uint32_t funcInst)
{
    sendFault(CMI_FAULT_CEASE_IND, kFaultSmokeDetectorDisconnected, kFanGroup, funcInst);
}
void CmiAdapter::hwFaultCeased(std::uint32_t funcInst)
{
    sendFault(CMI_FAULT_CEASE_IND, kFaultFanGroupHw, kFanGroup, funcInst);
}

void CmiAdapter::cabinetPidUpdated(const ProductData& pid)
{
    if (m_facades.apcInciServer != nullptr) m_facades.apcInciServer->distributeCabinetPidUpdated(pid.toRecord());
}

void CmiAdapter::cabinetIdentifierUpdated(std::uint32_t funcInst)
{
    if (m_facades.apcInciServer != nullptr)
        m_facades.apcInciServer->distributeCabinetIdentifierUpdated(m_facades.cabinet->getCabinetIdentifier(funcInst));
    resourceUpdate(funcInst, cabinetResource(funcInst));
}

void CmiAdapter::productDataUpdated(const ProductData& /*pid*/, std::uint32_t funcInst)
{
    resourceUpdate(funcInst, cabinetResource(funcInst));
}

void CmiAdapter::smokeDetectorStatusUpdated(std::uint32_t funcInst) { resourceUpdate(funcInst, cabinetResource(funcInst)); }

void CmiAdapter::raiseSmokeDetectorDisconnected(const FuncId_t& f) { sendFault(CMI_FAULT_IND, kFaultSmokeDetectorDisconnected, kCabinet, f.FuncInst); }
void CmiAdapter::ceaseSmokeDetectorDisconnected(const FuncId_t& f) { sendFault(CMI_FAULT_CEASE_IND, kFaultSmokeDetectorDisconnected, kCabinet, f.FuncInst); }
void CmiAdapter::raiseDoorAlarm(const FuncId_t& f) { sendFault(CMI_FAULT_IND, kFaultDoor, kCabinet, f.FuncInst); }
void CmiAdapter::ceaseDoorAlarm(const FuncId_t& f) { sendFault(CMI_FAULT_CEASE_IND, kFaultDoor, kCabinet, f.FuncInst); }
void CmiAdapter::raiseCabinetPidMismatch(const FuncId_t& f) { sendFault(CMI_FAULT_IND, kFaultCabinetPidMismatch, kCabinet, f.FuncInst); }
void CmiAdapter::ceaseCabinetPidMismatch(const FuncId_t& f) { sendFault(CMI_FAULT_CEASE_IND, kFaultCabinetPidMismatch, kCabinet, f.FuncInst); }
void CmiAdapter::raiseSmokeDetectorAlarm(const FuncId_t& f) { sendFault(CMI_FAULT_IND, kFaultSmokeDetectorAlarm, kCabinet, f.FuncInst); }
void CmiAdapter::ceaseSmokeDetectorAlarm(const FuncId_t& f) { sendFault(CMI_FAULT_CEASE_IND, kFaultSmokeDetectorAlarm, kCabinet, f.FuncInst); }
void CmiAdapter::raiseSmokeDetectorHwFailure(const FuncId_t& f) { sendFault(CMI_FAULT_IND, kFaultSmokeDetectorHwFailure, kCabinet, f.FuncInst); }
void CmiAdapter::ceaseSmokeDetectorHwFailure(const FuncId_t& f) { sendFault(CMI_FAULT_CEASE_IND, kFaultSmokeDetectorHwFailure, kCabinet, f.FuncInst); }

// The cabinet's own and its fan groups' mismatch are the cabinet's; any
// unit's else is the node's.
void CmiAdapter::mismatch(ose::SIGSELECT sigNo, const FuncId_t& funcId, const std::string& hubPosition)
{
    const bool cabinet = funcId.FuncType == func_type::kCabinet || funcId.FuncType == func_type::kFan;
    sendFault(sigNo, kFaultHwEntitiesMismatch, cabinet ? kCabinet : kEquipmentSupportFunction,
              cabinet ? funcId.FuncInst : m_nodeObjectId, hwTypeOf(funcId.FuncType), hubPosition);
}

void CmiAdapter::raiseNumberOfHwEntitiesMismatch(const FuncId_t& funcId, const std::string& hubPosition)
{
    SSC_TRACE(swuGroup(), kFlow, "raise NumberOfHwEntitiesMismatch alarm for: FuncType: %d, FuncId: %d",
              static_cast<int>(funcId.FuncType), static_cast<int>(funcId.FuncInst));
    mismatch(CMI_FAULT_IND, funcId, hubPosition);
}

void CmiAdapter::ceaseNumberOfHwEntitiesMismatch(const FuncId_t& funcId, const std::string& hubPosition)
{
    SSC_TRACE(swuGroup(), kFlow, "cease NumberOfHwEntitiesMismatch alarm for: FuncType: %d, FuncId: %d",
              static_cast<int>(funcId.FuncType), static_cast<int>(funcId.FuncInst));
    mismatch(CMI_FAULT_CEASE_IND, funcId, hubPosition);
}

void CmiAdapter::raiseEquipSupFuncFault() { sendFault(CMI_FAULT_IND, kFaultSmokeDetectorDisconnected, kEquipmentSupportFunction, 0); }
void CmiAdapter::ceaseEquipSupFuncFault() { sendFault(CMI_FAULT_CEASE_IND, kFaultSmokeDetectorDisconnected, kEquipmentSupportFunction, 0); }

void CmiAdapter::hubPositionFault(ose::SIGSELECT sigNo, std::uint16_t faultType, const FuncId_t& funcId)
{
    if (funcId.FuncType != func_type::kEquipSupFunc) return;
    sendFault(sigNo, faultType, kEquipmentSupportFunction, funcId.FuncInst);
}
void CmiAdapter::raiseFaultyHubPosition(const FuncId_t& f) { hubPositionFault(CMI_FAULT_IND, kFaultFaultyHubPosition, f); }
void CmiAdapter::ceaseFaultyHubPosition(const FuncId_t& f) { hubPositionFault(CMI_FAULT_CEASE_IND, kFaultFaultyHubPosition, f); }
void CmiAdapter::raiseConflictingHubPosition(const FuncId_t& f) { hubPositionFault(CMI_FAULT_IND, kFaultConflictingHubPosition, f); }
void CmiAdapter::ceaseConflictingHubPosition(const FuncId_t& f) { hubPositionFault(CMI_FAULT_CEASE_IND, kFaultConflictingHubPosition, f); }

// ---- from the primary, on a secondary node ----

void CmiAdapter::climateSystemUpdated(std::uint32_t climateSystem, std::uint32_t funcInst)
{
    CMI_CABINET_RESOURCE_S resource = cabinetResource(funcInst);
    if (climateSystem > 1) {
        SSC_TRACE(swuGroup(), kError, "Faulty climateSystem received in APC_CLIMATE_SYSTEM_CONFIG_IND %d",
                  static_cast<int>(climateSystem));
        return;
    }
    resource.climateSystem = climateSystem;
    resourceUpdate(funcInst, resource);
}

void CmiAdapter::primaryProductDataUpdated(const std::string& productionDate, const std::string& productName,
                                           const std::string& productNumber, const std::string& productRevision,
                                           const std::string& serialNumber, std::uint32_t funcInst)
{
    CMI_CABINET_RESOURCE_S resource = cabinetResource(funcInst);
    copyText(resource.productionDate, productionDate);
    copyText(resource.productName, productName);
    copyText(resource.productNumber, productNumber);
    copyText(resource.productRevision, productRevision);
    copyText(resource.serialNumber, serialNumber);
    resourceUpdate(funcInst, resource);
    m_facades.cabinet->setProductData(ProductData(productNumber, productRevision, productName, productionDate, serialNumber),
                                      funcInst);
}

void CmiAdapter::primaryIdentifierUpdated(const std::string& identifier, std::uint32_t funcInst)
{
    CMI_CABINET_RESOURCE_S resource = cabinetResource(funcInst);
    copyText(resource.cabinetIdentifier, identifier);
    resourceUpdate(funcInst, resource);
    m_facades.cabinet->setCabinetIdentifier(funcInst, identifier);
}
