#include "sim/SimSau.h"

#include "hwu/PpMessages.h"

namespace sim {

namespace {

enum Value : std::size_t { InPortsA, InPortsB, OutPorts, AlarmPortsA, AlarmPortsB, Fault };

constexpr ValueDefinition kValues[] = {
    {"cap.availableInPortsA", 0x00FF}, {"cap.availableInPortsB", 0x0000}, {"cap.availableOutPorts", 0x03},
    {"alarmPortsA", 0}, {"alarmPortsB", 0}, {"fault", 0},
};
static_assert(std::size(kValues) == Fault + 1);

} // namespace

SimSau::SimSau(std::uint16_t port, std::uint8_t address) : SimUnit(UnitType::SAU, port, address, kValues) {}

SimUnit::Handled SimSau::answerTyped(SimRequest& request, SimFrame& confirm)
{
    switch (request.message()) {
    case pp::SAU_GET_CAPABILITIES_REQ:
        confirm.u16(value(InPortsA));
        confirm.u16(value(InPortsB));
        confirm.u8(value(OutPorts));
        return Handled::Answered;
    case pp::SAU_GET_STATUS_REQ:
        confirm.u16(value(AlarmPortsA));
        confirm.u16(value(AlarmPortsB));
        confirm.u8(packFlags({flag(Fault), startFlag()}));
        return Handled::Answered;
    default: return Handled::Unknown;
    }
}

} // namespace sim
