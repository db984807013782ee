#pragma once
// What the cabinet tells the cabinet management interface: its identity and
// identifier, its smoke detector, and the faults that stand on it. Each
// fault event gets the function the fault was raised on.

#include "cabinet/ProductData.h"
#include "frame/FuncId.h"

#include <cstdint>
#include <string>

class CabinetEventIf {
public:
    virtual ~CabinetEventIf() = default;
    virtual void cabinetPidUpdated(const ProductData& pid) = 0;
    virtual void cabinetIdentifierUpdated(std::uint32_t funcInst) = 0;
    virtual void productDataUpdated(const ProductData& pid, std::uint32_t funcInst) = 0;
    virtual void smokeDetectorStatusUpdated(std::uint32_t funcInst) = 0;
    // 14003
    virtual void raiseSmokeDetectorDisconnected(const FuncId_t& funcId) = 0;
    virtual void ceaseSmokeDetectorDisconnected(const FuncId_t& funcId) = 0;
    // 14002
    virtual void raiseDoorAlarm(const FuncId_t& funcId) = 0;
    virtual void ceaseDoorAlarm(const FuncId_t& funcId) = 0;
    // 21500
    virtual void raiseCabinetPidMismatch(const FuncId_t& funcId) = 0;
    virtual void ceaseCabinetPidMismatch(const FuncId_t& funcId) = 0;
    // 14004
    virtual void raiseSmokeDetectorAlarm(const FuncId_t& funcId) = 0;
    virtual void ceaseSmokeDetectorAlarm(const FuncId_t& funcId) = 0;
    // 14005
    virtual void raiseSmokeDetectorHwFailure(const FuncId_t& funcId) = 0;
    virtual void ceaseSmokeDetectorHwFailure(const FuncId_t& funcId) = 0;
    // 14006, on the function found on the bus, with its hub position.
    virtual void raiseNumberOfHwEntitiesMismatch(const FuncId_t& funcId, const std::string& hubPosition) = 0;
    virtual void ceaseNumberOfHwEntitiesMismatch(const FuncId_t& funcId, const std::string& hubPosition) = 0;
};
