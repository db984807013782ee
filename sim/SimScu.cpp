#include "sim/SimScu.h"

#include "hwu/PpMessages.h"

namespace sim {

namespace {

enum Value : std::size_t {
    CapAvailableHw, CapAvailableFanGroups, CapAvailableExternalInputs, CapAvailableControlOutputs,
    CapTempLimitFirst, // 22 limits follow, heater1MinOnTemp to extFanMaxSpeedFault
    CapTempLimitLast = CapTempLimitFirst + 21,
    AddId1, AddIntFanMinLoTempSpeed, AddIntFanMaxLoTempSpeed, AddId2, AddExtControlIds1To16, AddExtControlIds17To32,
    AddId3, AddId4, AddColdopFirst, AddColdopLast = AddColdopFirst + 11,
    ScuTemperature,
    ConnectedFans, FanGroupFailure, ExternalInputAlarm, FansConnected,
    GeneralHwError, SmokeDetectorConnected, SmokeDetectorAlarm, SmokeDetectorHwFailure, DoorSwitchOpen,
    TempSensorFault,
    SetConfigFirst, SetConfigLast = SetConfigFirst + 13,
    SetFanSpeed1, SetFanSpeed4 = SetFanSpeed1 + 3,
    SetFaultLed1, SetFaultLed4 = SetFaultLed1 + 3,
    SetIntFanLoTempSpeed, SetColdopFirst, SetColdopLast = SetColdopFirst + 5,
};

constexpr ValueDefinition kValues[] = {
    {"cap.availableHw", 0xFF}, {"cap.availableFanGroups", 0x0F}, {"cap.availableExternalInputs", 0x00FF},
    {"cap.availableControlOutputs", 2},
    {"cap.heater1MinOnTemp", -20}, {"cap.heater1MaxOnTemp", 10}, {"cap.heater1MinOffTemp", -15},
    {"cap.heater1MaxOffTemp", 15}, {"cap.heater2MinOnTemp", -20}, {"cap.heater2MaxOnTemp", 10},
    {"cap.heater2MinOffTemp", -15}, {"cap.heater2MaxOffTemp", 15}, {"cap.intFanMinLoTemp", 0},
    {"cap.intFanMaxLoTemp", 30}, {"cap.intFanMinHiTemp", 20}, {"cap.intFanMaxHiTemp", 50},
    {"cap.extFanMinLoUpTemp", 0}, {"cap.extFanMaxLoUpTemp", 40}, {"cap.extFanMinHiUpTemp", 20},
    {"cap.extFanMaxHiUpTemp", 60}, {"cap.extFanMinLoDownTemp", 0}, {"cap.extFanMaxLoDownTemp", 40},
    {"cap.extFanMinHiDownTemp", 20}, {"cap.extFanMaxHiDownTemp", 60}, {"cap.extFanMinSpeedFault", 10},
    {"cap.extFanMaxSpeedFault", 50},
    {"add.id1", 1}, {"add.intFanMinLoTempSpeed", 20}, {"add.intFanMaxLoTempSpeed", 60},
    {"add.id2", 1}, {"add.extendedControlIds1To16", 0x0005}, {"add.extendedControlIds17To32", 0},
    {"add.id3", 1}, {"add.id4", 0},
    {"add.scuColdopMinOnTemp", 0}, {"add.scuColdopMaxOnTemp", 10}, {"add.scuColdopMinOffTemp", 5},
    {"add.scuColdopMaxOffTemp", 15}, {"add.scuHeater1Fg1MinSpeed", 0}, {"add.scuHeater1Fg1MaxSpeed", 100},
    {"add.scuHeaterFg3MinSpeed", 0}, {"add.scuHeaterFg3MaxSpeed", 100}, {"add.scuHeater2Fg1Fan1MinSpeed", 0},
    {"add.scuHeater2Fg1Fan1MaxSpeed", 100}, {"add.scuHeater2Fg1Fan2MinSpeed", 0},
    {"add.scuHeater2Fg1Fan2MaxSpeed", 100},
    {"scuTemperature", 25},
    {"connectedFans", 0x0F}, {"fanGroupFailure", 0}, {"externalInputAlarm", 0}, {"fansConnected", 0xFFFF},
    {"generalHwError", 0}, {"smokeDetectorConnected", 1}, {"smokeDetectorAlarm", 0}, {"smokeDetectorHwFailure", 0},
    {"doorSwitchOpen", 0}, {"tempSensorFault", 0},
    {"set.scuConfigFanGroup", 0}, {"set.scuConfigFanControl", 0}, {"set.scuConfigOtherPorts", 0},
    {"set.scuHeater1OnTemp", 0}, {"set.scuHeater1OffTemp", 0}, {"set.scuHeater2OnTemp", 0},
    {"set.scuHeater2OffTemp", 0}, {"set.scuIntFanLoTemp", 0}, {"set.scuIntFanHiTemp", 0},
    {"set.scuExtFanLoUpTemp", 0}, {"set.scuExtFanHiUpTemp", 0}, {"set.scuExtFanLoDownTemp", 0},
    {"set.scuExtFanHiDownTemp", 0}, {"set.scuExtFanSpeedFault", 0},
    {"set.fanSpeed1", 0}, {"set.fanSpeed2", 0}, {"set.fanSpeed3", 0}, {"set.fanSpeed4", 0},
    {"set.faultLed1", 0}, {"set.faultLed2", 0}, {"set.faultLed3", 0}, {"set.faultLed4", 0},
    {"set.scuIntFanLoTempSpeed", 0},
    {"set.scuColdopOnTemp", 0}, {"set.scuColdopOffTemp", 0}, {"set.scuHeater1Fg1Speed", 0},
    {"set.scuHeaterFg3Speed", 0}, {"set.scuHeater2Fg1Fan1Speed", 0}, {"set.scuHeater2Fg1Fan2Speed", 0},
};
static_assert(std::size(kValues) == SetColdopLast + 1);

std::string readText(SimRequest& request, std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += static_cast<char>(request.u8());
    const std::size_t end = text.find('\0');
    return end == std::string::npos ? text : text.substr(0, end);
}

} // namespace

SimScu::SimScu(std::uint16_t port, std::uint8_t address) : SimUnit(UnitType::SCU, port, address, kValues)
{
    m_cabinet = {"BFD 101 001/1", "R1A", "CABINET", "20260101", "CAB00000001"};
}

void SimScu::capabilities(SimFrame& confirm) const
{
    confirm.u8(0);
    confirm.u8(value(CapAvailableHw));
    confirm.u8(value(CapAvailableFanGroups));
    confirm.u16(value(CapAvailableExternalInputs));
    confirm.u8(value(CapAvailableControlOutputs));
    for (std::size_t i = CapTempLimitFirst; i <= CapTempLimitLast; ++i) confirm.i8(value(i));
}

void SimScu::addCapabilities(SimFrame& confirm) const
{
    SimFrame items;
    unsigned count = 0;
    if (flag(AddId1)) {
        ++count;
        items.u8(1), items.u8(4), items.u8(value(AddIntFanMinLoTempSpeed)), items.u8(value(AddIntFanMaxLoTempSpeed));
    }
    if (flag(AddId2)) {
        ++count;
        items.u8(2), items.u8(6), items.u16(value(AddExtControlIds1To16)), items.u16(value(AddExtControlIds17To32));
    }
    if (flag(AddId3)) {
        ++count;
        items.u8(3), items.u8(2);
    }
    if (flag(AddId4)) {
        ++count;
        items.u8(4), items.u8(14);
        for (std::size_t i = AddColdopFirst; i <= AddColdopLast; ++i) items.u8(value(i));
    }
    confirm.u8(count);
    confirm.bytes() += items.bytes();
}

void SimScu::extendedStatus(SimFrame& confirm) const
{
    const auto fans = static_cast<std::uint32_t>(value(FansConnected));
    confirm.u8(4);
    confirm.u8(1), confirm.u8(6);
    for (unsigned b = 0; b < 4; ++b) confirm.u8((fans >> (4 * b)) & 0x0F);
    confirm.u8(2), confirm.u8(3), confirm.u8(value(FanGroupFailure) & 0x0F);
    confirm.u8(3), confirm.u8(4), confirm.u16(value(ExternalInputAlarm));
    confirm.u8(4), confirm.u8(4), confirm.u8(0);
    confirm.u8(packFlags({flag(GeneralHwError), startFlag(), flag(SmokeDetectorConnected), flag(SmokeDetectorAlarm),
                          flag(SmokeDetectorHwFailure), flag(DoorSwitchOpen), flag(TempSensorFault)}));
}

SimUnit::Handled SimScu::takeConfig(SimRequest& request)
{
    std::uint8_t bytes[SetConfigLast - SetConfigFirst + 1];
    for (std::uint8_t& byte : bytes) byte = request.u8();
    if (!request.complete()) return Handled::Malformed;
    for (std::size_t i = 0; i < std::size(bytes); ++i) setValue(SetConfigFirst + i, bytes[i]);
    return Handled::Answered;
}

SimUnit::Handled SimScu::takeAddConfig(SimRequest& request)
{
    const std::uint8_t count = request.u8();
    for (unsigned i = 0; i < count; ++i) {
        const std::uint8_t id = request.u8();
        request.u8(); // length
        if (id == pp::kScuAddConfigIntFanLoTempSpeed) {
            setValue(SetIntFanLoTempSpeed, request.u8());
        } else if (id == pp::kScuAddConfigColdOperation) {
            for (std::size_t v = SetColdopFirst; v <= SetColdopLast; ++v) setValue(v, request.u8());
        } else {
            return Handled::Malformed;
        }
    }
    return request.complete() ? Handled::Answered : Handled::Malformed;
}

SimUnit::Handled SimScu::takeExtendedControl(SimRequest& request)
{
    const std::uint8_t count = request.u8();
    for (unsigned i = 0; i < count; ++i) {
        const std::uint8_t id = request.u8();
        request.u8(); // length
        if (id == pp::kScuExtControlFanSpeeds) {
            for (std::size_t v = SetFanSpeed1; v <= SetFanSpeed4; ++v) setValue(v, request.u8());
        } else if (id == pp::kScuExtControlFanGroupFaultLeds) {
            const std::uint8_t packed = request.u8();
            for (unsigned g = 0; g < 4; ++g) setValue(SetFaultLed1 + g, (packed >> (2 * g)) & 3);
        } else {
            return Handled::Malformed;
        }
    }
    return request.complete() ? Handled::Answered : Handled::Malformed;
}

SimUnit::Handled SimScu::takeFanSpeeds(SimRequest& request)
{
    std::uint8_t speeds[5];
    for (std::uint8_t& speed : speeds) speed = request.u8();
    if (!request.complete()) return Handled::Malformed;
    for (std::size_t g = 0; g < 4; ++g) setValue(SetFanSpeed1 + g, speeds[g]);
    return Handled::Answered;
}

SimUnit::Handled SimScu::takeCabinet(SimRequest& request)
{
    ProductStrings identity;
    identity.productNumber = readText(request, pp::kProductNumberSize);
    identity.revState = readText(request, pp::kRevStateSize);
    identity.productName = readText(request, pp::kProductNameSize);
    identity.productionDate = readText(request, pp::kProductionDateSize);
    identity.serialNumber = readText(request, pp::kSerialNumberSize);
    if (!request.complete()) return Handled::Malformed;
    m_cabinet = identity;
    return Handled::Answered;
}

SimUnit::Handled SimScu::answerTyped(SimRequest& request, SimFrame& confirm)
{
    switch (request.message()) {
    case pp::SCU_GET_CAPABILITIES_REQ: capabilities(confirm); return Handled::Answered;
    case pp::SCU_GET_ADD_CAPABILITIES_REQ: addCapabilities(confirm); return Handled::Answered;
    case pp::SCU_GET_EXT_STATUS_REQ: extendedStatus(confirm); return Handled::Answered;
    case pp::SCU_SET_CONFIG_REQ: return takeConfig(request);
    case pp::SCU_SET_ADD_CONFIG_REQ: return takeAddConfig(request);
    case pp::SCU_EXTENDED_CONTROL_REQ: return takeExtendedControl(request);
    case pp::SCU_SET_FAN_SPEED_REQ: return takeFanSpeeds(request);
    case pp::SCU_GET_MEASUREMENTS_REQ: confirm.i8(value(ScuTemperature)); return Handled::Answered;
    case pp::SCU_GET_STATUS_REQ:
        confirm.u8(value(ConnectedFans) & 0x0F);
        confirm.u8(value(FanGroupFailure) & 0x0F);
        confirm.u16(value(ExternalInputAlarm));
        confirm.u8(0);
        confirm.u8(packFlags({flag(GeneralHwError), startFlag(), flag(SmokeDetectorConnected),
                              flag(SmokeDetectorAlarm), flag(SmokeDetectorHwFailure), flag(DoorSwitchOpen),
                              flag(TempSensorFault)}));
        return Handled::Answered;
    case pp::SCU_GET_CABINET_PID_REQ: writeProduct(confirm, m_cabinet); return Handled::Answered;
    case pp::SCU_SET_CABINET_PID_REQ: return takeCabinet(request);
    default: return Handled::Unknown;
    }
}

} // namespace sim
