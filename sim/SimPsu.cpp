#include "sim/SimPsu.h"

#include "hwu/PpMessages.h"

namespace sim {

namespace {

enum Value : std::size_t {
    CapOutputVoltageControl, CapHotSpot, CapFlag2, CapTempSens, CapFlag4, CapAdditional,
    CapVoltageLimit1, CapVoltageLimit2, CapSetPoint, CapCoolingGain, CapTimeConstant,
    AddId1, AddId2, AddId2Value, AddId3, AddOperationalLedNotAvailable, AddFaultLedNotAvailable,
    OutputVoltage, OutputCurrent, Load, Temperature,
    Fault, InputVoltageLow, TempSensorFault, HighTempClass2, LowTempClass2, HighTempClass1, LowTempClass1,
    InputVoltageHigh,
    SetOutputVoltage, SetPointError,
};

// Hundredths of a volt, tenths of an ampere, degrees.
constexpr ValueDefinition kValues[] = {
    {"cap.outputVoltageControl", 1}, {"cap.hotSpot", 1}, {"cap.flag2", 0}, {"cap.tempSens", 1}, {"cap.flag4", 0},
    {"cap.additionalCapabilities", 1}, {"cap.controlVoltageLimit1", -4500}, {"cap.controlVoltageLimit2", -5800},
    {"cap.setPoint", 45}, {"cap.coolingGain", 10}, {"cap.timeConstant", 300},
    {"add.id1", 0}, {"add.id2", 0}, {"add.id2Value", 0}, {"add.id3", 0},
    {"add.operationalLedNotAvailable", 0}, {"add.faultLedNotAvailable", 0},
    {"outputVoltage", -5450}, {"outputCurrent", 120}, {"load", 25}, {"temperature", 30},
    {"fault", 0}, {"inputVoltageLow", 0}, {"tempSensorFault", 0}, {"highTempClass2", 0}, {"lowTempClass2", 0},
    {"highTempClass1", 0}, {"lowTempClass1", 0}, {"inputVoltageHigh", 0},
    {"set.outputVoltage", 0},
    // The plant's: this unit's output sits this much above its command, as
    // a real one's calibration leaves it, so that PSUs share unevenly.
    {"setPointError", 0},
};
static_assert(std::size(kValues) == SetPointError + 1);

} // namespace

SimPsu::SimPsu(std::uint16_t port, std::uint8_t address) : SimUnit(UnitType::PSU, port, address, kValues) {}

void SimPsu::onRestart() { setValue(SetOutputVoltage, 0); }

SimUnit::Handled SimPsu::answerTyped(SimRequest& request, SimFrame& confirm)
{
    switch (request.message()) {
    case pp::PSU_GET_CAPABILITIES_REQ:
        confirm.u8(packFlags({flag(CapOutputVoltageControl), flag(CapHotSpot), flag(CapFlag2), flag(CapTempSens),
                              flag(CapFlag4), flag(CapAdditional)}));
        confirm.i16(value(CapVoltageLimit1));
        confirm.i16(value(CapVoltageLimit2));
        confirm.i8(value(CapSetPoint));
        confirm.i8(value(CapCoolingGain));
        confirm.u16(value(CapTimeConstant));
        return Handled::Answered;
    case pp::PSU_SET_OUTPUT_VOLTAGE_REQ: {
        const std::int16_t volts = request.i16();
        if (!request.complete()) return Handled::Malformed;
        setValue(SetOutputVoltage, volts);
        setValue(OutputVoltage, volts);
        return Handled::Answered;
    }
    case pp::PSU_GET_MEASUREMENTS_REQ:
        confirm.i16(value(OutputVoltage));
        confirm.u16(value(OutputCurrent));
        confirm.u8(value(Load));
        confirm.i8(value(Temperature));
        return Handled::Answered;
    case pp::PSU_GET_STATUS_REQ:
        confirm.u16(packFlags({flag(Fault), flag(InputVoltageLow), flag(TempSensorFault), flag(HighTempClass2),
                               flag(LowTempClass2), flag(HighTempClass1), flag(LowTempClass1), startFlag(),
                               flag(InputVoltageHigh)}));
        return Handled::Answered;
    case pp::PSU_GET_ADD_CAPABILITIES_REQ: {
        SimFrame items;
        unsigned count = 0;
        for (std::uint8_t id = 1; id <= 5; ++id) {
            const std::size_t index = id == 1 ? AddId1 : id == 2 ? AddId2 : id == 3 ? AddId3
                                    : id == 4 ? AddOperationalLedNotAvailable : AddFaultLedNotAvailable;
            if (!flag(index)) continue;
            ++count;
            items.u8(id);
            items.u8(id == 2 ? 4 : 2);
            if (id == 2) items.u16(value(AddId2Value));
        }
        confirm.u8(count);
        confirm.bytes() += items.bytes();
        return Handled::Answered;
    }
    default: return Handled::Unknown;
    }
}

} // namespace sim
