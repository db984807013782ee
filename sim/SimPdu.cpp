#include "sim/SimPdu.h"

#include "hwu/PpMessages.h"

namespace sim {

namespace {

enum Value : std::size_t {
    CapControllable, CapSecondSet, CapThirdSet,
    CapOvervoltageRaiseMin, CapOvervoltageRaiseMax, CapOvervoltageCeaseMin, CapOvervoltageCeaseMax,
    CapUndervoltageRaiseMin, CapUndervoltageRaiseMax, CapUndervoltageCeaseMin, CapUndervoltageCeaseMax,
    CapNumberOfEfuses, CapLongAnswer,
    SystemVoltage,
    EfuseOn, SecondSet, ThirdSet, EfuseFault, FifthSet, EfuseOpenedByRequest,
    Fault, SystemVoltageLow, SystemVoltageHigh, MainTemperatureHigh, PriorityTemperatureHigh,
    SetOvervoltageRaise, SetOvervoltageCease, SetUndervoltageRaise, SetUndervoltageCease, SetEfuses,
};

constexpr ValueDefinition kValues[] = {
    {"cap.controllable", 0x00FF}, {"cap.secondSet", 0}, {"cap.thirdSet", 0},
    {"cap.overvoltageRaiseMin", -5600}, {"cap.overvoltageRaiseMax", -6000},
    {"cap.overvoltageCeaseMin", -5500}, {"cap.overvoltageCeaseMax", -5900},
    {"cap.undervoltageRaiseMin", -4000}, {"cap.undervoltageRaiseMax", -5000},
    {"cap.undervoltageCeaseMin", -4100}, {"cap.undervoltageCeaseMax", -5100},
    {"cap.numberOfEfuses", 8}, {"cap.longAnswer", 1},
    {"systemVoltage", -5450},
    {"efuseOn", 0x00FF}, {"secondSet", 0}, {"thirdSet", 0}, {"efuseFault", 0}, {"fifthSet", 0},
    {"efuseOpenedByRequest", 0},
    {"fault", 0}, {"systemVoltageLow", 0}, {"systemVoltageHigh", 0}, {"mainTemperatureHigh", 0},
    {"priorityTemperatureHigh", 0},
    {"set.overvoltageRaise", 0}, {"set.overvoltageCease", 0}, {"set.undervoltageRaise", 0},
    {"set.undervoltageCease", 0}, {"set.efuses", 0},
};
static_assert(std::size(kValues) == SetEfuses + 1);

} // namespace

SimPdu::SimPdu(std::uint16_t port, std::uint8_t address) : SimUnit(UnitType::PDU, port, address, kValues) {}

SimUnit::Handled SimPdu::takeLimits(SimRequest& request)
{
    std::int16_t limits[4];
    for (std::int16_t& limit : limits) limit = request.i16();
    if (!request.complete()) return Handled::Malformed;
    for (std::size_t i = 0; i < 4; ++i) setValue(SetOvervoltageRaise + i, limits[i]);
    return Handled::Answered;
}

// The requested states: an e-fuse asked off opens and is marked as opened
// by request; one asked on closes unless it has tripped.
SimUnit::Handled SimPdu::takeEfuses(SimRequest& request)
{
    const std::uint16_t requested = request.u16();
    const std::uint16_t second = request.u16();
    const std::uint16_t third = request.u16();
    if (!request.complete()) return Handled::Malformed;
    const auto was = static_cast<std::uint16_t>(value(EfuseOn));
    const auto tripped = static_cast<std::uint16_t>(value(EfuseFault));
    const auto opened = static_cast<std::uint16_t>(value(EfuseOpenedByRequest));
    setValue(SetEfuses, requested);
    setValue(EfuseOn, requested & ~tripped & 0xFFFF);
    setValue(EfuseOpenedByRequest, ((was | opened) & ~requested) & 0xFFFF);
    setValue(SecondSet, second);
    setValue(ThirdSet, third);
    return Handled::Answered;
}

SimUnit::Handled SimPdu::answerTyped(SimRequest& request, SimFrame& confirm)
{
    switch (request.message()) {
    case pp::PDU_GET_CAPABILITIES_REQ:
        for (std::size_t i = CapControllable; i <= CapThirdSet; ++i) confirm.u16(value(i));
        for (std::size_t i = CapOvervoltageRaiseMin; i <= CapUndervoltageCeaseMax; ++i) confirm.i16(value(i));
        if (flag(CapLongAnswer)) confirm.u8(value(CapNumberOfEfuses));
        return Handled::Answered;
    case pp::PDU_SET_LIMITS_REQ: return takeLimits(request);
    case pp::PDU_SET_EFUSES_REQ: return takeEfuses(request);
    case pp::PDU_GET_MEASUREMENTS_REQ: confirm.i16(value(SystemVoltage)); return Handled::Answered;
    case pp::PDU_GET_STATUS_REQ:
        for (std::size_t i = EfuseOn; i <= EfuseOpenedByRequest; ++i) confirm.u16(value(i));
        confirm.u8(0);
        confirm.u8(packFlags({flag(Fault), flag(SystemVoltageLow), flag(SystemVoltageHigh), flag(MainTemperatureHigh),
                              flag(PriorityTemperatureHigh), false, startFlag()}));
        return Handled::Answered;
    default: return Handled::Unknown;
    }
}

} // namespace sim
