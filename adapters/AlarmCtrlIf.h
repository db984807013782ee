#pragma once
// The alarm side's view of the units that carry external alarm ports.

#include "frame/FuncId.h"

#include <cstdint>

class AlarmCtrlIf {
public:
    virtual ~AlarmCtrlIf() = default;
    virtual void setPortGroupUnit(const FuncId_t& funcId, std::uint32_t groupOfPort, std::uint32_t unitInstance) = 0;
    virtual void setAvailablePorts(const FuncId_t& funcId, std::uint16_t portsA, std::uint16_t portsB) = 0;
    virtual void updatePorts(const FuncId_t& funcId, std::uint16_t portsA, std::uint16_t portsB) = 0;
    virtual void removeUnit(const FuncId_t& funcId) = 0;
    virtual void unitAdded(const FuncId_t& funcId) = 0;
    virtual void unitRemoved(const FuncId_t& funcId) = 0;
    virtual void allPortsDisconnected() = 0;
};
