#pragma once
// Signals of the cabinet management interface (CMI), as they stand on the
// wire: big-endian fields at fixed offsets. The server is
// "ssc_cabinet_management_server"; the object layer configures cabinets, fan
// groups and the node's equipment support function through it.

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <cstdint>

namespace cmi {

inline constexpr const char* kServerName = "ssc_cabinet_management_server";

inline constexpr ose::SIGSELECT CMI_SET_CONFIG_REQ = 0x1704301;
inline constexpr ose::SIGSELECT CMI_SET_CONFIG_CFM = 0x1704302;
inline constexpr ose::SIGSELECT CMI_SET_CONFIG_REJ = 0x1704303;
inline constexpr ose::SIGSELECT CMI_DELETE_CONFIG_REQ = 0x1704304;
inline constexpr ose::SIGSELECT CMI_DELETE_CONFIG_CFM = 0x1704305;
inline constexpr ose::SIGSELECT CMI_SUBSCRIBE_RESOURCE_DATA_REQ = 0x1704306;
inline constexpr ose::SIGSELECT CMI_SUBSCRIBE_RESOURCE_DATA_CFM = 0x1704307;
inline constexpr ose::SIGSELECT CMI_RESOURCE_DATA_UPDATE_IND = 0x1704308;
inline constexpr ose::SIGSELECT CMI_SUBSCRIBE_RESOURCE_DATA_REJ = 0x1704309;
inline constexpr ose::SIGSELECT CMI_UNSUBSCRIBE_RESOURCE_DATA_REQ = 0x170430A;
inline constexpr ose::SIGSELECT CMI_UNSUBSCRIBE_RESOURCE_DATA_CFM = 0x170430B;
inline constexpr ose::SIGSELECT CMI_GET_RESOURCE_DATA_REQ = 0x170430C;
inline constexpr ose::SIGSELECT CMI_GET_RESOURCE_DATA_CFM = 0x170430D;
inline constexpr ose::SIGSELECT CMI_GET_RESOURCE_DATA_REJ = 0x170430E;
inline constexpr ose::SIGSELECT CMI_FAULT_IND = 0x170430F;
inline constexpr ose::SIGSELECT CMI_FAULT_CEASE_IND = 0x1704310;
inline constexpr ose::SIGSELECT CMI_ACTION_REQ = 0x1704311;
inline constexpr ose::SIGSELECT CMI_ACTION_CFM = 0x1704312;
inline constexpr ose::SIGSELECT CMI_ACTION_IND = 0x1704313;
inline constexpr ose::SIGSELECT CMI_ACTION_REJ = 0x1704314;
inline constexpr ose::SIGSELECT CMI_UPDATE_PRODUCT_DATA_REQ = 0x1704315;
inline constexpr ose::SIGSELECT CMI_UPDATE_PRODUCT_DATA_CFM = 0x1704316;
inline constexpr ose::SIGSELECT CMI_UPDATE_PRODUCT_DATA_REJ = 0x1704317;

// objectType.
enum ObjectType : std::uint16_t { kFanGroup = 0, kCabinet = 1, kEquipmentSupportFunction = 2 };
// errorCode.
inline constexpr std::uint16_t kUnknownObjectType = 0;
inline constexpr std::uint16_t kFanGroupIdOutOfRange = 1;
inline constexpr std::uint16_t kClimateSystemUnknown = 2;
inline constexpr std::uint16_t kNotConfigured = 1;
inline constexpr std::uint16_t kNoLedRow = 2;
// actionType.
inline constexpr std::uint16_t kStartClimateReport = 0;
inline constexpr std::uint16_t kStopClimateReport = 1;

// Offset 14 is the errorCode in a REJ, the faultType in a fault, else 0.
struct CMI_HEADER_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 objectId;
    ose::be_u16 objectType;
    ose::be_u16 word14;
};
OSE_SIGNAL_LAYOUT(CMI_HEADER_S, 16);

inline constexpr std::size_t kCabinetParameters = 45;

