#pragma once
// Static calls forwarded to the HuntHandler set at start (not owned).

#include "frame/HuntHandler.h"

class HuntService {
public:
    static void setHandler(HuntHandler* handler);
    static HuntHandler* getHandler();

    static void hunt(const char* name, ose::Signal* signal);
    static ose::PROCESS huntAndWait(const char* name, ose::Signal* signal, std::uint32_t timeoutMs);
};
