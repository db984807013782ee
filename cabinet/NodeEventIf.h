#pragma once
// Told when the equipment support function's fault (22500) comes and goes.

class NodeEventIf {
public:
    virtual ~NodeEventIf() = default;
    virtual void raiseEquipSupFuncFault() = 0;
    virtual void ceaseEquipSupFuncFault() = 0;
};
