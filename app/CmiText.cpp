#include "app/CmiText.h"

#include "app/EmiText.h"

#include <cstring>

namespace cmi_text {

using namespace cmi;

CMI_CABINET_CONFIG_S outdoorCabinet()
{
    CMI_CABINET_CONFIG_S config{};
    config.parameters[1] = 2;    // numberOfBlowers
    config.parameters[2] = 100;  // flowFactor: fan speed = air flow
    config.parameters[3] = 70;   // nominalFanSpeed
    config.parameters[4] = 20;   // basicFanSpeed
    config.parameters[11] = 100; // placementFactorPSU
    config.parameters[16] = 1;   // fanGroup1Control: internal
    config.parameters[17] = 1;   // fanGroup2Control: internal
    config.parameters[23] = 5;   // heater1OnTemp
    config.parameters[24] = 10;  // heater1OffTemp
    config.parameters[25] = 0;   // heater2OnTemp
    config.parameters[26] = 5;   // heater2OffTemp
    config.parameters[27] = 20;  // intFanLoTemp
    config.parameters[28] = 35;  // intFanHiTemp
    config.parameters[29] = 30;  // extFanLoUpTemp
    config.parameters[30] = 40;  // extFanHiUpTemp
    config.parameters[31] = 25;  // extFanLoDownTemp
    config.parameters[32] = 35;  // extFanHiDownTemp
    config.parameters[33] = 50;  // extFanSpeedFault
    return config;
}

std::string request(ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t objectId, std::uint32_t clientRef,
                    const void* config, std::size_t size)
{
    CMI_SET_CONFIG_REQ_S body{};
    body.header.sigNo = sigNo;
    body.header.clientRef = clientRef;
    body.header.objectId = objectId;
    body.header.objectType = objectType;
    if (config != nullptr) std::memcpy(body.config, config, std::min(size, sizeof body.config));
    const std::size_t length = sigNo == CMI_SET_CONFIG_REQ ? sizeof body : sizeof body.header;
    return std::string(reinterpret_cast<const char*>(&body), length);
}

std::string nodeConfig(bool primary, const std::string& logicalName)
{
    CMI_EQUIPMENT_SUPPORT_FUNCTION_CONFIG_S config{};
    config.supportSystemControl = primary ? 1 : 0;
    copyField(config.logicalName, logicalName);
    return request(CMI_SET_CONFIG_REQ, kEquipmentSupportFunction, 1, kEquipmentSupportFunction, &config, sizeof config);
}

std::string fanGroupConfig(std::uint32_t objectId, std::uint16_t fanGroupId, std::uint32_t cabinetId,
                           std::uint32_t clientRef)
{
    CMI_FAN_GROUP_CONFIG_S config{};
    config.fanGroupId = fanGroupId;
    config.parentObjectId = cabinetId;
    return request(CMI_SET_CONFIG_REQ, kFanGroup, objectId, clientRef, &config, sizeof config);
}

std::string startReport(std::uint32_t objectId, std::uint16_t periodicity, std::uint32_t clientRef)
{
    CMI_ACTION_REQ_S action{};
    action.sigNo = CMI_ACTION_REQ;
    action.clientRef = clientRef;
    action.objectId = objectId;
    action.objectType = kCabinet;
    action.actionType = kStartClimateReport;
    action.parameter = periodicity;
    return std::string(reinterpret_cast<const char*>(&action), sizeof action);
}

namespace {

const char* faultText(std::uint16_t objectType, std::uint16_t faultType)
{
    switch (faultType) {
    case 0:
        return objectType == kFanGroup ? "fan group disconnected"
               : objectType == kCabinet ? "smoke detector disconnected"
                                        : "no contact with the primary";
    case 1: return "door open";
    case 2: return "cabinet identity mismatch";
    case 3: return "smoke";
    case 4: return "smoke detector failure";
    case 5: return "fan group failure";
    case 6: return "hardware entities mismatch";
    case 7: return "faulty hub position";
    case 8: return "conflicting hub position";
    default: return "unknown";
    }
}

std::string objectOf(const CMI_HEADER_S& header)
{
    if (header.objectType == kFanGroup) return "fan group " + std::to_string(header.objectId);
    if (header.objectType == kCabinet) return "cabinet " + std::to_string(header.objectId);
    return "node";
}

std::string text(const char* field, std::size_t size) { return std::string(field, strnlen(field, size)); }

std::string resource(const std::string& bytes, const CMI_HEADER_S& header)
{
    if (bytes.size() < sizeof(CMI_RESOURCE_DATA_S)) return {};
    if (header.objectType == kFanGroup) {
        const std::uint16_t state = static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[16]) << 8 |
                                                               static_cast<unsigned char>(bytes[17]));
        return objectOf(header) + ": LED " + emi_text::ledText(state);
    }
    CMI_CABINET_RESOURCE_S cabinet;
    std::memcpy(&cabinet, bytes.data() + sizeof(CMI_HEADER_S), sizeof cabinet);
    return objectOf(header) + ": climate system " + std::to_string(cabinet.climateSystem) + ", identifier \"" +
           text(cabinet.cabinetIdentifier, sizeof cabinet.cabinetIdentifier) + "\", serial \"" +
           text(cabinet.serialNumber, sizeof cabinet.serialNumber) + "\", smoke detector " +
           std::to_string(cabinet.smokeDetector);
}

