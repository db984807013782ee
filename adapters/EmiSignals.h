#pragma once
// Signals of the equipment management interface (EMI), as they stand on the
// wire: big-endian fields at fixed offsets behind a common header. The server
// is "ssc_equipment_management_server".

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <cstdint>

namespace emi {

inline constexpr const char* kServerName = "ssc_equipment_management_server";

inline constexpr ose::SIGSELECT EMI_SET_CONFIG_REQ = 0x1704501;
inline constexpr ose::SIGSELECT EMI_SET_CONFIG_CFM = 0x1704502;
inline constexpr ose::SIGSELECT EMI_SET_CONFIG_REJ = 0x1704503;
inline constexpr ose::SIGSELECT EMI_DELETE_CONFIG_REQ = 0x1704504;
inline constexpr ose::SIGSELECT EMI_DELETE_CONFIG_CFM = 0x1704505;
inline constexpr ose::SIGSELECT EMI_SUBSCRIBE_RESOURCE_DATA_REQ = 0x1704506;
inline constexpr ose::SIGSELECT EMI_SUBSCRIBE_RESOURCE_DATA_CFM = 0x1704507;
inline constexpr ose::SIGSELECT EMI_RESOURCE_DATA_UPDATE_IND = 0x1704508;
inline constexpr ose::SIGSELECT EMI_SUBSCRIBE_RESOURCE_DATA_REJ = 0x1704509;
inline constexpr ose::SIGSELECT EMI_UNSUBSCRIBE_RESOURCE_DATA_REQ = 0x170450A;
inline constexpr ose::SIGSELECT EMI_UNSUBSCRIBE_RESOURCE_DATA_CFM = 0x170450B;
inline constexpr ose::SIGSELECT EMI_GET_RESOURCE_DATA_REQ = 0x170450C;
inline constexpr ose::SIGSELECT EMI_GET_RESOURCE_DATA_CFM = 0x170450D;
inline constexpr ose::SIGSELECT EMI_GET_RESOURCE_DATA_REJ = 0x170450E;
inline constexpr ose::SIGSELECT EMI_FAULT_IND = 0x170450F;
inline constexpr ose::SIGSELECT EMI_FAULT_CEASE_IND = 0x1704510;
inline constexpr ose::SIGSELECT EMI_ACTION_REQ = 0x1704511;
inline constexpr ose::SIGSELECT EMI_ACTION_CFM = 0x1704512;
inline constexpr ose::SIGSELECT EMI_ACTION_IND = 0x1704513;
inline constexpr ose::SIGSELECT EMI_ACTION_REJ = 0x1704514;
inline constexpr ose::SIGSELECT EMI_GET_UNIT_PRODUCT_DATA_REQ = 0x1704518;
inline constexpr ose::SIGSELECT EMI_GET_UNIT_PRODUCT_DATA_CFM = 0x1704519;
inline constexpr ose::SIGSELECT EMI_GET_UNIT_PRODUCT_DATA_REJ = 0x170451A;
inline constexpr ose::SIGSELECT EMI_GET_UNIT_MEASUREMENT_DATA_REQ = 0x170451B;
inline constexpr ose::SIGSELECT EMI_GET_UNIT_MEASUREMENT_DATA_CFM = 0x170451C;
inline constexpr ose::SIGSELECT EMI_GET_UNIT_MEASUREMENT_DATA_REJ = 0x170451D;

// objectType.
enum ObjectType : std::uint16_t {
    kExternalNode = 0,
    kScu = 1,
    kSau = 2,
    kPsu = 3,
    kPdu = 4,
    kBfu = 5,
    kEfuse = 6,
    kAlarmPortGroup = 7,
    kClu = 8,
};

// actionType.
enum ActionType : std::uint16_t { kReset = 0, kReportScuClimateParams = 1 };

inline constexpr std::size_t kHubPositionSize = 12;
inline constexpr std::size_t kMaxHubPositions = 6;
inline constexpr std::size_t kResourceDataSize = 516;
inline constexpr std::size_t kActionResultSize = 36;

// The first 16 bytes of every EMI signal; the request's body follows.
struct EMI_HEADER_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef; // echoed in every answer to the client
    ose::be_u16 objectType;
    ose::be_u8 pad[2];
    ose::be_u32 objectId;
};
OSE_SIGNAL_LAYOUT(EMI_HEADER_S, 16);

// EMI_SET_CONFIG_REQ, 284 bytes: a configuration union of 268 bytes. The
// views below read it for each objectType.
struct EMI_SET_CONFIG_REQ_S {
    EMI_HEADER_S header;
    ose::be_u8 config[268];
};
OSE_SIGNAL_LAYOUT(EMI_SET_CONFIG_REQ_S, 284);

// objectType 1 to 5 and 8: the unit's hub position and cascading order; an
// SCU also names its cabinet.
struct EMI_SET_CONFIG_HWU_REQ_S {
    EMI_HEADER_S header;
    char hubPosition[kHubPositionSize];
    ose::be_u8 cascadingOrder;
    ose::be_u8 pad[3];
    ose::be_u32 cabinetFuncInst;
    ose::be_u8 rest[248];
};
OSE_SIGNAL_LAYOUT(EMI_SET_CONFIG_HWU_REQ_S, 284);

