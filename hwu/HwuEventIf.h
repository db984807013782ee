#pragma once
// What the unit facades and the equipment manager tell the equipment
// interface: finished restarts, status, e-fuse states, and the units' faults.

#include "frame/FuncId.h"
#include "hwu/HwuStatusRecord.h"

#include <array>
#include <cstdint>

// The faults the equipment interface carries, in its order.
enum class HwuFault : std::uint8_t {
    FaultyHubPosition,
    ConflictingHubPosition,
    HubPositionConflict, // 21505: a later position of a node cannot be linked
    BfuCircuitBreaker,
    HwuFaulty,
    HwuMissing,
    PsuInputVoltageHigh,
    PsuInputVoltageLow,
    PsuHighTemperatureClass2,
    PsuLowTemperatureClass2,
    PsuHighTemperatureClass1,
    PsuLowTemperatureClass1,
    BfuTemperature,
};

// The fault id of each, in the same order.
inline constexpr std::array<std::int32_t, 13> kHwuFaultIds{21503, 21504, 21505, 7001,  21501, 21502, 20001,
                                                           20002, 20000, 20003, 20006, 20007, 7002};

class HwuEventIf {
public:
    virtual ~HwuEventIf() = default;
    virtual void restartFinished(const FuncId_t& funcId) = 0;
    virtual void statusChanged(const FuncId_t& funcId, const HwuStatusRecord& record) = 0;
    virtual void efuseStatusChanged(std::uint32_t pduFuncInst, std::uint32_t efuseFuncInst, std::uint32_t state) = 0;
    virtual void raiseFault(HwuFault fault, const FuncId_t& funcId) = 0;
    virtual void ceaseFault(HwuFault fault, const FuncId_t& funcId) = 0;
};
