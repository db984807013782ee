#pragma once
// The plain records of the PP messages: what a request carries and what an
// answer holds once decoded. Numbers are as on the wire (hundredths of a
// volt, tenths of an ampere, degrees); the units convert.

#include "hwu/PpMessages.h"

#include <array>
#include <cstdint>
#include <variant>

// One flag per e-fuse or item: element k belongs to item k + 1, 0 or 1.
using PpSixteenSet = std::array<std::uint16_t, 16>;

// --- answers ---------------------------------------------------------------

// 9 and 209. Character fields copied as they stand, not terminated.
struct PpProductIdentity {
    std::array<char, pp::kProductNumberSize> productNumber{};
    std::array<char, pp::kRevStateSize> revState{};
    std::array<char, pp::kProductNameSize> productName{};
    std::array<char, pp::kProductionDateSize> productionDate{};
    std::array<char, pp::kSerialNumberSize> serialNumber{};
};

// 65.
struct PpPsuCapabilities {
    bool outputVoltageControl = false;
    bool hotSpot = false;
    bool flag2 = false;
    bool tempSens = false;
    bool flag4 = false;
    bool additionalCapabilities = false;
    std::int16_t controlVoltageLimit1 = 0;
    std::int16_t controlVoltageLimit2 = 0;
    std::int8_t setPoint = 0;
    std::int8_t coolingGain = 0;
    std::uint16_t timeConstant = 0;
};

// 73.
struct PpPsuMeasurements {
    std::int16_t outputVoltage = 0;
    std::uint16_t outputCurrent = 0;
    std::uint8_t load = 0;
    std::int8_t temperature = 0;
};

// 77, 125, 141: a flag word, flag k in bit k. The flags of each unit type
// are named by its unit class.
struct PpStatusWord {
    std::uint16_t flags = 0;
    bool test(unsigned flag) const { return flag < 16 && ((flags >> flag) & 1u) != 0; }
};
struct PpPsuStatus : PpStatusWord {};
struct PpBfuStatus : PpStatusWord {};
struct PpCluStatus : PpStatusWord {};

// 81.
struct PpPsuAddCapabilities {
    bool id1 = false;
    bool id2 = false;
    std::uint16_t id2Value = 0;
    bool id3 = false;
    bool operationalLedNotAvailable = false; // id 4
    bool faultLedNotAvailable = false;       // id 5
};

// 113.
struct PpBfuCapabilities {
    std::int16_t mainLoadDisconnectMin = 0;
    std::int16_t mainLoadDisconnectMax = 0;
    std::int16_t priorityLoadDisconnectMin = 0;
    std::int16_t priorityLoadDisconnectMax = 0;
    std::int16_t disconnectCeaseMin = 0;
    std::int16_t disconnectCeaseMax = 0;
    std::int8_t disconnectTempMin = 0;
    std::int8_t disconnectTempMax = 0;
    std::int8_t disconnectCeaseTempMin = 0;
    std::int8_t disconnectCeaseTempMax = 0;
};

// 122.
struct PpBfuMeasurements {
    std::int16_t systemVoltage = 0;
    std::int16_t batteryVoltage = 0;
    std::int16_t batteryCurrent = 0;
    std::int8_t batteryTemperature = 0;
};

// 129: the flag word, flag k in bit k (internal fan, external fan, heater,
// compressor, supply, return, condenser and ambient air sensors, door).
struct PpCluCapabilities : PpStatusWord {};

// 137.
struct PpCluMeasurements {
    std::int8_t cluSupplyTemp = 0;
    std::int8_t cluReturnTemp = 0;
    std::int8_t cluCondenserTemp = 0;
    std::int8_t cluAmbientTemp = 0;
    std::uint8_t cluIntFanSpeed = 0;
    std::uint8_t cluExtFanSpeed = 0;
    std::uint8_t cluActiveCoolerSpeed = 0;
    std::uint8_t cluCompressorCurrent = 0;
    std::uint8_t cluHeaterCurrent = 0;
};

// 145.
struct PpScuAddCapabilities {
    bool intFanSpeedAtLowTemp = false; // id 1
    std::uint8_t intFanMinLoTempSpeed = 0;
    std::uint8_t intFanMaxLoTempSpeed = 0;
    bool extendedControl = false; // id 2
    std::uint16_t extendedControlIds1To16 = 0;
    std::uint16_t extendedControlIds17To32 = 0;
    bool extendedStatus = false; // id 3
    bool coldOperation = false;  // id 4
    std::uint8_t scuColdopMinOnTemp = 0;
    std::uint8_t scuColdopMaxOnTemp = 0;
    std::uint8_t scuColdopMinOffTemp = 0;
    std::uint8_t scuColdopMaxOffTemp = 0;
    std::uint8_t scuHeater1Fg1MinSpeed = 0;
    std::uint8_t scuHeater1Fg1MaxSpeed = 0;
    std::uint8_t scuHeaterFg3MinSpeed = 0;
    std::uint8_t scuHeaterFg3MaxSpeed = 0;
    std::uint8_t scuHeater2Fg1Fan1MinSpeed = 0;
    std::uint8_t scuHeater2Fg1Fan1MaxSpeed = 0;
    std::uint8_t scuHeater2Fg1Fan2MinSpeed = 0;
    std::uint8_t scuHeater2Fg1Fan2MaxSpeed = 0;
};

