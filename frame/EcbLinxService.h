#pragma once
// Links to the other nodes of the site over the EC bus, through the one
// handler set at start (not owned). Without a handler no link can be made:
// the calls trace and fail.

#include <cstdint>

class EcbLinxHandler {
public:
    virtual ~EcbLinxHandler() = default;
    virtual bool createLink(std::int32_t objectId, bool primary, std::uint32_t hdlcAddress) = 0;
    virtual void deleteLink(std::int32_t objectId) = 0;
};

class EcbLinxService {
public:
    static void setHandler(EcbLinxHandler* handler);
    static bool createLink(std::int32_t objectId, bool primary, std::uint32_t hdlcAddress);
    static void deleteLink(std::int32_t objectId);
};
