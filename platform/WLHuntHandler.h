#pragma once
// The HuntHandler of the target, on the kernel's hunt.

#include "frame/HuntHandler.h"

class WLHuntHandler : public HuntHandler {
public:
    void hunt(const char* name, ose::Signal* signal) override;
    ose::PROCESS huntAndWait(const char* name, ose::Signal* signal, std::uint32_t timeoutMs) override;
};
