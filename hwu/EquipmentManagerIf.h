#pragma once
// Told of every unit's published health and of the restarts units went
// through; it keeps track of the restarts that were asked for.

#include "frame/FuncId.h"
#include "hwu/HwuStatusRecord.h"

class HwuEventIf;

class EquipmentManagerIf {
public:
    virtual ~EquipmentManagerIf() = default;
    virtual void setEventHandler(HwuEventIf* handler) = 0;
    virtual void start() = 0;
    virtual void statusChanged(const FuncId_t& funcId, const HwuStatusRecord& record) = 0;
    virtual void restartDone(const FuncId_t& funcId) = 0;
    virtual void requestRestart(const FuncId_t& funcId) = 0;
};
