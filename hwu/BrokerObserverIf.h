#pragma once
// Told by the unit broker when a unit comes up, goes away or restarts.

#include "frame/FuncId.h"

class BrokerObserverIf {
public:
    virtual ~BrokerObserverIf() = default;
    virtual void unitOperational(const FuncId_t& funcId) = 0;
    virtual void unitRemoved(const FuncId_t& funcId) = 0;
    virtual void unitRestarted(const FuncId_t& funcId) = 0;
};