// 154.
struct PpScuExtStatus {
    bool fansConnectedRead = false;            // id 1
    std::array<bool, 16> fanConnected{};       // fan 4g + f of group g + 1
    bool fanGroupFailureRead = false;          // id 2
    std::uint8_t fanGroupFailure = 0;          // low four bits, group 1 in bit 0
    bool externalInputAlarmRead = false;       // id 3
    std::uint16_t externalInputAlarm = 0;
    bool statusRead = false;                   // id 4
    std::uint8_t status = 0;                   // as byte 5 of 205
};

// 161.
struct PpPduCapabilities {
    PpSixteenSet controllable{};
    PpSixteenSet secondSet{};
    PpSixteenSet thirdSet{};
    std::int16_t overvoltageRaiseMin = 0;
    std::int16_t overvoltageRaiseMax = 0;
    std::int16_t overvoltageCeaseMin = 0;
    std::int16_t overvoltageCeaseMax = 0;
    std::int16_t undervoltageRaiseMin = 0;
    std::int16_t undervoltageRaiseMax = 0;
    std::int16_t undervoltageCeaseMin = 0;
    std::int16_t undervoltageCeaseMax = 0;
    std::uint8_t numberOfEfuses = 0;
};

// 170.
struct PpPduMeasurements {
    std::int16_t systemVoltage = 0;
};

// 173.
struct PpPduStatus {
    PpSixteenSet efuseOn{};
    PpSixteenSet secondSet{};
    PpSixteenSet thirdSet{};
    PpSixteenSet efuseFault{};
    PpSixteenSet fifthSet{};
    PpSixteenSet efuseOpenedByRequest{};
    std::uint8_t flags = 0; // flag k in bit k
};

// 177.
struct PpBfuAddCapabilities {
    std::array<bool, 9> id{}; // id[1] to id[8]; id[0] unused
    std::uint16_t batteryCurrentLimit = 0; // id 3
    std::int16_t batteryVoltageLimit = 0;  // id 4
    std::uint16_t extendedControlIds = 0;  // id 5
    std::uint16_t extendedStatusIds = 0;   // id 5
};

// 186.
struct PpBfuExtStatus {
    bool statusRead = false;
    std::uint16_t flags = 0; // the word of 125 with flags 11 and 12
};

// 193.
struct PpScuCapabilities {
    std::uint8_t availableHw = 0;        // flag byte
    std::uint8_t availableFanGroups = 0; // flag byte, group 1 in flag 0
    std::uint16_t availableExternalInputs = 0;
    std::uint8_t availableControlOutputs = 0;
    std::int8_t heater1MinOnTemp = 0, heater1MaxOnTemp = 0, heater1MinOffTemp = 0, heater1MaxOffTemp = 0;
    std::int8_t heater2MinOnTemp = 0, heater2MaxOnTemp = 0, heater2MinOffTemp = 0, heater2MaxOffTemp = 0;
    std::int8_t intFanMinLoTemp = 0, intFanMaxLoTemp = 0, intFanMinHiTemp = 0, intFanMaxHiTemp = 0;
    std::int8_t extFanMinLoUpTemp = 0, extFanMaxLoUpTemp = 0, extFanMinHiUpTemp = 0, extFanMaxHiUpTemp = 0;
    std::int8_t extFanMinLoDownTemp = 0, extFanMaxLoDownTemp = 0, extFanMinHiDownTemp = 0, extFanMaxHiDownTemp = 0;
    std::int8_t extFanMinSpeedFault = 0, extFanMaxSpeedFault = 0;
};

// 202.
struct PpScuMeasurements {
    std::int8_t scuTemperature = 0;
};

// 205.
struct PpScuStatus {
    std::uint8_t connectedFans = 0;   // low four bits, group 1 in bit 0
    std::uint8_t fanGroupFailure = 0; // low four bits, group 1 in bit 0
    std::uint16_t externalInputAlarm = 0;
    std::uint8_t status = 0;          // flag k in bit k
};