std::string report(const std::string& bytes)
{
    if (bytes.size() < kReportBaseSize) return {};
    const auto word = [&bytes](std::size_t offset) {
        std::int32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) value = static_cast<std::int32_t>(static_cast<std::uint32_t>(value) << 8 |
                                                                             static_cast<unsigned char>(bytes[offset + i]));
        return value;
    };
    const std::size_t hotSpots = static_cast<unsigned char>(bytes[kReportCountOffset]) << 8 |
                                 static_cast<unsigned char>(bytes[kReportCountOffset + 1]);
    char line[200];
    std::snprintf(line, sizeof line,
                  "climate report: internal fans %d %%, external %d %%, demand %.2f, hottest spot %.2f C, %zu hot spots",
                  word(kReportWordsOffset + 4 * 4), word(kReportWordsOffset + 4 * 5),
                  word(kReportWordsOffset + 4 * 2) / 100000.0, word(kReportWordsOffset + 4 * 6) / 100.0, hotSpots);
    return line;
}

} // namespace

std::string describe(const std::string& bytes)
{
    if (bytes.size() < sizeof(CMI_HEADER_S)) return {};
    CMI_HEADER_S header;
    std::memcpy(&header, bytes.data(), sizeof header);
    const std::string object = objectOf(header);
    switch (header.sigNo) {
    case CMI_SET_CONFIG_CFM: return object + ": configured";
    case CMI_SET_CONFIG_REJ: return object + ": refused, error " + std::to_string(header.word14);
    case CMI_DELETE_CONFIG_CFM: return object + ": deleted";
    case CMI_SUBSCRIBE_RESOURCE_DATA_CFM: return object + ": subscribed";
    case CMI_SUBSCRIBE_RESOURCE_DATA_REJ:
    case CMI_GET_RESOURCE_DATA_REJ: return object + ": not configured by this client";
    case CMI_RESOURCE_DATA_UPDATE_IND:
    case CMI_GET_RESOURCE_DATA_CFM: return resource(bytes, header);
    case CMI_FAULT_IND:
        return object + ": fault " + std::to_string(header.word14) + " (" + faultText(header.objectType, header.word14) + ")";
    case CMI_FAULT_CEASE_IND:
        return object + ": fault " + std::to_string(header.word14) + " (" + faultText(header.objectType, header.word14) +
               ") ceased";
    case CMI_ACTION_IND: return report(bytes);
    default: return {};
    }
}

} // namespace cmi_text
