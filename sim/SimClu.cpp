#include "sim/SimClu.h"

#include "hwu/PpMessages.h"

namespace sim {

namespace {

enum Value : std::size_t {
    CapInternalFan, CapExternalFan, CapHeater, CapCompressor, CapSupplyAirSensor, CapReturnAirSensor,
    CapCondenserAirSensor, CapAmbientAirSensor, CapDoorSensor,
    SupplyTemp, ReturnTemp, CondenserTemp, AmbientTemp, IntFanSpeed, ExtFanSpeed, ActiveCoolerSpeed,
    CompressorCurrent, HeaterCurrent,
    Fault, FanAlarmGroup2, FanAlarmGroup4,
    SetFanSpeed,
};

constexpr ValueDefinition kValues[] = {
    {"cap.internalFan", 1}, {"cap.externalFan", 1}, {"cap.heater", 1}, {"cap.compressor", 0},
    {"cap.supplyAirTemperatureSensor", 1}, {"cap.returnAirTemperatureSensor", 1},
    {"cap.condenserAirTemperatureSensor", 0}, {"cap.ambientAirTemperatureSensor", 1}, {"cap.doorSensor", 1},
    {"cluSupplyTemp", 22}, {"cluReturnTemp", 28}, {"cluCondenserTemp", 0}, {"cluAmbientTemp", 18},
    {"cluIntFanSpeed", 40}, {"cluExtFanSpeed", 40}, {"cluActiveCoolerSpeed", 0}, {"cluCompressorCurrent", 0},
    {"cluHeaterCurrent", 0},
    {"fault", 0}, {"fanAlarmGroup2", 0}, {"fanAlarmGroup4", 0},
    {"set.fanSpeed", 0},
};
static_assert(std::size(kValues) == SetFanSpeed + 1);

} // namespace

SimClu::SimClu(std::uint16_t port, std::uint8_t address) : SimUnit(UnitType::CLU, port, address, kValues) {}

SimUnit::Handled SimClu::answerTyped(SimRequest& request, SimFrame& confirm)
{
    switch (request.message()) {
    case pp::CLU_GET_CAPABILITIES_REQ:
        confirm.u16(packFlags({flag(CapInternalFan), flag(CapExternalFan), flag(CapHeater), flag(CapCompressor),
                               flag(CapSupplyAirSensor), flag(CapReturnAirSensor), flag(CapCondenserAirSensor),
                               flag(CapAmbientAirSensor), flag(CapDoorSensor)}));
        return Handled::Answered;
    case pp::CLU_SET_FAN_SPEED_FWD: {
        const std::uint8_t speed = request.u8();
        if (request.complete()) {
            setValue(SetFanSpeed, speed);
            setValue(IntFanSpeed, speed);
        }
        return Handled::Answered;
    }
    case pp::CLU_GET_MEASUREMENTS_REQ:
        for (std::size_t i = SupplyTemp; i <= AmbientTemp; ++i) confirm.i8(value(i));
        for (std::size_t i = IntFanSpeed; i <= HeaterCurrent; ++i) confirm.u8(value(i));
        return Handled::Answered;
    case pp::CLU_GET_STATUS_REQ:
        confirm.u16(packFlags({flag(Fault), flag(FanAlarmGroup2), flag(FanAlarmGroup4), false, false, false, false,
                               false, false, startFlag()}));
        return Handled::Answered;
    default: return Handled::Unknown;
    }
}

} // namespace sim
