#pragma once
// Told of every fault in the system that is reported or ceases to be; each
// implementer picks out what concerns it.

#include "frame/FaultId.h"
#include "frame/FuncId.h"

class FaultsRegisterReportIf {
public:
    virtual ~FaultsRegisterReportIf() = default;
    virtual void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) = 0;
    virtual void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) = 0;
};