// 225.
struct PpSauCapabilities {
    std::uint16_t availableInPortsA = 0;
    std::uint16_t availableInPortsB = 0;
    std::uint8_t availableOutPorts = 0;
};

// 237.
struct PpSauStatus {
    std::uint16_t alarmPortsA = 0;
    std::uint16_t alarmPortsB = 0;
    std::uint8_t flags = 0; // flag 0 fault, 1 start flag
};

// The record of a getDeviceData answer: the decoder puts in the alternative
// of the confirm it read.
using PpDeviceData =
    std::variant<std::monostate, PpProductIdentity, PpPsuCapabilities, PpPsuMeasurements, PpPsuStatus,
                 PpPsuAddCapabilities, PpBfuCapabilities, PpBfuMeasurements, PpBfuStatus, PpCluCapabilities,
                 PpCluMeasurements, PpCluStatus, PpScuAddCapabilities, PpScuExtStatus, PpPduCapabilities,
                 PpPduMeasurements, PpPduStatus, PpBfuAddCapabilities, PpBfuExtStatus, PpScuCapabilities,
                 PpScuMeasurements, PpScuStatus, PpSauCapabilities, PpSauStatus>;

// --- requests --------------------------------------------------------------

struct PpVisualIndication { std::uint8_t code = 0; };                  // 12
struct PpPsuOutputVoltage { std::int16_t outputVoltage = 0; };         // 68
struct PpBfuConfig {                                                   // 115
    std::int16_t mainLoadDisconnect = 0;
    std::int16_t priorityLoadDisconnect = 0;
    std::int16_t disconnectCease = 0;
    std::int8_t disconnectTemp = 0;
    std::int8_t disconnectCeaseTemp = 0;
};
struct PpBfuControl { std::uint8_t connect = 0; };                     // 118
struct PpScuAddConfig {                                                // 147
    bool hasIntFanLoTempSpeed = false;
    std::uint8_t scuIntFanLoTempSpeed = 0;
    bool hasColdOperation = false;
    std::uint8_t scuColdopOnTemp = 0;
    std::uint8_t scuColdopOffTemp = 0;
    std::uint8_t scuHeater1Fg1Speed = 0;
    std::uint8_t scuHeaterFg3Speed = 0;
    std::uint8_t scuHeater2Fg1Fan1Speed = 0;
    std::uint8_t scuHeater2Fg1Fan2Speed = 0;
};
// 150 and 182: items by control id, each with up to four data bytes.
struct PpControlItem {
    std::uint8_t id = 0;
    std::array<std::uint8_t, 4> data{};
};
struct PpExtendedControl {
    std::uint8_t count = 0;
    std::array<PpControlItem, 4> items{};
};
struct PpScuExtendedControl : PpExtendedControl {};                    // 150: id 1 speeds, id 3 LED codes per group
struct PpBfuExtendedControl : PpExtendedControl {};                    // 182: id 1 main, priority; id 2 LED code
struct PpPduLimits {                                                   // 163
    std::int16_t overvoltageRaise = 0;
    std::int16_t overvoltageCease = 0;
    std::int16_t undervoltageRaise = 0;
    std::int16_t undervoltageCease = 0;
};
struct PpPduEfuses {                                                   // 166
    PpSixteenSet efuseOn{};
    PpSixteenSet secondSet{};
    PpSixteenSet thirdSet{};
};
struct PpScuConfig {                                                   // 195
    std::uint8_t scuConfigFanGroup = 0;
    std::uint8_t scuConfigFanControl = 0;
    std::uint8_t scuConfigOtherPorts = 0;
    std::uint8_t scuHeater1OnTemp = 0, scuHeater1OffTemp = 0, scuHeater2OnTemp = 0, scuHeater2OffTemp = 0;
    std::uint8_t scuIntFanLoTemp = 0, scuIntFanHiTemp = 0;
    std::uint8_t scuExtFanLoUpTemp = 0, scuExtFanHiUpTemp = 0, scuExtFanLoDownTemp = 0, scuExtFanHiDownTemp = 0;
    std::uint8_t scuExtFanSpeedFault = 0;
};
struct PpScuFanSpeed { std::array<std::uint8_t, 4> speed{}; };        // 198, group 1 first
// 132 and 230: known to the frame code only, their bytes copied in order.
struct PpRawPayload {
    std::uint8_t length = 0;
    std::array<std::uint8_t, 9> bytes{};
};

using PpSetData = std::variant<std::monostate, PpVisualIndication, PpPsuOutputVoltage, PpBfuConfig, PpBfuControl,
                               PpScuAddConfig, PpScuExtendedControl, PpBfuExtendedControl, PpPduLimits, PpPduEfuses,
                               PpScuConfig, PpScuFanSpeed, PpProductIdentity, PpRawPayload>;
