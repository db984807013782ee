#pragma once
// Alarm ports that lie on a radio unit managed elsewhere: reached by the
// hunt path of that unit's alarm server.

#include <cstdint>
#include <string_view>

class RruConfigurationIf {
public:
    virtual ~RruConfigurationIf() = default;
    virtual void setupAlarmPort(std::uint32_t id, std::string_view huntPath) = 0;
    virtual void removeAlarmPort(std::uint32_t id) = 0;
};
