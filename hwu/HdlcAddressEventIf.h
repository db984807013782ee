#pragma once
// Told when a function's hub positions become faulty or conflicting and when
// that ends; the cabinet interface turns these into signals.

#include "frame/FuncId.h"

class HdlcAddressEventIf {
public:
    virtual ~HdlcAddressEventIf() = default;
    virtual void raiseFaultyHubPosition(const FuncId_t& funcId) = 0;
    virtual void ceaseFaultyHubPosition(const FuncId_t& funcId) = 0;
    virtual void raiseConflictingHubPosition(const FuncId_t& funcId) = 0;
    virtual void ceaseConflictingHubPosition(const FuncId_t& funcId) = 0;
};
