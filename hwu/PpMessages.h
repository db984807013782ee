#pragma once
// The PP message numbers of the EC bus. A request N is answered by a confirm
// N + 1 or a reject N + 2. Shared by the core and the bus simulator: the
// numbers are the wire format.

#include <cstdint>

namespace pp {

using MessageNo = std::uint8_t;

inline constexpr MessageNo CC_RESET_FWD = 3;
inline constexpr MessageNo CC_CLEAR_START_FLAG_REQ = 4;
inline constexpr MessageNo CC_HW_PID_REQ = 8;
inline constexpr MessageNo CC_VISUAL_INDICATION_REQ = 12;
inline constexpr MessageNo PSU_GET_CAPABILITIES_REQ = 64;
inline constexpr MessageNo PSU_SET_OUTPUT_VOLTAGE_REQ = 68;
inline constexpr MessageNo PSU_GET_MEASUREMENTS_REQ = 72;
inline constexpr MessageNo PSU_GET_STATUS_REQ = 76;
inline constexpr MessageNo PSU_GET_ADD_CAPABILITIES_REQ = 80;
inline constexpr MessageNo BFU_GET_CAPABILITIES_REQ = 112;
inline constexpr MessageNo BFU_SET_CONFIG_REQ = 115;
inline constexpr MessageNo BFU_SET_CONTROL_REQ = 118;
inline constexpr MessageNo BFU_GET_MEASUREMENTS_REQ = 121;
inline constexpr MessageNo BFU_GET_STATUS_REQ = 124;
inline constexpr MessageNo CLU_GET_CAPABILITIES_REQ = 128;
inline constexpr MessageNo UNUSED_132_REQ = 132;
inline constexpr MessageNo CLU_SET_FAN_SPEED_FWD = 135;
inline constexpr MessageNo CLU_GET_MEASUREMENTS_REQ = 136;
inline constexpr MessageNo CLU_GET_STATUS_REQ = 140;
inline constexpr MessageNo SCU_GET_ADD_CAPABILITIES_REQ = 144;
inline constexpr MessageNo SCU_SET_ADD_CONFIG_REQ = 147;
inline constexpr MessageNo SCU_EXTENDED_CONTROL_REQ = 150;
inline constexpr MessageNo SCU_GET_EXT_STATUS_REQ = 153;
inline constexpr MessageNo PDU_GET_CAPABILITIES_REQ = 160;
inline constexpr MessageNo PDU_SET_LIMITS_REQ = 163;
inline constexpr MessageNo PDU_SET_EFUSES_REQ = 166;
inline constexpr MessageNo PDU_GET_MEASUREMENTS_REQ = 169;
inline constexpr MessageNo PDU_GET_STATUS_REQ = 172;
inline constexpr MessageNo BFU_GET_ADD_CAPABILITIES_REQ = 176;
inline constexpr MessageNo BFU_EXTENDED_CONTROL_REQ = 182;
inline constexpr MessageNo BFU_GET_EXT_STATUS_REQ = 185;
inline constexpr MessageNo SCU_GET_CAPABILITIES_REQ = 192;
inline constexpr MessageNo SCU_SET_CONFIG_REQ = 195;
inline constexpr MessageNo SCU_SET_FAN_SPEED_REQ = 198;
inline constexpr MessageNo SCU_GET_MEASUREMENTS_REQ = 201;
inline constexpr MessageNo SCU_GET_STATUS_REQ = 204;
inline constexpr MessageNo SCU_GET_CABINET_PID_REQ = 208;
inline constexpr MessageNo SCU_SET_CABINET_PID_REQ = 211;
inline constexpr MessageNo UNUSED_230_REQ = 230;
inline constexpr MessageNo SAU_GET_CAPABILITIES_REQ = 224;
inline constexpr MessageNo SAU_GET_STATUS_REQ = 236;

// The catalogue: every request the frame code knows, how often it may go
// out, and whether it wants an answer. A message of "get" kind reads a
// record; "set" carries one; "forward" goes out once and is not answered.
enum class Kind : std::uint8_t { Get, Set, Forward };

struct CatalogueEntry {
    MessageNo request;
    const char* name;
    Kind kind;
    std::uint8_t sends;        // times the message may go out
    std::uint8_t answerNeeded; // smallest length of the confirm; 0 for a list or none
};

inline constexpr CatalogueEntry kCatalogue[] = {
    {CC_RESET_FWD, "CC_RESET_FWD", Kind::Forward, 1, 0},
    {CC_CLEAR_START_FLAG_REQ, "CC_CLEAR_START_FLAG_REQ", Kind::Set, 3, 2},
    {CC_HW_PID_REQ, "CC_HW_PID_REQ", Kind::Get, 3, 70},
    {CC_VISUAL_INDICATION_REQ, "CC_VISUAL_INDICATION_REQ", Kind::Set, 3, 2},
    {PSU_GET_CAPABILITIES_REQ, "PSU_GET_CAPABILITIES_REQ", Kind::Get, 3, 11},
    {PSU_SET_OUTPUT_VOLTAGE_REQ, "PSU_SET_OUTPUT_VOLTAGE_REQ", Kind::Set, 3, 2},
    {PSU_GET_MEASUREMENTS_REQ, "PSU_GET_MEASUREMENTS_REQ", Kind::Get, 1, 8},
    {PSU_GET_STATUS_REQ, "PSU_GET_STATUS_REQ", Kind::Get, 1, 4},
    {PSU_GET_ADD_CAPABILITIES_REQ, "PSU_GET_ADD_CAPABILITIES_REQ", Kind::Get, 3, 0},
    {BFU_GET_CAPABILITIES_REQ, "BFU_GET_CAPABILITIES_REQ", Kind::Get, 3, 18},
    {BFU_SET_CONFIG_REQ, "BFU_SET_CONFIG_REQ", Kind::Set, 3, 2},
    {BFU_SET_CONTROL_REQ, "BFU_SET_CONTROL_REQ", Kind::Set, 3, 2},
    {BFU_GET_MEASUREMENTS_REQ, "BFU_GET_MEASUREMENTS_REQ", Kind::Get, 1, 9},
    {BFU_GET_STATUS_REQ, "BFU_GET_STATUS_REQ", Kind::Get, 1, 4},
    {CLU_GET_CAPABILITIES_REQ, "CLU_GET_CAPABILITIES_REQ", Kind::Get, 3, 4},
    {UNUSED_132_REQ, "REQ_132", Kind::Set, 3, 2},
    {CLU_SET_FAN_SPEED_FWD, "CLU_SET_FAN_SPEED_FWD", Kind::Forward, 1, 0},
    {CLU_GET_MEASUREMENTS_REQ, "CLU_GET_MEASUREMENTS_REQ", Kind::Get, 1, 11},
    {CLU_GET_STATUS_REQ, "CLU_GET_STATUS_REQ", Kind::Get, 1, 4},
    {SCU_GET_ADD_CAPABILITIES_REQ, "SCU_GET_ADD_CAPABILITIES_REQ", Kind::Get, 3, 0},
    {SCU_SET_ADD_CONFIG_REQ, "SCU_SET_ADD_CONFIG_REQ", Kind::Set, 3, 2},
    {SCU_EXTENDED_CONTROL_REQ, "SCU_EXTENDED_CONTROL_REQ", Kind::Set, 3, 2},
    {SCU_GET_EXT_STATUS_REQ, "SCU_GET_EXT_STATUS_REQ", Kind::Get, 3, 0},
    {PDU_GET_CAPABILITIES_REQ, "PDU_GET_CAPABILITIES_REQ", Kind::Get, 3, 24},
    {PDU_SET_LIMITS_REQ, "PDU_SET_LIMITS_REQ", Kind::Set, 3, 2},
    {PDU_SET_EFUSES_REQ, "PDU_SET_EFUSES_REQ", Kind::Set, 3, 2},
    {PDU_GET_MEASUREMENTS_REQ, "PDU_GET_MEASUREMENTS_REQ", Kind::Get, 1, 4},
    {PDU_GET_STATUS_REQ, "PDU_GET_STATUS_REQ", Kind::Get, 1, 16},
    {BFU_GET_ADD_CAPABILITIES_REQ, "BFU_GET_ADD_CAPABILITIES_REQ", Kind::Get, 1, 0},
    {BFU_EXTENDED_CONTROL_REQ, "BFU_EXTENDED_CONTROL_REQ", Kind::Set, 3, 2},
    {BFU_GET_EXT_STATUS_REQ, "BFU_GET_EXT_STATUS_REQ", Kind::Get, 1, 0},
    {SCU_GET_CAPABILITIES_REQ, "SCU_GET_CAPABILITIES_REQ", Kind::Get, 3, 30},
    {SCU_SET_CONFIG_REQ, "SCU_SET_CONFIG_REQ", Kind::Set, 3, 2},
    {SCU_SET_FAN_SPEED_REQ, "SCU_SET_FAN_SPEED_REQ", Kind::Set, 3, 2},
    {SCU_GET_MEASUREMENTS_REQ, "SCU_GET_MEASUREMENTS_REQ", Kind::Get, 1, 3},
    {SCU_GET_STATUS_REQ, "SCU_GET_STATUS_REQ", Kind::Get, 1, 8},
    {SCU_GET_CABINET_PID_REQ, "SCU_GET_CABINET_PID_REQ", Kind::Get, 3, 70},
    {SCU_SET_CABINET_PID_REQ, "SCU_SET_CABINET_PID_REQ", Kind::Set, 3, 2},
    {SAU_GET_CAPABILITIES_REQ, "SAU_GET_CAPABILITIES_REQ", Kind::Get, 3, 7},
    {UNUSED_230_REQ, "REQ_230", Kind::Set, 3, 2},
    {SAU_GET_STATUS_REQ, "SAU_GET_STATUS_REQ", Kind::Get, 1, 7},
};

// The row of a request number, or NIL for a number outside the catalogue.
inline constexpr const CatalogueEntry* findRequest(MessageNo request)
{
    for (const CatalogueEntry& entry : kCatalogue)
        if (entry.request == request) return &entry;
    return nullptr;
}

inline constexpr MessageNo confirmOf(MessageNo request) { return static_cast<MessageNo>(request + 1); }
inline constexpr MessageNo rejectOf(MessageNo request) { return static_cast<MessageNo>(request + 2); }

// The longest request frame an A4CI signal carries.
inline constexpr std::uint32_t BCP_A4CI_MAX_DATA_SIZE = 78;

// The 68 bytes of product identity in the answers of 8 and 208 and the
// request 211: five character fields, copied as they stand.
inline constexpr std::uint32_t kProductNumberSize = 25;
inline constexpr std::uint32_t kRevStateSize = 7;
inline constexpr std::uint32_t kProductNameSize = 13;
inline constexpr std::uint32_t kProductionDateSize = 9;
inline constexpr std::uint32_t kSerialNumberSize = 14;
inline constexpr std::uint32_t kProductIdentitySize =
    kProductNumberSize + kRevStateSize + kProductNameSize + kProductionDateSize + kSerialNumberSize;
static_assert(kProductIdentitySize == 68);

// Item ids of the list messages.
inline constexpr std::uint8_t kScuAddConfigIntFanLoTempSpeed = 1;   // 147, length 3
inline constexpr std::uint8_t kScuAddConfigColdOperation = 2;       // 147, length 8
inline constexpr std::uint8_t kScuExtControlFanSpeeds = 1;          // 150, length 6
inline constexpr std::uint8_t kScuExtControlFanGroupFaultLeds = 3;  // 150, length 3
inline constexpr std::uint8_t kBfuExtControlLoads = 1;              // 182, length 4
inline constexpr std::uint8_t kBfuExtControlBatteryFaultLed = 2;    // 182, length 3

// Fault LED states as the units take them in 150 id 3 and 182 id 2.
inline constexpr std::uint8_t kFaultLedWireOff = 0;
inline constexpr std::uint8_t kFaultLedWireSlowBlink = 1;
inline constexpr std::uint8_t kFaultLedWireSteadyOn = 2;

// Codes of CC_VISUAL_INDICATION_REQ.
inline constexpr std::uint8_t kIndicationFaultLedOff = 48;
inline constexpr std::uint8_t kIndicationFaultLedOn = 49;
inline constexpr std::uint8_t kIndicationOperationalSlowBlink = 64;
inline constexpr std::uint8_t kIndicationOperationalSteadyOn = 65;

} // namespace pp
