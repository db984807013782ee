#pragma once
// Makes the unit object (its wrapper, which starts the unit's polls) for a
// configured function. The broker owns what it makes.

#include "frame/FaultsRegisterIf.h"
#include "hwu/EquipmentManagerIf.h"
#include "hwu/HdlcAddress.h"
#include "hwu/HwuStatusIf.h"

#include <memory>
#include <string>

class HwuBrokerIf;
class SscHandleIf;

struct HwuUnitArgs {
    FuncId_t funcId;
    std::string hubPosition;
    HdlcAddress hdlcAddress;
    std::uint32_t cabinetFuncInst = 0;
    HwuBrokerIf* broker = nullptr;
    EquipmentManagerIf* listener = nullptr;
    FaultsRegisterIf* faults = nullptr;
    SscHandleIf* ssc = nullptr; // the other collaborators of the concrete units
};

class HwuFactoryIf {
public:
    virtual ~HwuFactoryIf() = default;
    // NIL for a kind of unit it cannot make.
    virtual std::unique_ptr<HwuStatusIf> createUnit(const HwuUnitArgs& args) = 0;
};
