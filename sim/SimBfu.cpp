#include "sim/SimBfu.h"

#include "hwu/PpMessages.h"

namespace sim {

namespace {

enum Value : std::size_t {
    CapMainLoadDisconnectMin, CapMainLoadDisconnectMax, CapPriorityLoadDisconnectMin, CapPriorityLoadDisconnectMax,
    CapDisconnectCeaseMin, CapDisconnectCeaseMax, CapDisconnectTempMin, CapDisconnectTempMax,
    CapDisconnectCeaseTempMin, CapDisconnectCeaseTempMax,
    AddId1, AddId2, AddId3, AddId4, AddId5, AddId6, AddId7, AddId8,
    AddBatteryCurrentLimit, AddBatteryVoltageLimit, AddExtendedControlIds, AddExtendedStatusIds,
    SystemVoltage, BatteryVoltage, BatteryCurrent, BatteryTemperature,
    Fault, MainLoadDisconnected, PriorityLoadDisconnected, BatteryOvertemperature, BatteryTempSensorFault,
    BatteryNotPresent, CircuitBreakerFault, BatteryConnected, SlowCharging, TemperatureFault, Flag11, Flag12,
    SetMainLoadDisconnect, SetPriorityLoadDisconnect, SetDisconnectCease, SetDisconnectTemp, SetDisconnectCeaseTemp,
    SetConnect, SetBatteryFaultLed,
};

constexpr ValueDefinition kValues[] = {
    {"cap.mainLoadDisconnectMin", -4000}, {"cap.mainLoadDisconnectMax", -4700},
    {"cap.priorityLoadDisconnectMin", -4000}, {"cap.priorityLoadDisconnectMax", -4700},
    {"cap.disconnectCeaseMin", -4400}, {"cap.disconnectCeaseMax", -5000},
    {"cap.disconnectTempMin", 40}, {"cap.disconnectTempMax", 75},
    {"cap.disconnectCeaseTempMin", 35}, {"cap.disconnectCeaseTempMax", 70},
    {"add.id1", 1}, {"add.id2", 0}, {"add.id3", 1}, {"add.id4", 1}, {"add.id5", 1}, {"add.id6", 1}, {"add.id7", 0},
    {"add.id8", 0},
    {"add.batteryCurrentLimit", 300}, {"add.batteryVoltageLimit", -5650}, {"add.extendedControlIds", 3},
    {"add.extendedStatusIds", 1},
    {"systemVoltage", -5450}, {"batteryVoltage", -5440}, {"batteryCurrent", 0}, {"batteryTemperature", 25},
    {"fault", 0}, {"mainLoadDisconnected", 0}, {"priorityLoadDisconnected", 0}, {"batteryOvertemperature", 0},
    {"batteryTempSensorFault", 0}, {"batteryNotPresent", 0}, {"circuitBreakerFault", 0}, {"batteryConnected", 1},
    {"slowCharging", 0}, {"temperatureFault", 0}, {"flag11", 0}, {"flag12", 0},
    {"set.mainLoadDisconnect", 0}, {"set.priorityLoadDisconnect", 0}, {"set.disconnectCease", 0},
    {"set.disconnectTemp", 0}, {"set.disconnectCeaseTemp", 0}, {"set.connect", 1}, {"set.batteryFaultLed", 0},
};
static_assert(std::size(kValues) == SetBatteryFaultLed + 1);

} // namespace

SimBfu::SimBfu(std::uint16_t port, std::uint8_t address) : SimUnit(UnitType::BFU, port, address, kValues) {}

std::uint32_t SimBfu::statusWord() const
{
    return packFlags({flag(Fault), flag(MainLoadDisconnected), flag(PriorityLoadDisconnected),
                      flag(BatteryOvertemperature), flag(BatteryTempSensorFault), startFlag(), flag(BatteryNotPresent),
                      flag(CircuitBreakerFault), flag(BatteryConnected), flag(SlowCharging), flag(TemperatureFault)});
}

SimUnit::Handled SimBfu::takeConfig(SimRequest& request)
{
    const std::int16_t main = request.i16();
    const std::int16_t priority = request.i16();
    const std::int16_t cease = request.i16();
    const std::int8_t temp = request.i8();
    const std::int8_t ceaseTemp = request.i8();
    if (!request.complete()) return Handled::Malformed;
    setValue(SetMainLoadDisconnect, main);
    setValue(SetPriorityLoadDisconnect, priority);
    setValue(SetDisconnectCease, cease);
    setValue(SetDisconnectTemp, temp);
    setValue(SetDisconnectCeaseTemp, ceaseTemp);
    return Handled::Answered;
}

SimUnit::Handled SimBfu::takeExtendedControl(SimRequest& request)
{
    const std::uint8_t count = request.u8();
    for (unsigned i = 0; i < count; ++i) {
        const std::uint8_t id = request.u8();
        request.u8(); // length
        if (id == pp::kBfuExtControlLoads) {
            const std::uint8_t main = request.u8();
            const std::uint8_t priority = request.u8();
            setValue(MainLoadDisconnected, main == 0);
            setValue(PriorityLoadDisconnected, priority == 0);
        } else if (id == pp::kBfuExtControlBatteryFaultLed) {
            setValue(SetBatteryFaultLed, request.u8());
        } else {
            return Handled::Malformed;
        }
    }
    return request.complete() ? Handled::Answered : Handled::Malformed;
}

void SimBfu::addCapabilities(SimFrame& confirm) const
{
    SimFrame items;
    unsigned count = 0;
    for (std::uint8_t id = 1; id <= 8; ++id) {
        if (!flag(AddId1 + id - 1)) continue;
        ++count;
        items.u8(id);
        if (id == 3) {
            items.u8(4);
            items.u16(value(AddBatteryCurrentLimit));
        } else if (id == 4) {
            items.u8(4);
            items.i16(value(AddBatteryVoltageLimit));
        } else if (id == 5) {
            items.u8(6);
            items.u16(value(AddExtendedControlIds));
            items.u16(value(AddExtendedStatusIds));
        } else {
            items.u8(2);
        }
    }
    confirm.u8(count);
    confirm.bytes() += items.bytes();
}

SimUnit::Handled SimBfu::answerTyped(SimRequest& request, SimFrame& confirm)
{
    switch (request.message()) {
    case pp::BFU_GET_CAPABILITIES_REQ:
        for (std::size_t i = CapMainLoadDisconnectMin; i <= CapDisconnectCeaseMax; ++i) confirm.i16(value(i));
        for (std::size_t i = CapDisconnectTempMin; i <= CapDisconnectCeaseTempMax; ++i) confirm.i8(value(i));
        return Handled::Answered;
    case pp::BFU_SET_CONFIG_REQ: return takeConfig(request);
    case pp::BFU_SET_CONTROL_REQ: {
        const std::uint8_t connect = request.u8();
        if (!request.complete()) return Handled::Malformed;
        setValue(SetConnect, connect);
        setValue(BatteryConnected, connect != 0);
        return Handled::Answered;
    }
    case pp::BFU_GET_MEASUREMENTS_REQ:
        confirm.i16(value(SystemVoltage));
        confirm.i16(value(BatteryVoltage));
        confirm.i16(value(BatteryCurrent));
        confirm.i8(value(BatteryTemperature));
        return Handled::Answered;
    case pp::BFU_GET_STATUS_REQ: confirm.u16(statusWord()); return Handled::Answered;
    case pp::BFU_GET_ADD_CAPABILITIES_REQ: addCapabilities(confirm); return Handled::Answered;
    case pp::BFU_EXTENDED_CONTROL_REQ: return takeExtendedControl(request);
    case pp::BFU_GET_EXT_STATUS_REQ:
        confirm.u8(1);
        confirm.u8(1);
        confirm.u8(4);
        confirm.u16(statusWord() | packFlags({false, false, false, false, false, false, false, false, false, false,
                                              false, flag(Flag11), flag(Flag12)}));
        return Handled::Answered;
    default: return Handled::Unknown;
    }
}

} // namespace sim
