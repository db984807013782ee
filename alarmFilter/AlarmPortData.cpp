#include "alarmFilter/AlarmPortData.h"

namespace {

constexpr std::uint32_t kDependencyLockedMask = AlarmPortData::kDependencyLocked | 32;
constexpr std::uint32_t kHighestShownBit = 1024;

std::uint32_t maskOf(const std::uint32_t status)
{
    if (status == AlarmPortData::kDependencyLocked) return kDependencyLockedMask;
    if (status == AlarmPortData::kNotInstalled) return AlarmPortData::kNotInstalled;
    return 0;
}

} // namespace

void AlarmPortData::setStatus(const std::uint32_t status)
{
    availabilityBits |= maskOf(status);
}

void AlarmPortData::clearStatus(const std::uint32_t status)
{
    availabilityBits &= ~maskOf(status);
}

bool AlarmPortData::hasStatus(const std::uint32_t status) const
{
    return (availabilityBits & maskOf(status)) != 0;
}

std::uint32_t AlarmPortData::availabilityStatus() const
{
    for (std::uint32_t bit = kHighestShownBit; bit != 0; bit >>= 1) {
        if ((availabilityBits & bit) == 0) continue;
        if (bit == kDependencyLocked) return kDependencyLockedMask;
        return bit == kNotInstalled ? kNotInstalled : 0;
    }
    return 0;
}
