#pragma once
// Told when an e-fuse of a PDU shows another state (an LED state).

#include "frame/FuncId.h"

#include <cstdint>

class EFuseCtrlIf {
public:
    virtual ~EFuseCtrlIf() = default;
    virtual void efuseStatusChanged(const FuncId_t& pduId, std::uint32_t number, std::uint32_t state) = 0;
};
