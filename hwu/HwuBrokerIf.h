#pragma once
// The owner of every hardware unit object: configuration creates and deletes
// units through it, units tell it when they are found, missing or restarted,
// and observers hear about all of it.

#include "frame/FuncId.h"
#include "hwu/BfuIf.h"
#include "hwu/BfuStatusIf.h"
#include "hwu/BrokerObserverIf.h"
#include "hwu/CluIf.h"
#include "hwu/HwuStatusIf.h"
#include "hwu/PduIf.h"
#include "hwu/PsuIf.h"
#include "hwu/SauIf.h"
#include "hwu/ScuIf.h"

#include <cstdint>
#include <string_view>
#include <vector>

class SscHandleIf;

class HwuBrokerIf {
public:
    virtual ~HwuBrokerIf() = default;
    // A unit is made whatever its hub position; false only for a kind of
    // unit that does not exist.
    virtual bool configureHwu(const FuncId_t& funcId, std::string_view hubPosition, std::uint32_t cascadingOrder,
                              std::uint32_t cabinetFuncInst) = 0;
    virtual bool deleteHwu(const FuncId_t& funcId) = 0;
    virtual bool subscribeHWU(BrokerObserverIf* observer) = 0;
    virtual bool unSubscribeHWU(BrokerObserverIf* observer) = 0;
    virtual void hwuFound(const FuncId_t& funcId) = 0;
    virtual void hwuRestarted(const FuncId_t& funcId) = 0;
    virtual void hwuMissing(const FuncId_t& funcId) = 0;
    // The unit of that function; NIL when there is none.
    virtual HwuStatusIf* getHwu(const FuncId_t& funcId) = 0;
    // The same as its kind; NIL when there is none (or it is of no such kind).
    virtual BfuIf* getBfu(const FuncId_t& funcId) = 0;
    virtual PduIf* getPdu(const FuncId_t& funcId) = 0;
    virtual PsuIf* getPsu(const FuncId_t& funcId) = 0;
    virtual SauIf* getSau(const FuncId_t& funcId) = 0;
    virtual ScuIf* getScu(const FuncId_t& funcId) = 0;
    virtual CluIf* getClu(const FuncId_t& funcId) = 0;
    // Every unit of a kind, newest first: what the regulators walk.
    virtual std::vector<HwuStatusIf*> getUnits(std::uint32_t funcType) = 0;
    // The SCU that speaks for a cabinet: on port 1, of that cabinet or any
    // with a dual box; else the last one looked at; NIL without SCUs.
    virtual ScuIf* getPrimaryScu(std::uint32_t cabinetFuncInst) = 0;
    virtual BfuStatusIf& getBfuStatus() = 0;
    virtual std::uint32_t getBfuCount() const = 0;
    virtual std::uint32_t getPduCount() const = 0;
    virtual std::uint32_t getPsuCount() const = 0;
    virtual std::uint32_t getSauCount() const = 0;
    virtual std::uint32_t getScuCount() const = 0;
    virtual std::uint32_t getCluCount() const = 0;
    virtual void setConfigured(bool configured) = 0;
    virtual void start(SscHandleIf& ssc) = 0;
    virtual void setDualBoxSupported(bool supported) = 0;
    virtual bool isDualBoxSupported() const = 0;
};