// objectType 0: up to six hub positions of an external node.
struct EMI_SET_CONFIG_NODE_REQ_S {
    EMI_HEADER_S header;
    ose::be_u16 numberOfHubPositions;
    char hubPositions[kMaxHubPositions][kHubPositionSize];
    ose::be_u8 rest[194];
};
OSE_SIGNAL_LAYOUT(EMI_SET_CONFIG_NODE_REQ_S, 284);

// objectType 6: the PDU that holds the e-fuse.
struct EMI_SET_CONFIG_EFUSE_REQ_S {
    EMI_HEADER_S header;
    ose::be_u32 pduObjectId;
    ose::be_u8 rest[264];
};
OSE_SIGNAL_LAYOUT(EMI_SET_CONFIG_EFUSE_REQ_S, 284);

// objectType 7: an alarm port group.
struct EMI_SET_CONFIG_ALARM_PORT_GROUP_REQ_S {
    EMI_HEADER_S header;
    char huntPath[256];
    ose::be_u16 typeOfUnit; // 0 SCU, 1 SAU, 2 RRU
    ose::be_u16 unitInstance;
    ose::be_u16 groupOfPort;
    ose::be_u16 parentObjectType;
    ose::be_u32 parentObjectId;
};
OSE_SIGNAL_LAYOUT(EMI_SET_CONFIG_ALARM_PORT_GROUP_REQ_S, 284);

// Every REQ without a body and every CFM without one: the header alone.
// EMI_SET_CONFIG_CFM, EMI_DELETE_CONFIG_REQ/CFM, EMI_SUBSCRIBE_RESOURCE_DATA_REQ/CFM,
// EMI_UNSUBSCRIBE_RESOURCE_DATA_REQ/CFM, EMI_GET_RESOURCE_DATA_REQ,
// EMI_GET_UNIT_PRODUCT_DATA_REQ, EMI_GET_UNIT_MEASUREMENT_DATA_REQ.
using EMI_REQ_S = EMI_HEADER_S;

// Every REJ but the action's: EMI_SET_CONFIG_REJ, EMI_SUBSCRIBE_RESOURCE_DATA_REJ,
// EMI_GET_RESOURCE_DATA_REJ, EMI_GET_UNIT_PRODUCT_DATA_REJ,
// EMI_GET_UNIT_MEASUREMENT_DATA_REJ.
struct EMI_REJ_S {
    EMI_HEADER_S header;
    ose::be_u16 errorCode;
    ose::be_u8 pad[2];
};
OSE_SIGNAL_LAYOUT(EMI_REJ_S, 20);

// EMI_RESOURCE_DATA_UPDATE_IND and EMI_GET_RESOURCE_DATA_CFM: 516 bytes of
// resource data. A unit fills u16 words from the start (operational flag,
// LEDs, then the second status flag); an e-fuse its LED word.
struct EMI_RESOURCE_DATA_S {
    EMI_HEADER_S header;
    ose::be_u16 words[kResourceDataSize / 2];
};
OSE_SIGNAL_LAYOUT(EMI_RESOURCE_DATA_S, 532);

// The same for an external node.
struct EMI_RESOURCE_DATA_NODE_S {
    EMI_HEADER_S header;
    char logicalName[256];
    char fullDistinguishedName[256];
    ose::be_u16 radioAccessTechnology;
    ose::be_u16 supportSystemControl;
};
OSE_SIGNAL_LAYOUT(EMI_RESOURCE_DATA_NODE_S, 532);

// EMI_FAULT_IND and EMI_FAULT_CEASE_IND.
struct EMI_FAULT_IND_S {
    EMI_HEADER_S header;
    ose::be_u16 faultType;
    ose::be_u8 pad[2];
};
OSE_SIGNAL_LAYOUT(EMI_FAULT_IND_S, 20);

struct EMI_ACTION_REQ_S {
    EMI_HEADER_S header;
    ose::be_u16 actionType;
    ose::be_u8 pad[2];
    ose::be_u8 data[4]; // not read by the core
};
OSE_SIGNAL_LAYOUT(EMI_ACTION_REQ_S, 24);

struct EMI_ACTION_CFM_S {
    EMI_HEADER_S header;
    ose::be_u16 actionType;
    ose::be_u8 pad[2];
};
OSE_SIGNAL_LAYOUT(EMI_ACTION_CFM_S, 20);

struct EMI_ACTION_IND_S {
    EMI_HEADER_S header;
    ose::be_u16 actionType;
    ose::be_u8 pad[2];
    ose::be_u8 result[kActionResultSize];
};
OSE_SIGNAL_LAYOUT(EMI_ACTION_IND_S, 56);

struct EMI_ACTION_REJ_S {
    EMI_HEADER_S header;
    ose::be_u16 actionType;
    ose::be_u16 errorCode;
};
OSE_SIGNAL_LAYOUT(EMI_ACTION_REJ_S, 20);

// Strings copied with their full widths.
struct EMI_GET_UNIT_PRODUCT_DATA_CFM_S {
    EMI_HEADER_S header;
    char productionDate[9];
    char productName[13];
    char productNumber[25];
    char productRevision[7];
    char serialNumber[14];
};
OSE_SIGNAL_LAYOUT(EMI_GET_UNIT_PRODUCT_DATA_CFM_S, 84);

// Four words, each a measured value cut to an integer.
struct EMI_GET_UNIT_MEASUREMENT_DATA_CFM_S {
    EMI_HEADER_S header;
    ose::be_i32 words[4];
};
OSE_SIGNAL_LAYOUT(EMI_GET_UNIT_MEASUREMENT_DATA_CFM_S, 32);

} // namespace emi
