#pragma once
// Where everything in the core that sees something wrong says so. A delay
// holds a raise or a cease back for that many milliseconds; 0 is no delay.

#include "frame/AlarmObserverIf.h"
#include "frame/EC_LinkedList.h"
#include "frame/FaultId.h"
#include "frame/FaultsRegisterReportIf.h"
#include "frame/FuncId.h"

#include <cstdint>

class FaultsRegisterIf {
public:
    virtual ~FaultsRegisterIf() = default;

    virtual void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId, std::uint32_t delayMs) = 0;
    virtual void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) = 0;
    virtual void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) = 0;
    // The same for a fault without text.
    virtual void raiseFault(std::int32_t faultId, const FuncId_t& funcId, std::uint32_t delayMs) = 0;
    virtual void raiseFault(std::int32_t faultId, const FuncId_t& funcId) = 0;
    virtual void ceaseFault(std::int32_t faultId, const FuncId_t& funcId, std::uint32_t delayMs) = 0;
    virtual void ceaseFault(std::int32_t faultId, const FuncId_t& funcId) = 0;
    // Every fault of the function goes, reported as ceased, apart from the
    // bus scan's fault of unconfigured hardware.
    virtual void ceaseFaults(const FuncId_t& funcId) = 0;

    virtual bool isFaultActive(std::int32_t faultId, const FuncId_t& funcId) = 0;
    // On any function.
    virtual bool isFaultActive(std::int32_t faultId) = 0;

    // Reporters and observers are not owned; the latest added is told first.
    virtual void addReporter(FaultsRegisterReportIf* reporter) = 0;
    virtual void removeReporter(FaultsRegisterReportIf* reporter) = 0;
    virtual void addAlarmObserver(AlarmObserverIf* observer) = 0;
    virtual void removeAlarmObserver(AlarmObserverIf* observer) = 0;

    // Appends the id of each active fault of that kind of function.
    virtual void getFaults(std::uint32_t funcType, EC_LinkedList<FaultId_t>& faults) = 0;
    virtual bool isFaultActiveOn(std::uint32_t funcType) = 0;

    // Rows taken out without telling anybody.
    virtual void removeFault(const FaultId_t& faultId, const FuncId_t& funcId) = 0;
    virtual void removeFaults(const FuncId_t& funcId) = 0;
};