// The cabinet's configuration at offset 16: parameters in the order of the
// climate record, with versionNumber first and doorSwitch among them.
struct CMI_CABINET_CONFIG_S {
    ose::be_u32 climateControlMode;
    ose::be_u32 climateSystem;
    ose::be_i16 parameters[kCabinetParameters];
    char productionDate[9];
    char productName[13];
    char productNumber[25];
    char productRevision[8];
    char serialNumber[14];
    char unused;
    ose::be_i16 smokeDetector;
    ose::be_u16 unused2;
};
OSE_SIGNAL_LAYOUT(CMI_CABINET_CONFIG_S, 172);
// Index in `parameters` of the two that are not climate numbers.
inline constexpr std::size_t kVersionNumberIndex = 0;
inline constexpr std::size_t kDoorSwitchIndex = 22;
inline constexpr std::size_t kConcurrentFanControlIndex = 35;

struct CMI_FAN_GROUP_CONFIG_S {
    ose::be_u16 fanGroupId;
    ose::be_u16 unused;
    ose::be_u32 parentObjectId;
};
OSE_SIGNAL_LAYOUT(CMI_FAN_GROUP_CONFIG_S, 8);

struct CMI_EQUIPMENT_SUPPORT_FUNCTION_CONFIG_S {
    ose::be_u16 supportSystemControl;
    ose::be_u16 numberOfHubPositions;
    char hubPositions[6][12];
    char logicalName[256];
    char fullDistinguishedName[256];
    ose::be_u16 radioAccessTechnology;
    char productNameME[13];
    char unused;
};
OSE_SIGNAL_LAYOUT(CMI_EQUIPMENT_SUPPORT_FUNCTION_CONFIG_S, 604);

struct CMI_SET_CONFIG_REQ_S {
    CMI_HEADER_S header;
    ose::be_u8 config[604]; // by objectType, one of the three above
};
OSE_SIGNAL_LAYOUT(CMI_SET_CONFIG_REQ_S, 620);

// Resource data: a cabinet's, or a fan group's LED state in its first u16.
struct CMI_CABINET_RESOURCE_S {
    ose::be_u32 climateSystem; // 0 or 1 on a secondary node; 99 on the primary and for any other value
    char cabinetIdentifier[39];
    char productionDate[9];
    char productName[13];
    char productNumber[25];
    char productRevision[8];
    char serialNumber[14];
    ose::be_u16 smokeDetector; // latched: 1 once the detector reported, for good
    ose::be_u8 smokeDetectorNow;
    ose::be_u8 unused;
};
OSE_SIGNAL_LAYOUT(CMI_CABINET_RESOURCE_S, 116);

struct CMI_RESOURCE_DATA_S {
    CMI_HEADER_S header;
    ose::be_u8 data[116];
};
OSE_SIGNAL_LAYOUT(CMI_RESOURCE_DATA_S, 132);

struct CMI_FAULT_IND_S {
    CMI_HEADER_S header; // faultType at 14
    ose::be_u16 hwType;
    char hubPosition[12];
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(CMI_FAULT_IND_S, 32);

// actionType at 12 and objectType at 14 (not as in the header).
struct CMI_ACTION_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 objectId;
    ose::be_u16 actionType;
    ose::be_u16 objectType;
    ose::be_u16 parameter;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(CMI_ACTION_REQ_S, 20);

// objectType at 12, actionType at 14.
struct CMI_ACTION_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 objectId;
    ose::be_u16 objectType;
    ose::be_u16 actionType;
};
OSE_SIGNAL_LAYOUT(CMI_ACTION_CFM_S, 16);

// The climate report: 21 words, the number of hot spots, then their rows of
// 11 words; the buffer is 148 + 44 n bytes.
inline constexpr std::size_t kReportWordsOffset = 16;
inline constexpr std::size_t kReportCountOffset = 100;
inline constexpr std::size_t kReportRowsOffset = 104;
inline constexpr std::size_t kReportBaseSize = 148;
inline constexpr std::size_t kReportRowSize = 44;

struct CMI_UPDATE_PRODUCT_DATA_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u16 objectType;
    ose::be_u16 unused;
    ose::be_u32 objectId;
    char productionDate[9];
    char productName[13];
    char productNumber[25];
    char productRevision[8];
    char serialNumber[15];
    ose::be_u16 unused2;
};
OSE_SIGNAL_LAYOUT(CMI_UPDATE_PRODUCT_DATA_REQ_S, 88);

struct CMI_UPDATE_PRODUCT_DATA_REJ_S {
    CMI_HEADER_S header;
    ose::be_u16 errorCode;
    ose::be_u16 unused;
};
OSE_SIGNAL_LAYOUT(CMI_UPDATE_PRODUCT_DATA_REJ_S, 20);

} // namespace cmi
